#include "gatewayframer.h"

#include <QtEndian>

#include <cstring>

void GatewayFramer::append(const QByteArray &bytes)
{
    m_buffer.append(bytes);
}

GatewayFramer::Result GatewayFramer::next(uint32_t *type, QByteArray *content)
{
    if (m_buffer.size() < int(sizeof(iridium_msg_hdr_t)))
        return NeedMore;
    iridium_msg_hdr_t hdr;
    memcpy(&hdr, m_buffer.constData(), sizeof(hdr));
    const uint32_t totLength = qFromLittleEndian(hdr.tot_length);
    if (totLength < sizeof(hdr.type) || totLength > MAX_MESSAGE) {
        m_buffer.clear();
        return Malformed;
    }
    const int end = int(sizeof(hdr.tot_length) + totLength);
    if (m_buffer.size() < end)
        return NeedMore;
    *type = qFromLittleEndian(hdr.type);
    *content = m_buffer.mid(int(sizeof(hdr)), end - int(sizeof(hdr)));
    m_buffer.remove(0, end);
    return Message;
}

QByteArray GatewayFramer::frame(uint32_t type, const QByteArray &content)
{
    iridium_msg_hdr_t hdr;
    hdr.tot_length = qToLittleEndian(uint32_t(sizeof(hdr.type) + content.size()));
    hdr.type = qToLittleEndian(type);
    return QByteArray(reinterpret_cast<const char *>(&hdr), sizeof(hdr)) + content;
}

bool GatewayFramer::readSbdRequest(const QByteArray &content, QString *imei, bool *flush, QByteArray *message)
{
    if (content.size() < IMEI_LEN + 1)
        return false;
    *imei = QString::fromUtf8(content.left(IMEI_LEN));
    *flush = content.at(IMEI_LEN) != 0;
    *message = content.mid(IMEI_LEN + 1);
    return true;
}

bool GatewayFramer::readRelayPayload(const QByteArray &content, QString *callsign, QByteArray *payload)
{
    if (content.size() < CALLSIGN_LEN)
        return false;
    const QByteArray field = content.left(CALLSIGN_LEN);
    const int nul = field.indexOf('\0');
    *callsign = QString::fromUtf8(nul < 0 ? field : field.left(nul));
    *payload = content.mid(CALLSIGN_LEN);
    return true;
}

QByteArray GatewayFramer::vehiclePayload(const QString &imei, const QByteArray &data)
{
    QByteArray field = imei.toLatin1().left(IMEI_LEN);
    field.append(QByteArray(IMEI_LEN - field.size(), '\0'));
    return field + data;
}
