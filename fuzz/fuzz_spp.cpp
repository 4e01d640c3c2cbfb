// Feeds the same bytes to SppHost and to the plain SPP parser, whole and in
// input-derived chunks with a change of source between chunks, and aborts
// when they deliver different frames. Also frames the input with
// packTransmit and checks that exactly that frame comes back, and splits
// every delivered payload into its header and packet bytes.
#include <stdlib.h>
#include <string.h>

#include <QObject>
#include <QString>
#include <vector>

#include "fuzz_app.h"
#include "spp_host_qt.h"
#include "varda_spp_host.h"
#include "varda_spp_payload.h"

namespace
{

struct Frame {
    uint8_t type;
    std::vector<uint8_t> payload;
    QString source;
    bool sameContent(const Frame &other) const
    {
        return type == other.type && payload == other.payload;
    }
};
using Frames = std::vector<Frame>;

Frames g_plain;
const spp_ctx_t *g_ctx = nullptr;

using fuzz::check;

// The packet bytes are the tail of the payload; a complete header and
// they make up the whole of it.
void checkSplit(uint8_t type, const uint8_t *payload, uint16_t len)
{
    varda_spp_payload_t out;
    const varda_spp_payload_result_t result = varda_spp_split_payload(type, payload, len, &out);
    check(out.payload >= payload && out.payload + out.payload_len == payload + len);
    check(result != VARDA_SPP_PAYLOAD_OK || out.header_len + out.payload_len == len);
    check(out.extension == ((out.varda_flags & VARDA_FLAG_EXTENSION) != 0));
}

void onPlainFrame(uint8_t type, uint8_t *payload, uint16_t len)
{
    check(payload == g_ctx->d + SPP_HEADER_LEN && len <= 255);
    checkSplit(type, payload, len);
    g_plain.push_back(Frame { type, std::vector<uint8_t>(payload, payload + len), QString() });
}

Frames parsePlain(const uint8_t *data, size_t size)
{
    g_plain.clear();
    spp_ctx_t ctx;
    g_ctx = &ctx;
    varda_spp_init(&ctx, onPlainFrame);
    for (size_t i = 0; i < size; i++) {
        varda_spp_parse(&ctx, data[i]);
        // ASan cannot see a store that runs past d into d_len.
        check(ctx.d_len <= SPP_MAX_FRAME && ctx.state <= VRD_FRAME_PAYLOAD);
    }
    return g_plain;
}

// Chunk k is 1 + data[k % size] % 64 bytes long and is fed after
// setSource(k); a frame must carry the chunk of its last byte.
Frames parseHost(const uint8_t *data, size_t size, bool chunked)
{
    Frames frames;
    SppHost host;
    QObject::connect(&host, &SppHost::newPacket, &host,
        [&frames](uint8_t type, uint8_t *payload, uint16_t len, const QString &source) {
            frames.push_back(Frame { type, std::vector<uint8_t>(payload, payload + len), source });
        });
    size_t pos = 0;
    for (size_t k = 0; pos < size; k++) {
        const size_t chunk = chunked ? 1 + data[k % size] % 64 : size;
        const QString source = QString::number(k);
        host.setSource(source);
        for (const size_t end = qMin(size, pos + chunk); pos < end; pos++) {
            const size_t before = frames.size();
            host.parse(data[pos]);
            check(frames.size() == before || frames.back().source == source);
        }
    }
    return frames;
}

bool sameFrames(const Frames &a, const Frames &b)
{
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); i++)
        if (!a[i].sameContent(b[i]))
            return false;
    return true;
}

void checkTransmitRoundTrip(const uint8_t *data, size_t size)
{
    const QByteArray frame = SppHost::packTransmit(data, unsigned(size), 1);
    if (size > 220) {
        check(frame.isNull());
        return;
    }
    const Frames back
        = parsePlain(reinterpret_cast<const uint8_t *>(frame.constData()), size_t(frame.size()));
    check(back.size() == 1 && back[0].type == SPP_TYPE_TX && back[0].payload.size() == size + 1);
    check(back[0].payload[0] == 1 && (size == 0 || memcmp(back[0].payload.data() + 1, data, size) == 0));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    const Frames plain = parsePlain(data, size);
    check(sameFrames(plain, parseHost(data, size, false)));
    check(sameFrames(plain, parseHost(data, size, true)));
    checkTransmitRoundTrip(data, size);
    return 0;
}
