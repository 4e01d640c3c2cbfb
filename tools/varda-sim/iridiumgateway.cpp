#include "iridiumgateway.h"

#include <QTcpSocket>

#include "simglider.h"
#include "simlog.h"

namespace
{
// Until the vehicle's next session, and between tries while its modem is off.
const int SessionDelayMs = 1500;
const int RetryMs = 10000;
}

IridiumGateway::IridiumGateway(QObject *parent)
    : QObject(parent)
{
    m_session.setSingleShot(true);
    connect(&m_server, &QTcpServer::newConnection, this, &IridiumGateway::acceptClient);
    connect(&m_session, &QTimer::timeout, this, &IridiumGateway::runSession);
}

bool IridiumGateway::listen(const QHostAddress &address, quint16 port, QString *error)
{
    if (!m_server.listen(address, port)) {
        *error = QString("gateway port %1: %2").arg(port).arg(m_server.errorString());
        return false;
    }
    simLog("gateway", QString("listening on TCP %1:%2").arg(address.toString()).arg(port));
    return true;
}

void IridiumGateway::setVehicle(SimGlider *glider, const QString &imei)
{
    m_vehicle = glider;
    m_imei = imei;
}

void IridiumGateway::setRate(double rate)
{
    m_rate = rate;
}

void IridiumGateway::setCorruptLength(bool corrupt)
{
    m_corruptLength = corrupt;
}

void IridiumGateway::acceptClient()
{
    while (QTcpSocket *socket = m_server.nextPendingConnection()) {
        m_clients.insert(socket, GatewayStream());
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { readClient(socket); });
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
            simLog("gateway", "client disconnected");
            m_clients.remove(socket);
            socket->deleteLater();
        });
        simLog("gateway",
            QString("client %1:%2 connected").arg(socket->peerAddress().toString()).arg(socket->peerPort()));
    }
}

void IridiumGateway::readClient(QTcpSocket *socket)
{
    auto it = m_clients.find(socket);
    if (it == m_clients.end())
        return;
    it->append(socket->readAll());
    uint32_t type = 0;
    QByteArray content;
    for (;;) {
        const GatewayStream::Result result = it->next(&type, &content);
        if (result == GatewayStream::NeedMore)
            return;
        if (result == GatewayStream::Malformed) {
            simLog("gateway", "malformed message length, closing the connection");
            socket->abort();
            return;
        }
        handleMessage(type, content);
    }
}

void IridiumGateway::handleMessage(uint32_t type, const QByteArray &content)
{
    if (type == GATEWAY_SBD_TX_REQUEST) {
        queueSbd(content);
        return;
    }
    QString callsign;
    QByteArray payload;
    if (type == GATEWAY_RAW_PAYLOAD && GatewayStream::readRelayPayload(content, &callsign, &payload)) {
        simLog("gateway", QString("relayhub: %1 bytes from %2").arg(payload.size()).arg(callsign));
        return;
    }
    simLog("gateway", QString("ignored message of type %1, %2 bytes").arg(type).arg(content.size()));
}

void IridiumGateway::queueSbd(const QByteArray &content)
{
    QString imei;
    bool flush = false;
    QByteArray message;
    if (!GatewayStream::readSbdRequest(content, &imei, &flush, &message)) {
        simLog("gateway", "SBD request too short");
        return;
    }
    if (imei != m_imei || !m_vehicle) {
        simLog("gateway", QString("no vehicle with IMEI %1, message dropped").arg(imei));
        return;
    }
    if (flush)
        m_mtQueue.clear();
    m_mtQueue.append(message);
    simLog("gateway",
        QString("queued %1 bytes for %2%3 (%4 waiting)")
            .arg(message.size())
            .arg(imei, flush ? ", queue flushed" : "")
            .arg(m_mtQueue.size()));
    if (!m_session.isActive())
        m_session.start(int(SessionDelayMs / m_rate));
}

void IridiumGateway::runSession()
{
    while (!m_mtQueue.isEmpty()) {
        if (!m_vehicle->receiveSbd(m_mtQueue.first())) {
            simLog("gateway", "vehicle modem off, keeping the queue");
            m_session.start(int(RetryMs / m_rate));
            return;
        }
        simLog("gateway", QString("delivered %1 bytes to %2").arg(m_mtQueue.first().size()).arg(m_imei));
        m_mtQueue.removeFirst();
    }
}

void IridiumGateway::deliverMo(const QByteArray &data)
{
    const QByteArray frame
        = GatewayStream::frame(GATEWAY_RAW_PAYLOAD, GatewayStream::vehiclePayload(m_imei, data));
    if (m_corruptLength && !m_clients.isEmpty()) {
        m_corruptLength = false;
        QByteArray absurd = frame;
        absurd[3] = char(0x7F); // tot_length about 2 GB; the content follows as if it fitted
        for (auto it = m_clients.cbegin(); it != m_clients.cend(); ++it)
            it.key()->write(absurd);
        simLog("gateway",
            QString("fault: one message with an absurd length to %1 client(s)").arg(m_clients.size()));
    }
    for (auto it = m_clients.cbegin(); it != m_clients.cend(); ++it)
        it.key()->write(frame);
    simLog("gateway",
        QString("MO %1 bytes from %2 to %3 client(s)").arg(data.size()).arg(m_imei).arg(m_clients.size()));
}
