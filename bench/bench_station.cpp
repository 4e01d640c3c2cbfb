// The vehicle station's telemetry history: a week of records at the
// vehicle's normal rates (Pell every 10 s: housekeeping 2, position, CTD,
// O2, pCO2, light, PTH; Iridium every 60 s: housekeeping 2 and position)
// read back from telemetry.csv, and the "Plots" tab redrawn over it.
// Baselines from the same run: the same file read line by line without
// parsing, and a redraw of a history short enough to need no thinning.
#include <benchmark/benchmark.h>

#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>

#include <cmath>

#include "plotview.h"
#include "telemetryrecord.h"
#include "telemetrystore.h"

namespace
{

const QDateTime Start = QDateTime(QDate(2026, 11, 1), QTime(0, 0), Qt::UTC);
const int PellSeconds = 10;
const int IridiumSeconds = 60;
const QStringList PellKinds { "housekeeping2", "postime", "ctd", "o2", "pco2", "light", "pth" };
const QStringList IridiumKinds { "housekeeping2", "postime" };
const QStringList Plotted { "ctd.pressure", "ctd.temperature", "housekeeping2.pell_rssi" };

TelemetryRecord record(const QString &kind, const QString &link, int second)
{
    TelemetryRecord r;
    r.received = Start.addSecs(second);
    r.link = link;
    r.kind = kind;
    const int fields = TelemetryRecord::fieldNames(kind).size();
    for (int i = 0; i < fields; i++)
        r.values << 10 * std::sin(second / 600.0 + i) + i;
    return r;
}

// Every record of `seconds` of telemetry, in receive order.
template <typename Sink> void history(int seconds, Sink sink)
{
    for (int s = 0; s < seconds; s += PellSeconds) {
        for (const QString &kind : PellKinds)
            sink(record(kind, "Pell", s));
        if (s % IridiumSeconds == 0) {
            for (const QString &kind : IridiumKinds)
                sink(record(kind, "Iridium", s));
        }
    }
}

const int Week = 7 * 24 * 3600;

// The week's file, written once for all benchmarks.
const QString &weekFile()
{
    static QTemporaryDir dir;
    static const QString path = [] {
        const QString file = dir.filePath("telemetry.csv");
        TelemetryStore store(file);
        history(Week, [&](const TelemetryRecord &r) { store.append(r); });
        return file;
    }();
    return path;
}

void BM_Station_ReadLinesOnly(benchmark::State &state)
{
    weekFile();
    for (auto _ : state) {
        QFile file(weekFile());
        file.open(QIODevice::ReadOnly | QIODevice::Text);
        QTextStream in(&file);
        QString line;
        int lines = 0;
        while (in.readLineInto(&line))
            lines++;
        benchmark::DoNotOptimize(lines);
    }
}
BENCHMARK(BM_Station_ReadLinesOnly)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_Station_LoadWeek(benchmark::State &state)
{
    int records = 0;
    weekFile();
    for (auto _ : state) {
        TelemetryStore store(weekFile());
        records = store.load();
    }
    state.counters["records"] = records;
}
BENCHMARK(BM_Station_LoadWeek)->Unit(benchmark::kMillisecond)->Iterations(3);

// Redraw and paint of the three usual series over `seconds` of history,
// span "All".
void redraw(benchmark::State &state, int seconds)
{
    TelemetryStore store("/dev/null");
    history(seconds, [&](const TelemetryRecord &r) { store.add(r); });
    PlotView view(&store);
    view.resize(1200, 800);
    view.setSelected(Plotted);
    view.show();
    for (auto _ : state) {
        view.redraw();
        benchmark::DoNotOptimize(view.grab()); // and paint it
    }
    state.counters["points"] = view.pointsShown();
}

void BM_Station_RedrawUnthinned(benchmark::State &state)
{
    // 2000 CTD records: as many as a thinned series keeps.
    redraw(state, PlotView::MaxPoints * PellSeconds);
}
BENCHMARK(BM_Station_RedrawUnthinned)->Unit(benchmark::kMillisecond);

void BM_Station_RedrawWeek(benchmark::State &state)
{
    redraw(state, Week);
}
BENCHMARK(BM_Station_RedrawWeek)->Unit(benchmark::kMillisecond);

} // namespace
