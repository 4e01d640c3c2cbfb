#include "simstation.h"

#include <QDateTime>
#include <QRandomGenerator>

#include "extchain.h"
#include "simlog.h"
#include "varda_extension.h"

namespace
{
const int NoiseFloorDbm = -118;
const quint16 HardwareVersion = (2 << 6) | 1; // 2/1
const quint16 SoftwareVersion = (1 << 12) | (4 << 8) | 17; // 1.4.17
}

SimStation::SimStation(const Profile &profile, QRandomGenerator *rng, QObject *parent)
    : QObject(parent)
    , m_profile(profile)
    , m_rng(rng)
    , m_uptimeBase(rng->bounded(3600u, 30u * 86400u))
{
    m_clock.start();
    m_beacon.setSingleShot(true);
    connect(&m_beacon, &QTimer::timeout, this, &SimStation::sendBeacon);
}

QString SimStation::callsign() const
{
    return m_profile.callsign;
}

void SimStation::setCallsign(const QString &callsign)
{
    m_profile.callsign = callsign;
}

void SimStation::start(double rate)
{
    m_rate = rate;
    if (m_profile.beaconMs > 0)
        scheduleBeacon();
}

void SimStation::scheduleBeacon()
{
    const int mean = int(m_profile.beaconMs / m_rate);
    m_beacon.start(qMax(50, mean + jitter(mean * 3 / 10)));
}

void SimStation::sendBeacon()
{
    transmit(beacon());
    scheduleBeacon();
}

QByteArray SimStation::beacon()
{
    ExtChain chain;
    chain.addSource(m_profile.callsign, m_seq++);
    chain.add(VRD_EXT_STAT, status());
    chain.add(VRD_EXT_SIMPLEHOP, simplehop());

    const QDateTime now = QDateTime::currentDateTimeUtc();
    varda_toh_t toh;
    toh.toh_us
        = quint32((now.time().minute() * 60 + now.time().second()) * 1000000u + now.time().msec() * 1000u);
    toh.toh_val = 1;
    chain.add(VRD_EXT_TOH, QByteArray(reinterpret_cast<const char *>(&toh), sizeof(toh)));
    m_txCount++;
    return chain.bytes();
}

QByteArray SimStation::status() const
{
    varda_stat_t st;
    st.hw_ver = HardwareVersion;
    st.serial = m_profile.serial;
    st.sw_ver = SoftwareVersion;
    st.uptime_s = uptime();
    st.voltage = quint8(126 + jitter(8));
    st.temp = qint8(14 + jitter(6));
    st.signal = vrd_dbm_to_value(m_profile.signalDbm + jitter(4));
    st.noise = vrd_dbm_to_value(NoiseFloorDbm + jitter(3));
    st.cntr_rx_ok = m_rxCount;
    st.cntr_rx_fix = m_rxCount / 9;
    st.cntr_rx_err = m_rxCount / 31;
    st.cntr_tx = m_txCount;
    return QByteArray(reinterpret_cast<const char *>(&st), sizeof(st));
}

QByteArray SimStation::simplehop() const
{
    // Packets of a station further out arrive with hops used up.
    const int total = qMin(m_profile.hopsTotal + 2, 7);
    const int remaining = total - m_profile.hopsTotal;
    return QByteArray(1, char((remaining << 5) | (total << 2)));
}

quint32 SimStation::uptime() const
{
    return m_uptimeBase + quint32(m_clock.elapsed() / 1000);
}

int SimStation::jitter(int spread) const
{
    return spread > 0 ? m_rng->bounded(-spread, spread + 1) : 0;
}

void SimStation::transmit(const QByteArray &payload)
{
    AirPacket packet;
    packet.payload = payload;
    packet.flags = 1;
    packet.rssiDbm = m_profile.signalDbm + jitter(4);
    packet.noiseDbm = NoiseFloorDbm + jitter(3);
    // Weak signals need more correction.
    const int margin = packet.rssiDbm - packet.noiseDbm;
    packet.errors = quint8(margin > 25 ? m_rng->bounded(2) : m_rng->bounded(1, 12));
    emit transmitted(packet);
}

void SimStation::hear(const QByteArray &payload, quint8 flags)
{
    if (!(flags & VARDA_FLAG_EXTENSION))
        return;
    const ExtChain chain(payload);
    if (chain.callsign(VRD_EXT_DEST) != m_profile.callsign)
        return;
    m_rxCount++;
    if (chain.has(VRD_EXT_CMD_REQ)) {
        const QString command = QString::fromLatin1(chain.value(VRD_EXT_CMD_REQ));
        simLog(m_profile.callsign, QString("command \"%1\"").arg(command.trimmed()));
        reply(chain.callsign(VRD_EXT_SRC), answer(command));
    }
    if (chain.has(VRD_EXT_DATA))
        emit dataReceived(chain.value(VRD_EXT_DATA));
}

QString SimStation::answer(const QString &command) const
{
    const QString cmd = command.trimmed().toLower();
    if (cmd == "ping")
        return "pong";
    if (cmd == "uptime")
        return QString("up %1 s").arg(uptime());
    if (cmd == "version")
        return QString("Varda modem %1.%2.%3")
            .arg(SoftwareVersion >> 12)
            .arg((SoftwareVersion >> 8) & 15)
            .arg(SoftwareVersion & 255);
    if (cmd == "status")
        return QString("%1 up %2 s, rx %3, tx %4")
            .arg(m_profile.callsign)
            .arg(uptime())
            .arg(m_rxCount)
            .arg(m_txCount);
    if (cmd == "help")
        return "commands: ping, status, uptime, version, help";
    return QString("unknown command: %1").arg(command.trimmed());
}

void SimStation::reply(const QString &to, const QString &text)
{
    ExtChain chain;
    chain.addSource(m_profile.callsign, m_seq++);
    if (!to.isEmpty())
        chain.addDestination(to);
    chain.add(VRD_EXT_TEXT, text.toLatin1().left(180));
    m_txCount++;
    const QByteArray payload = chain.bytes();
    // Turnaround of the remote modem.
    QTimer::singleShot(150 + m_rng->bounded(300), this, [this, payload] { transmit(payload); });
}

void SimStation::sendData(const QByteArray &data)
{
    ExtChain chain;
    chain.addSource(m_profile.callsign, m_seq++);
    if (!chain.add(VRD_EXT_DATA, data)) {
        simLog(m_profile.callsign, QString("data of %1 bytes does not fit a packet").arg(data.size()));
        return;
    }
    m_txCount++;
    transmit(chain.bytes());
}
