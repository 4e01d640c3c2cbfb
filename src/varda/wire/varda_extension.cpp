#include "varda_extension.h"

#include <string.h>

// clang-format off
const char *const EXT_TYPE_STRINGS[VRD_EXT_TYPES] = {
    "data",    "src",     "stat",       "simplehop", "pos",    "toh",      "dest",     "cmd_req",
    "text",    "request", "car_bat",    "car_charge", "car_trip", "rx_src", "ipv4_src", "ipv6_src",
};

const uint16_t EXT_TYPE_SIZES[VRD_EXT_TYPES] = {
    VRD_EXT_SIZE_VARIABLE, 7, 22, 1, 17, 5, 6, VRD_EXT_SIZE_VARIABLE,
    VRD_EXT_SIZE_VARIABLE, 1, 4,  2, 10, 7, 4, 16,
};
// clang-format on

uint8_t *vrd_ext_allocate_buffer(
    uint8_t *d, uint16_t *d_len, uint16_t d_size, uint8_t pkt_type, uint16_t data_len)
{
    const uint32_t used = *d_len;
    if (used + 2u + data_len > d_size)
        return nullptr;
    d[used] = pkt_type;
    d[used + 1] = (uint8_t)(data_len & 0xFF);
    *d_len = (uint16_t)(used + 2u + data_len);
    return d + used + 2;
}

void vrd_ext_append_buffer(
    uint8_t *d, uint16_t *d_len, uint16_t d_size, uint8_t type, const uint8_t *data, uint16_t size)
{
    uint8_t *dst = vrd_ext_allocate_buffer(d, d_len, d_size, type, size);
    if (dst && size)
        memcpy(dst, data, size);
}

uint8_t *vrd_ext_allocate_pkt(tx_pkt_t *p, uint8_t pkt_type, uint16_t data_len)
{
    uint16_t used = p->pl_len; /* copied: the field is unaligned in the packed record */
    uint8_t *dst = vrd_ext_allocate_buffer(p->pl, &used, VRD_MAX_PAYLOAD, pkt_type, data_len);
    p->pl_len = used;
    return dst;
}

void vrd_ext_append_pkt(tx_pkt_t *p, uint8_t type, const uint8_t *data, uint16_t size)
{
    uint16_t used = p->pl_len;
    vrd_ext_append_buffer(p->pl, &used, VRD_MAX_PAYLOAD, type, data, size);
    p->pl_len = used;
}

uint16_t vrd_ext_numpkts(const uint8_t *d, uint16_t d_len)
{
    uint32_t start = 0;
    uint16_t packets = 0;
    for (;;) {
        if (start + 2 > d_len)
            return packets;
        const uint8_t type = d[start];
        const uint8_t size = d[start + 1];
        if (start + 2 + size > d_len)
            return packets;
        if (type >= VRD_EXT_TYPES)
            return 0;
        if (EXT_TYPE_SIZES[type] != VRD_EXT_SIZE_VARIABLE && EXT_TYPE_SIZES[type] != size)
            return 0;
        packets++;
        start += size + 2u;
    }
}

static void pack_callsign(uint8_t *enc, const uint8_t v[8])
{
    const uint32_t hi = (uint32_t)(v[0] & 63) << 18 | (uint32_t)(v[1] & 63) << 12 | (uint32_t)(v[2] & 63) << 6
        | (v[3] & 63);
    const uint32_t lo = (uint32_t)(v[4] & 63) << 18 | (uint32_t)(v[5] & 63) << 12 | (uint32_t)(v[6] & 63) << 6
        | (v[7] & 63);
    enc[0] = (uint8_t)(hi >> 16);
    enc[1] = (uint8_t)(hi >> 8);
    enc[2] = (uint8_t)hi;
    enc[3] = (uint8_t)(lo >> 16);
    enc[4] = (uint8_t)(lo >> 8);
    enc[5] = (uint8_t)lo;
}

static bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

/* Reads "-N" or "-NN" at p into *ssid. Two digits end the check: whatever
 * follows them is not looked at ("AB-123" gives 12). */
static bool parse_ssid(const char *p, uint8_t *ssid)
{
    *ssid = 0;
    if (*p != '-')
        return true;
    p++;
    if (!is_digit(*p))
        return false;
    unsigned value = (unsigned)(*p - '0');
    p++;
    if (is_digit(*p))
        value = value * 10 + (unsigned)(*p - '0');
    else if (*p != '\0')
        return false;
    *ssid = (uint8_t)value;
    return true;
}

bool vrd_ext_encode_callsign(uint8_t *enc_callsign, const char *callsign)
{
    uint8_t v[8] = { 0 };
    int n = 0;
    const char *p = callsign;
    while (n < 7 && *p != '\0' && *p != '-') {
        const char c = *p++;
        v[n++] = (uint8_t)((c >= 'a' && c <= 'z') ? c - 0x40 : c - 0x20);
    }
    /* v[n] stays 0: the end mark of a callsign shorter than 7. */
    if (!parse_ssid(p, &v[7]))
        return false;
    pack_callsign(enc_callsign, v);
    return true;
}

void vrd_ext_decode_callsign(char *callsign, const uint8_t *enc_callsign)
{
    const uint32_t hi = (uint32_t)enc_callsign[0] << 16 | (uint32_t)enc_callsign[1] << 8 | enc_callsign[2];
    const uint32_t lo = (uint32_t)enc_callsign[3] << 16 | (uint32_t)enc_callsign[4] << 8 | enc_callsign[5];
    const uint8_t v[8] = {
        (uint8_t)((hi >> 18) & 63),
        (uint8_t)((hi >> 12) & 63),
        (uint8_t)((hi >> 6) & 63),
        (uint8_t)(hi & 63),
        (uint8_t)((lo >> 18) & 63),
        (uint8_t)((lo >> 12) & 63),
        (uint8_t)((lo >> 6) & 63),
        (uint8_t)(lo & 63),
    };
    for (int i = 0; i < 7; i++)
        callsign[i] = (char)v[i];
    callsign[7] = '\0';

    int n = 0;
    while (n < 7 && v[n] != 0) {
        callsign[n] = (char)(v[n] + 0x20);
        n++;
    }

    const uint8_t ssid = v[7];
    if (ssid == 0)
        return;
    callsign[n++] = '-';
    if (ssid >= 10)
        callsign[n++] = (char)('0' + ssid / 10);
    callsign[n++] = (char)('0' + ssid % 10);
    callsign[n] = '\0';
}
