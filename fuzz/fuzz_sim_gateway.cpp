// Gateway connection bytes into the simulator's gateway framer: fed whole,
// byte by byte and in input-derived chunks, the stream must give the same
// messages every time, each within the buffer, and their contents must read
// back without reading past them.
#include <stdint.h>
#include <stdlib.h>

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

#include "gatewaystream.h"

namespace
{

using Messages = QList<QPair<uint32_t, QByteArray>>;

void check(bool ok)
{
    if (!ok)
        abort();
}

// chunk 0: whole; 1: byte by byte; otherwise 1 + data[k] % chunk bytes.
Messages split(const QByteArray &input, int chunk, bool *malformed)
{
    GatewayStream framer;
    Messages messages;
    *malformed = false;
    int pos = 0;
    for (int k = 0; pos < input.size() && !*malformed; k++) {
        int n = chunk == 0 ? input.size() : chunk == 1 ? 1 : 1 + quint8(input.at(k % input.size())) % chunk;
        framer.append(input.mid(pos, n));
        pos += n;
        uint32_t type = 0;
        QByteArray content;
        for (;;) {
            const GatewayStream::Result r = framer.next(&type, &content);
            if (r == GatewayStream::NeedMore)
                break;
            if (r == GatewayStream::Malformed) {
                *malformed = true;
                break;
            }
            check(content.size() <= int(GatewayStream::MAX_MESSAGE));
            messages.append({ type, content });
        }
    }
    return messages;
}

void readContents(const Messages &messages)
{
    for (const auto &m : messages) {
        QString imei;
        bool flush = false;
        QByteArray payload;
        if (GatewayStream::readSbdRequest(m.second, &imei, &flush, &payload))
            check(payload.size() == m.second.size() - GatewayStream::IMEI_LEN - 1);
        QString callsign;
        if (GatewayStream::readRelayPayload(m.second, &callsign, &payload))
            check(payload.size() == m.second.size() - GatewayStream::CALLSIGN_LEN);
        const QByteArray framed = GatewayStream::frame(m.first, m.second);
        check(framed.size() == m.second.size() + 8);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray input(reinterpret_cast<const char *>(data), int(size));
    bool wholeMalformed = false;
    const Messages whole = split(input, 0, &wholeMalformed);
    for (int chunk : { 1, 7, 300 }) {
        bool malformed = false;
        const Messages pieces = split(input, chunk, &malformed);
        // A stream cut short by a bad length agrees up to that point too.
        check(pieces == whole && malformed == wholeMalformed);
    }
    readContents(whole);
    return 0;
}
