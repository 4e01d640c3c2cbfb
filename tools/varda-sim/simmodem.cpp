#include "simmodem.h"

#include <QDateTime>
#include <QTimer>

#include "extchain.h"
#include "modemserver.h"
#include "simlog.h"
#include "spplink.h"
#include "varda_extension.h"
#include "varda_packets.h"
#include "varda_spp_host.h"
#include "varda_spp_payload.h"

namespace
{
const int LocalBeaconMs = 15000;
const int AirTimeMs = 60;

SimStation::Profile localProfile(const QString &callsign)
{
    SimStation::Profile profile;
    profile.callsign = callsign;
    profile.signalDbm = -60;
    profile.beaconMs = LocalBeaconMs;
    profile.serial = 1001;
    return profile;
}

quint32 microsecondsIntoHour()
{
    const QTime now = QDateTime::currentDateTimeUtc().time();
    return quint32((now.minute() * 60 + now.second()) * 1000000u + now.msec() * 1000u);
}
}

SimModem::SimModem(const QString &callsign, ModemServer *server, QRandomGenerator *rng, QObject *parent)
    : QObject(parent)
    , m_server(server)
    , m_local(localProfile(callsign), rng)
{
    connect(server, &ModemServer::frameReceived, this, &SimModem::handleFrame);
    connect(server, &ModemServer::clientJoined, this, &SimModem::greet);
    connect(&m_local, &SimStation::transmitted, this,
        [this](const AirPacket &packet) { m_server->broadcast(localFrame(packet.payload)); });
}

void SimModem::addStation(SimStation *station)
{
    m_stations.append(station);
    connect(station, &SimStation::transmitted, this, &SimModem::receive);
    connect(this, &SimModem::transmitted, station, &SimStation::hear);
}

void SimModem::start(double rate)
{
    m_local.start(rate);
    for (SimStation *station : qAsConst(m_stations))
        station->start(rate);
}

// A new client learns the local callsign at once instead of at the next beacon.
void SimModem::greet(SppLink *link)
{
    link->send(localFrame(m_local.beacon()));
}

QByteArray SimModem::localFrame(const QByteArray &chain) const
{
    return SppLink::frame(SPP_TYPE_LOCAL, char(1) + chain);
}

void SimModem::receive(const AirPacket &packet)
{
    spp_rxhdr_t hdr;
    hdr.timestamp_toh_us = microsecondsIntoHour();
    hdr.noise = vrd_dbm_to_value(packet.noiseDbm);
    hdr.rssi = vrd_dbm_to_value(packet.rssiDbm);
    hdr.errors = packet.errors;
    hdr.varda_flags = packet.flags;
    const QByteArray payload = QByteArray(reinterpret_cast<const char *>(&hdr), sizeof(hdr)) + packet.payload;
    m_server->broadcast(SppLink::frame(SPP_TYPE_RX, payload));
    simLog("modem",
        QString("rx %1 bytes from %2, %3 dBm")
            .arg(packet.payload.size())
            .arg(ExtChain(packet.payload).callsign(VRD_EXT_SRC))
            .arg(packet.rssiDbm));
}

void SimModem::handleFrame(SppLink *link, quint8 type, const QByteArray &payload)
{
    if (type == SPP_TYPE_CMD) {
        const QString command = QString::fromLocal8Bit(payload);
        simLog("modem", QString("command \"%1\" from %2").arg(command.trimmed(), link->name()));
        sendReply(link, commandReply(command));
    } else if (type == SPP_TYPE_TX) {
        transmitRequest(link, payload);
    } else {
        simLog("modem", QString("ignored frame of type %1 from %2").arg(type).arg(link->name()));
    }
}

void SimModem::transmitRequest(SppLink *link, const QByteArray &payload)
{
    varda_spp_payload_t tx;
    if (varda_spp_split_payload(SPP_TYPE_TX, reinterpret_cast<const uint8_t *>(payload.constData()),
            uint16_t(payload.size()), &tx)
        != VARDA_SPP_PAYLOAD_OK)
        return;
    const quint8 flags = tx.varda_flags;
    const QByteArray packet(reinterpret_cast<const char *>(tx.payload), tx.payload_len);
    if (packet.isEmpty() || packet.size() > VRD_MAX_PAYLOAD) {
        simLog("modem", QString("refused a packet of %1 bytes from %2").arg(packet.size()).arg(link->name()));
        return;
    }
    simLog("modem",
        QString("tx %1 bytes for %2 from %3")
            .arg(packet.size())
            .arg(ExtChain(packet).callsign(VRD_EXT_DEST))
            .arg(link->name()));
    m_server->broadcast(SppLink::frame(SPP_TYPE_LOCAL, char(flags) + packet));
    QTimer::singleShot(AirTimeMs, this, [this, packet, flags] { emit transmitted(packet, flags); });
}

QString SimModem::commandReply(const QString &command)
{
    const QStringList words = command.simplified().split(' ', Qt::SkipEmptyParts);
    const QString verb = words.value(0).toLower();
    QString text;
    if (verb == "call" && words.size() > 1) {
        m_local.setCallsign(words.at(1).toUpper());
        text = "callsign set to " + m_local.callsign();
    } else if (verb == "call") {
        text = "callsign " + m_local.callsign();
    } else if (verb == "beacon") {
        QTimer::singleShot(0, &m_local, &SimStation::sendBeacon);
        text = "beacon sent";
    } else if (verb == "stations") {
        text = stationList();
    } else if (verb == "help") {
        text = "commands: call [CALLSIGN], beacon, stations, status, uptime, version, ping, help";
    } else {
        text = m_local.answer(command);
    }
    return text + "\r\n";
}

QString SimModem::stationList() const
{
    QStringList lines;
    for (const SimStation *station : m_stations)
        lines << station->callsign();
    return "stations in range: " + lines.join(", ");
}

void SimModem::sendReply(SppLink *link, const QString &text)
{
    const QByteArray bytes = text.toLocal8Bit();
    for (int pos = 0; pos < bytes.size(); pos += 255)
        link->send(SppLink::frame(SPP_TYPE_CMD, bytes.mid(pos, 255)));
}
