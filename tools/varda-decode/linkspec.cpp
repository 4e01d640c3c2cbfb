#include "linkspec.h"

#include <QCoreApplication>

namespace
{
QString tr(const char *text)
{
    return QCoreApplication::translate("LinkSpec", text);
}

bool parseNetwork(const QString &rest, LinkSpec *spec, QString *error)
{
    const int colon = rest.lastIndexOf(':');
    bool ok = false;
    const uint port = colon > 0 ? rest.mid(colon + 1).toUInt(&ok) : 0;
    if (!ok || port == 0 || port > 65535) {
        *error = tr("a network link is HOST:PORT with a port from 1 to 65535");
        return false;
    }
    spec->host = rest.left(colon);
    spec->port = quint16(port);
    return true;
}

bool parseSerial(const QString &rest, LinkSpec *spec, QString *error)
{
    const int at = rest.lastIndexOf('@');
    spec->host = at < 0 ? rest : rest.left(at);
    bool ok = true;
    if (at >= 0)
        spec->baud = rest.mid(at + 1).toInt(&ok);
    if (spec->host.isEmpty() || !ok || spec->baud <= 0) {
        *error = tr("a serial link is serial:DEVICE or serial:DEVICE@BAUD");
        return false;
    }
    return true;
}
} // namespace

bool LinkSpec::parse(const QString &text, LinkSpec *spec, QString *error)
{
    const QString kind = text.section(':', 0, 0);
    const QString rest = text.section(':', 1);
    if (kind == QLatin1String("tcp") || kind == QLatin1String("udp")) {
        spec->kind = kind == QLatin1String("tcp") ? Tcp : Udp;
        return parseNetwork(rest, spec, error);
    }
    if (kind == QLatin1String("serial")) {
        spec->kind = Serial;
        return parseSerial(rest, spec, error);
    }
    *error = tr("a link is tcp:HOST:PORT, udp:HOST:PORT or serial:DEVICE[@BAUD]");
    return false;
}

QString LinkSpec::name() const
{
    switch (kind) {
    case Tcp:
        return QStringLiteral("tcp:%1:%2").arg(host).arg(port);
    case Udp:
        return QStringLiteral("udp:%1:%2").arg(host).arg(port);
    case Serial:
        break;
    }
    return QStringLiteral("serial:%1@%2").arg(host).arg(baud);
}
