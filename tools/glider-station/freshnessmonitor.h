#ifndef FRESHNESSMONITOR_H
#define FRESHNESSMONITOR_H

#include <QDateTime>
#include <QHash>
#include <QObject>
#include <QString>
#include <QStringList>

// How old the latest record of each kind is. A kind is late (warning) when
// its age passes twice the interval expected of the link it last came over,
// and missing (alarm) past four times. The expected interval is the
// telemetry rate the operator last set for that link, else 10 minutes.
// Each rise to warning or alarm is announced once; a fresh record ends the
// episode.
class FreshnessMonitor : public QObject
{
    Q_OBJECT
public:
    enum Level { Fresh, Warning, Alarm };

    static constexpr qint64 DefaultIntervalMs = 10 * 60 * 1000;

    explicit FreshnessMonitor(QObject *parent = nullptr);

    void seen(const QString &kind, const QString &link, const QDateTime &at);
    void setInterval(const QString &link, qint64 msecs);
    qint64 expected(const QString &kind) const;

    QStringList kinds() const; // in the order first seen
    Level level(const QString &kind, const QDateTime &now) const;
    // "housekeeping 2 min ago", with "late" or "missing" when it is.
    QString text(const QString &kind, const QDateTime &now) const;
    static QString age(qint64 msecs);

    // Re-evaluates every kind; announces rises and tells views to redraw.
    void check(const QDateTime &now);

signals:
    void levelRaised(const QString &kind, FreshnessMonitor::Level level, const QString &text);
    void changed();

private:
    struct Latest {
        QDateTime at;
        QString link;
        Level announced = Fresh;
    };
    QStringList m_order;
    QHash<QString, Latest> m_latest;
    QHash<QString, qint64> m_intervals;
};

#endif
