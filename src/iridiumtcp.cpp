#include "iridiumtcp.h"

#include <QCheckBox>
#include <QDebug>
#include <QLineEdit>
#include <QPushButton>
#include <QtEndian>

namespace
{
QByteArray lengthField(int length)
{
    QByteArray field(GATEWAY_LENGTH_FIELD, Qt::Uninitialized);
    qToLittleEndian<uint32_t>(uint32_t(length), field.data());
    return field;
}
} // namespace

IridiumTcp::IridiumTcp(QPushButton *button, QLineEdit *host, QCheckBox *flush, QObject *parent)
    : QObject(parent)
    , m_socket(this)
    , ui_button(button)
    , ui_host(host)
    , ui_flush(flush)
{
    connect(&m_socket, &QTcpSocket::readyRead, this, &IridiumTcp::readyRead);
    connect(&m_socket, &QTcpSocket::connected, this, &IridiumTcp::setConnected);
    connect(&m_socket, &QTcpSocket::disconnected, this, &IridiumTcp::setDisconnected);
    connect(ui_button, &QPushButton::pressed, this, &IridiumTcp::connectPressed);
    connect(&m_socket, &QTcpSocket::errorOccurred, this, &IridiumTcp::reportError);
}

IridiumTcp::~IridiumTcp()
{
    // No widget updates from here: the owner may have deleted them already.
    m_socket.disconnect(this);
    m_socket.close();
}

void IridiumTcp::connectPressed()
{
    if (m_socket.state() == QAbstractSocket::UnconnectedState)
        m_socket.connectToHost(
            ui_host->text(), GatewayPort, QIODevice::ReadWrite, QAbstractSocket::AnyIPProtocol);
    else
        m_socket.close();
}

void IridiumTcp::setConnected()
{
    ui_button->setText(tr("Disconnect"));
    ui_host->setEnabled(false);
    emit connectionStateChanged(true);
}

void IridiumTcp::setDisconnected()
{
    ui_button->setText(tr("Connect"));
    ui_host->setEnabled(true);
    emit connectionStateChanged(false);
}

int IridiumTcp::sendSBD(const QString &imei, const QByteArray &pl)
{
    QByteArray content = imei.toUtf8();
    content.append(char(ui_flush->isChecked() ? 1 : 0));
    content.append(pl);
    qDebug() << "Sending" << pl.size() << "B over Iridium:" << pl;
    return send(SBDTXRequest, content);
}

int IridiumTcp::sendPayload(const QString &callsign, const QByteArray &payload)
{
    if (callsign.size() > MaxCallsign) {
        qWarning().noquote()
            << QStringLiteral("Callsign si too large (%1): %2").arg(callsign.size()).arg(callsign);
        return 0;
    }
    QByteArray content = callsign.toUtf8();
    if (content.size() < CallsignField)
        content.append(CallsignField - content.size(), '\0');
    content.append(payload);
    qDebug() << "Sending glider payload to relayhub";
    return send(RawPayload, content);
}

int IridiumTcp::send(PacketType packetType, const QByteArray &data)
{
    const std::vector<uint8_t> message = GatewayFramer::frame(
        packetType, reinterpret_cast<const uint8_t *>(data.constData()), size_t(data.size()));
    const QByteArray bytes(reinterpret_cast<const char *>(message.data()), int(message.size()));
    const int written = int(m_socket.write(bytes));
    if (written > 0)
        emit messageSent(linkName(), bytes);
    return written;
}

QString IridiumTcp::linkName() const
{
    return QStringLiteral("gateway:%1:%2").arg(m_socket.peerName()).arg(m_socket.peerPort());
}

void IridiumTcp::readyRead()
{
    receive(m_socket.readAll());
}

void IridiumTcp::receive(const QByteArray &bytes)
{
    m_framer.append(reinterpret_cast<const uint8_t *>(bytes.constData()), size_t(bytes.size()));
    std::vector<uint8_t> packet;
    while (m_framer.next(&packet) == GatewayFramer::Message) {
        const QByteArray message(reinterpret_cast<const char *>(packet.data()), int(packet.size()));
        emit messageReceived(linkName(), lengthField(message.size()) + message);
        parsePacket(message);
    }
}

void IridiumTcp::parsePacket(const QByteArray &packet)
{
    const int typeField = GATEWAY_TYPE_FIELD;
    if (packet.size() < typeField) {
        qWarning() << "Packet is malformed (too short)";
        return;
    }
    if (qFromLittleEndian<uint32_t>(packet.constData()) != RawPayload)
        return;
    const QByteArray content = packet.mid(typeField);
    const QString imei = QString::fromUtf8(content.left(ImeiLength));
    const QByteArray data = content.mid(ImeiLength);
    qDebug() << "Data from IMEI" << imei << "length" << data.size() << "content:" << data.toHex();
    emit newData(imei, data);
}

qint64 IridiumTcp::pendingBytes() const
{
    return qint64(m_framer.pending());
}

quint32 IridiumTcp::pendingLength() const
{
    return m_framer.announcedLength();
}

void IridiumTcp::reportError()
{
    emit connectionError(m_socket.errorString());
}
