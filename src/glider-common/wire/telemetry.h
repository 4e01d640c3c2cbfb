#ifndef TELEMETRY_H
#define TELEMETRY_H

#include <stdint.h>

#include "ctd.h"

/*
 * Vehicle payload: sub-packets back to back to the end of the payload, each
 * one message type byte followed by a record of SIZES[type] bytes. No length
 * byte, separator or checksum. Every record below is packed, multi-byte
 * integers are little-endian and bit fields fill each byte from bit 0 up,
 * low-order value bits in the earlier byte.
 *
 * The ground side sends commands the same way: 2 + command_t or
 * 10 + command_long_t, several back to back in one payload.
 */

enum msg_type_t {
    MSG_DATA = 0,
    MSG_COMMAND = 2,
    MSG_HOUSEKEEPING = 3,
    MSG_CTD = 4,
    MSG_SONAR_REPORT = 6,
    MSG_SONAR_WCOL = 7,
    MSG_SONAR_WCOL_DESC = 8,
    MSG_HOUSEKEEPING2 = 9,
    MSG_COMMAND_LONG = 10,
    MSG_O2 = 11,
    MSG_PCO2 = 12, /* superseded by MSG_PCO2_V2, kept for its size */
    MSG_LICOR = 13, /* superseded by MSG_LICOR_24, kept for its size */
    MSG_PTH = 14,
    MSG_POSTIME = 15,
    MSG_LICOR_24 = 16,
    MSG_PCO2_V2 = 17,
};

#define MSG_TYPES 18
/* Size of the codes without a record (0, 1, 5): never fits a payload
 * fragment in practice. */
#define MSG_SIZE_NONE 255

/* Names and record sizes (type byte not counted) by message type. */
extern const char *const TYPE_STRINGS[MSG_TYPES];
extern const uint8_t SIZES[MSG_TYPES];

/* Indexed by ctd_state, sonar_state, pell_en and iridium_en. */
extern const char *const STR_POWER_STATES[4];
/* The vehicle's names for iridium_state. */
extern const char *const STR_SBD_STATES[15];

/*
 * Position and time (type 15), 12 bytes; also the head of housekeeping_t
 * and sonar_report_t.
 *
 *   offset  width  field  meaning
 *   0       32     lat    signed, 1e-7 degree
 *   4       32     lon    signed, 1e-7 degree
 *   8       32     time   seconds since 1970-01-01 00:00 UTC
 */
typedef struct __attribute__((packed)) {
    int32_t lat;
    int32_t lon;
    uint32_t time;
} pos_time_t;
static_assert(sizeof(pos_time_t) == 12, "pos_time_t is packed");

/*
 * Housekeeping (type 3), 23 bytes. Bytes 12..16 are one 40-bit
 * little-endian word.
 *
 *   offset  bits           field             meaning
 *   0       12 bytes       pos_time          pos_time_t
 *   12      word 0-11      ctd_samples
 *   13      word 12-23     sonar_samples
 *   15      word 24-26     iridium_csq
 *   15      word 27-33     iridium_state     index into STR_SBD_STATES
 *   16      word 34-35     ctd_state         index into STR_POWER_STATES
 *   16      word 36-37     sonar_state       index into STR_POWER_STATES
 *   16      word 38        pell_en
 *   16      word 39        iridium_en
 *   17      8              pell_rssi         dBm = value - 200
 *   18      32             uptime
 *   22      8              last_command_seq  cmd_seq of the last command run
 */
typedef struct __attribute__((packed)) {
    pos_time_t pos_time;
    uint64_t ctd_samples : 12;
    uint64_t sonar_samples : 12;
    uint64_t iridium_csq : 3;
    uint64_t iridium_state : 7;
    uint64_t ctd_state : 2;
    uint64_t sonar_state : 2;
    uint64_t pell_en : 1;
    uint64_t iridium_en : 1;
    uint8_t pell_rssi;
    uint32_t uptime;
    uint8_t last_command_seq;
} housekeeping_t;
static_assert(sizeof(housekeeping_t) == 23, "housekeeping_t is packed");

/*
 * Housekeeping without position, with storage flags (type 9), 12 bytes.
 * Bytes 0..5 are one 48-bit little-endian word.
 *
 *   offset  bits        field             meaning
 *   0       word 0-2    iridium_csq
 *   0       word 3-9    iridium_state
 *   1       word 10-11  ctd_state
 *   1       word 12-13  sonar_state
 *   1       word 14     pell_en
 *   1       word 15     iridium_en
 *   2       word 16-22  ctd_log_ok, sonar_ok, o2_ok, pco2_ok, licor_ok,
 *                       pth_ok, logging_ok (one bit each, in this order)
 *   2       word 23-47  logged_kib        KiB written to the data store
 *   6       8           pell_rssi         dBm = value - 200
 *   7       32          uptime
 *   11      8           last_command_seq
 */
typedef struct __attribute__((packed)) housekeeping2 {
    uint64_t iridium_csq : 3;
    uint64_t iridium_state : 7;
    uint64_t ctd_state : 2;
    uint64_t sonar_state : 2;
    uint64_t pell_en : 1;
    uint64_t iridium_en : 1;
    uint64_t ctd_log_ok : 1;
    uint64_t sonar_ok : 1;
    uint64_t o2_ok : 1;
    uint64_t pco2_ok : 1;
    uint64_t licor_ok : 1;
    uint64_t pth_ok : 1;
    uint64_t logging_ok : 1;
    uint64_t logged_kib : 25;
    uint8_t pell_rssi;
    uint32_t uptime;
    uint8_t last_command_seq;
} housekeeping2_t;
static_assert(sizeof(housekeeping2_t) == 12, "housekeeping2_t is packed");

/*
 * Sonar command state change (type 6), 14 bytes.
 *
 *   offset  width     field     meaning
 *   0       12 bytes  pos_time  where and when
 *   12      8         command   sonar command byte (sonar.h)
 *   13      8         retstate  0 started, 1 complete
 */
typedef struct __attribute__((packed)) {
    pos_time_t pos_time;
    uint8_t command;
    uint8_t retstate;
} sonar_report_t;
static_assert(sizeof(sonar_report_t) == 14, "sonar_report_t is packed");

/* Sonar water column (type 7), 8 bytes: one signed value per layer. */
typedef struct __attribute__((packed)) sonar_column {
    int8_t signal[8];
} sonar_column_8_t;
static_assert(sizeof(sonar_column_8_t) == 8, "sonar_column_8_t is packed");

/*
 * Describes the water columns that follow (type 8), 4 bytes.
 *
 *   offset  bits  field
 *   0       8     status
 *   1       8     start_depth
 *   2       8     range
 *   3       0-3   avg_pings
 *   3       4-7   layers
 */
typedef struct __attribute__((packed)) sonar_column_describer {
    uint8_t status;
    uint8_t start_depth;
    uint8_t range;
    uint8_t avg_pings : 4;
    uint8_t layers : 4;
} sonar_column_describer_t;
static_assert(sizeof(sonar_column_describer_t) == 4, "sonar_column_describer_t is packed");

/*
 * Oxygen optode (type 11), 6 bytes.
 *
 *   offset  width  field            shown as
 *   0       16     o2Concentration  raw / 100
 *   2       16     airSaturation    raw / 100
 *   4       16     temperature      raw / 100 - 10
 */
struct __attribute__((packed)) o2_sample {
    uint16_t o2Concentration;
    uint16_t airSaturation;
    uint16_t temperature;
};
static_assert(sizeof(o2_sample) == 6, "o2_sample is packed");

/*
 * pCO2 sensor (type 17), 14 bytes.
 *
 *   offset  width  field        shown as
 *   0       24     pco2         uatm, unscaled
 *   3       24     co2          raw / 100, mg/l
 *   6       16     temperature  raw / 100 - 10
 *   8       16     calphase     raw / 1000, degrees
 *   10      16     c1amp        raw / 10, mV
 *   12      16     c2amp        raw / 10, mV
 */
struct __attribute__((packed)) pco2_sample {
    uint32_t pco2 : 24;
    uint32_t co2 : 24;
    uint16_t temperature;
    uint16_t calphase;
    uint16_t c1amp;
    uint16_t c2amp;
};
static_assert(sizeof(pco2_sample) == 14, "pco2_sample is packed");

/* Light sensor (type 16), 3 bytes: one signed 24-bit reading. */
struct __attribute__((packed)) licor_sample {
    int32_t light_sensitivity : 24;
};
static_assert(sizeof(licor_sample) == 3, "licor_sample is packed");

/*
 * Pressure, temperature and humidity (type 14), 6 bytes.
 *
 *   offset  width  field        shown as
 *   0       16     pressure     raw / 10
 *   2       16     temperature  signed, raw / 100
 *   4       16     humidity     raw / 100
 */
struct __attribute__((packed)) pth_sample {
    uint16_t pressure;
    int16_t temperature;
    uint16_t humidity;
};
static_assert(sizeof(pth_sample) == 6, "pth_sample is packed");

/* Command types, the type byte of command_t and command_long_t. */
enum command_type_t {
    CMD_TELEMETRY_REQUEST = 0, /* short, arg: 0 Pell, 1 Iridium */
    CMD_TELEMETRY_RATE_PELL = 9, /* short, arg: interval code */
    CMD_TELEMETRY_RATE_IRIDIUM = 10, /* short, arg: interval code */
    CMD_POWER = 16, /* short, arg: power_channel_t | on */
    CMD_SONAR = 17, /* short, arg: sonar command byte */
    CMD_TELEMETRY_MESSAGES_PELL = 18, /* long, arg: telemetry_mask_t bits */
    CMD_TELEMETRY_MESSAGES_IRIDIUM = 19, /* long, arg: telemetry_mask_t bits */
    CMD_SONAR_SCRIPT = 20, /* short, arg: script index */
    CMD_DATASTORE = 21, /* long, arg: datastore_action */
    CMD_SONAR_WCOL_MAX = 22, /* short, arg: water columns per SBD */
    CMD_SONAR_AUTO = 23, /* short, arg: sonar command byte */
    CMD_SONAR_AUTO_RATE = 24, /* short, arg: interval code */
};

/* CMD_POWER channels; bit 0 of the argument switches on. */
enum power_channel_t {
    POWER_CTD = 0x40,
    POWER_SONAR = 0x50,
    POWER_PELL = 0x60,
    POWER_IRIDIUM = 0x70,
};

/* Bits of the CMD_TELEMETRY_MESSAGES_* mask, the vehicle's own numbering
 * (not the message types). Bit 2 is unused. */
enum telemetry_mask_t {
    TM_HOUSEKEEPING = 1u << 0,
    TM_CTD = 1u << 1,
    TM_SONAR_REPORT = 1u << 3,
    TM_HOUSEKEEPING2 = 1u << 4,
    TM_O2 = 1u << 5,
    TM_PCO2 = 1u << 6,
    TM_LIGHT = 1u << 7,
    TM_PTH = 1u << 8,
    TM_SONAR_WCOL = 1u << 9,
    TM_POSTIME = 1u << 10,
};

/*
 * Short command (type 2), 3 bytes: cmd_seq, type (command_type_t), arg.
 */
typedef struct __attribute__((packed)) {
    uint8_t cmd_seq;
    uint8_t type;
    uint8_t arg;
} command_t;
static_assert(sizeof(command_t) == 3, "command_t is packed");

/*
 * Long command (type 10), 6 bytes: cmd_seq, type, then a 32-bit arg.
 */
typedef struct __attribute__((packed)) {
    uint8_t cmd_seq;
    uint8_t type;
    uint32_t arg;
} command_long_t;
static_assert(sizeof(command_long_t) == 6, "command_long_t is packed");

enum ds_action { DS_Open = 0, DS_Flush = 1, DS_Close = 2, DS_ClearFlag = 3 };

/*
 * Argument of CMD_DATASTORE, carried in command_long_t.arg, 4 bytes:
 *
 *   offset  width  field
 *   0       8      action    ds_action
 *   1       16     arg
 *   3       8      reserved  0
 */
struct __attribute__((packed)) datastore_action {
    uint8_t action;
    uint16_t arg;
    uint8_t reserved;
};
static_assert(sizeof(datastore_action) == 4, "datastore_action is packed");

/* Interval code to milliseconds: 0..60 seconds, 61..120 minutes (code - 60),
 * 121..255 hours (code - 120). */
uint32_t cmd_interval_to_msec(uint8_t i);

struct nmea_rmc;

/* Position and time of an RMC record: 1/100000 arc minute to 1e-7 degree
 * (x 100 / 60, truncated toward zero), date and time to Unix seconds. */
void telemetry_nmea_to_postime(pos_time_t *out, const nmea_rmc *in);

#endif
