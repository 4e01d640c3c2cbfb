#include "livedecoder.h"

#include <QHostInfo>

#include <chrono>

#include "blockdecoder.h"

namespace
{
const int UdpTickMs = 10000;
const int ConnectWaitMs = 10000;

uint64_t nowUs()
{
    using namespace std::chrono;
    return uint64_t(duration_cast<microseconds>(system_clock::now().time_since_epoch()).count());
}
} // namespace

LiveDecoder::LiveDecoder(const LinkAddress &address, CapturePrinter *printer, QObject *parent)
    : QObject(parent)
    , m_address(address)
    , m_printer(printer)
    , m_segmenter([this](const uint8_t *data, size_t len) { printBlock(data, len); })
{
    connect(&m_tcp, &QTcpSocket::readyRead, this, &LiveDecoder::readTcp);
    connect(&m_tcp, &QTcpSocket::disconnected, this, [this] { emit lost(tr("connection closed")); });
    connect(&m_udp, &QUdpSocket::readyRead, this, &LiveDecoder::readUdp);
    connect(&m_serial, &QSerialPort::readyRead, this, &LiveDecoder::readSerial);
    connect(&m_serial, &QSerialPort::errorOccurred, this, [this](QSerialPort::SerialPortError error) {
        if (error == QSerialPort::ResourceError || error == QSerialPort::ReadError)
            emit lost(m_serial.errorString());
    });
    connect(&m_udpTick, &QTimer::timeout, this, &LiveDecoder::tickUdp);
}

bool LiveDecoder::open(QString *error)
{
    if (m_address.kind == LinkAddress::Serial) {
        m_serial.setPortName(m_address.device);
        m_serial.setBaudRate(m_address.baud);
        if (m_serial.open(QIODevice::ReadWrite))
            return true;
        *error = m_serial.errorString();
        return false;
    }
    if (!m_peer.setAddress(m_address.host)) {
        const QHostInfo info = QHostInfo::fromName(m_address.host);
        if (info.error() != QHostInfo::NoError || info.addresses().isEmpty()) {
            *error = info.errorString();
            return false;
        }
        m_peer = info.addresses().constFirst();
    }
    if (m_address.kind == LinkAddress::Tcp) {
        m_tcp.connectToHost(m_peer, m_address.port);
        if (m_tcp.waitForConnected(ConnectWaitMs))
            return true;
        *error = m_tcp.errorString();
        return false;
    }
    if (!m_udp.bind(0)) {
        *error = m_udp.errorString();
        return false;
    }
    tickUdp();
    m_udpTick.start(UdpTickMs);
    return true;
}

void LiveDecoder::finish()
{
    m_segmenter.finish();
}

void LiveDecoder::readTcp()
{
    feed(m_tcp.readAll());
}

void LiveDecoder::readUdp()
{
    while (m_udp.hasPendingDatagrams()) {
        QByteArray datagram(int(qMax<qint64>(0, m_udp.pendingDatagramSize())), Qt::Uninitialized);
        if (m_udp.readDatagram(datagram.data(), datagram.size()) < 0)
            break;
        feed(datagram);
    }
}

void LiveDecoder::readSerial()
{
    feed(m_serial.readAll());
}

void LiveDecoder::tickUdp()
{
    m_udp.writeDatagram(QByteArray(), m_peer, m_address.port);
}

void LiveDecoder::feed(const QByteArray &bytes)
{
    m_segmenter.feed(reinterpret_cast<const uint8_t *>(bytes.constData()), size_t(bytes.size()));
}

void LiveDecoder::printBlock(const uint8_t *data, size_t len)
{
    DecodedBlock block;
    block.time_us = nowUs();
    block.link = m_address.name().toStdString();
    block.dir = PCAPNG_DIR_IN;
    block.bytes.assign(data, data + len);
    BlockDecoder::decodeModem(data, len, &block);
    m_printer->print(block);
}
