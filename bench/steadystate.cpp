#include "steadystate.h"

#include "connectedwindow.h"

void runSteadyState(
    benchmark::State &state, ConnectedWindow *window, const QList<QByteArray> &batches, int frames)
{
    if (!window->connected()) {
        state.SkipWithError("no TCP connection");
        return;
    }
    for (const QByteArray &batch : batches)
        window->deliver(batch, frames);
    int next = 0;
    for (auto _ : state) {
        if (!window->deliver(batches.at(next), frames)) {
            state.SkipWithError("window fell behind");
            break;
        }
        next = (next + 1) % batches.size();
    }
    state.SetItemsProcessed(state.iterations() * frames);
}
