#include <benchmark/benchmark.h>

#include <QList>

#include <string.h>

#include "connectedwindow.h"
#include "loadtraffic.h"
#include "quietdebug.h"
#include "spp_host_qt.h"
#include "steadystate.h"
#include "varda_extension.h"
#include "varda_extension_qt.h"
#include "varda_spp_host.h"

// How many packets per second the main window takes from a modem on TCP
// loopback, against the bare SppHost parser over the same bytes: typical
// src + stat packets from a few stations, and the mixed traffic of a
// network of 100 or 5,000 stations.

namespace
{

const int BATCH = 1000;
const int STATIONS = 10;

// A received radio packet as a modem on the air delivers it: receive header,
// then src and stat sub-packets.
QByteArray typicalFrame(int station, uint8_t seq)
{
    VardaExtension ext;
    ext.addSource(QStringLiteral("STN%1-%2").arg(station).arg(station % 4), seq);
    varda_stat_t status;
    memset(&status, 0, sizeof status);
    status.serial = uint16_t(1000 + station);
    status.uptime_s = 3600u * uint32_t(station);
    status.voltage = 124;
    status.signal = 120;
    status.noise = 90;
    const spp_rxhdr_t rx = { 123456, 90, uint8_t(100 + station), 0, 1 };

    QByteArray payload(reinterpret_cast<const char *>(&rx), sizeof rx);
    payload += ext.getPacket();
    payload += char(VRD_EXT_STAT);
    payload += char(sizeof status);
    payload += QByteArray(reinterpret_cast<const char *>(&status), sizeof status);

    vrd_spphdr_t header;
    varda_spp_fill_header(&header, SPP_TYPE_RX, reinterpret_cast<const uint8_t *>(payload.constData()),
        uint8_t(payload.size()));
    return QByteArray(reinterpret_cast<const char *>(&header), sizeof header) + payload;
}

QList<QByteArray> typicalBatches()
{
    QByteArray batch;
    for (int i = 0; i < BATCH; i++)
        batch += typicalFrame(i % STATIONS, uint8_t(i));
    return { batch };
}

// Batches of mixed traffic that together hear every station at least once;
// the runs cycle through them.
QList<QByteArray> loadBatches(int stations)
{
    LoadTraffic traffic(stations);
    QList<QByteArray> batches;
    for (int frames = 0; frames < traffic.framesToHearAll() || batches.isEmpty(); frames += BATCH)
        batches.append(traffic.next(BATCH));
    return batches;
}

qint64 totalSize(const QList<QByteArray> &batches)
{
    qint64 size = 0;
    for (const QByteArray &batch : batches)
        size += batch.size();
    return size;
}

// Argument 0 is the tab on view.
void runWindow(benchmark::State &state, const QList<QByteArray> &batches)
{
    const QuietDebug quiet;
    ConnectedWindow window(int(state.range(0)));
    runSteadyState(state, &window, batches, BATCH);
    state.SetBytesProcessed(state.iterations() * totalSize(batches) / batches.size());
}

void runBareParser(benchmark::State &state, const QList<QByteArray> &batches)
{
    SppHost host;
    int packets = 0;
    QObject::connect(&host, &SppHost::newPacket, &host, [&packets] { packets++; });
    host.setSource(QStringLiteral("tcp"));
    int next = 0;
    for (auto _ : state) {
        for (const char byte : batches.at(next))
            host.parse(uint8_t(byte));
        next = (next + 1) % batches.size();
    }
    if (packets != state.iterations() * BATCH)
        state.SkipWithError("frames lost");
    state.SetItemsProcessed(state.iterations() * BATCH);
    state.SetBytesProcessed(state.iterations() * totalSize(batches) / batches.size());
}

} // namespace

// Typical src + stat packets from ten stations.
static void BM_MainWindowTcp(benchmark::State &state)
{
    runWindow(state, typicalBatches());
}
// Argument: the tab on view (1 "Packets", 2 "Stations", 0 "Settings").
BENCHMARK(BM_MainWindowTcp)->Arg(1)->Arg(2)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime();

static void BM_SppHostBare(benchmark::State &state)
{
    runBareParser(state, typicalBatches());
}
BENCHMARK(BM_SppHostBare)->Unit(benchmark::kMillisecond)->UseRealTime();

// Mixed traffic from many stations (loadtraffic.h).
static void BM_MainWindowLoad(benchmark::State &state)
{
    runWindow(state, loadBatches(int(state.range(1))));
}
BENCHMARK(BM_MainWindowLoad)
    ->ArgNames({ "tab", "stations" })
    ->ArgsProduct({ { 1, 2, 0 }, { 100, 5000 } })
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

static void BM_SppHostBareLoad(benchmark::State &state)
{
    runBareParser(state, loadBatches(int(state.range(0))));
}
BENCHMARK(BM_SppHostBareLoad)
    ->ArgName("stations")
    ->Arg(100)
    ->Arg(5000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
