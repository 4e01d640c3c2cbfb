#ifndef VARDA_SPP_PAYLOAD_H
#define VARDA_SPP_PAYLOAD_H

#include <stdint.h>

#include "varda_packets.h"
#include "varda_spp_host.h"

/*
 * The one place where a delivered SPP payload is taken apart: the header
 * that its type puts in front (spp_rxhdr_t for type 0, spp_txhdr_t for
 * types 1 and 2, none for type 3) and the radio packet's bytes after it.
 * The window, the vehicle panel and every other receiver route the result;
 * none of them reads a header byte itself.
 */

typedef struct {
    uint8_t type; /* SPP payload type, as delivered */
    uint8_t header_len; /* header bytes in front of the packet: 8, 1 or 0 */
    /* Receive header (type 0). Other types: toh VRD_TOH_UNKNOWN, errors 0,
     * rssi_dbm and noise_dbm VRD_RSSI_UNKNOWN. */
    uint32_t toh_us; /* receive time, microseconds into the hour */
    int16_t rssi_dbm; /* header rssi - VRD_DBM_OFFSET, whatever its value */
    int16_t noise_dbm; /* header noise - VRD_DBM_OFFSET */
    uint8_t errors; /* corrected symbol errors */
    /* Receive or transmit header (types 0, 1, 2); 0 for the others. */
    uint8_t varda_flags;
    bool extension; /* varda_flags & VARDA_FLAG_EXTENSION */
    /* The packet's bytes (type 3: the command text; an unknown type: the
     * whole payload). Points into the caller's buffer; never null. */
    const uint8_t *payload;
    uint16_t payload_len;
} varda_spp_payload_t;

typedef enum {
    VARDA_SPP_PAYLOAD_OK = 0,
    /* Shorter than its type's header (type 0 under 8 bytes, types 1 and 2
     * empty). The header fields hold the bytes that are there and read the
     * missing ones as zero (so rssi_dbm is -200 when the rssi byte is
     * missing); the payload is empty. Nothing is read past d_len. */
    VARDA_SPP_PAYLOAD_SHORT,
    /* A type above 3: no header is taken off, the payload is all of d. */
    VARDA_SPP_PAYLOAD_UNKNOWN_TYPE,
    /* d is null while d_len is not 0: nothing is read, the payload is
     * empty, the fields are those of a payload without header. */
    VARDA_SPP_PAYLOAD_NO_DATA,
} varda_spp_payload_result_t;

/* Splits d_len bytes at d, delivered with SPP type `type`, into *out. *out
 * is filled in every case, as each result above describes. */
varda_spp_payload_result_t varda_spp_split_payload(
    uint8_t type, const uint8_t *d, uint16_t d_len, varda_spp_payload_t *out);

#endif
