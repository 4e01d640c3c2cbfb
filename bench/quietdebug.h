#ifndef QUIETDEBUG_H
#define QUIETDEBUG_H

#include <QtGlobal>

// Drops debug and warning lines while it lives: a terminal printing the
// window's debug lines would set the pace of a benchmark.
class QuietDebug
{
public:
    QuietDebug()
        : m_previous(qInstallMessageHandler(&QuietDebug::drop))
    {
    }
    ~QuietDebug()
    {
        qInstallMessageHandler(m_previous);
    }
    QuietDebug(const QuietDebug &) = delete;
    QuietDebug &operator=(const QuietDebug &) = delete;

private:
    static void drop(QtMsgType, const QMessageLogContext &, const QString &) { }
    QtMessageHandler m_previous;
};

#endif
