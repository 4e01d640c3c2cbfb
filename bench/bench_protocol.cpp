// Radio protocol core: the CRC against Qt's own CRC-16 of the same parameter
// set, and both SPP receive parsers against the bare CRC over the same bytes
// (a parser that checks every frame cannot beat the CRC it computes).
#include <benchmark/benchmark.h>

#include <QByteArray>
#include <QObject>
#include <QString>

#include "crc_ccitt.h"
#include "spp_host_qt.h"
#include "varda_extension.h"
#include "varda_spp_host.h"

namespace
{

QByteArray bytePattern(int size)
{
    QByteArray bytes(size, '\0');
    for (int i = 0; i < size; i++)
        bytes[i] = char((i * 131 + 7) & 0xFF);
    return bytes;
}

QByteArray sppFrame(uint8_t type, const QByteArray &payload)
{
    vrd_spphdr_t hdr;
    varda_spp_fill_header(
        &hdr, type, reinterpret_cast<const uint8_t *>(payload.constData()), uint8_t(payload.size()));
    return QByteArray(reinterpret_cast<const char *>(&hdr), sizeof hdr) + payload;
}

const uint8_t *data(const QByteArray &bytes)
{
    return reinterpret_cast<const uint8_t *>(bytes.constData());
}

// An extension packet as stations send it: source, hop count, status and a
// text of textLen bytes.
QByteArray extensionPacket(int textLen)
{
    uint8_t call[VRD_CALLSIGN_ENC_LEN];
    vrd_ext_encode_callsign(call, "LA1ABC-5");
    const varda_stat_t stat = { 0x0143, 1234, 0x2105, 90061, 123, 21, 140, 90, 1000, 2, 1, 500 };
    const struct {
        uint8_t type;
        QByteArray data;
    } subPackets[] = {
        { VRD_EXT_SRC, QByteArray(reinterpret_cast<const char *>(call), sizeof call) + char(42) },
        { VRD_EXT_SIMPLEHOP, QByteArray(1, char(0xAC)) },
        { VRD_EXT_STAT, QByteArray(reinterpret_cast<const char *>(&stat), sizeof stat) },
        { VRD_EXT_TEXT, bytePattern(textLen) },
    };
    uint8_t pkt[VRD_PKT_BUFFER];
    uint16_t len = 0;
    for (const auto &sub : subPackets)
        vrd_ext_append_buffer(pkt, &len, sizeof pkt, sub.type, data(sub.data), uint16_t(sub.data.size()));
    return QByteArray(reinterpret_cast<const char *>(pkt), len);
}

// What a busy modem link carries: received radio packets of every size,
// the modem's own transmissions and short command replies.
struct Stream {
    QByteArray bytes;
    int frames = 0;
};

const Stream &modemStream()
{
    static const Stream stream = [] {
        Stream s;
        const spp_rxhdr_t rxhdr = { 1234567, 60, 140, 0, 1 };
        const QByteArray rx(reinterpret_cast<const char *>(&rxhdr), sizeof rxhdr);
        for (int i = 0; i < 600; i++) {
            const QByteArray ext = extensionPacket(i % 180);
            s.bytes += sppFrame(SPP_TYPE_RX, rx + ext);
            s.bytes += sppFrame(SPP_TYPE_LOCAL, QByteArray(1, '\0') + ext);
            s.bytes += sppFrame(SPP_TYPE_CMD, "OK freq=433500000 power=20");
            s.frames += 3;
        }
        return s;
    }();
    return stream;
}

void setRates(benchmark::State &state, int64_t bytesPerPass, int framesPerPass)
{
    state.SetBytesProcessed(int64_t(state.iterations()) * bytesPerPass);
    if (framesPerPass)
        state.counters["frames"]
            = benchmark::Counter(double(state.iterations()) * framesPerPass, benchmark::Counter::kIsRate);
}

void BM_CrcCcitt(benchmark::State &state)
{
    const QByteArray buffer = bytePattern(int(state.range(0)));
    const uint16_t len = uint16_t(buffer.size());
    if (crc_ccitt(data(buffer), len) != qChecksum(buffer.constData(), len, Qt::ChecksumIso3309))
        state.SkipWithError("crc_ccitt and qChecksum disagree");
    for (auto _ : state)
        benchmark::DoNotOptimize(crc_ccitt(data(buffer), len));
    setRates(state, len, 0);
}

void BM_QtChecksum(benchmark::State &state)
{
    const QByteArray buffer = bytePattern(int(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(qChecksum(buffer.constData(), uint(buffer.size()), Qt::ChecksumIso3309));
    setRates(state, buffer.size(), 0);
}

// Baseline for the parsers: the CRC over the whole stream, nothing else.
void BM_StreamCrcBaseline(benchmark::State &state)
{
    const Stream &stream = modemStream();
    for (auto _ : state) {
        for (int pos = 0; pos < stream.bytes.size(); pos += 0xFFFF) {
            const uint16_t len = uint16_t(qMin(0xFFFF, stream.bytes.size() - pos));
            benchmark::DoNotOptimize(crc_ccitt(data(stream.bytes) + pos, len));
        }
    }
    setRates(state, stream.bytes.size(), 0);
}

void BM_SppHostParse(benchmark::State &state)
{
    const Stream &stream = modemStream();
    SppHost host;
    host.setSource("tcp");
    int64_t delivered = 0;
    QObject::connect(&host, &SppHost::newPacket, &host,
        [&delivered](uint8_t, uint8_t *, uint16_t, const QString &) { delivered++; });
    for (auto _ : state)
        for (char c : stream.bytes)
            host.parse(uint8_t(c));
    if (delivered != int64_t(state.iterations()) * stream.frames)
        state.SkipWithError("frames lost");
    setRates(state, stream.bytes.size(), stream.frames);
}

int64_t g_plainDelivered = 0;

void countPlainFrame(uint8_t, uint8_t *, uint16_t)
{
    g_plainDelivered++;
}

void BM_SppPlainParse(benchmark::State &state)
{
    const Stream &stream = modemStream();
    spp_ctx_t ctx;
    varda_spp_init(&ctx, countPlainFrame);
    g_plainDelivered = 0;
    for (auto _ : state)
        for (char c : stream.bytes)
            varda_spp_parse(&ctx, uint8_t(c));
    if (g_plainDelivered != int64_t(state.iterations()) * stream.frames)
        state.SkipWithError("frames lost");
    setRates(state, stream.bytes.size(), stream.frames);
}

} // namespace

BENCHMARK(BM_CrcCcitt)->Arg(16)->Arg(260)->Arg(4096)->Arg(65535);
BENCHMARK(BM_QtChecksum)->Arg(16)->Arg(260)->Arg(4096)->Arg(65535);
BENCHMARK(BM_StreamCrcBaseline);
BENCHMARK(BM_SppHostParse);
BENCHMARK(BM_SppPlainParse);
