#ifndef VARDA_PP_HOST_H
#define VARDA_PP_HOST_H

#include <stdint.h>

#include "varda_frame_rx.h"

/*
 * PP frame: the point-to-point sibling of SPP, without a payload type.
 * Little-endian:
 *
 *   offset  width    field    meaning
 *   0       1        start    0x23 '#'
 *   1       2        crc      crc_ccitt over bytes 3 .. end (len, payload)
 *   3       1        pl_len   payload bytes, 0..255
 *   4       pl_len   payload
 */

#define PP_START 0x23
#define PP_HEADER_LEN 4
#define PP_MAX_FRAME (PP_HEADER_LEN + 255)

typedef struct __attribute__((packed)) {
    uint8_t start;
    uint16_t crc;
    uint8_t pl_len;
} vrd_pphdr_t;
static_assert(sizeof(vrd_pphdr_t) == 4, "vrd_pphdr_t is packed");

typedef void (*varda_pp_data_cb_t)(uint8_t *payload, uint16_t len);

typedef struct {
    uint8_t d[PP_MAX_FRAME];
    uint16_t d_len;
    uint16_t d_target;
    vrd_frame_counters_t counters; /* since init */
    uint8_t state; /* 0 hunting, 1 header, 2 payload */
    varda_pp_data_cb_t data_cb;
} varda_pp_ctx_t;

static const vrd_frame_fmt_t VARDA_PP_FORMAT = { PP_START, PP_HEADER_LEN, PP_MAX_FRAME };

void varda_pp_init(varda_pp_ctx_t *ctx, varda_pp_data_cb_t data_cb);

/* Feeds one byte; calls data_cb (when set) with the payload of every frame
 * whose CRC matches. Same receiver rules as SPP (varda_frame_rx.h). */
void varda_pp_parse(varda_pp_ctx_t *ctx, uint8_t byte);

void varda_pp_fill_header(vrd_pphdr_t *hdr, const uint8_t *d, uint8_t d_len);

#endif
