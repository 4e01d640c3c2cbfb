#ifndef GATEWAYWATCHDOG_H
#define GATEWAYWATCHDOG_H

#include <QString>

// Tells a gateway client wedged by a corrupt length from one still
// receiving a message. The client trusts every length it reads, so a
// corrupt one leaves it waiting for bytes that never come. It is wedged
// when the message at the head of its buffer announces more than any
// plausible message holds, or when bytes have waited longer than the
// largest plausible message takes to arrive without one being taken.
class GatewayWatchdog
{
public:
    // Far above an SBD message (about 2 kB) or a relayhub payload.
    static const quint32 MaxMessage = 64 * 1024;
    // Even a slow link brings the largest message in well under this.
    static const qint64 MaxWaitMs = 10000;

    // Looks at the client's buffer (pending bytes, the length at its head)
    // at nowMs, a monotonic clock; true when the client is wedged, with
    // the reason in reason().
    bool stalled(qint64 pending, quint32 announced, qint64 nowMs);
    QString reason() const;
    // A fresh client: nothing waits.
    void reset();

private:
    qint64 m_pending = 0;
    quint32 m_announced = 0;
    qint64 m_since = -1; // when the bytes now pending started waiting
    QString m_reason;
};

#endif
