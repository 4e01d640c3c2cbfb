#include "varda_spp_payload.h"

#include <string.h>

/* A payload without header: no levels, no flags, all bytes the packet's. */
static void set_headerless(varda_spp_payload_t *out, uint8_t type, const uint8_t *d, uint16_t d_len)
{
    static const uint8_t none = 0;
    out->type = type;
    out->header_len = 0;
    out->toh_us = VRD_TOH_UNKNOWN;
    out->rssi_dbm = VRD_RSSI_UNKNOWN;
    out->noise_dbm = VRD_RSSI_UNKNOWN;
    out->errors = 0;
    out->varda_flags = 0;
    out->extension = false;
    out->payload = d ? d : &none;
    out->payload_len = d ? d_len : 0;
}

/* Copies the header of hdr_len bytes in front of d into hdr, zero-filled
 * where the payload is shorter, and moves the payload past it. */
static bool take_header(void *hdr, uint8_t hdr_len, varda_spp_payload_t *out)
{
    const uint16_t n = out->payload_len < hdr_len ? out->payload_len : hdr_len;
    memset(hdr, 0, hdr_len);
    memcpy(hdr, out->payload, n);
    out->header_len = hdr_len;
    out->payload += n;
    out->payload_len = (uint16_t)(out->payload_len - n);
    return n == hdr_len;
}

static void set_flags(varda_spp_payload_t *out, uint8_t varda_flags)
{
    out->varda_flags = varda_flags;
    out->extension = (varda_flags & VARDA_FLAG_EXTENSION) != 0;
}

varda_spp_payload_result_t varda_spp_split_payload(
    uint8_t type, const uint8_t *d, uint16_t d_len, varda_spp_payload_t *out)
{
    set_headerless(out, type, d, d_len);
    if (!d && d_len)
        return VARDA_SPP_PAYLOAD_NO_DATA;

    bool whole = true;
    switch (type) {
    case SPP_TYPE_RX: {
        spp_rxhdr_t hdr;
        whole = take_header(&hdr, sizeof hdr, out);
        out->toh_us = hdr.timestamp_toh_us;
        out->rssi_dbm = (int16_t)vrd_dbm(hdr.rssi);
        out->noise_dbm = (int16_t)vrd_dbm(hdr.noise);
        out->errors = hdr.errors;
        set_flags(out, hdr.varda_flags);
        break;
    }
    case SPP_TYPE_TX:
    case SPP_TYPE_LOCAL: {
        spp_txhdr_t hdr;
        whole = take_header(&hdr, sizeof hdr, out);
        set_flags(out, hdr.varda_flags);
        break;
    }
    case SPP_TYPE_CMD:
        break;
    default:
        return VARDA_SPP_PAYLOAD_UNKNOWN_TYPE;
    }
    return whole ? VARDA_SPP_PAYLOAD_OK : VARDA_SPP_PAYLOAD_SHORT;
}
