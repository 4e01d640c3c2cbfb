#ifndef SIMPROCESS_H
#define SIMPROCESS_H

#include <QProcess>
#include <QStringList>

// The network simulator as a separate process on 127.0.0.1.
struct SimProcess {
    ~SimProcess();
    // Adds --modem-port and --gateway-port on free ports unless given; true once the simulator is ready.
    bool start(QStringList args = QStringList());
    QString log(); // all it wrote to standard error so far
    static quint16 freePort(); // for both TCP and UDP, right now
    static constexpr const char *program = VARDA_SIM_PATH;

    QProcess process;
    QString logged;
    quint16 modemPort = 0, gatewayPort = 0;
};

#endif
