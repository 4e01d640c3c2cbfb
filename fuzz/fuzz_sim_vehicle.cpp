// Command blocks into the simulated vehicle, as they come over the radio:
// whatever the block holds, the vehicle must not read past it, and every
// payload it sends back must split into whole records of known types.
#include <stdint.h>

#include <QByteArray>
#include <QCoreApplication>
#include <QRandomGenerator>
#include <QVector>

#include "commandblock.h"
#include "fuzz_app.h"
#include "simglider.h"
#include "telemetry.h"

namespace
{

using fuzz::check;

void checkPayload(const QByteArray &payload)
{
    int pos = 0;
    while (pos < payload.size()) {
        const quint8 type = quint8(payload.at(pos));
        check(type < MSG_TYPES && SIZES[type] != MSG_SIZE_NONE);
        pos += 1 + SIZES[type];
    }
    check(pos == payload.size());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::application<QCoreApplication>();
    const QByteArray block(reinterpret_cast<const char *>(data), int(size));

    QVector<VehicleCommand> commands;
    if (CommandBlock::parse(block, &commands))
        check(!commands.isEmpty() && commands.size() <= block.size() / 4);
    else
        check(commands.isEmpty());

    // A vehicle per input: its timers go with it.
    QRandomGenerator rng(1);
    SimGlider glider(&rng);
    int payloads = 0;
    QObject::connect(&glider, &SimGlider::pellPayload, &glider, [&payloads](const QByteArray &p) {
        checkPayload(p);
        payloads++;
    });
    glider.start(100);
    glider.receivePell(block);
    check(payloads == (commands.isEmpty() ? 0 : 1));
    glider.sendTelemetry(SimGlider::Link::Pell);
    QCoreApplication::processEvents();
    return 0;
}
