#include "spplink.h"

#include "varda_spp_host.h"

SppLink::SppLink(const QString &name, Writer writer, QObject *parent)
    : QObject(parent)
    , m_name(name)
    , m_writer(std::move(writer))
{
    m_host.setSource(name);
    connect(&m_host, &SppHost::newPacket, this,
        [this](uint8_t type, uint8_t *data, uint16_t len, const QString &) {
            emit frameReceived(this, type, QByteArray(reinterpret_cast<const char *>(data), len));
        });
}

QString SppLink::name() const
{
    return m_name;
}

void SppLink::feed(const QByteArray &bytes)
{
    for (char c : bytes)
        m_host.parse(uint8_t(c));
}

void SppLink::send(const QByteArray &frame, bool corrupted)
{
    if (frame.isEmpty())
        return;
    m_writer(frame);
    m_sent++;
    m_corrupted += corrupted ? 1 : 0;
}

QString SppLink::takeTally()
{
    const QString tally = QString("%1 frames sent, %2 with a bad CRC").arg(m_sent).arg(m_corrupted);
    m_sent = m_corrupted = 0;
    return tally;
}

QByteArray SppLink::frame(quint8 type, const QByteArray &payload)
{
    if (payload.isEmpty() || payload.size() > 255)
        return QByteArray();
    const auto *d = reinterpret_cast<const uint8_t *>(payload.constData());
    vrd_spphdr_t hdr;
    varda_spp_fill_header(&hdr, type, d, uint8_t(payload.size()));
    QByteArray out(reinterpret_cast<const char *>(&hdr), sizeof(hdr));
    return out + payload;
}
