#include "telemetry.h"

// clang-format off
const char *const TYPE_STRINGS[MSG_TYPES] = {
    "DATA",             /*  0 */
    "",                 /*  1 */
    "COMMAND",          /*  2 */
    "HOUSEKEEPING",     /*  3 */
    "CTD",              /*  4 */
    "",                 /*  5 */
    "SONAR_REPORT",     /*  6 */
    "SONAR_WCOL",       /*  7 */
    "SONAR_WCOL_DESC",  /*  8 */
    "HOUSEKEEPING2",    /*  9 */
    "COMMAND_LONG",     /* 10 */
    "O2",               /* 11 */
    "PCO2",             /* 12 */
    "LICOR",            /* 13 */
    "PTH",              /* 14 */
    "POSTIME",          /* 15 */
    "LICOR_24",         /* 16 */
    "PCO2_V2",          /* 17 */
};

const uint8_t SIZES[MSG_TYPES] = {
    MSG_SIZE_NONE,  /*  0 DATA: no record */
    MSG_SIZE_NONE,  /*  1: no record */
    3,              /*  2 COMMAND */
    23,             /*  3 HOUSEKEEPING */
    15,             /*  4 CTD */
    MSG_SIZE_NONE,  /*  5: no record */
    14,             /*  6 SONAR_REPORT */
    8,              /*  7 SONAR_WCOL */
    4,              /*  8 SONAR_WCOL_DESC */
    12,             /*  9 HOUSEKEEPING2 */
    6,              /* 10 COMMAND_LONG */
    6,              /* 11 O2 */
    8,              /* 12 PCO2: superseded, stepped over by size */
    2,              /* 13 LICOR: superseded, stepped over by size */
    6,              /* 14 PTH */
    12,             /* 15 POSTIME */
    3,              /* 16 LICOR_24 */
    14,             /* 17 PCO2_V2 */
};
// clang-format on

const char *const STR_POWER_STATES[4] = { "OFF", "ON", "PENDING", "" };

const char *const STR_SBD_STATES[15] = {
    "IDLE",
    "POWER_ON",
    "INIT",
    "TXLENGTH",
    "TXDATA",
    "CSQ",
    "CSQ_CHECK",
    "SBDIX",
    "RXDATA",
    "WAIT_TRIGGER",
    "WAIT_REPLY",
    "WAIT_TERM",
    "DELAY",
    "POWER_OFF",
    "POWER_OFF_FINAL",
};

uint32_t cmd_interval_to_msec(uint8_t i)
{
    if (i <= 60)
        return i * 1000u;
    if (i <= 120)
        return (i - 60u) * 60000u;
    return (i - 120u) * 3600000u;
}

#include "nmea.h"

void telemetry_nmea_to_postime(pos_time_t *out, const nmea_rmc *in)
{
    out->lat = int32_t(int64_t(in->latitude) * 100 / 60);
    out->lon = int32_t(int64_t(in->longitude) * 100 / 60);
    out->time = uint32_t(nmea_rmc_to_unixtimestamp(in));
}
