#include "freshnessmonitor.h"

FreshnessMonitor::FreshnessMonitor(QObject *parent)
    : QObject(parent)
{
}

void FreshnessMonitor::seen(const QString &kind, const QString &link, const QDateTime &at)
{
    if (!m_latest.contains(kind))
        m_order << kind;
    Latest &latest = m_latest[kind];
    if (latest.at.isValid() && at < latest.at)
        return;
    latest.at = at;
    latest.link = link;
}

void FreshnessMonitor::setInterval(const QString &link, qint64 msecs)
{
    m_intervals[link] = msecs;
}

qint64 FreshnessMonitor::expected(const QString &kind) const
{
    return m_intervals.value(m_latest.value(kind).link, DefaultIntervalMs);
}

QStringList FreshnessMonitor::kinds() const
{
    return m_order;
}

FreshnessMonitor::Level FreshnessMonitor::level(const QString &kind, const QDateTime &now) const
{
    const auto it = m_latest.constFind(kind);
    if (it == m_latest.cend())
        return Fresh;
    const qint64 ageMs = it->at.msecsTo(now);
    const qint64 interval = expected(kind);
    return ageMs > 4 * interval ? Alarm : ageMs > 2 * interval ? Warning : Fresh;
}

QString FreshnessMonitor::age(qint64 msecs)
{
    const qint64 s = std::max<qint64>(0, msecs / 1000);
    if (s < 60)
        return tr("%1 s ago").arg(s);
    if (s < 3600)
        return tr("%1 min ago").arg(s / 60);
    if (s < 48 * 3600)
        return tr("%1 h ago").arg(s / 3600);
    return tr("%1 days ago").arg(s / 86400);
}

QString FreshnessMonitor::text(const QString &kind, const QDateTime &now) const
{
    const Latest latest = m_latest.value(kind);
    const QString base = tr("%1 %2 (%3)").arg(kind, age(latest.at.msecsTo(now)), latest.link);
    switch (level(kind, now)) {
    case Warning:
        return tr("%1: late").arg(base);
    case Alarm:
        return tr("%1: missing").arg(base);
    default:
        return base;
    }
}

void FreshnessMonitor::check(const QDateTime &now)
{
    for (const QString &kind : qAsConst(m_order)) {
        const Level current = level(kind, now);
        Latest &latest = m_latest[kind];
        if (current > latest.announced)
            emit levelRaised(kind, current, text(kind, now));
        latest.announced = current;
    }
    emit changed();
}
