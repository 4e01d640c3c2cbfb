#include "gatewaywatchdog.h"

#include <QObject>

bool GatewayWatchdog::stalled(qint64 pending, quint32 announced, qint64 nowMs)
{
    if (pending == 0) {
        reset();
        return false;
    }
    if (pending >= 4 && announced > MaxMessage) {
        m_reason = QObject::tr("a message announced %1 bytes").arg(announced);
        return true;
    }
    // A message taken off the buffer is progress: the wait starts again.
    if (m_since < 0 || pending < m_pending || announced != m_announced)
        m_since = nowMs;
    m_pending = pending;
    m_announced = announced;
    if (nowMs - m_since <= MaxWaitMs)
        return false;
    m_reason = QObject::tr("%1 bytes waited %2 s for the rest of their message")
                   .arg(pending)
                   .arg((nowMs - m_since) / 1000);
    return true;
}

QString GatewayWatchdog::reason() const
{
    return m_reason;
}

void GatewayWatchdog::reset()
{
    m_pending = 0;
    m_announced = 0;
    m_since = -1;
}
