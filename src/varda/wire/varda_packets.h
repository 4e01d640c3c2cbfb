#ifndef VARDA_PACKETS_H
#define VARDA_PACKETS_H

#include <stdint.h>

/* Payload room of the records; one radio packet carries at most
 * VRD_MAX_PAYLOAD bytes (the extension builders and the SPP transmit
 * frame refuse more). */
#define VRD_PKT_BUFFER 512
#define VRD_MAX_PAYLOAD 220

/* Received radio packet. Unknown values: rssi and noise 255,
 * timestamp_toh_us 0xFFFFFFFF. */
typedef struct __attribute__((packed)) {
    uint16_t pl_len; /* valid bytes in pl */
    uint8_t rs_size_nr; /* frame size number as the modem reports it */
    uint32_t timestamp_raw; /* raw receive time stamp */
    uint32_t timestamp_toh_us; /* microseconds into the hour */
    uint8_t noise;
    uint8_t rssi; /* dBm = value - 200 */
    uint8_t errors; /* corrected symbol errors */
    uint8_t varda_flags; /* bit 0: payload is extension sub-packets */
    uint8_t pl[VRD_PKT_BUFFER];
} rx_pkt_t;
static_assert(sizeof(rx_pkt_t) == 15 + VRD_PKT_BUFFER, "rx_pkt_t is packed");

/* Packet to transmit. */
typedef struct __attribute__((packed)) {
    uint16_t pl_len;
    uint8_t priority; /* 0 = default */
    uint8_t varda_flags; /* bit 0: payload is extension sub-packets */
    uint8_t pl[VRD_PKT_BUFFER];
} tx_pkt_t;
static_assert(sizeof(tx_pkt_t) == 4 + VRD_PKT_BUFFER, "tx_pkt_t is packed");

/* Marks every field that has an unknown value as unknown; leaves
 * rs_size_nr, timestamp_raw and the payload as they are. */
void rx_pkt_init(rx_pkt_t *p);
void tx_pkt_init(tx_pkt_t *p);

#endif
