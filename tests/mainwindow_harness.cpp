#include "mainwindow_harness.h"

namespace harness
{

bool Modem::open()
{
    const quint16 port = address.toUShort(); // 0 the first time: any free one
    if (link == Udp)
        udp.reset(new QUdpSocket);
    if (link != Serial) {
        const bool up = link == Tcp ? server.isListening() || server.listen(QHostAddress::LocalHost, port)
                                    : udp->bind(QHostAddress::LocalHost, port);
        address = QString::number(link == Tcp ? server.serverPort() : udp->localPort());
        return up;
    }
    address = dir.filePath("window");
    socat.start(
        "socat", { "pty,raw,echo=0,link=" + address, "pty,raw,echo=0,link=" + dir.filePath("modem") });
    serial.setPortName(dir.filePath("modem"));
    return QTest::qWaitFor([this] { return QFile::exists(address) && serial.open(QIODevice::ReadWrite); });
}

bool Modem::accept()
{
    const bool accepted = QTest::qWaitFor(
        [this] {
            return link == Serial || (udp ? udp->hasPendingDatagrams() : server.hasPendingConnections());
        },
        LINK_WAIT_MS);
    if (accepted && link == Tcp)
        tcp = server.nextPendingConnection();
    waitForFrames(0);
    return accepted;
}

void Modem::drop()
{
    if (tcp)
        tcp->disconnectFromHost();
    udp.reset();
    serial.close();
    socat.terminate();
    socat.waitForFinished(5000);
}

void Modem::send(const QByteArray &bytes)
{
    QIODevice *device = link == Tcp ? static_cast<QIODevice *>(tcp.data()) : &serial;
    if (link == Udp)
        udp->writeDatagram(bytes, client, clientPort);
    else if (device->write(bytes) == bytes.size())
        device->waitForBytesWritten(1000);
}

QList<SentFrame> Modem::waitForFrames(int count)
{
    QList<SentFrame> frames;
    QIODevice *device = link == Tcp ? static_cast<QIODevice *>(tcp.data()) : &serial;
    static_cast<void>(QTest::qWaitFor(
        [&] {
            while (udp && udp->hasPendingDatagrams()) {
                QByteArray datagram(int(udp->pendingDatagramSize()), '\0');
                udp->readDatagram(datagram.data(), datagram.size(), &client, &clientPort);
                received += datagram;
            }
            if (link != Udp && device && device->isOpen())
                received += device->readAll();
            return (frames += takeFrames(&received)).size() >= count;
        },
        LINK_WAIT_MS));
    return frames;
}

} // namespace harness
