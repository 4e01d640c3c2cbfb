// Session captures: varda-decode's file path (read, decode, print JSON
// Lines) against the bare SppHost parser over the same modem bytes, and the
// main window's ingest with recording on against off.
#include <benchmark/benchmark.h>

#include <QCommandLineParser>
#include <QList>
#include <QTemporaryDir>

#include <stdio.h>

#include <memory>

#include "captureprinter.h"
#include "capturewriter.h"
#include "connectedwindow.h"
#include "loadtraffic.h"
#include "quietdebug.h"
#include "recordingoptions.h"
#include "recordingsession.h"
#include "spp_host_qt.h"
#include "steadystate.h"
#include "streamsegmenter.h"

namespace
{
const int FRAMES = 10000;
const int BATCH = 1000;
const int STATIONS = 100;

// The inbound stream of a busy network, and the same stream recorded.
struct Recorded {
    QByteArray stream;
    QTemporaryDir dir;
    QString path;

    Recorded()
        : stream(LoadTraffic(STATIONS).next(FRAMES))
        , path(dir.filePath("bench.pcapng"))
    {
        CaptureWriter writer;
        writer.open(path.toStdString(), "bench");
        writer.addInterface(PCAPNG_LINK_MODEM, "tcp:127.0.0.1:10004");
        uint64_t time = 1700000000000000ull;
        StreamSegmenter segmenter([&writer, &time](const uint8_t *d, size_t n) {
            writer.writePacket(0, time += 1000, PCAPNG_DIR_IN, d, n);
        });
        segmenter.feed(reinterpret_cast<const uint8_t *>(stream.constData()), size_t(stream.size()));
        segmenter.finish();
    }
};

Recorded &recorded()
{
    static Recorded r;
    return r;
}

void BM_DecodeCaptureFile(benchmark::State &state)
{
    Recorded &r = recorded();
    FILE *sink = fopen("/dev/null", "w");
    for (auto _ : state) {
        CapturePrinter printer(BlockFormatter::Jsonl, sink);
        if (!printer.printFile(r.path.toStdString(), "bench", stderr))
            state.SkipWithError("capture not read");
    }
    fclose(sink);
    state.SetItemsProcessed(state.iterations() * FRAMES);
    state.SetBytesProcessed(state.iterations() * r.stream.size());
}
BENCHMARK(BM_DecodeCaptureFile)->Unit(benchmark::kMillisecond);

void BM_SppHostParseSameBytes(benchmark::State &state)
{
    Recorded &r = recorded();
    SppHost host;
    int packets = 0;
    QObject::connect(&host, &SppHost::newPacket, &host, [&packets] { packets++; });
    for (auto _ : state) {
        for (const char byte : r.stream)
            host.parse(uint8_t(byte));
    }
    if (packets != state.iterations() * FRAMES)
        state.SkipWithError("frames lost");
    state.SetItemsProcessed(state.iterations() * FRAMES);
    state.SetBytesProcessed(state.iterations() * r.stream.size());
}
BENCHMARK(BM_SppHostParseSameBytes)->Unit(benchmark::kMillisecond);

RecordingOptions recordInto(const QString &folder)
{
    QCommandLineParser parser;
    RecordingOptions options;
    options.addTo(&parser);
    parser.process(QStringList { "bench", "--record-dir", folder });
    QString error;
    options.read(parser, &error);
    return options;
}

// Argument: 1 recording, 0 not. The window shows the packet log.
void BM_WindowRecording(benchmark::State &state)
{
    const QuietDebug quiet;
    ConnectedWindow window(1);
    QTemporaryDir dir;
    std::unique_ptr<RecordingSession> session;
    if (state.range(0))
        session = std::make_unique<RecordingSession>(recordInto(dir.path()), window.window());
    LoadTraffic traffic(STATIONS);
    QList<QByteArray> batches;
    for (int frames = 0; frames < traffic.framesToHearAll() || batches.isEmpty(); frames += BATCH)
        batches.append(traffic.next(BATCH));
    runSteadyState(state, &window, batches, BATCH);
}
BENCHMARK(BM_WindowRecording)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();
} // namespace
