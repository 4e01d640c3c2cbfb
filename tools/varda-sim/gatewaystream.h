#ifndef GATEWAYSTREAM_H
#define GATEWAYSTREAM_H

#include <QByteArray>
#include <QString>

#include <stdint.h>

#include "gatewayframer.h"

// The gateway's side of its TCP link: splits the byte stream of one
// connection into messages with a bounded framer (layout in
// gateway_message.h), and builds and reads their contents.
class GatewayStream
{
public:
    static const int IMEI_LEN = GATEWAY_IMEI_LEN;
    static const int CALLSIGN_LEN = GATEWAY_CALLSIGN_FIELD;
    // Far above any SBD message; a longer tot_length means a broken stream.
    static const uint32_t MAX_MESSAGE = 64 * 1024;

    enum Result { NeedMore, Message, Malformed };

    void append(const QByteArray &bytes);
    // Takes the next whole message off the stream. Malformed when
    // tot_length is below 4 or above MAX_MESSAGE: the stream cannot be
    // followed any further, and the buffer is dropped.
    Result next(uint32_t *type, QByteArray *content);

    static QByteArray frame(uint32_t type, const QByteArray &content);

    // SBD TX request content; false when shorter than IMEI and flag.
    static bool readSbdRequest(const QByteArray &content, QString *imei, bool *flush, QByteArray *message);
    // Raw payload content from a client; false when shorter than the
    // callsign field.
    static bool readRelayPayload(const QByteArray &content, QString *callsign, QByteArray *payload);
    // Raw payload content to a client.
    static QByteArray vehiclePayload(const QString &imei, const QByteArray &data);

private:
    GatewayFramer m_framer { MAX_MESSAGE };
};

#endif
