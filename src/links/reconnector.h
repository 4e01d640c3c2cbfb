#ifndef RECONNECTOR_H
#define RECONNECTOR_H

#include <QObject>
#include <QTimer>

// When to try a lost link again: 1 s after the first failure, doubling up
// to 30 s, back to 1 s once a connection has held for 5 s (other times can
// be given). Disabled, it schedules nothing, which is the default.
class Reconnector : public QObject
{
    Q_OBJECT
public:
    static const int FirstDelayMs = 1000;
    static const int MaxDelayMs = 30000;
    static const int HoldMs = 5000;

    explicit Reconnector(QObject *parent = nullptr, int firstDelayMs = FirstDelayMs,
        int maxDelayMs = MaxDelayMs, int holdMs = HoldMs);

    void setEnabled(bool enabled);
    bool isEnabled() const;
    // Failures since the last connection that held.
    int failures() const;
    bool isPending() const;

public slots:
    // An attempt failed or an established link was lost: schedules retry()
    // unless one is already due.
    void failed();
    // The link is up; once it holds, the delays start over.
    void connected();
    // The operator took over (disconnected, or connected by hand).
    void stop();

signals:
    void scheduled(int delayMs, int attempt);
    void retry();

private:
    int nextDelayMs() const;

    const int m_first;
    const int m_max;
    bool m_enabled = false;
    int m_failures = 0;
    QTimer m_retry;
    QTimer m_hold;
};

#endif
