// Uses the vehicle wire library alone: the NMEA reader on a sentence as GPS
// receivers print it, and the command interval codes.
#include <string.h>

#include "consumer_check.h"
#include "nmea.h"
#include "telemetry.h"

using consumer::check;

namespace
{

const char GGA[] = "$GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47\r\n";

nmea_gga g_fix;
int g_sentences = 0;

void onSentence(uint8_t count, char **fields, void *)
{
    g_sentences++;
    if (strcmp(fields[0], "GPGGA") == 0)
        check(nmea_gga_unpack(count, fields, &g_fix) == NMEA_OK, "GGA unpacks");
}

void gga()
{
    check(nmea_checksum(GGA) == 0x47, "GGA checksum");
    nmeaprs reader;
    nmea_init(&reader, onSentence, nullptr);
    nmea_set_flag(&reader, NMEA_FLAG_CHECKSUM);
    memset(&g_fix, 0, sizeof g_fix);
    nmea_parse(&reader, reinterpret_cast<const uint8_t *>(GGA), int(strlen(GGA)));
    check(g_sentences == 1, "one sentence");
    check(g_fix.utc == ((12 * 60 + 35) * 60 + 19) * 1000u, "time of day in ms");
    check(g_fix.latitude == (48 * 60 * 100000 + 703800), "latitude in 1/100000 arc minute");
    check(g_fix.longitude == (11 * 60 * 100000 + 3100000), "longitude in 1/100000 arc minute");
    check(g_fix.sats == 8 && g_fix.hdop == 90 && g_fix.altitude == 54540, "satellites, hdop, altitude");
}

void intervals()
{
    check(cmd_interval_to_msec(60) == 60000, "60 is seconds");
    check(cmd_interval_to_msec(61) == 60000, "61 is one minute");
    check(cmd_interval_to_msec(121) == 3600000, "121 is one hour");
}

} // namespace

int main()
{
    gga();
    intervals();
    return consumer::result("vehicle_wire");
}
