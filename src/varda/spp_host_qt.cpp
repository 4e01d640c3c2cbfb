#include "spp_host_qt.h"

#include "varda_packets.h"

SppHost::SppHost(QObject *parent)
    : QObject(parent)
{
}

void SppHost::setSource(const QString &source)
{
    m_source = source;
}

void SppHost::parse(uint8_t byte)
{
    if (vrd_frame_rx_byte(&VARDA_SPP_FORMAT, d, &d_len, &d_target, &state, &m_counters.dropped, byte))
        frameComplete();
}

void SppHost::frameComplete()
{
    if (vrd_frame_check(d, d_len, &m_counters))
        emit newPacket(d[3], d + SPP_HEADER_LEN, uint16_t(d_len - SPP_HEADER_LEN), m_source);
}

quint64 SppHost::badCrcFrames() const
{
    return m_counters.bad_crc;
}

quint64 SppHost::droppedBytes() const
{
    return m_counters.dropped;
}

// Fills start and CRC of a frame whose type, length and payload are in place.
static void sealFrame(QByteArray &frame)
{
    vrd_frame_seal(reinterpret_cast<uint8_t *>(frame.data()), size_t(frame.size()), SPP_START);
}

QByteArray SppHost::packCommand(const QString &cmd)
{
    QByteArray frame(SPP_HEADER_LEN, '\0');
    frame.append(cmd.toLocal8Bit());
    frame[3] = char(SPP_TYPE_CMD);
    frame[4] = char(cmd.length() & 0xFF);
    sealFrame(frame);
    return frame;
}

QByteArray SppHost::packTransmit(const uint8_t *data, unsigned len, uint8_t flags)
{
    if (len > VRD_MAX_PAYLOAD)
        return QByteArray();
    QByteArray frame(SPP_HEADER_LEN + 1, '\0');
    frame.append(reinterpret_cast<const char *>(data), int(len));
    frame[3] = char(SPP_TYPE_TX);
    frame[4] = char(len + 1);
    frame[5] = char(flags);
    sealFrame(frame);
    return frame;
}

QByteArray SppHost::packTransmit(const QByteArray &data, uint8_t flags)
{
    return packTransmit(reinterpret_cast<const uint8_t *>(data.constData()), unsigned(data.size()), flags);
}
