#ifndef NMEA_H
#define NMEA_H

#include <stdint.h>

/*
 * NMEA 0183 reader and writer for RMC and GGA sentences, integer only.
 *
 * A sentence on the wire:
 *
 *   $GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47<CR><LF>
 *
 * "$" (or "!") starts it, fields are separated by ",", "*" introduces the
 * checksum (XOR of every character between the start character and "*", two
 * upper-case hex digits) and CR or LF ends it. Decimal numbers are carried as
 * scaled integers: 12.34 with 2 decimals is 1234.
 */

#define NMEA_BUFFER_SIZE 256 /* sentence characters kept, start character excluded */
#define NMEA_MAX_FIELDS 29
#define NMEA_MAX_PACKED 77 /* "$" and the joined fields of a packed sentence */
#define NMEA_SENTENCE_SIZE 83 /* room for a packed sentence: 77 + "*hh" + CR LF + NUL */

#define NMEA_FLAG_CHECKSUM 0x01 /* reject sentences whose checksum is missing or wrong */

/* Result codes. */
#define NMEA_OK 0
#define NMEA_ERR_FIELD_COUNT 2 /* wrong number of fields for the sentence type */
#define NMEA_ERR_CHECKSUM 3 /* checksum missing or wrong */
#define NMEA_ERR_TOO_MANY 4 /* more than NMEA_MAX_FIELDS fields */
#define NMEA_ERR_TOO_LONG 5 /* packed sentence longer than NMEA_MAX_PACKED */

/* Called once per accepted sentence; fields[0] is the sentence name ("GPRMC"),
 * the checksum text, when present, the last field. The fields point into the
 * reader's buffer and are valid during the call only. */
typedef void (*nmea_callback_t)(uint8_t count, char **fields, void *arg);

typedef struct {
    uint8_t flags; /* NMEA_FLAG_* */
    char buffer[NMEA_BUFFER_SIZE + 1]; /* current sentence and its terminator */
    int count; /* characters in buffer */
    nmea_callback_t callback;
    void *arg;
} nmeaprs;

/* Missing values in the records below. */
#define NMEA_UTC_MISSING 0xFFFFFFFFu
#define NMEA_POS_MISSING 0x7FFFFFFF
#define NMEA_U8_MISSING 0xFF
#define NMEA_U16_MISSING 0xFFFF
#define NMEA_S16_MISSING 0x7FFF
#define NMEA_S32_MISSING 0x7FFFFFFF

/* Recommended minimum data (RMC). Positions in 1/100000 arc minute. */
typedef struct nmea_rmc {
    uint32_t utc; /* ms since midnight UTC */
    uint8_t valid; /* 1 "A", 0 any other character, 255 not exactly one character */
    int32_t latitude; /* south negative */
    int32_t longitude; /* west negative */
    uint16_t sog; /* 1/100 knot */
    uint16_t cog; /* 1/100 degree */
    uint8_t day;
    uint8_t month;
    uint8_t year; /* two digits; day, month and year all 255 unless ddmmyy */
    int16_t var; /* magnetic variation, 1/100 degree, west negative */
} nmea_rmc;

/* Fix data (GGA). */
typedef struct nmea_gga {
    uint32_t utc; /* ms since midnight UTC */
    int32_t latitude; /* 1/100000 arc minute, south negative */
    int32_t longitude; /* 1/100000 arc minute, west negative */
    uint8_t fix; /* fix quality digit */
    uint8_t sats; /* satellites in use */
    uint16_t hdop; /* 1/100 */
    int32_t altitude; /* 1/100 m */
    int16_t geoid_sep; /* 1/100 m */
    uint16_t dgps_age; /* 1/10 s */
    uint16_t dgps_id;
} nmea_gga;

/* Clears flags and buffer and keeps callback (may be null) and arg. */
void nmea_init(nmeaprs *ctx, nmea_callback_t callback, void *arg);
/* Sets or clears the low 8 bits of bits in ctx->flags. */
void nmea_set_flag(nmeaprs *ctx, int bits);
void nmea_clear_flag(nmeaprs *ctx, int bits);

/* XOR of the characters of s after an optional leading "$" or "!", up to the
 * first "*" or the end of s. 0 for an empty sentence. */
uint8_t nmea_checksum(const char *s);

/* Feeds len bytes. A sentence ends at CR or LF and is then handed to
 * nmea_handle_buffer; characters beyond NMEA_BUFFER_SIZE in one sentence are
 * dropped. Rejected sentences are dropped silently. */
void nmea_parse(nmeaprs *ctx, const uint8_t *data, int len);

/* Checks and splits the terminated sentence in ctx->buffer (in place) and
 * calls the callback. Returns NMEA_OK, or without calling the callback:
 * NMEA_ERR_CHECKSUM when NMEA_FLAG_CHECKSUM is set and there is no "*" or the
 * two characters after it are not the checksum in upper-case hex;
 * NMEA_ERR_TOO_MANY when the sentence has more than NMEA_MAX_FIELDS fields. */
int nmea_handle_buffer(nmeaprs *ctx);

/* Unpack the fields of an RMC sentence (14 fields: NMEA 2.3 with mode
 * indicator, checksum field included) or a GGA sentence (16 fields). Missing
 * values get the NMEA_*_MISSING marks. Return NMEA_OK, or NMEA_ERR_FIELD_COUNT
 * for any other field count (out untouched). */
int nmea_rmc_unpack(uint8_t count, const char *const *fields, nmea_rmc *out);
int nmea_gga_unpack(uint8_t count, const char *const *fields, nmea_gga *out);

/* Writes "$", the fields joined by ",", "*", the checksum, CR LF and a NUL
 * into out, which must hold NMEA_SENTENCE_SIZE characters. Returns NMEA_OK,
 * or NMEA_ERR_TOO_LONG when "$" and the fields exceed NMEA_MAX_PACKED
 * characters; out then holds the first NMEA_MAX_PACKED of them, terminated. */
int nmea_parametric_pack(int count, const char *const *fields, char *out);
/* Packs a "GPGGA" sentence into out (NMEA_SENTENCE_SIZE characters); fields
 * whose value is missing stay empty. Returns as nmea_parametric_pack. */
int nmea_gga_pack(const nmea_gga *in, char *out);

/* Seconds since 1970-01-01 UTC of the RMC date and time. Never fails: a
 * month outside 1..12 adds no days before the month, a missing time counts
 * as 0xFFFFFFFF ms. */
int64_t nmea_rmc_to_unixtimestamp(const nmea_rmc *rmc);

/* Decimal digits of s as an unsigned number (modulo 2^32), stopping at a
 * non-digit, the end of s or after budget characters. 0 when s has no
 * leading digit. */
uint32_t _atou(const char *s, uint8_t budget);

/* Fixed-point reader: s as value x 10^decimals (modulo 2^32). An optional
 * sign comes first; integer digits are read while budget lasts, the
 * character that ends them counting too; fraction digits beyond decimals are
 * truncated. The sign is applied only when a "." follows the digits within
 * budget ("-5" with 2 decimals gives 500, "-5.0" gives -500). 0 for text
 * without digits. */
int32_t _atofpd(const char *s, uint8_t budget, uint8_t decimals);

/* Writes value (dec_in decimals) as text with dec_out decimals, rounding
 * half up, and at least min_digits integer digits. No terminator; returns the
 * length. out must hold dec_out + 1 + max(10, min_digits) characters. */
int _fpdtoa(uint32_t value, uint8_t dec_in, uint8_t dec_out, uint8_t min_digits, char *out);

#endif
