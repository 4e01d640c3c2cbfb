#ifndef BLINKSCHEDULE_H
#define BLINKSCHEDULE_H

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <deque>

// The times at which the activity icon turns grey again: each packet asks
// for one delayMs after it and earlier ones are never moved, as if every
// packet started its own single-shot timer. Requests made within the same
// millisecond share one due time, so a burst of thousands of packets keeps
// one timer running instead of thousands.
class BlinkSchedule : public QObject
{
    Q_OBJECT
public:
    explicit BlinkSchedule(int delayMs, QObject *parent = nullptr);

    // A due time delayMs from now.
    void add();

signals:
    void due();

private:
    void fire();

    const int m_delay;
    QElapsedTimer m_clock;
    std::deque<qint64> m_due; // ascending, milliseconds on m_clock
    QTimer m_timer;
};

#endif
