#include "extchain.h"

#include "varda_extension.h"
#include "varda_packets.h"

ExtChain::ExtChain() = default;

ExtChain::ExtChain(const QByteArray &received)
{
    const auto *d = reinterpret_cast<const uint8_t *>(received.constData());
    const uint16_t len = uint16_t(qMin(received.size(), 0xFFFF));
    const uint16_t count = vrd_ext_numpkts(d, len);
    int pos = 0;
    for (uint16_t i = 0; i < count; i++) {
        const quint8 size = d[pos + 1];
        m_parts.insert(d[pos], received.mid(pos + 2, size));
        pos += size + 2;
    }
    if (count)
        m_bytes = received.left(pos);
}

bool ExtChain::add(quint8 type, const QByteArray &data)
{
    if (data.size() > 255 || m_bytes.size() + 2 + data.size() > VRD_MAX_PAYLOAD)
        return false;
    m_bytes.append(char(type));
    m_bytes.append(char(data.size()));
    m_bytes.append(data);
    m_parts.insert(type, data);
    return true;
}

bool ExtChain::addSource(const QString &callsign, quint8 seq)
{
    return add(VRD_EXT_SRC, encodeCallsign(callsign) + char(seq));
}

bool ExtChain::addDestination(const QString &callsign)
{
    return add(VRD_EXT_DEST, encodeCallsign(callsign));
}

QByteArray ExtChain::bytes() const
{
    return m_bytes;
}

bool ExtChain::has(quint8 type) const
{
    return m_parts.contains(type);
}

QByteArray ExtChain::value(quint8 type) const
{
    return m_parts.value(type);
}

QString ExtChain::callsign(quint8 type) const
{
    const QByteArray enc = m_parts.value(type);
    if (enc.size() < VRD_CALLSIGN_ENC_LEN)
        return QString();
    char text[VRD_CALLSIGN_TEXT_LEN];
    vrd_ext_decode_callsign(text, reinterpret_cast<const uint8_t *>(enc.constData()));
    return QString::fromLatin1(text);
}

QByteArray ExtChain::encodeCallsign(const QString &callsign)
{
    uint8_t enc[VRD_CALLSIGN_ENC_LEN] = { 0 }; // stays zero for a malformed SSID
    vrd_ext_encode_callsign(enc, callsign.toLatin1().constData());
    return QByteArray(reinterpret_cast<const char *>(enc), sizeof(enc));
}
