#include "linkstatus.h"

#include <cmath>

#include "spp_host_qt.h"

namespace
{
const int RefreshMs = 500;
const int RefreshesPerSecond = 1000 / RefreshMs;
}

LinkStatus::LinkStatus(QObject *parent)
    : QObject(parent)
    , m_tick(this)
{
    m_tick.setInterval(RefreshMs);
    connect(&m_tick, &QTimer::timeout, this, &LinkStatus::refresh);
    m_text = stateText();
}

void LinkStatus::setReceiver(const SppHost *receiver)
{
    m_receiver = receiver;
}

void LinkStatus::setSilentAfter(int ms)
{
    m_silent_after = ms;
}

LinkStatus::State LinkStatus::state() const
{
    return m_state;
}

bool LinkStatus::isSilent() const
{
    return m_state == Up && silentMs() >= m_silent_after;
}

QString LinkStatus::text() const
{
    return m_text;
}

QString LinkStatus::toolTip() const
{
    return m_tool_tip;
}

quint64 LinkStatus::goodFrames() const
{
    return m_frames;
}

int LinkStatus::reconnects() const
{
    return m_reconnects;
}

void LinkStatus::connecting(const QString &endpoint)
{
    m_endpoint = endpoint;
    enter(Connecting);
}

void LinkStatus::up()
{
    if (m_attempt > 0)
        m_reconnects++;
    m_attempt = 0;
    m_since_up.start();
    m_last_frame.invalidate();
    m_frames_seen = m_frames;
    m_history_next = 0;
    m_history_filled = 0;
    enter(Up);
}

void LinkStatus::down(const QString &reason)
{
    m_reason = reason;
    enter(Down);
}

void LinkStatus::retrying(int delayMs, int attempt)
{
    m_retry_ms = delayMs;
    m_attempt = attempt;
    m_retry_clock.start();
    enter(Retrying);
}

void LinkStatus::closed()
{
    m_attempt = 0;
    enter(Idle);
}

void LinkStatus::frameReceived()
{
    m_frames++;
}

void LinkStatus::enter(State state)
{
    const bool changed = state != m_state;
    m_state = state;
    if (state == Idle)
        m_tick.stop();
    else if (!m_tick.isActive())
        m_tick.start();
    refresh();
    if (changed)
        emit stateChanged(state);
}

void LinkStatus::refresh()
{
    const quint64 fresh = m_frames - m_frames_seen;
    m_frames_seen = m_frames;
    if (m_state == Up) {
        if (fresh > 0)
            m_last_frame.start();
        m_history[m_history_next] = fresh;
        m_history_next = (m_history_next + 1) % (2 * Slots);
        m_history_filled = qMin(m_history_filled + 1, 2 * Slots);
    }

    const QString text = stateText();
    if (text != m_text) {
        m_text = text;
        emit textChanged(text);
    }
    QString tip = tr("Good frames: %1").arg(m_frames);
    if (m_receiver)
        tip += tr("\nFrames with a bad CRC: %1\nBytes outside frames: %2")
                   .arg(m_receiver->badCrcFrames())
                   .arg(m_receiver->droppedBytes());
    tip += tr("\nReconnects: %1").arg(m_reconnects);
    if (tip != m_tool_tip) {
        m_tool_tip = tip;
        emit toolTipChanged(tip);
    }
}

QString LinkStatus::stateText() const
{
    const QString prefix = m_endpoint.isEmpty() ? QString() : m_endpoint + QLatin1String(": ");
    switch (m_state) {
    case Idle:
        return m_endpoint.isEmpty() ? tr("No link") : prefix + tr("closed");
    case Connecting:
        return prefix + tr("connecting");
    case Up:
        return prefix + upText();
    case Down:
        return prefix + tr("down: %1").arg(m_reason);
    case Retrying: {
        const qint64 left = qMax<qint64>(0, m_retry_ms - m_retry_clock.elapsed());
        return prefix
            + tr("down: %1; reconnecting in %2 s (attempt %3)")
                  .arg(m_reason)
                  .arg((left + 999) / 1000)
                  .arg(m_attempt);
    }
    }
    return QString();
}

QString LinkStatus::upText() const
{
    if (isSilent())
        return tr("silent for %1 s").arg(silentMs() / 1000);
    if (!m_last_frame.isValid())
        return tr("up, no frames yet");
    const double age = m_last_frame.elapsed() / 1000.0;
    return tr("up, %1 frames/s, last %2 s ago")
        .arg(framesPerSecond(), 0, 'f', 1)
        .arg(age < 10 ? std::floor(age * 10) / 10 : std::floor(age), 0, 'f', age < 10 ? 1 : 0);
}

qint64 LinkStatus::silentMs() const
{
    return m_last_frame.isValid() ? m_last_frame.elapsed() : m_since_up.elapsed();
}

double LinkStatus::framesPerSecond() const
{
    if (m_history_filled == 0)
        return 0;
    quint64 sum = 0;
    for (int i = 0; i < m_history_filled; i++)
        sum += m_history[i];
    return double(sum) * RefreshesPerSecond / m_history_filled;
}
