#ifndef VARDA_PACKETS_H
#define VARDA_PACKETS_H

#include <stdint.h>

/* Payload room of the records; one radio packet carries at most
 * VRD_MAX_PAYLOAD bytes (the extension builders and the SPP transmit
 * frame refuse more). */
#define VRD_PKT_BUFFER 512
#define VRD_MAX_PAYLOAD 220

/* varda_flags bit 0: the packet's bytes are a chain of extension
 * sub-packets (varda_extension.h). The program always transmits with it. */
#define VARDA_FLAG_EXTENSION 0x01

/* Signal and noise levels (rssi and noise here and in the SPP receive
 * header, signal and noise in a station's status) are one byte each:
 * dBm = value - VRD_DBM_OFFSET. VRD_RSSI_UNKNOWN is the value of a level
 * the modem did not report, and the rssi the packet log and station list
 * take for "no signal level" (it lies above any dBm a byte can give). */
#define VRD_DBM_OFFSET 200
#define VRD_RSSI_UNKNOWN 255
#define VRD_TOH_UNKNOWN 0xFFFFFFFFu

static inline int vrd_dbm(uint8_t value)
{
    return (int)value - VRD_DBM_OFFSET;
}

/* The byte of a level in dBm, clamped to 0..255. */
static inline uint8_t vrd_dbm_to_value(int dbm)
{
    const int value = dbm + VRD_DBM_OFFSET;
    return (uint8_t)(value < 0 ? 0 : value > 255 ? 255 : value);
}

/* Received radio packet. Unknown values: rssi and noise VRD_RSSI_UNKNOWN,
 * timestamp_toh_us VRD_TOH_UNKNOWN. */
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
