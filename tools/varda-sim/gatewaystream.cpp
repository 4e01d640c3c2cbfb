#include "gatewaystream.h"

#include <QtEndian>

void GatewayStream::append(const QByteArray &bytes)
{
    m_framer.append(reinterpret_cast<const uint8_t *>(bytes.constData()), size_t(bytes.size()));
}

GatewayStream::Result GatewayStream::next(uint32_t *type, QByteArray *content)
{
    std::vector<uint8_t> packet;
    switch (m_framer.next(&packet)) {
    case GatewayFramer::NeedMore:
        return NeedMore;
    case GatewayFramer::Malformed:
        return Malformed;
    case GatewayFramer::Message:
        break;
    }
    *type = qFromLittleEndian<uint32_t>(packet.data());
    *content = QByteArray(reinterpret_cast<const char *>(packet.data()) + GATEWAY_TYPE_FIELD,
        int(packet.size()) - GATEWAY_TYPE_FIELD);
    return Message;
}

QByteArray GatewayStream::frame(uint32_t type, const QByteArray &content)
{
    const std::vector<uint8_t> message = GatewayFramer::frame(
        type, reinterpret_cast<const uint8_t *>(content.constData()), size_t(content.size()));
    return QByteArray(reinterpret_cast<const char *>(message.data()), int(message.size()));
}

bool GatewayStream::readSbdRequest(const QByteArray &content, QString *imei, bool *flush, QByteArray *message)
{
    if (content.size() < IMEI_LEN + 1)
        return false;
    *imei = QString::fromUtf8(content.left(IMEI_LEN));
    *flush = content.at(IMEI_LEN) != 0;
    *message = content.mid(IMEI_LEN + 1);
    return true;
}

bool GatewayStream::readRelayPayload(const QByteArray &content, QString *callsign, QByteArray *payload)
{
    if (content.size() < CALLSIGN_LEN)
        return false;
    const QByteArray field = content.left(CALLSIGN_LEN);
    const int nul = field.indexOf('\0');
    *callsign = QString::fromUtf8(nul < 0 ? field : field.left(nul));
    *payload = content.mid(CALLSIGN_LEN);
    return true;
}

QByteArray GatewayStream::vehiclePayload(const QString &imei, const QByteArray &data)
{
    QByteArray field = imei.toLatin1().left(IMEI_LEN);
    field.append(QByteArray(IMEI_LEN - field.size(), '\0'));
    return field + data;
}
