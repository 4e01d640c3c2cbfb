#include "reconnector.h"

Reconnector::Reconnector(QObject *parent, int firstDelayMs, int maxDelayMs, int holdMs)
    : QObject(parent)
    , m_first(firstDelayMs)
    , m_max(maxDelayMs)
    , m_retry(this)
    , m_hold(this)
{
    m_retry.setSingleShot(true);
    m_hold.setSingleShot(true);
    m_hold.setInterval(holdMs);
    connect(&m_retry, &QTimer::timeout, this, &Reconnector::retry);
    connect(&m_hold, &QTimer::timeout, this, [this] { m_failures = 0; });
}

void Reconnector::setEnabled(bool enabled)
{
    m_enabled = enabled;
    if (!enabled)
        stop();
}

bool Reconnector::isEnabled() const
{
    return m_enabled;
}

int Reconnector::failures() const
{
    return m_failures;
}

bool Reconnector::isPending() const
{
    return m_retry.isActive();
}

void Reconnector::failed()
{
    m_hold.stop();
    if (!m_enabled || m_retry.isActive())
        return;
    const int delay = nextDelayMs();
    m_failures++;
    m_retry.start(delay);
    emit scheduled(delay, m_failures);
}

void Reconnector::connected()
{
    if (m_enabled)
        m_hold.start();
}

void Reconnector::stop()
{
    m_retry.stop();
    m_hold.stop();
    m_failures = 0;
}

int Reconnector::nextDelayMs() const
{
    int delay = m_first;
    for (int i = 0; i < m_failures && delay < m_max; i++)
        delay *= 2;
    return qMin(delay, m_max);
}
