#ifndef STEADYSTATE_H
#define STEADYSTATE_H

#include <benchmark/benchmark.h>

#include <QByteArray>
#include <QList>

class ConnectedWindow;

// Times a connected window taking the batches in turn, each of `frames`
// packets. One pass over all batches before the timing fills the log to its
// 200 rows and hears every station, so the runs measure the steady state.
// Items processed: the packets.
void runSteadyState(
    benchmark::State &state, ConnectedWindow *window, const QList<QByteArray> &batches, int frames);

#endif
