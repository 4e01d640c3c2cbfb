// Arbitrary bytes into the NMEA reader, whole and in input-derived chunks,
// checksum check on and off. Every accepted sentence goes through both
// unpackers; a GGA record is packed again and the packed sentence must be
// read back as a valid 16-field sentence.

#include <stddef.h>
#include <stdint.h>

#include "fuzz_check.h"
#include "nmea.h"

namespace
{

using fuzz::check;

void countFields(uint8_t count, char **, void *arg)
{
    *static_cast<int *>(arg) = count;
}

void repack(const nmea_gga *gga)
{
    char text[NMEA_SENTENCE_SIZE];
    if (nmea_gga_pack(gga, text) != NMEA_OK)
        return;
    int fields = 0;
    nmeaprs reader;
    nmea_init(&reader, countFields, &fields);
    nmea_set_flag(&reader, NMEA_FLAG_CHECKSUM);
    int len = 0;
    while (text[len])
        len++;
    nmea_parse(&reader, reinterpret_cast<const uint8_t *>(text), len);
    check(fields == 16);
}

void unpackBoth(uint8_t count, char **fields, void *)
{
    nmea_rmc rmc;
    if (nmea_rmc_unpack(count, fields, &rmc) == NMEA_OK) {
        volatile int64_t seconds = nmea_rmc_to_unixtimestamp(&rmc);
        (void)seconds;
    }
    nmea_gga gga;
    if (nmea_gga_unpack(count, fields, &gga) == NMEA_OK)
        repack(&gga);
}

void feed(const uint8_t *data, size_t size, uint8_t flags, size_t chunk)
{
    nmeaprs reader;
    nmea_init(&reader, unpackBoth, nullptr);
    nmea_set_flag(&reader, flags);
    for (size_t at = 0; at < size; at += chunk) {
        const size_t n = size - at < chunk ? size - at : chunk;
        nmea_parse(&reader, data + at, int(n));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    const uint8_t control = data[0];
    for (int flags = 0; flags <= NMEA_FLAG_CHECKSUM; flags++) {
        feed(data, size, uint8_t(flags), size);
        feed(data, size, uint8_t(flags), 1 + control % 64);
    }
    return 0;
}
