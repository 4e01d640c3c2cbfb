#ifndef SIMPROCESS_H
#define SIMPROCESS_H

// The network simulator as a separate process on free ports of 127.0.0.1,
// for the tests that talk to it.

#include <QProcess>
#include <QString>
#include <QStringList>

class SimProcess
{
public:
    SimProcess();
    ~SimProcess();

    // Starts varda-sim with args, adding --modem-port and --gateway-port
    // (free ports) unless args name them, and waits for it to be ready.
    bool start(const QStringList &args = QStringList());
    void stop();

    quint16 modemPort() const;
    quint16 gatewayPort() const;
    // Name of the modem's pseudo-terminal (with --pty).
    QString ptyName() const;
    // Everything the simulator logged so far.
    QString log();
    bool waitForLog(const QString &text, int timeoutMs = 15000);
    QProcess *process();

    // A port free for both TCP and UDP on 127.0.0.1 right now.
    static quint16 freePort();
    static QString program();

private:
    QProcess m_process;
    QString m_log;
    quint16 m_modemPort = 0;
    quint16 m_gatewayPort = 0;
};

#endif
