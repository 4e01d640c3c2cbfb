#include "nmea.h"

#include <string.h>

// Every number here is an integer; arithmetic that may overflow on hostile
// input is done in uint32_t, where it wraps instead of being undefined.

static const char HEX_DIGITS[] = "0123456789ABCDEF";

#define GGA_FIELDS 15
#define GGA_FIELD_SIZE 32

static bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

static uint32_t times_ten_to(uint32_t v, unsigned places)
{
    for (unsigned i = 0; i < places; i++)
        v *= 10;
    return v;
}

// v / 10^places, rounded half up.
static uint32_t divide_rounded(uint32_t v, unsigned places)
{
    uint64_t divisor = 1;
    for (unsigned i = 0; i < places; i++) {
        divisor *= 10;
        if (divisor > 2ull * UINT32_MAX)
            return 0; // v is below half the divisor
    }
    uint64_t q = v / divisor;
    if (v % divisor >= divisor / 2)
        q++;
    return uint32_t(q);
}

static int32_t negated_if(uint32_t v, bool negative)
{
    return int32_t(negative ? 0u - v : v);
}

static bool is_mark(const char *field, char mark)
{
    return field[0] == mark && field[1] == '\0';
}

static bool present(const char *field)
{
    return field[0] != '\0';
}

void nmea_init(nmeaprs *ctx, nmea_callback_t callback, void *arg)
{
    ctx->flags = 0;
    memset(ctx->buffer, 0, sizeof(ctx->buffer));
    ctx->count = 0;
    ctx->callback = callback;
    ctx->arg = arg;
}

void nmea_set_flag(nmeaprs *ctx, int bits)
{
    ctx->flags |= uint8_t(bits & 0xFF);
}

void nmea_clear_flag(nmeaprs *ctx, int bits)
{
    ctx->flags &= uint8_t(~bits & 0xFF);
}

uint8_t nmea_checksum(const char *s)
{
    if (*s == '$' || *s == '!')
        s++;
    uint8_t sum = 0;
    for (; *s && *s != '*'; s++)
        sum ^= uint8_t(*s);
    return sum;
}

void nmea_parse(nmeaprs *ctx, const uint8_t *data, int len)
{
    for (int i = 0; i < len; i++) {
        const char c = char(data[i]);
        if (ctx->count < 0 || ctx->count > NMEA_BUFFER_SIZE)
            ctx->count = 0;
        if (c == '\r' || c == '\n') {
            ctx->buffer[ctx->count] = '\0';
            if (ctx->count > 0)
                nmea_handle_buffer(ctx);
            ctx->count = 0;
        } else if (c == '$' || c == '!') {
            ctx->count = 0;
        } else if (ctx->count < NMEA_BUFFER_SIZE) {
            ctx->buffer[ctx->count++] = c;
        }
    }
}

// The checksum is upper-case hex only: "*4e" fails where "*4E" passes.
static bool checksum_matches(const char *sentence)
{
    const char *star = strchr(sentence, '*');
    if (!star)
        return false;
    const uint8_t sum = nmea_checksum(sentence);
    return star[1] == HEX_DIGITS[sum >> 4] && star[2] == HEX_DIGITS[sum & 0x0F];
}

// Splits in place at "," and "*"; -1 when there are too many fields.
static int split_fields(char *s, char **fields)
{
    int count = 0;
    fields[count++] = s;
    for (; *s; s++) {
        if (*s != ',' && *s != '*')
            continue;
        *s = '\0';
        if (count == NMEA_MAX_FIELDS)
            return -1;
        fields[count++] = s + 1;
    }
    return count;
}

int nmea_handle_buffer(nmeaprs *ctx)
{
    ctx->buffer[NMEA_BUFFER_SIZE] = '\0';
    if ((ctx->flags & NMEA_FLAG_CHECKSUM) && !checksum_matches(ctx->buffer))
        return NMEA_ERR_CHECKSUM;
    char *fields[NMEA_MAX_FIELDS];
    const int count = split_fields(ctx->buffer, fields);
    if (count < 0)
        return NMEA_ERR_TOO_MANY;
    if (ctx->callback)
        ctx->callback(uint8_t(count), fields, ctx->arg);
    return NMEA_OK;
}

uint32_t _atou(const char *s, uint8_t budget)
{
    uint32_t v = 0;
    for (; budget > 0 && is_digit(*s); budget--, s++)
        v = v * 10 + uint32_t(*s - '0');
    return v;
}

int32_t _atofpd(const char *s, uint8_t budget, uint8_t decimals)
{
    bool negative = false;
    if (*s == '-' || *s == '+') {
        negative = *s == '-';
        s++;
    }
    uint32_t v = 0;
    while (budget > 0) {
        budget--; // the character that ends the digits is paid for as well
        if (!is_digit(*s))
            break;
        v = v * 10 + uint32_t(*s - '0');
        s++;
    }
    v = times_ten_to(v, decimals);
    if (*s != '.' || budget == 0)
        return int32_t(v); // no fraction: the sign is dropped on purpose
    s++;
    uint32_t fraction = 0;
    unsigned read = 0;
    for (; read < decimals && is_digit(*s); read++, s++)
        fraction = fraction * 10 + uint32_t(*s - '0');
    v += times_ten_to(fraction, decimals - read);
    return negated_if(v, negative);
}

static void reverse(char *s, int len)
{
    for (int i = 0, j = len - 1; i < j; i++, j--) {
        const char c = s[i];
        s[i] = s[j];
        s[j] = c;
    }
}

int _fpdtoa(uint32_t value, uint8_t dec_in, uint8_t dec_out, uint8_t min_digits, char *out)
{
    uint32_t v
        = dec_out >= dec_in ? times_ten_to(value, dec_out - dec_in) : divide_rounded(value, dec_in - dec_out);
    int n = 0;
    if (dec_out > 0) {
        for (unsigned i = 0; i < dec_out; i++, v /= 10)
            out[n++] = char('0' + v % 10);
        out[n++] = '.';
    }
    unsigned digits = 0;
    do {
        out[n++] = char('0' + v % 10);
        v /= 10;
        digits++;
    } while (v);
    for (; digits < min_digits; digits++)
        out[n++] = '0';
    reverse(out, n);
    return n;
}

// hhmmss[.sss] in ms since midnight; min_len is at least 1. A field shorter
// than hhmmss (GGA takes one) is read as far as it goes: the offsets stop at
// its end.
static uint32_t read_time(const char *field, size_t min_len)
{
    const size_t len = strlen(field);
    if (len < min_len)
        return NMEA_UTC_MISSING;
    const uint32_t hours = uint32_t(_atofpd(field, 2, 3));
    const uint32_t minutes = uint32_t(_atofpd(field + (len < 2 ? len : 2), 2, 3));
    const uint32_t seconds = uint32_t(_atofpd(field + (len < 4 ? len : 4), 99, 3));
    return hours * 3600 + minutes * 60 + seconds;
}

// d..dmm.mmmmm in 1/100000 arc minute, negated by the hemisphere mark.
static int32_t read_angle(
    const char *field, const char *hemisphere, uint8_t degree_chars, size_t min_len, char negative_mark)
{
    if (strlen(field) < min_len)
        return NMEA_POS_MISSING;
    const uint32_t degrees = uint32_t(_atofpd(field, degree_chars, 5));
    const uint32_t minutes = uint32_t(_atofpd(field + degree_chars, 99, 5));
    return negated_if(degrees * 60 + minutes, is_mark(hemisphere, negative_mark));
}

static uint16_t read_u16(const char *field, uint8_t decimals)
{
    return present(field) ? uint16_t(_atofpd(field, 99, decimals)) : NMEA_U16_MISSING;
}

static void read_date(const char *field, nmea_rmc *out)
{
    if (strlen(field) != 6) {
        out->day = out->month = out->year = NMEA_U8_MISSING;
        return;
    }
    out->day = uint8_t(_atofpd(field, 2, 0));
    out->month = uint8_t(_atofpd(field + 2, 2, 0));
    out->year = uint8_t(_atofpd(field + 4, 2, 0));
}

static int16_t read_variation(const char *value, const char *direction)
{
    if (strlen(value) < 2)
        return NMEA_S16_MISSING;
    return int16_t(negated_if(uint32_t(_atofpd(value, 99, 2)), is_mark(direction, 'W')));
}

/* $GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W,A*hh
 * name, time, status, lat, N/S, lon, E/W, speed kn, course, ddmmyy,
 * variation, E/W, mode, checksum */
int nmea_rmc_unpack(uint8_t count, const char *const *f, nmea_rmc *out)
{
    if (count != 14)
        return NMEA_ERR_FIELD_COUNT;
    out->utc = read_time(f[1], 6);
    out->valid = strlen(f[2]) == 1 ? (f[2][0] == 'A' ? 1 : 0) : NMEA_U8_MISSING;
    out->latitude = read_angle(f[3], f[4], 2, 4, 'S');
    out->longitude = read_angle(f[5], f[6], 3, 5, 'W');
    out->sog = read_u16(f[7], 2);
    out->cog = read_u16(f[8], 2);
    read_date(f[9], out);
    out->var = read_variation(f[10], f[11]);
    return NMEA_OK;
}

/* $GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47
 * name, time, lat, N/S, lon, E/W, fix, sats, hdop, altitude, M,
 * geoid separation, M, dgps age, dgps station, checksum.
 * The longitude needs 4 characters here but 5 in RMC; both minima are kept. */
int nmea_gga_unpack(uint8_t count, const char *const *f, nmea_gga *out)
{
    if (count != 16)
        return NMEA_ERR_FIELD_COUNT;
    out->utc = read_time(f[1], 1);
    out->latitude = read_angle(f[2], f[3], 2, 4, 'S');
    out->longitude = read_angle(f[4], f[5], 3, 4, 'W');
    out->fix = strlen(f[6]) == 1 ? uint8_t(_atou(f[6], 1)) : NMEA_U8_MISSING;
    out->sats = present(f[7]) ? uint8_t(_atou(f[7], 99)) : NMEA_U8_MISSING;
    out->hdop = read_u16(f[8], 2);
    out->altitude = present(f[9]) ? _atofpd(f[9], 99, 2) : NMEA_S32_MISSING;
    out->geoid_sep = present(f[11]) ? int16_t(_atofpd(f[11], 99, 2)) : NMEA_S16_MISSING;
    out->dgps_age = read_u16(f[13], 1);
    out->dgps_id = present(f[14]) ? uint16_t(_atou(f[14], 99)) : NMEA_U16_MISSING;
    return NMEA_OK;
}

static bool put_char(char *out, int *n, char c)
{
    if (*n >= NMEA_MAX_PACKED)
        return false;
    out[(*n)++] = c;
    return true;
}

static bool put_field(char *out, int *n, const char *field)
{
    for (; *field; field++)
        if (!put_char(out, n, *field))
            return false;
    return true;
}

int nmea_parametric_pack(int count, const char *const *fields, char *out)
{
    int n = 0;
    out[n++] = '$';
    for (int i = 0; i < count; i++) {
        if ((i > 0 && !put_char(out, &n, ',')) || !put_field(out, &n, fields[i])) {
            out[n] = '\0';
            return NMEA_ERR_TOO_LONG;
        }
    }
    out[n] = '\0';
    const uint8_t sum = nmea_checksum(out);
    out[n++] = '*';
    out[n++] = HEX_DIGITS[sum >> 4];
    out[n++] = HEX_DIGITS[sum & 0x0F];
    out[n++] = '\r';
    out[n++] = '\n';
    out[n] = '\0';
    return NMEA_OK;
}

static void write_fixed(char *text, uint32_t v, uint8_t dec_in, uint8_t dec_out, uint8_t min_digits)
{
    text[_fpdtoa(v, dec_in, dec_out, min_digits, text)] = '\0';
}

static void write_signed_fixed(char *text, int32_t v, uint8_t dec_in, uint8_t dec_out)
{
    const uint32_t magnitude = v < 0 ? 0u - uint32_t(v) : uint32_t(v);
    if (v < 0)
        *text++ = '-';
    write_fixed(text, magnitude, dec_in, dec_out, 1);
}

// Seconds are rounded half up without carry: 59.5 s is written as "60".
static void write_time(char *text, uint32_t utc)
{
    text += _fpdtoa(utc / 3600000, 0, 0, 2, text);
    text += _fpdtoa(utc / 60000 % 60, 0, 0, 2, text);
    write_fixed(text, utc % 60000, 3, 0, 2);
}

// d..dmm.mmmm and the hemisphere letter of a position in 1/100000 arc minute.
static void write_angle(char *text, char *hemisphere, int32_t v, uint8_t degree_digits, const char *marks)
{
    const uint32_t magnitude = v < 0 ? 0u - uint32_t(v) : uint32_t(v);
    text += _fpdtoa(magnitude / 6000000, 0, 0, degree_digits, text);
    write_fixed(text, magnitude % 6000000, 5, 4, 2);
    hemisphere[0] = marks[v < 0];
    hemisphere[1] = '\0';
}

int nmea_gga_pack(const nmea_gga *in, char *out)
{
    char text[GGA_FIELDS][GGA_FIELD_SIZE] = {};
    const char *fields[GGA_FIELDS];
    for (int i = 0; i < GGA_FIELDS; i++)
        fields[i] = text[i];
    fields[0] = "GPGGA";
    if (in->utc != NMEA_UTC_MISSING)
        write_time(text[1], in->utc);
    if (in->latitude != NMEA_POS_MISSING)
        write_angle(text[2], text[3], in->latitude, 2, "NS");
    if (in->longitude != NMEA_POS_MISSING)
        write_angle(text[4], text[5], in->longitude, 3, "EW");
    if (in->fix != NMEA_U8_MISSING)
        write_fixed(text[6], in->fix, 0, 0, 1);
    if (in->sats != NMEA_U8_MISSING)
        write_fixed(text[7], in->sats, 0, 0, 2);
    if (in->hdop != NMEA_U16_MISSING)
        write_fixed(text[8], in->hdop, 2, 1, 1);
    if (in->altitude != NMEA_S32_MISSING) {
        write_signed_fixed(text[9], in->altitude, 2, 1);
        fields[10] = "M";
    }
    if (in->geoid_sep != NMEA_S16_MISSING) {
        write_signed_fixed(text[11], in->geoid_sep, 2, 1);
        fields[12] = "M";
    }
    if (in->dgps_age != NMEA_U16_MISSING)
        write_fixed(text[13], in->dgps_age, 1, 1, 1);
    if (in->dgps_id != NMEA_U16_MISSING)
        write_fixed(text[14], in->dgps_id, 0, 0, 4);
    return nmea_parametric_pack(GGA_FIELDS, fields, out);
}

static bool is_leap_year(int64_t y)
{
    return y % 4 == 0 && (y % 100 != 0 || y % 400 == 0);
}

int64_t nmea_rmc_to_unixtimestamp(const nmea_rmc *rmc)
{
    static const int16_t DAYS_BEFORE_MONTH[12] = { 0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334 };
    const int64_t y = 2000 + rmc->year;
    const int64_t leap_days = (y - 1601) / 400 + (y - 1969) / 4 - (y - 1901) / 100;
    int64_t days = rmc->day + 365 * y + leap_days - 719051;
    if (rmc->month >= 1 && rmc->month <= 12)
        days += DAYS_BEFORE_MONTH[rmc->month - 1];
    if (rmc->month > 2 && is_leap_year(y))
        days++;
    return days * 86400 + rmc->utc / 1000;
}
