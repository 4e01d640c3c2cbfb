#include "varda_frame_rx.h"

#include "crc_ccitt.h"

static bool frame_crc_ok(const uint8_t *d, uint16_t d_len)
{
    const uint16_t stored = (uint16_t)(d[1] | (d[2] << 8));
    return crc_ccitt(d + 3, (uint16_t)(d_len - 3)) == stored;
}

bool vrd_frame_rx_byte(const vrd_frame_fmt_t *fmt, uint8_t *d, uint16_t *d_len,
                       uint16_t *d_target, uint8_t *state, uint8_t byte)
{
    switch (*state) {
    case VRD_FRAME_START:
        if (byte == fmt->start) {
            d[0] = byte;
            *d_len = 1;
            *state = VRD_FRAME_HEADER;
        }
        return false;

    case VRD_FRAME_HEADER:
        d[(*d_len)++] = byte;
        if (*d_len >= fmt->hdr_len) {
            *d_target = (uint16_t)(d[fmt->hdr_len - 1] + fmt->hdr_len);
            *state = VRD_FRAME_PAYLOAD;
        }
        return false;

    case VRD_FRAME_PAYLOAD:
        if (*d_len < fmt->max_len)
            d[(*d_len)++] = byte;
        else
            *state = VRD_FRAME_START;
        if (*d_len != *d_target)
            return false;
        *state = VRD_FRAME_START;
        return frame_crc_ok(d, *d_len);

    default:
        *state = VRD_FRAME_START;
        return false;
    }
}
