#ifndef VARDA_FRAME_RX_H
#define VARDA_FRAME_RX_H

#include <stddef.h>
#include <stdint.h>

/*
 * What the SPP and PP framings share: a byte-at-a-time receiver, the CRC
 * check and the sealing of a frame. Both frames are
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
 *
 * Counters (vrd_frame_counters_t) say what the receiver threw away without
 * changing it: frames whose CRC failed, and bytes that never reached a CRC
 * check (skipped while hunting, or lost with a zero-length frame).
 */

enum vrd_frame_state_t { VRD_FRAME_START = 0, VRD_FRAME_HEADER = 1, VRD_FRAME_PAYLOAD = 2 };

typedef struct {
    uint8_t start; /* start byte */
    uint8_t hdr_len; /* header bytes, length byte included */
    uint16_t max_len; /* buffer size: header + 255 */
} vrd_frame_fmt_t;

typedef struct {
    uint64_t bad_crc; /* complete frames whose CRC did not match */
    uint64_t dropped; /* bytes outside any checked frame */
} vrd_frame_counters_t;

/* CRC check of a complete frame of d_len bytes: crc_ccitt over bytes 3 .. end
 * against the little-endian uint16 at bytes 1-2. */
bool vrd_frame_crc_ok(const uint8_t *d, uint16_t d_len);

/* vrd_frame_crc_ok that also counts a failure in counters->bad_crc. */
bool vrd_frame_check(const uint8_t *d, uint16_t d_len, vrd_frame_counters_t *counters);

/* CRC of a frame held in two pieces, chained without copying: the header
 * bytes from index 3 (head, head_len) and then the payload. Either piece may
 * be empty (a null pointer with length 0). */
uint16_t vrd_frame_crc(const uint8_t *head, size_t head_len, const uint8_t *payload, size_t payload_len);

/* Seals a frame of d_len bytes (at least 3) whose bytes from index 3 are in
 * place: writes the start byte at 0 and the CRC, little-endian, at 1-2. */
void vrd_frame_seal(uint8_t *d, size_t d_len, uint8_t start);

/* Feeds one byte. d must hold fmt->max_len bytes; *dropped counts the bytes
 * thrown away outside frames. Returns true when d holds
 * a complete frame of *d_len bytes, CRC not yet checked (vrd_frame_crc_ok);
 * the receiver is then back in VRD_FRAME_START. Returns false otherwise
 * (byte stored or dropped, frame incomplete). Every store is bounded: by
 * max_len in the payload, by hdr_len in the header.
 * Inline because it runs once per received byte; the payload state, where
 * nearly every byte goes, is tested first. Callers keep the per-frame work
 * in a function of its own so that the per-byte path stays a leaf. */
static inline bool vrd_frame_rx_byte(const vrd_frame_fmt_t *fmt, uint8_t *d, uint16_t *d_len,
    uint16_t *d_target, uint8_t *state, uint64_t *dropped, uint8_t byte)
{
    /* Length and target are kept in locals: a store into d may alias them,
     * and a reload after each store would lengthen the per-byte chain. */
    uint16_t len = *d_len;
    if (*state == VRD_FRAME_PAYLOAD) {
        const uint16_t target = *d_target;
        if (len < target && len < fmt->max_len) {
            d[len++] = byte;
            *d_len = len;
            if (len != target)
                return false;
            *state = VRD_FRAME_START;
            return true;
        }
        /* Past the target: only a zero-length frame, which fills the buffer
         * and then drops the byte that does not fit. */
        if (len < fmt->max_len) {
            d[len] = byte;
            *d_len = (uint16_t)(len + 1);
        } else {
            *state = VRD_FRAME_START;
            *dropped += (uint64_t)len + 1;
        }
        return false;
    }
    if (*state == VRD_FRAME_HEADER && len < fmt->hdr_len) {
        d[len++] = byte;
        *d_len = len;
        if (len == fmt->hdr_len) {
            *d_target = (uint16_t)(d[fmt->hdr_len - 1] + fmt->hdr_len);
            *state = VRD_FRAME_PAYLOAD;
        }
        return false;
    }
    /* Hunting; also where a corrupted context starts over. */
    *state = VRD_FRAME_START;
    if (byte == fmt->start) {
        d[0] = byte;
        *d_len = 1;
        *state = VRD_FRAME_HEADER;
    } else {
        (*dropped)++;
    }
    return false;
}

#endif
