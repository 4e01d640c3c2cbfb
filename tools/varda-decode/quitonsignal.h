#ifndef QUITONSIGNAL_H
#define QUITONSIGNAL_H

#include <QObject>

class QSocketNotifier;

// Ends the event loop on SIGINT or SIGTERM, from the loop itself (the signal
// handler only writes a byte to a pipe), so that the program winds up as on
// any other exit.
class QuitOnSignal : public QObject
{
    Q_OBJECT
public:
    explicit QuitOnSignal(QObject *parent = nullptr);

private:
    void readSignal();

    QSocketNotifier *m_notifier = nullptr;
};

#endif
