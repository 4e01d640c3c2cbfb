#include <benchmark/benchmark.h>

#include <QElapsedTimer>
#include <QTimer>

#include <time.h>

#include "connectedwindow.h"
#include "loadtraffic.h"
#include "quietdebug.h"

// A flood against the main window: 50,000 frames from 5,000 stations
// written at once, against the same traffic in the batches of 1,000 the
// other window benchmarks deliver, in the same run. Reported: packets per
// second of both and their ratio, and the longest stretch the event loop
// was held, as a 1 ms timer sees it.

namespace
{

const int BURST = 50000;
const int BATCH = 1000;
const int STATIONS = 5000;

double threadCpuMs()
{
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return now.tv_sec * 1e3 + now.tv_nsec / 1e6;
}

// Longest gap between the ticks of a 1 ms timer while it lives, on the
// wall clock and in the CPU time of this thread. On a shared machine the
// wall clock also counts the time the system gave to others; the CPU time
// is what the window itself held the event loop for.
class StallProbe
{
public:
    StallProbe()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { tick(); });
        m_clock.start();
        m_last_cpu = threadCpuMs();
        m_timer.start(1);
    }
    double longestMs()
    {
        tick();
        return m_longest;
    }
    double longestCpuMs()
    {
        tick();
        return m_longest_cpu;
    }

private:
    void tick()
    {
        const double now = m_clock.nsecsElapsed() / 1e6;
        const double cpu = threadCpuMs();
        m_longest = qMax(m_longest, now - m_last);
        m_longest_cpu = qMax(m_longest_cpu, cpu - m_last_cpu);
        m_last = now;
        m_last_cpu = cpu;
    }

    QTimer m_timer;
    QElapsedTimer m_clock;
    double m_last = 0;
    double m_last_cpu = 0;
    double m_longest = 0;
    double m_longest_cpu = 0;
};

struct Run {
    double seconds = 0;
    double stallMs = 0;
    double stallCpuMs = 0;
    bool ok = false;
};

Run deliver(ConnectedWindow &window, const QList<QByteArray> &writes, int framesEach)
{
    Run run;
    StallProbe probe;
    QElapsedTimer clock;
    clock.start();
    run.ok = true;
    for (const QByteArray &bytes : writes)
        run.ok = window.deliver(bytes, framesEach) && run.ok;
    run.seconds = clock.nsecsElapsed() / 1e9;
    run.stallMs = probe.longestMs();
    run.stallCpuMs = probe.longestCpuMs();
    return run;
}

} // namespace

// Each iteration delivers 50,000 frames in batches, then 50,000 at once.
static void BM_MainWindowBurst(benchmark::State &state)
{
    const QuietDebug quiet;
    ConnectedWindow window(1);
    if (!window.connected()) {
        state.SkipWithError("no TCP connection");
        return;
    }
    LoadTraffic traffic(STATIONS);
    // Every station heard once and the log full: the steady state.
    for (int frames = 0; frames < traffic.framesToHearAll(); frames += BATCH)
        window.deliver(traffic.next(BATCH), BATCH);

    Run batched, burst;
    for (auto _ : state) {
        QList<QByteArray> batches;
        for (int i = 0; i < BURST / BATCH; i++)
            batches.append(traffic.next(BATCH));
        batched = deliver(window, batches, BATCH);
        burst = deliver(window, { traffic.next(BURST) }, BURST);
        if (!batched.ok || !burst.ok) {
            state.SkipWithError("window fell behind");
            break;
        }
    }
    state.counters["batch_pkt_per_s"] = BURST / batched.seconds;
    state.counters["burst_pkt_per_s"] = BURST / burst.seconds;
    state.counters["burst_vs_batch"] = batched.seconds / burst.seconds;
    state.counters["batch_stall_ms"] = batched.stallMs;
    state.counters["burst_stall_ms"] = burst.stallMs;
    state.counters["batch_stall_cpu_ms"] = batched.stallCpuMs;
    state.counters["burst_stall_cpu_ms"] = burst.stallCpuMs;
}
BENCHMARK(BM_MainWindowBurst)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();
