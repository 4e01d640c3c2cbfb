#include "simulator.h"

#include <QDateTime>

#include "capturereplay.h"
#include "iridiumgateway.h"
#include "modemserver.h"
#include "simglider.h"
#include "simlog.h"
#include "simmodem.h"
#include "simstation.h"
#include "spplink.h"

namespace
{
const char *const LocalCallsign = "BASE-1";

// callsign, level at the base (dBm), hops, mean beacon period (ms), serial
const SimStation::Profile Stations[] = {
    { "ALPHA-1", -78, 0, 7000, 2101 },
    { "BRAVO-2", -92, 1, 9000, 2102 },
    { "CHARLIE", -104, 0, 11000, 2103 },
    { "DELTA-7", -113, 2, 13000, 2104 },
    { "ECHO-3", -86, 0, 8000, 2105 },
    { "FOXTROT", -97, 1, 10000, 2106 },
    { "GOLF-4", -108, 2, 12000, 2107 },
    { "HOTEL-5", -71, 0, 6000, 2108 },
};

const SimStation::Profile GliderModem = { SimGlider::Callsign, -95, 0, 0, 3001 };
}

Simulator::Simulator(const SimOptions &options, QObject *parent)
    : QObject(parent)
    , m_options(options)
{
    const quint32 seed = options.seedGiven ? options.seed : quint32(QDateTime::currentMSecsSinceEpoch());
    m_rng.seed(seed);
    simLog("varda-sim", QString("seed %1, rate %2").arg(seed).arg(options.rate));
}

bool Simulator::start(QString *error)
{
    if (!m_options.replay.isEmpty())
        return startReplay(error);
    if (m_options.glider) {
        m_glider = new SimGlider(&m_rng, this);
        m_glider->start(m_options.rate);
    }
    if (m_options.modem && !startModem(error))
        return false;
    if (m_options.gateway && !startGateway(error))
        return false;
    simLog("varda-sim", "ready");
    return true;
}

bool Simulator::startModem(QString *error)
{
    m_server = new ModemServer(this);
    if (!m_server->listen(m_options.bind, m_options.modemPort, error))
        return false;
    if (m_options.pty && m_server->openPty(error).isEmpty())
        return false;
    m_server->setFaults(m_options.dropEvery, m_options.corrupt, &m_rng);
    m_modem = new SimModem(LocalCallsign, m_server, &m_rng, this);
    addStations();
    m_modem->start(m_options.rate);
    return true;
}

void Simulator::addStations()
{
    for (int i = 0; i < m_options.stations; i++)
        m_modem->addStation(new SimStation(Stations[i], &m_rng, this));
    if (!m_glider)
        return;
    auto *radio = new SimStation(GliderModem, &m_rng, this);
    m_modem->addStation(radio);
    connect(radio, &SimStation::dataReceived, m_glider, &SimGlider::receivePell);
    connect(m_glider, &SimGlider::pellPayload, radio, &SimStation::sendData);
}

bool Simulator::startGateway(QString *error)
{
    m_gateway = new IridiumGateway(this);
    m_gateway->setRate(m_options.rate);
    m_gateway->setCorruptLength(m_options.gatewayCorruptLength);
    if (!m_gateway->listen(m_options.bind, m_options.gatewayPort, error))
        return false;
    if (m_glider) {
        m_gateway->setVehicle(m_glider, SimGlider::Imei);
        connect(m_glider, &SimGlider::sbdPayload, m_gateway, &IridiumGateway::deliverMo);
    }
    return true;
}

// Each client gets the whole capture from its start; the pseudo-terminal,
// which has no joining, gets it from the simulator's start.
bool Simulator::startReplay(QString *error)
{
    QVector<CaptureReplay::Block> blocks;
    QString warning;
    if (!CaptureReplay::load(m_options.replay, &blocks, error, &warning))
        return false;
    if (!warning.isEmpty())
        simLog("replay", "playing up to the damage: " + warning);
    simLog("replay", QString("%1 blocks from %2").arg(blocks.size()).arg(m_options.replay));
    m_server = new ModemServer(this);
    if (!m_server->listen(m_options.bind, m_options.modemPort, error))
        return false;
    const double speed = m_options.speed;
    const auto play = [this, blocks, speed](SppLink *link) {
        auto *replay = new CaptureReplay(blocks, speed, link);
        connect(replay, &CaptureReplay::finished, this,
            [link] { simLog("replay", "played to " + link->name()); });
    };
    connect(m_server, &ModemServer::clientJoined, this, play);
    if (m_options.pty && m_server->openPty(error).isEmpty())
        return false;
    for (SppLink *link : m_server->links())
        play(link);
    simLog("varda-sim", "ready");
    return true;
}
