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
