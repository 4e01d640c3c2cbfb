#include "varda_frame_rx.h"

#include "crc_ccitt.h"

bool vrd_frame_crc_ok(const uint8_t *d, uint16_t d_len)
{
    const uint16_t stored = (uint16_t)(d[1] | (d[2] << 8));
    return crc_ccitt(d + 3, (uint16_t)(d_len - 3)) == stored;
}

bool vrd_frame_check(const uint8_t *d, uint16_t d_len, vrd_frame_counters_t *counters)
{
    if (vrd_frame_crc_ok(d, d_len))
        return true;
    counters->bad_crc++;
    return false;
}

uint16_t vrd_frame_crc(const uint8_t *head, size_t head_len, const uint8_t *payload, size_t payload_len)
{
    uint16_t crc = 0xFFFF;
    for (size_t i = 0; i < head_len; i++)
        crc = crc_ccitt_byte(head[i], crc);
    for (size_t i = 0; i < payload_len; i++)
        crc = crc_ccitt_byte(payload[i], crc);
    return crc ^ 0xFFFF;
}

void vrd_frame_seal(uint8_t *d, size_t d_len, uint8_t start)
{
    const uint16_t crc = vrd_frame_crc(d + 3, d_len - 3, nullptr, 0);
    d[0] = start;
    d[1] = (uint8_t)(crc & 0xFF);
    d[2] = (uint8_t)(crc >> 8);
}
