#ifndef GATEWAYFRAMER_H
#define GATEWAYFRAMER_H

#include <QByteArray>
#include <QString>

#include <stdint.h>

#include "iridiumtcp.h" // the message layout, shared with the gateway client

// The gateway's side of its TCP link: splits the byte stream of one
// connection into messages (iridium_msg_hdr_t, then the content), and
// builds and reads their contents.
class GatewayFramer
{
public:
    static const int IMEI_LEN = IridiumTcp::ImeiLength;
    static const int CALLSIGN_LEN = IridiumTcp::CallsignField;
    // Far above any SBD message; a longer tot_length means a broken stream.
    static const uint32_t MAX_MESSAGE = 64 * 1024;

    enum Result { NeedMore, Message, Malformed };

    void append(const QByteArray &bytes);
    // Takes the next whole message off the stream. Malformed when
    // tot_length is below 4 or above MAX_MESSAGE: the stream cannot be
    // followed any further, and the buffer is dropped.
    Result next(uint32_t *type, QByteArray *content);

    static QByteArray frame(uint32_t type, const QByteArray &content);

    // SBDTXRequest content; false when shorter than IMEI and flag.
    static bool readSbdRequest(const QByteArray &content, QString *imei, bool *flush, QByteArray *message);
    // RawPayload content from a client; false when shorter than the
    // callsign field.
    static bool readRelayPayload(const QByteArray &content, QString *callsign, QByteArray *payload);
    // RawPayload content to a client.
    static QByteArray vehiclePayload(const QString &imei, const QByteArray &data);

private:
    QByteArray m_buffer;
};

#endif
