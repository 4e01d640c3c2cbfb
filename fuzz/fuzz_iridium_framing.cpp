// Arbitrary byte streams into the gateway client's receive framing, once
// whole and once split into input-derived pieces: the messages delivered
// must not depend on how the stream was cut.
#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QStringList>

#include <stdlib.h>

#include <stddef.h>
#include <stdint.h>

#include "fuzz_app.h"
#include "iridiumtcp.h"

namespace
{

struct Widgets {
    QPushButton button;
    QLineEdit host;
    QCheckBox flush;
};

Widgets *widgets()
{
    fuzz::application<QApplication>();
    static Widgets *w = new Widgets;
    return w;
}

// Feeds the stream in pieces of 1..64 bytes chosen by seed (0: whole) and
// returns what the client delivered.
QStringList deliver(const QByteArray &stream, uint8_t seed)
{
    Widgets *w = widgets();
    IridiumTcp client(&w->button, &w->host, &w->flush);
    QStringList delivered;
    QObject::connect(
        &client, &IridiumTcp::newData, &client, [&](const QString &imei, const QByteArray &data) {
            if (imei.size() > IridiumTcp::ImeiLength)
                abort();
            delivered << imei + '|' + QString::fromLatin1(data.toHex());
        });
    int at = 0;
    while (at < stream.size()) {
        const int n = seed ? 1 + (uint8_t(stream.at(at)) ^ seed) % 64 : stream.size();
        client.receive(stream.mid(at, n));
        at += n;
    }
    return delivered;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    const QByteArray stream(reinterpret_cast<const char *>(data + 1), int(size - 1));
    if (deliver(stream, 0) != deliver(stream, data[0] | 1))
        abort();
    return 0;
}
