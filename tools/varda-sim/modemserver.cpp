#include "modemserver.h"

#include <QNetworkDatagram>
#include <QRandomGenerator>
#include <QTcpSocket>

#include "pseudoterminal.h"
#include "simlog.h"
#include "spplink.h"

namespace
{
// A UDP client sends a keep-alive every 10 s; after three missed ones it is
// taken to be gone.
const qint64 UdpPeerTimeoutMs = 35000;
}

ModemServer::ModemServer(QObject *parent)
    : QObject(parent)
{
    connect(&m_tcp, &QTcpServer::newConnection, this, &ModemServer::acceptTcp);
    connect(&m_udp, &QUdpSocket::readyRead, this, &ModemServer::readUdp);
    connect(&m_drop, &QTimer::timeout, this, &ModemServer::dropClients);
}

void ModemServer::setFaults(double dropEverySeconds, double corruptShare, QRandomGenerator *rng)
{
    m_corrupt = corruptShare;
    m_rng = rng;
    if (dropEverySeconds > 0)
        m_drop.start(int(dropEverySeconds * 1000));
}

bool ModemServer::listen(const QHostAddress &address, quint16 port, QString *error)
{
    if (!m_tcp.listen(address, port)) {
        *error = QString("TCP port %1: %2").arg(port).arg(m_tcp.errorString());
        return false;
    }
    if (!m_udp.bind(address, port)) {
        *error = QString("UDP port %1: %2").arg(port).arg(m_udp.errorString());
        return false;
    }
    simLog("modem", QString("listening on TCP and UDP %1:%2").arg(address.toString()).arg(port));
    return true;
}

QString ModemServer::openPty(QString *error)
{
    m_pty = new PseudoTerminal(this);
    if (!m_pty->open(error))
        return QString();
    m_ptyLink = addPtyLink();
    return m_pty->name();
}

SppLink *ModemServer::addPtyLink()
{
    PseudoTerminal *pty = m_pty;
    SppLink *link = addLink("serial", [pty](const QByteArray &bytes) { pty->write(bytes); });
    connect(pty, &PseudoTerminal::bytesRead, link, &SppLink::feed);
    simLog("modem", QString("serial link on %1").arg(pty->name()));
    return link;
}

// Graceful closes: what was written still arrives, so no frame is cut.
void ModemServer::dropClients()
{
    const QList<QTcpSocket *> sockets = findChildren<QTcpSocket *>(QString(), Qt::FindDirectChildrenOnly);
    simLog("modem",
        QString("fault: dropping %1 TCP client(s)%2").arg(sockets.size()).arg(m_pty ? " and the pty" : ""));
    for (QTcpSocket *socket : sockets)
        socket->disconnectFromHost();
    if (!m_pty)
        return;
    simLog("modem", "serial link closed (" + m_ptyLink->takeTally() + ")");
    delete m_ptyLink;
    QString error;
    if (!m_pty->reopen(&error)) {
        simLog("modem", "pty not reopened: " + error);
        m_ptyLink = nullptr;
        m_pty->deleteLater();
        m_pty = nullptr;
        return;
    }
    m_ptyLink = addPtyLink();
}

SppLink *ModemServer::addLink(const QString &name, const std::function<void(const QByteArray &)> &writer)
{
    auto *link = new SppLink(name, writer, this);
    connect(link, &SppLink::frameReceived, this, &ModemServer::frameReceived);
    connect(link, &QObject::destroyed, this, [this, link] { m_links.removeOne(link); });
    m_links.append(link);
    return link;
}

void ModemServer::acceptTcp()
{
    while (QTcpSocket *socket = m_tcp.nextPendingConnection()) {
        socket->setParent(this);
        const QString name
            = QString("tcp %1:%2").arg(socket->peerAddress().toString()).arg(socket->peerPort());
        SppLink *link = addLink(name, [socket](const QByteArray &bytes) { socket->write(bytes); });
        link->setParent(socket);
        connect(socket, &QTcpSocket::readyRead, link, [socket, link] { link->feed(socket->readAll()); });
        connect(socket, &QTcpSocket::disconnected, this, [this, socket, name, link] {
            simLog("modem", name + " disconnected (" + link->takeTally() + ")");
            socket->deleteLater();
        });
        simLog("modem", name + " connected");
        emit clientJoined(link);
    }
}

void ModemServer::readUdp()
{
    while (m_udp.hasPendingDatagrams()) {
        const QNetworkDatagram datagram = m_udp.receiveDatagram();
        if (!datagram.isValid())
            continue;
        const QHostAddress address = datagram.senderAddress();
        const quint16 port = quint16(datagram.senderPort());
        const QString key = QString("udp %1:%2").arg(address.toString()).arg(port);
        auto it = m_udpPeers.find(key);
        if (it == m_udpPeers.end()) {
            SppLink *link = addLink(key, [this, address, port](const QByteArray &bytes) {
                m_udp.writeDatagram(bytes, address, port);
            });
            it = m_udpPeers.insert(key, UdpPeer { link, QElapsedTimer() });
            simLog("modem", key + " joined");
            it->lastHeard.start();
            emit clientJoined(it->link);
        }
        it->lastHeard.start();
        it->link->feed(datagram.data());
    }
}

void ModemServer::dropSilentUdpPeers()
{
    for (auto it = m_udpPeers.begin(); it != m_udpPeers.end();) {
        if (it->lastHeard.elapsed() < UdpPeerTimeoutMs) {
            ++it;
            continue;
        }
        simLog("modem", it.key() + " timed out");
        delete it->link;
        it = m_udpPeers.erase(it);
    }
}

void ModemServer::broadcast(const QByteArray &frame)
{
    dropSilentUdpPeers();
    const bool corrupt = m_corrupt > 0 && m_rng && m_rng->generateDouble() < m_corrupt && frame.size() > 2;
    QByteArray sent = frame;
    if (corrupt)
        sent[1] = char(sent.at(1) ^ 0x5A); // the CRC's low byte: the frame stays whole, its check fails
    for (SppLink *link : qAsConst(m_links))
        link->send(sent, corrupt);
}

QList<SppLink *> ModemServer::links() const
{
    return m_links;
}
