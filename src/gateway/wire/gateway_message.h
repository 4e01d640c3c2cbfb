#ifndef GATEWAY_MESSAGE_H
#define GATEWAY_MESSAGE_H

#include <stdint.h>

/*
 * Message on the Iridium gateway link (TCP port 10020), the same framing in
 * both directions, all integers little-endian:
 *
 *   offset  width  field       meaning
 *   0       4      tot_length  bytes after this field: 4 + content length
 *   4       4      type        gateway_msg_type_t
 *   8       rest   content     by type:
 *
 *   SBD TX request, program -> gateway: an SBD message for a vehicle's modem
 *     IMEI as UTF-8 text (normally 15 digits, no terminator, no length),
 *     1 byte flush flag (1 = flush the gateway's queue first), the message
 *   Raw payload, program -> gateway: a vehicle payload for relayhub
 *     11 bytes callsign, UTF-8 padded with zero bytes, the payload
 *   Raw payload, gateway -> program: data a vehicle sent over Iridium
 *     15 bytes IMEI of the sending modem as text, the data
 *
 * The two directions of a raw payload differ on purpose. A callsign is
 * limited to 10 characters, not bytes: a longer UTF-8 form is sent unpadded.
 */
struct __attribute__((packed)) iridium_msg_hdr_t {
    uint32_t tot_length;
    uint32_t type;
};
static_assert(sizeof(iridium_msg_hdr_t) == 8, "iridium_msg_hdr_t is packed");

enum gateway_msg_type_t : uint32_t { GATEWAY_SBD_TX_REQUEST = 420000, GATEWAY_RAW_PAYLOAD = 420001 };

static const uint16_t GATEWAY_PORT = 10020;
static const int GATEWAY_LENGTH_FIELD = 4; /* tot_length */
static const int GATEWAY_TYPE_FIELD = 4; /* type, counted in tot_length */
static const int GATEWAY_IMEI_LEN = 15;
static const int GATEWAY_CALLSIGN_FIELD = 11;
static const int GATEWAY_MAX_CALLSIGN = 10;

#endif
