// Extension decoding and the packet log. Decoding a typical packet into the
// station's property model is compared with the bare sub-packet walk over
// the same bytes; a packet log row at the 200-row cap is compared with a
// plain standard item model doing the same insert and trim behind the same
// kind of view.
#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QEvent>
#include <QStandardItemModel>
#include <QTableView>

#include "packetmodel.h"
#include "quietdebug.h"
#include "varda_extension.h"
#include "varda_extension_qt.h"

namespace
{

// src + stat + simplehop, as a station's status beacon carries them.
QByteArray statusBeacon()
{
    uint8_t pkt[VRD_PKT_BUFFER];
    uint16_t len = 0;
    varda_src_t src = {};
    vrd_ext_encode_callsign(src.call_ssid, "DL1ABC-5");
    src.sequence = 42;
    vrd_ext_append_buffer(
        pkt, &len, sizeof pkt, VRD_EXT_SRC, reinterpret_cast<const uint8_t *>(&src), sizeof src);
    const varda_stat_t stat = { 0x00C2, 1234, 0x1203, 90061, 123, -10, 140, 95, 500, 7, 3, 65535 };
    vrd_ext_append_buffer(
        pkt, &len, sizeof pkt, VRD_EXT_STAT, reinterpret_cast<const uint8_t *>(&stat), sizeof stat);
    const uint8_t hop = 0xAC;
    vrd_ext_append_buffer(pkt, &len, sizeof pkt, VRD_EXT_SIMPLEHOP, &hop, 1);
    return QByteArray(reinterpret_cast<const char *>(pkt), len);
}

const uint8_t *bytes(const QByteArray &data)
{
    return reinterpret_cast<const uint8_t *>(data.constData());
}

void BM_ExtensionNumpktsWalk(benchmark::State &state)
{
    const QByteArray beacon = statusBeacon();
    for (auto _ : state)
        benchmark::DoNotOptimize(vrd_ext_numpkts(bytes(beacon), uint16_t(beacon.size())));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ExtensionNumpktsWalk);

void BM_ExtensionParse(benchmark::State &state)
{
    const QByteArray beacon = statusBeacon();
    for (auto _ : state) {
        VardaExtension ext;
        ext.parse(bytes(beacon), uint16_t(beacon.size()));
        benchmark::DoNotOptimize(ext);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ExtensionParse);

// A station heard again: its property rows are updated in place.
void BM_ExtensionParseAndUpdateRows(benchmark::State &state)
{
    const QByteArray beacon = statusBeacon();
    QStandardItemModel model(0, 2);
    {
        QuietDebug quiet;
        VardaExtension first;
        first.parse(bytes(beacon), uint16_t(beacon.size()));
        first.getConvertedExtensionData(&model);
    }
    for (auto _ : state) {
        VardaExtension ext;
        ext.parse(bytes(beacon), uint16_t(beacon.size()));
        ext.getConvertedExtensionData(&model);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ExtensionParseAndUpdateRows);

// A station heard for the first time: every row is new.
void BM_ExtensionParseIntoNewModel(benchmark::State &state)
{
    const QByteArray beacon = statusBeacon();
    QuietDebug quiet;
    for (auto _ : state) {
        QStandardItemModel model(0, 2);
        VardaExtension ext;
        ext.parse(bytes(beacon), uint16_t(beacon.size()));
        ext.getConvertedExtensionData(&model);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ExtensionParseIntoNewModel);

// The view is shown (offscreen) as in the main window. Removed rows hand
// their bars to deleteLater; those are deleted every row so that their cost
// is counted. With paint set the event loop runs after every row, as it
// does between packets in the program.
struct AttachedView {
    explicit AttachedView(QAbstractItemModel *model)
    {
        view.setModel(model);
        view.resize(800, 600);
        view.show();
        QCoreApplication::processEvents();
    }
    void settle(bool paint)
    {
        if (paint)
            QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    QTableView view;
};

void BM_PacketModelAddPacketAtCap(benchmark::State &state)
{
    const int rssi = state.range(0) ? -87 : VRD_RSSI_UNKNOWN;
    const bool paint = state.range(1);
    packetModel model;
    AttachedView attached(&model);
    const auto add = [&model, &attached, rssi] {
        model.addPacket(
            &attached.view, "DL1ABC-5", "rx(-87), serial", rssi, 36, "spp(rx), ext(src, stat, simplehop)");
    };
    for (int i = 0; i < 200; i++)
        add();
    attached.settle(paint);
    for (auto _ : state) {
        add();
        attached.settle(paint);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_PacketModelAddPacketAtCap)
    ->ArgNames({ "bar", "paint" })
    ->Args({ 1, 0 })
    ->Args({ 0, 0 })
    ->Args({ 1, 1 })
    ->Args({ 0, 1 });

// Baseline: the same five-column insert at the top and trim to 200 rows on
// a plain model, no bar.
void BM_StandardModelInsertRowAtCap(benchmark::State &state)
{
    const bool paint = state.range(0);
    QStandardItemModel model(0, 5);
    AttachedView attached(&model);
    const auto insert = [&model] {
        model.insertRow(0,
            { new QStandardItem("DL1ABC-5"), new QStandardItem("rx(-87), serial"), new QStandardItem,
                new QStandardItem("36"), new QStandardItem("spp(rx), ext(src, stat, simplehop)") });
        while (model.rowCount() > 200)
            model.removeRow(model.rowCount() - 1);
    };
    for (int i = 0; i < 200; i++)
        insert();
    attached.settle(paint);
    for (auto _ : state) {
        insert();
        attached.settle(paint);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_StandardModelInsertRowAtCap)->ArgName("paint")->Arg(0)->Arg(1);

} // namespace
