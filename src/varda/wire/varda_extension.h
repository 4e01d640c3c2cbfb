#ifndef VARDA_EXTENSION_H
#define VARDA_EXTENSION_H

#include <stdint.h>

#include "varda_packets.h"

/*
 * Extension packet: the payload of a radio packet whose varda_flags bit 0 is
 * set is a chain of sub-packets, back to back to the end of the packet (no
 * count, no terminator):
 *
 *   offset  width  field  meaning
 *   0       1      type   type code 0..15 (vrd_ext_type_t)
 *   1       1      size   data bytes that follow, 0..255
 *   2       size   data   layout by type; multi-byte numbers little-endian
 *
 * A local packet of the modem (SPP type 2) carries the same chain after one
 * leading byte.
 */

enum vrd_ext_type_t {
    VRD_EXT_DATA = 0,
    VRD_EXT_SRC = 1,
    VRD_EXT_STAT = 2,
    VRD_EXT_SIMPLEHOP = 3,
    VRD_EXT_POS = 4,
    VRD_EXT_TOH = 5,
    VRD_EXT_DEST = 6,
    VRD_EXT_CMD_REQ = 7,
    VRD_EXT_TEXT = 8,
    VRD_EXT_REQUEST = 9,
    VRD_EXT_CAR_BAT = 10,
    VRD_EXT_CAR_CHARGE = 11,
    VRD_EXT_CAR_TRIP = 12,
    VRD_EXT_RX_SRC = 13,
    VRD_EXT_IPV4_SRC = 14,
    VRD_EXT_IPV6_SRC = 15,
};

#define VRD_EXT_TYPES 16
#define VRD_EXT_SIZE_VARIABLE 0xFFFF

/* Names and data sizes by type code; VRD_EXT_SIZE_VARIABLE for data,
 * cmd_req and text. */
extern const char *const EXT_TYPE_STRINGS[VRD_EXT_TYPES];
extern const uint16_t EXT_TYPE_SIZES[VRD_EXT_TYPES];

/*
 * Encoded callsign, 6 bytes: up to 7 characters and an SSID 0..63 as eight
 * 6-bit values c0..c6, ssid, packed big-endian in two 24-bit groups:
 *   bytes 0-2 = c0<<18 | c1<<12 | c2<<6 | c3
 *   bytes 3-5 = c4<<18 | c5<<12 | c6<<6 | ssid
 * A character's value is its code - 0x20; 0 ends a callsign shorter than 7.
 */
#define VRD_CALLSIGN_ENC_LEN 6
#define VRD_CALLSIGN_TEXT_LEN 11 /* 7 characters, "-", 2 digits, NUL */

/* "src": the sender. */
typedef struct __attribute__((packed)) {
    uint8_t call_ssid[VRD_CALLSIGN_ENC_LEN];
    uint8_t sequence; /* sender's packet sequence number */
} varda_src_t;
static_assert(sizeof(varda_src_t) == 7, "varda_src_t is packed");

/* "stat": station status.
 *   offset  width  field
 *   0       2      hw_ver      bits 15-6 / bits 5-0
 *   2       2      serial
 *   4       2      sw_ver      bits 15-12 . bits 11-8 . bits 7-0
 *   6       4      uptime_s
 *   10      1      voltage     0.1 V
 *   11      1      temp        int8, degrees Celsius
 *   12      1      signal      dBm = value - 200
 *   13      1      noise       dBm = value - 200
 *   14      2      cntr_rx_ok
 *   16      2      cntr_rx_fix
 *   18      2      cntr_rx_err
 *   20      2      cntr_tx
 */
typedef struct __attribute__((packed)) {
    uint16_t hw_ver;
    uint16_t serial;
    uint16_t sw_ver;
    uint32_t uptime_s;
    uint8_t voltage;
    int8_t temp;
    uint8_t signal;
    uint8_t noise;
    uint16_t cntr_rx_ok;
    uint16_t cntr_rx_fix;
    uint16_t cntr_rx_err;
    uint16_t cntr_tx;
} varda_stat_t;
static_assert(sizeof(varda_stat_t) == 22, "varda_stat_t is packed");

/* "simplehop", one byte: bits 7-5 hops remaining, bits 4-2 hops total,
 * bits 1-0 reserved. */
typedef struct __attribute__((packed)) {
    uint8_t reserved : 2;
    uint8_t hops_total : 3;
    uint8_t hops_remaining : 3;
} varda_simplehop_t;
static_assert(sizeof(varda_simplehop_t) == 1, "varda_simplehop_t is one byte");

/* "toh": time of hour. */
typedef struct __attribute__((packed)) {
    uint32_t toh_us; /* microseconds into the current hour */
    uint8_t toh_val; /* validity of the time */
} varda_toh_t;
static_assert(sizeof(varda_toh_t) == 5, "varda_toh_t is packed");

/*
 * Builders. A sub-packet fits when used + 2 + data_len <= limit, where used
 * is the packet's length so far and limit is VRD_MAX_PAYLOAD for a tx_pkt_t
 * or d_size for a caller's buffer. Only the low 8 bits of data_len reach the
 * size byte: callers keep sizes at most 255.
 */

/* Reserves a sub-packet and returns where its data_len data bytes go.
 * Fails, returning null and leaving the packet unchanged, when it does not
 * fit. */
uint8_t *vrd_ext_allocate_pkt(tx_pkt_t *p, uint8_t pkt_type, uint16_t data_len);
uint8_t *vrd_ext_allocate_buffer(
    uint8_t *d, uint16_t *d_len, uint16_t d_size, uint8_t pkt_type, uint16_t data_len);

/* Appends a whole sub-packet; does nothing when it does not fit. */
void vrd_ext_append_pkt(tx_pkt_t *p, uint8_t type, const uint8_t *data, uint16_t size);
void vrd_ext_append_buffer(
    uint8_t *d, uint16_t *d_len, uint16_t d_size, uint8_t type, const uint8_t *data, uint16_t size);

/* Number of sub-packets in a received chain. Returns 0 for an empty chain
 * and for an invalid one (a type of 16 or more, or a fixed-size type whose
 * size byte differs). A trailing sub-packet cut short, or a single trailing
 * byte, is not counted; the sub-packets before it stand. */
uint16_t vrd_ext_numpkts(const uint8_t *d, uint16_t d_len);

/* Encodes a NUL-terminated callsign "CALL" or "CALL-N" into 6 bytes. Lower
 * case is upper-cased; more than 7 characters are cut to 7; an SSID keeps
 * its low 6 bits and only its first two digits are read. Returns false when
 * "-" is not followed by a digit, or when one digit is followed by anything
 * but a digit or the end; the 6 output bytes are then left untouched. */
bool vrd_ext_encode_callsign(uint8_t *enc_callsign, const char *callsign);

/* Decodes 6 bytes into "CALL" or "CALL-N" (SSID 0 is not shown). callsign
 * must hold VRD_CALLSIGN_TEXT_LEN bytes. Cannot fail. */
void vrd_ext_decode_callsign(char *callsign, const uint8_t *enc_callsign);

#endif
