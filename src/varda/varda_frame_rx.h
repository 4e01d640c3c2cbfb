#ifndef VARDA_FRAME_RX_H
#define VARDA_FRAME_RX_H

#include <stdint.h>

/*
 * Byte-at-a-time receiver shared by the SPP and PP framings. Both frames are
 *
 *   start | crc (uint16 LE) | [type] | len | payload[len]
 *
 * with the CRC over every byte from index 3 to the end of the frame. The
 * length byte is the last header byte.
 *
 * The receiver is deliberately simple and keeps the modem's behaviour:
 * - no resynchronisation inside a frame: a start byte in the header or the
 *   payload is data, and after a bad CRC hunting resumes with the next byte;
 * - the end of a frame is only tested in the payload state, so a frame with
 *   length 0 is never delivered: the receiver stores bytes up to the buffer
 *   limit, drops the next one and starts hunting again.
 */

enum vrd_frame_state_t { VRD_FRAME_START = 0, VRD_FRAME_HEADER = 1, VRD_FRAME_PAYLOAD = 2 };

typedef struct {
    uint8_t start;    /* start byte */
    uint8_t hdr_len;  /* header bytes, length byte included */
    uint16_t max_len; /* buffer size: header + 255 */
} vrd_frame_fmt_t;

/* Feeds one byte. d must hold fmt->max_len bytes. Returns true when d holds
 * a complete frame of *d_len bytes whose CRC matches; the receiver is then
 * back in VRD_FRAME_START. Returns false otherwise (byte stored, dropped,
 * frame incomplete or CRC mismatch). Every store is bounded by max_len. */
bool vrd_frame_rx_byte(const vrd_frame_fmt_t *fmt, uint8_t *d, uint16_t *d_len,
                       uint16_t *d_target, uint8_t *state, uint8_t byte);

#endif
