#include "loadtraffic.h"

#include <string.h>

#include "varda_extension.h"
#include "varda_spp_host.h"

namespace
{

const char LOCAL_CALLSIGN[] = "LOCAL-1";
const char REPLY[] = "OK\r\n";

template <typename Record> QByteArray bytesOf(const Record &record)
{
    return QByteArray(reinterpret_cast<const char *>(&record), int(sizeof record));
}

QByteArray sppFrame(uint8_t type, const QByteArray &payload)
{
    vrd_spphdr_t header;
    varda_spp_fill_header(
        &header, type, reinterpret_cast<const uint8_t *>(payload.constData()), uint8_t(payload.size()));
    return bytesOf(header) + payload;
}

QByteArray rxHeader(uint8_t rssi, uint8_t flags)
{
    const spp_rxhdr_t rx = { 1234567, 90, rssi, 0, flags };
    return bytesOf(rx);
}

// One extension sub-packet: type, size, record.
template <typename Record> QByteArray subPacket(uint8_t type, const Record &record)
{
    return char(type) + (char(sizeof record) + bytesOf(record));
}

QByteArray source(const QString &callsign, uint8_t seq)
{
    varda_src_t src;
    vrd_ext_encode_callsign(src.call_ssid, callsign.toLatin1().constData());
    src.sequence = seq;
    return subPacket(VRD_EXT_SRC, src);
}

varda_stat_t status(int station)
{
    varda_stat_t stat;
    memset(&stat, 0, sizeof stat);
    stat.hw_ver = (2 << 6) | 1;
    stat.serial = uint16_t(1000 + station);
    stat.sw_ver = 0x1203;
    stat.uptime_s = 3600u * uint32_t(station % 500);
    stat.voltage = 124;
    stat.temp = 18;
    stat.signal = 120;
    stat.noise = 90;
    stat.cntr_rx_ok = uint16_t(station * 3);
    return stat;
}

} // namespace

LoadTraffic::LoadTraffic(int stations)
    : m_stations(qMax(1, stations))
{
}

QString LoadTraffic::callsign(int station)
{
    return QStringLiteral("ST%1-%2").arg(station, 5, 10, QLatin1Char('0')).arg(station % 16);
}

QByteArray LoadTraffic::next(int frames)
{
    QByteArray stream;
    for (int i = 0; i < frames; i++) {
        stream += frame(m_slot);
        m_slot = (m_slot + 1) % FRAMES_PER_CYCLE;
    }
    return stream;
}

int LoadTraffic::framesToHearAll() const
{
    const int cycles = (m_stations + BEACONS_PER_CYCLE - 1) / BEACONS_PER_CYCLE;
    return cycles * FRAMES_PER_CYCLE;
}

QByteArray LoadTraffic::frame(int slot)
{
    m_seq++;
    switch (slot) {
    case BEACONS_PER_CYCLE: {
        const QByteArray raw = QByteArray("raw packet without extensions ") + char(m_seq);
        return sppFrame(SPP_TYPE_RX, rxHeader(95, 0) + raw);
    }
    case BEACONS_PER_CYCLE + 1: {
        const uint8_t hop = 0x88;
        const QByteArray echo = source(LOCAL_CALLSIGN, m_seq) + subPacket(VRD_EXT_SIMPLEHOP, hop);
        return sppFrame(SPP_TYPE_LOCAL, char(1) + echo);
    }
    case BEACONS_PER_CYCLE + 2:
        return sppFrame(SPP_TYPE_CMD, QByteArray(REPLY));
    default: {
        const int station = m_next_station;
        m_next_station = (m_next_station + 1) % m_stations;
        return beacon(station);
    }
    }
}

QByteArray LoadTraffic::beacon(int station)
{
    const uint8_t hop = 0xAC;
    const varda_toh_t toh = { 1800000000u, 1 };
    const QByteArray packet = source(callsign(station), m_seq) + subPacket(VRD_EXT_STAT, status(station))
        + subPacket(VRD_EXT_SIMPLEHOP, hop) + subPacket(VRD_EXT_TOH, toh);
    return sppFrame(SPP_TYPE_RX, rxHeader(uint8_t(70 + station % 80), 1) + packet);
}
