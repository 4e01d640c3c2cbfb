#include "linkaddress.h"

#include <QStringList>

namespace
{

const char Usage[] = "use tcp:HOST:PORT, udp:HOST:PORT or serial:DEVICE[@BAUD]";

// The text may quote what was typed: kept to one line.
bool fail(QString *error, const QString &text)
{
    if (error)
        *error = text.simplified();
    return false;
}

// "HOST:PORT" or "[V6HOST]:PORT".
bool readEndpoint(const QString &text, LinkAddress *address, QString *error)
{
    const int colon = text.lastIndexOf(QLatin1Char(':'));
    if (colon < 0)
        return fail(error, QStringLiteral("no port in \"%1\": %2").arg(text, QLatin1String(Usage)));
    QString host = text.left(colon);
    if (host.startsWith(QLatin1Char('[')) && host.endsWith(QLatin1Char(']')))
        host = host.mid(1, host.size() - 2);
    if (host.isEmpty())
        return fail(error, QStringLiteral("no host in \"%1\"").arg(text));
    bool ok = false;
    const uint port = text.mid(colon + 1).toUInt(&ok);
    if (!ok || port == 0 || port > 65535)
        return fail(error,
            QStringLiteral("the port is a number from 1 to 65535, not \"%1\"").arg(text.mid(colon + 1)));
    address->host = host;
    address->port = quint16(port);
    return true;
}

// "DEVICE" or "DEVICE@BAUD".
bool readSerial(const QString &text, LinkAddress *address, QString *error)
{
    const int at = text.lastIndexOf(QLatin1Char('@'));
    const QString device = at < 0 ? text : text.left(at);
    if (device.isEmpty())
        return fail(error, QStringLiteral("no serial device: %1").arg(QLatin1String(Usage)));
    if (at >= 0) {
        bool ok = false;
        const int baud = text.mid(at + 1).toInt(&ok);
        if (!ok || baud <= 0)
            return fail(error,
                QStringLiteral("the baud rate is a positive number, not \"%1\"").arg(text.mid(at + 1)));
        address->baud = baud;
    }
    address->device = device;
    return true;
}

} // namespace

bool LinkAddress::parse(const QString &text, LinkAddress *address, QString *error)
{
    const int colon = text.indexOf(QLatin1Char(':'));
    const QString kind = text.left(colon).toLower();
    const QString rest = colon < 0 ? QString() : text.mid(colon + 1);
    LinkAddress read;
    if (colon < 0)
        return fail(error, QStringLiteral("not a link: \"%1\": %2").arg(text, QLatin1String(Usage)));
    if (kind == QLatin1String("tcp") || kind == QLatin1String("udp")) {
        read.kind = kind == QLatin1String("tcp") ? Tcp : Udp;
        if (!readEndpoint(rest, &read, error))
            return false;
    } else if (kind == QLatin1String("serial")) {
        read.kind = Serial;
        if (!readSerial(rest, &read, error))
            return false;
    } else {
        return fail(error, QStringLiteral("unknown link kind \"%1\": %2").arg(kind, QLatin1String(Usage)));
    }
    *address = read;
    return true;
}

QString LinkAddress::typeName() const
{
    static const char *const Names[] = { "TCP", "UDP", "Serial" };
    return QLatin1String(Names[kind]);
}

QString LinkAddress::describe() const
{
    if (kind == Serial)
        return QStringLiteral("serial %1 @%2").arg(device).arg(baud);
    const QString shown = host.contains(QLatin1Char(':')) ? QLatin1Char('[') + host + QLatin1Char(']') : host;
    return QStringLiteral("%1 %2:%3")
        .arg(kind == Tcp ? QLatin1String("tcp") : QLatin1String("udp"), shown)
        .arg(port);
}

QString LinkAddress::name() const
{
    switch (kind) {
    case Tcp:
        return QStringLiteral("tcp:%1:%2").arg(host).arg(port);
    case Udp:
        return QStringLiteral("udp:%1:%2").arg(host).arg(port);
    case Serial:
        break;
    }
    return QStringLiteral("serial:%1@%2").arg(device).arg(baud);
}
