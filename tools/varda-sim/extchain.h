#ifndef EXTCHAIN_H
#define EXTCHAIN_H

#include <QByteArray>
#include <QMap>
#include <QString>

// A chain of extension sub-packets (format in varda_extension.h) as the
// simulated stations build and read it: the modem firmware side, kept apart
// from the tool's own decoder on purpose.
class ExtChain
{
public:
    ExtChain();
    // Splits a received chain. An invalid chain (see vrd_ext_numpkts)
    // yields no sub-packets; a later sub-packet of a type replaces an
    // earlier one.
    explicit ExtChain(const QByteArray &received);

    // Building; each returns false and leaves the chain unchanged when the
    // sub-packet would take the chain past one radio packet (220 bytes).
    bool add(quint8 type, const QByteArray &data);
    bool addSource(const QString &callsign, quint8 seq);
    bool addDestination(const QString &callsign);
    QByteArray bytes() const;

    // Reading.
    bool has(quint8 type) const;
    QByteArray value(quint8 type) const;
    // Callsign of a "src" or "dest" sub-packet; empty when absent.
    QString callsign(quint8 type) const;

    static QByteArray encodeCallsign(const QString &callsign);

private:
    QByteArray m_bytes;
    QMap<quint8, QByteArray> m_parts;
};

#endif
