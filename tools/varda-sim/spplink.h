#ifndef SPPLINK_H
#define SPPLINK_H

#include <QByteArray>
#include <QObject>
#include <QString>

#include <functional>

#include "spp_host_qt.h"

// One client of the simulated modem (a TCP connection, a UDP peer or the
// pseudo-terminal): its own frame receiver, so that frames from different
// clients never mix, and the way back to it.
class SppLink : public QObject
{
    Q_OBJECT
public:
    using Writer = std::function<void(const QByteArray &)>;

    SppLink(const QString &name, Writer writer, QObject *parent = nullptr);

    QString name() const;
    // Bytes as they came from the client; may emit frameReceived.
    void feed(const QByteArray &bytes);
    // corrupted: the frame carries a bad CRC on purpose; counted apart.
    void send(const QByteArray &frame, bool corrupted = false);
    // "N frames sent, M with a bad CRC" since the last call.
    QString takeTally();

    // A complete SPP frame of any type (layout in varda_spp_host.h).
    // Empty when the payload is empty or longer than 255 bytes: the receiver
    // never delivers an empty frame, and the length is one byte.
    static QByteArray frame(quint8 type, const QByteArray &payload);

signals:
    void frameReceived(SppLink *link, quint8 type, const QByteArray &payload);

private:
    QString m_name;
    Writer m_writer;
    SppHost m_host;
    int m_sent = 0;
    int m_corrupted = 0;
};

#endif
