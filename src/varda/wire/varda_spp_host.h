#ifndef VARDA_SPP_HOST_H
#define VARDA_SPP_HOST_H

#include <stdint.h>

#include "varda_frame_rx.h"

/*
 * SPP frame between the program and the radio modem, all fields
 * little-endian:
 *
 *   offset  width    field     meaning
 *   0       1        start     0x24 '$'
 *   1       2        crc       crc_ccitt over bytes 3 .. end (type, len, payload)
 *   3       1        pl_type   payload type, below
 *   4       1        pl_len    payload bytes, 0..255
 *   5       pl_len   payload
 *
 * Payload types: 0 modem->program, a received radio packet (spp_rxhdr_t then
 * the packet); 1 program->modem, a transmit request (spp_txhdr_t then the
 * packet); 2 modem->program, a local packet of the modem (one leading byte,
 * then extension sub-packets); 3 both ways, a command line / its reply text.
 */

#define SPP_START 0x24
#define SPP_HEADER_LEN 5
#define SPP_MAX_FRAME (SPP_HEADER_LEN + 255)

#define SPP_TYPE_RX 0
#define SPP_TYPE_TX 1
#define SPP_TYPE_LOCAL 2
#define SPP_TYPE_CMD 3

typedef struct __attribute__((packed)) {
    uint8_t start;
    uint16_t crc;
    uint8_t pl_type;
    uint8_t pl_len;
} vrd_spphdr_t;
static_assert(sizeof(vrd_spphdr_t) == 5, "vrd_spphdr_t is packed");

/* Header in front of a received radio packet (type 0), little-endian:
 *
 *   offset  width  field              meaning
 *   0       4      timestamp_toh_us   receive time, microseconds into the hour
 *   4       1      noise              noise level as the modem reports it
 *   5       1      rssi               signal level; dBm = value - 200
 *   6       1      errors             corrected symbol errors
 *   7       1      varda_flags        bit 0: extension sub-packets follow
 */
typedef struct __attribute__((packed)) {
    uint32_t timestamp_toh_us;
    uint8_t noise;
    uint8_t rssi;
    uint8_t errors;
    uint8_t varda_flags;
} spp_rxhdr_t;
static_assert(sizeof(spp_rxhdr_t) == 8, "spp_rxhdr_t is packed");

/* Header in front of a packet to transmit (type 1). */
typedef struct __attribute__((packed)) {
    uint8_t varda_flags;
} spp_txhdr_t;
static_assert(sizeof(spp_txhdr_t) == 1, "spp_txhdr_t is packed");

typedef void (*spp_data_cb_t)(uint8_t type, uint8_t *payload, uint16_t len);

typedef struct {
    uint8_t d[SPP_MAX_FRAME];
    uint16_t d_len;
    uint16_t d_target;
    vrd_frame_counters_t counters; /* since init */
    uint8_t state; /* vrd_frame_state_t */
    spp_data_cb_t data_cb;
} spp_ctx_t;

/* Receiver description of the SPP framing (see varda_frame_rx.h). */
static const vrd_frame_fmt_t VARDA_SPP_FORMAT = { SPP_START, SPP_HEADER_LEN, SPP_MAX_FRAME };

void varda_spp_init(spp_ctx_t *ctx, spp_data_cb_t data_cb);

/* Feeds one byte; calls data_cb (when set) with the type, the payload
 * inside ctx->d and its length for every frame whose CRC matches. Bad
 * frames are dropped, counted in ctx->counters. */
void varda_spp_parse(spp_ctx_t *ctx, uint8_t byte);

/* Fills a header for d_len payload bytes at d; the caller sends the header,
 * then the payload. */
void varda_spp_fill_header(vrd_spphdr_t *hdr, uint8_t type, const uint8_t *d, uint8_t d_len);

#endif
