#ifndef GATEWAYFRAMER_H
#define GATEWAYFRAMER_H

#include <QByteArray>
#include <QString>

#include <stdint.h>

/*
 * Message of the Iridium gateway, the same in both directions, all
 * integers little-endian:
 *
 *   offset  width  field       meaning
 *   0       4      tot_length  bytes after this field: 4 + content length
 *   4       4      type        SBD_TX_REQUEST or RAW_PAYLOAD
 *   8       rest   content     by type and direction:
 *
 *   SBD_TX_REQUEST, client to gateway: IMEI text (15 digits, no length or
 *     terminator), flush flag (1 byte: drop what is queued for the IMEI),
 *     the message for the vehicle.
 *   RAW_PAYLOAD, client to gateway: callsign, zero-padded to 11 bytes, then
 *     a payload for the relayhub portal.
 *   RAW_PAYLOAD, gateway to client: the sending modem's IMEI (15 bytes),
 *     then what the vehicle sent.
 */
typedef struct __attribute__((packed)) {
    uint32_t tot_length;
    uint32_t type;
} gateway_hdr_t;
static_assert(sizeof(gateway_hdr_t) == 8, "gateway_hdr_t is packed");

// Splits the byte stream of one gateway connection into messages, and
// builds and reads their contents.
class GatewayFramer
{
public:
    static const uint32_t SBD_TX_REQUEST = 420000;
    static const uint32_t RAW_PAYLOAD = 420001;
    static const int IMEI_LEN = 15;
    static const int CALLSIGN_LEN = 11;
    // Far above any SBD message; a longer tot_length means a broken stream.
    static const uint32_t MAX_MESSAGE = 64 * 1024;

    enum Result { NeedMore, Message, Malformed };

    void append(const QByteArray &bytes);
    // Takes the next whole message off the stream. Malformed when
    // tot_length is below 4 or above MAX_MESSAGE: the stream cannot be
    // followed any further, and the buffer is dropped.
    Result next(uint32_t *type, QByteArray *content);

    static QByteArray frame(uint32_t type, const QByteArray &content);

    // SBD_TX_REQUEST content; false when shorter than IMEI and flag.
    static bool readSbdRequest(const QByteArray &content, QString *imei, bool *flush, QByteArray *message);
    // RAW_PAYLOAD content from a client; false when shorter than the
    // callsign field.
    static bool readRelayPayload(const QByteArray &content, QString *callsign, QByteArray *payload);
    // RAW_PAYLOAD content to a client.
    static QByteArray vehiclePayload(const QString &imei, const QByteArray &data);

private:
    QByteArray m_buffer;
};

#endif
