#include "blinkschedule.h"

BlinkSchedule::BlinkSchedule(int delayMs, QObject *parent)
    : QObject(parent)
    , m_delay(delayMs)
    , m_timer(this)
{
    m_clock.start();
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &BlinkSchedule::fire);
}

void BlinkSchedule::add()
{
    const qint64 due = m_clock.elapsed() + m_delay;
    if (m_due.empty() || m_due.back() != due)
        m_due.push_back(due);
    if (!m_timer.isActive())
        m_timer.start(m_delay);
}

void BlinkSchedule::fire()
{
    const qint64 now = m_clock.elapsed();
    bool fired = false;
    while (!m_due.empty() && m_due.front() <= now) {
        m_due.pop_front();
        fired = true;
    }
    if (!m_due.empty())
        m_timer.start(int(m_due.front() - now));
    if (fired)
        emit due();
}
