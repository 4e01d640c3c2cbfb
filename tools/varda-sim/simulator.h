#ifndef SIMULATOR_H
#define SIMULATOR_H

#include <QObject>
#include <QRandomGenerator>
#include <QString>

#include "simoptions.h"

class IridiumGateway;
class ModemServer;
class SimGlider;
class SimModem;

// Builds the roles the options ask for and wires them together: the modem
// with its stations on the air, the glider behind its own radio modem
// ("RLHB-1") and behind the Iridium gateway.
class Simulator : public QObject
{
    Q_OBJECT
public:
    explicit Simulator(const SimOptions &options, QObject *parent = nullptr);

    // Opens every port; false with a message when one cannot be had.
    bool start(QString *error);

private:
    bool startModem(QString *error);
    bool startGateway(QString *error);
    bool startReplay(QString *error);
    void addStations();

    SimOptions m_options;
    QRandomGenerator m_rng;
    ModemServer *m_server = nullptr;
    SimModem *m_modem = nullptr;
    SimGlider *m_glider = nullptr;
    IridiumGateway *m_gateway = nullptr;
};

#endif
