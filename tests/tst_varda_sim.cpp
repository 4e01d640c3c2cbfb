// The network simulator run as a separate process, talked to over real
// sockets and its pseudo-terminal the way the tool and the gateway client do.

#include <QHostAddress>
#include <QNetworkDatagram>
#include <QSerialPort>
#include <QSet>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QUdpSocket>
#include <QtEndian>

#include <cstring>
#include <functional>

#include "reference_frames.h"
#include "simprocess.h"
#include "telemetry.h"
#include "varda_extension.h"
#include "varda_extension_qt.h"
#include "varda_spp_host.h"

namespace
{

const char *const Glider = "RLHB-1";
const char *const Imei = "300100000000000";
const quint32 SbdTxRequest = 420000;
const quint32 RawPayload = 420001;

struct Frame {
    int type;
    QByteArray payload;
};

// A received radio packet (SPP type 0) taken apart.
struct RxPacket {
    spp_rxhdr_t hdr;
    VardaExtension ext;
    QByteArray raw;
};

RxPacket rxPacket(const Frame &frame)
{
    RxPacket p;
    memcpy(&p.hdr, frame.payload.constData(), sizeof(p.hdr));
    p.raw = frame.payload.mid(sizeof(p.hdr));
    p.ext.parse(reinterpret_cast<const uint8_t *>(p.raw.constData()), uint16_t(p.raw.size()));
    return p;
}

QByteArray encodedCallsign(const char *callsign)
{
    uint8_t enc[VRD_CALLSIGN_ENC_LEN];
    vrd_ext_encode_callsign(enc, callsign);
    return QByteArray(reinterpret_cast<const char *>(enc), sizeof(enc));
}

QByteArray shortCommand(quint8 seq, quint8 type, quint8 arg)
{
    const command_t cmd = { seq, type, arg };
    return char(MSG_COMMAND) + QByteArray(reinterpret_cast<const char *>(&cmd), sizeof(cmd));
}

QByteArray longCommand(quint8 seq, quint8 type, quint32 arg)
{
    command_long_t cmd;
    cmd.cmd_seq = seq;
    cmd.type = type;
    cmd.arg = qToLittleEndian(arg);
    return char(MSG_COMMAND_LONG) + QByteArray(reinterpret_cast<const char *>(&cmd), sizeof(cmd));
}

QByteArray gatewayMessage(quint32 type, const QByteArray &content)
{
    QByteArray msg(8, '\0');
    qToLittleEndian<quint32>(quint32(4 + content.size()), msg.data());
    qToLittleEndian<quint32>(type, msg.data() + 4);
    return msg + content;
}

QByteArray sbdRequest(const QByteArray &message, bool flush, const QByteArray &imei = Imei)
{
    return gatewayMessage(SbdTxRequest, imei + char(flush ? 1 : 0) + message);
}

// Splits a vehicle payload into (type, record) by the record sizes; false
// when a type is unknown or the payload does not end on a record boundary.
bool splitVehiclePayload(const QByteArray &payload, QList<QPair<int, QByteArray>> *records)
{
    int pos = 0;
    while (pos < payload.size()) {
        const int type = quint8(payload.at(pos));
        if (type >= MSG_TYPES || SIZES[type] == MSG_SIZE_NONE || pos + 1 + SIZES[type] > payload.size())
            return false;
        records->append({ type, payload.mid(pos + 1, SIZES[type]) });
        pos += 1 + SIZES[type];
    }
    return true;
}

// The housekeeping2 record of a payload, if it holds one.
bool findHousekeeping2(const QByteArray &payload, housekeeping2_t *hk)
{
    QList<QPair<int, QByteArray>> records;
    if (!splitVehiclePayload(payload, &records))
        return false;
    for (const auto &r : qAsConst(records)) {
        if (r.first == MSG_HOUSEKEEPING2) {
            memcpy(hk, r.second.constData(), sizeof(*hk));
            return true;
        }
    }
    return false;
}

QList<int> recordTypes(const QByteArray &payload)
{
    QList<QPair<int, QByteArray>> records;
    splitVehiclePayload(payload, &records);
    QList<int> types;
    for (const auto &r : qAsConst(records))
        types << r.first;
    return types;
}

// A client of the simulated modem over TCP, UDP or the pseudo-terminal.
// Frames are split and CRC-checked here with Qt's own CRC-16, independently
// of the framing code of the project.
class ModemClient
{
public:
    enum Kind { Tcp, Udp, Serial };

    bool open(Kind kind, quint16 port, const QString &pty)
    {
        m_kind = kind;
        m_port = port;
        if (kind == Tcp) {
            QObject::connect(&m_tcp, &QTcpSocket::readyRead, &m_tcp, [this] { take(m_tcp.readAll()); });
            m_tcp.connectToHost(QHostAddress::LocalHost, port);
            return m_tcp.waitForConnected(5000);
        }
        if (kind == Udp) {
            QObject::connect(&m_udp, &QUdpSocket::readyRead, &m_udp, [this] {
                while (m_udp.hasPendingDatagrams())
                    take(m_udp.receiveDatagram().data());
            });
            if (!m_udp.bind(QHostAddress(QHostAddress::LocalHost), 0))
                return false;
            m_udp.writeDatagram(QByteArray(), QHostAddress::LocalHost, port); // keep-alive
            return true;
        }
        QObject::connect(&m_serial, &QSerialPort::readyRead, &m_serial, [this] { take(m_serial.readAll()); });
        m_serial.setPortName(pty);
        if (!m_serial.open(QIODevice::ReadWrite))
            return false;
        m_serial.clear(); // what piled up while nobody had the port open
        return true;
    }

    void send(const QByteArray &bytes)
    {
        if (m_kind == Tcp)
            m_tcp.write(bytes);
        else if (m_kind == Udp)
            m_udp.writeDatagram(bytes, QHostAddress::LocalHost, m_port);
        else
            m_serial.write(bytes);
    }

    // The first frame received from now on that matches.
    bool waitFor(
        const std::function<bool(const Frame &)> &match, Frame *found = nullptr, int timeoutMs = 15000)
    {
        const int from = m_frames.size();
        return QTest::qWaitFor(
            [&] {
                for (int i = from; i < m_frames.size(); i++) {
                    if (match(m_frames.at(i))) {
                        if (found)
                            *found = m_frames.at(i);
                        return true;
                    }
                }
                return false;
            },
            timeoutMs);
    }

    QList<Frame> frames() const
    {
        return m_frames;
    }
    int badFrames() const
    {
        return m_bad;
    }

private:
    // Every frame must follow the one before it directly and carry a good
    // CRC. Only the bytes before the first good frame are skipped: a serial
    // reader may join in the middle of one.
    void take(const QByteArray &bytes)
    {
        m_stream += bytes;
        while (m_stream.size() >= SPP_HEADER_LEN) {
            const int len = quint8(m_stream.at(4));
            if (m_stream.size() < SPP_HEADER_LEN + len)
                return;
            const QByteArray frame = m_stream.left(SPP_HEADER_LEN + len);
            const QByteArray expected = reference::sppFrame(quint8(frame.at(3)), frame.mid(SPP_HEADER_LEN));
            if (frame == expected) {
                m_frames.append({ quint8(frame.at(3)), frame.mid(SPP_HEADER_LEN) });
                m_stream.remove(0, frame.size());
            } else if (m_frames.isEmpty()) {
                m_stream.remove(0, 1);
            } else {
                m_bad++;
                m_stream.clear();
            }
        }
    }

    Kind m_kind = Tcp;
    quint16 m_port = 0;
    QTcpSocket m_tcp;
    QUdpSocket m_udp;
    QSerialPort m_serial;
    QByteArray m_stream;
    QList<Frame> m_frames;
    int m_bad = 0;
};

// A client of the simulated Iridium gateway.
class GatewayClient
{
public:
    bool open(quint16 port)
    {
        QObject::connect(&m_socket, &QTcpSocket::readyRead, &m_socket, [this] { take(m_socket.readAll()); });
        m_socket.connectToHost(QHostAddress::LocalHost, port);
        return m_socket.waitForConnected(5000);
    }
    void send(const QByteArray &bytes)
    {
        m_socket.write(bytes);
    }
    QTcpSocket *socket()
    {
        return &m_socket;
    }
    // Vehicle data (RawPayload, IMEI stripped) received from now on whose
    // housekeeping reports seq as the last command run.
    bool waitForConfirmation(quint8 seq, QByteArray *payload)
    {
        const int from = m_payloads.size();
        return QTest::qWaitFor(
            [&] {
                for (int i = from; i < m_payloads.size(); i++) {
                    housekeeping2_t hk;
                    if (findHousekeeping2(m_payloads.at(i), &hk) && hk.last_command_seq == seq) {
                        *payload = m_payloads.at(i);
                        return true;
                    }
                }
                return false;
            },
            15000);
    }
    QStringList imeis() const
    {
        return m_imeis;
    }

private:
    void take(const QByteArray &bytes)
    {
        m_stream += bytes;
        while (m_stream.size() >= 4) {
            const quint32 length = qFromLittleEndian<quint32>(m_stream.constData());
            if (quint32(m_stream.size() - 4) < length)
                return;
            const QByteArray message = m_stream.mid(4, int(length));
            m_stream.remove(0, 4 + int(length));
            if (qFromLittleEndian<quint32>(message.constData()) == RawPayload) {
                m_imeis << QString::fromLatin1(message.mid(4, 15));
                m_payloads << message.mid(4 + 15);
            }
        }
    }

    QTcpSocket m_socket;
    QByteArray m_stream;
    QStringList m_imeis;
    QList<QByteArray> m_payloads;
};

// Sends a command block to the simulated vehicle over the radio link or the
// gateway and waits for the vehicle data whose housekeeping confirms seq.
bool sendVehicleBlock(
    SimProcess &sim, const QString &link, const QByteArray &block, quint8 seq, QByteArray *confirmation)
{
    if (link == "iridium") {
        GatewayClient gateway;
        if (!gateway.open(sim.gatewayPort()))
            return false;
        gateway.send(sbdRequest(block, false));
        return gateway.waitForConfirmation(seq, confirmation);
    }
    ModemClient client;
    if (!client.open(ModemClient::Tcp, sim.modemPort(), QString()))
        return false;
    VardaExtension packet;
    packet.addDestination(Glider);
    packet.addData(block);
    client.send(reference::sppFrame(SPP_TYPE_TX, char(1) + packet.getPacket()));
    Frame found;
    const bool ok = client.waitFor(
        [seq](const Frame &f) {
            housekeeping2_t hk;
            return f.type == SPP_TYPE_RX && rxPacket(f).ext.getSource() == Glider
                && findHousekeeping2(rxPacket(f).ext.getData(), &hk) && hk.last_command_seq == seq;
        },
        &found);
    *confirmation = rxPacket(found).ext.getData();
    return ok;
}

} // namespace

Q_DECLARE_METATYPE(ModemClient::Kind)

class tst_VardaSim : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();

    void framesArrive_data();
    void framesArrive();
    void modemCommandReply_data();
    void modemCommandReply();
    void extensionCommandReply_data();
    void extensionCommandReply();
    void vehicleCommandConfirmed_data();
    void vehicleCommandConfirmed();
    void gatewayQueueFlush_data();
    void gatewayQueueFlush();
    void relayhubPayloadTaken();
    void badInputSurvived_data();
    void badInputSurvived();
    void badOptionsRefused_data();
    void badOptionsRefused();
    void busyPortReported();

private:
    bool modemStillAnswers();

    SimProcess m_sim;
};

void tst_VardaSim::initTestCase()
{
    QVERIFY2(m_sim.start({ "--rate", "10", "--seed", "7", "--pty" }), qPrintable(m_sim.log()));
    QVERIFY(!m_sim.ptyName().isEmpty());
}

void tst_VardaSim::cleanupTestCase()
{
    m_sim.stop();
}

void tst_VardaSim::framesArrive_data()
{
    QTest::addColumn<ModemClient::Kind>("kind");
    QTest::newRow("tcp") << ModemClient::Tcp;
    QTest::newRow("udp") << ModemClient::Udp;
    QTest::newRow("serial") << ModemClient::Serial;
}

void tst_VardaSim::framesArrive()
{
    QFETCH(ModemClient::Kind, kind);
    ModemClient client;
    QVERIFY(client.open(kind, m_sim.modemPort(), m_sim.ptyName()));

    // The modem's own beacon teaches the tool the local callsign.
    Frame local;
    QVERIFY(client.waitFor([](const Frame &f) { return f.type == SPP_TYPE_LOCAL; }, &local));
    QVERIFY(quint8(local.payload.at(0)) & 1);
    VardaExtension localExt;
    localExt.parse(
        reinterpret_cast<const uint8_t *>(local.payload.constData()) + 1, uint16_t(local.payload.size() - 1));
    QCOMPARE(localExt.getSource(), QString("BASE-1"));

    // Stations beacon with src, stat, simplehop and toh at plausible levels.
    QSet<QString> heard;
    QVERIFY(client.waitFor([&heard](const Frame &f) {
        if (f.type != SPP_TYPE_RX)
            return false;
        const RxPacket p = rxPacket(f);
        if (p.ext.hasExtensionType(VRD_EXT_STAT)) {
            const QStringList types = { "src", "stat", "simplehop", "toh" };
            const int rssi = p.hdr.rssi - 200;
            if ((p.hdr.varda_flags & 1) && p.ext.getExtensionTypeStrings() == types && rssi >= -140
                && rssi <= -20 && p.hdr.noise - 200 < rssi)
                heard.insert(p.ext.getSource());
        }
        return heard.size() >= 3;
    }));
    QCOMPARE(client.badFrames(), 0);
}

void tst_VardaSim::modemCommandReply_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("reply");
    QTest::newRow("status with newline") << "status\r\n"
                                         << "BASE-1 up ";
    QTest::newRow("callsign") << "call"
                              << "callsign BASE-1\r\n";
    QTest::newRow("upper case") << "VERSION"
                                << "Varda modem 1.4.17\r\n";
    QTest::newRow("unknown") << "frobnicate now"
                             << "unknown command: frobnicate now\r\n";
}

void tst_VardaSim::modemCommandReply()
{
    QFETCH(QString, command);
    QFETCH(QString, reply);
    ModemClient client;
    QVERIFY(client.open(ModemClient::Tcp, m_sim.modemPort(), QString()));
    client.send(reference::sppFrame(SPP_TYPE_CMD, command.toLatin1()));
    Frame answer;
    QVERIFY(client.waitFor([](const Frame &f) { return f.type == SPP_TYPE_CMD; }, &answer));
    QVERIFY2(QString::fromLatin1(answer.payload).startsWith(reply), answer.payload.constData());
    QVERIFY(answer.payload.endsWith("\r\n"));
}

void tst_VardaSim::extensionCommandReply_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("reply");
    QTest::newRow("ping") << "ping"
                          << "pong";
    QTest::newRow("with newline") << "version\r\n"
                                  << "Varda modem 1.4.17";
    QTest::newRow("unknown") << "reboot"
                             << "unknown command: reboot";
}

void tst_VardaSim::extensionCommandReply()
{
    QFETCH(QString, command);
    QFETCH(QString, reply);
    ModemClient client;
    QVERIFY(client.open(ModemClient::Tcp, m_sim.modemPort(), QString()));

    VardaExtension request;
    request.addSource("TEST-9", 42);
    request.addDestination("ALPHA-1");
    request.addCommand(command);
    const QByteArray packet = request.getPacket();
    client.send(reference::sppFrame(SPP_TYPE_TX, char(1) + packet));

    // The modem echoes what it sent as a local packet...
    QVERIFY(client.waitFor(
        [&packet](const Frame &f) { return f.type == SPP_TYPE_LOCAL && f.payload == char(1) + packet; }));
    // ...and the station answers the sender.
    Frame answer;
    QVERIFY(client.waitFor(
        [](const Frame &f) {
            return f.type == SPP_TYPE_RX && rxPacket(f).ext.hasExtensionType(VRD_EXT_TEXT)
                && rxPacket(f).ext.getSource() == "ALPHA-1";
        },
        &answer));
    const RxPacket p = rxPacket(answer);
    QCOMPARE(p.ext.getExtensionCmdReply(), reply);
    QVERIFY(p.ext.hasExtensionType(VRD_EXT_DEST));
    QVERIFY(p.raw.contains(encodedCallsign("TEST-9")));
}

void tst_VardaSim::vehicleCommandConfirmed_data()
{
    QTest::addColumn<QString>("link");
    QTest::addColumn<QByteArray>("block");
    QTest::addColumn<int>("seq");
    QTest::addColumn<int>("ctdState");

    const quint32 mask = TM_HOUSEKEEPING2 | TM_POSTIME;
    for (const QString link : { "pell", "iridium" }) {
        const quint8 messages = link == "pell" ? CMD_TELEMETRY_MESSAGES_PELL : CMD_TELEMETRY_MESSAGES_IRIDIUM;
        const QByteArray setMask = longCommand(30, messages, mask);
        QTest::newRow(qPrintable(link + ": messages")) << link << setMask << 30 << 1;
        QTest::newRow(qPrintable(link + ": CTD off"))
            << link << setMask + shortCommand(31, CMD_POWER, POWER_CTD) << 31 << 0;
        QTest::newRow(qPrintable(link + ": CTD on, still booting"))
            << link
            << setMask + shortCommand(32, CMD_POWER, POWER_CTD) + shortCommand(33, CMD_POWER, POWER_CTD | 1)
            << 33 << 2;
        QTest::newRow(qPrintable(link + ": last of the sequence numbers"))
            << link << setMask + shortCommand(255, CMD_TELEMETRY_REQUEST, 0) << 255 << 1;
    }
}

// Each row gets a vehicle of its own: the commands change its state.
void tst_VardaSim::vehicleCommandConfirmed()
{
    QFETCH(QString, link);
    QFETCH(QByteArray, block);
    QFETCH(int, seq);
    QFETCH(int, ctdState);

    SimProcess sim;
    QVERIFY(sim.start({ "--rate", "10", "--stations", "0" }));
    QByteArray confirmation;
    QVERIFY(sendVehicleBlock(sim, link, block, quint8(seq), &confirmation));

    // The confirming report carries exactly the messages asked for.
    QCOMPARE(recordTypes(confirmation), QList<int>({ MSG_HOUSEKEEPING2, MSG_POSTIME }));
    housekeeping2_t hk;
    QVERIFY(findHousekeeping2(confirmation, &hk));
    QCOMPARE(int(hk.ctd_state), ctdState);
    QCOMPARE(int(hk.pell_en), 1);
    QCOMPARE(int(hk.iridium_en), 1);
}

void tst_VardaSim::gatewayQueueFlush_data()
{
    QTest::addColumn<bool>("flush");
    QTest::addColumn<QStringList>("run");
    QTest::addColumn<QStringList>("dropped");
    QTest::newRow("queued in order") << false << QStringList { "seq 21 ", "seq 22 " } << QStringList();
    QTest::newRow("flush drops the waiting one")
        << true << QStringList { "seq 22 " } << QStringList { "seq 21 " };
}

void tst_VardaSim::gatewayQueueFlush()
{
    QFETCH(bool, flush);
    QFETCH(QStringList, run);
    QFETCH(QStringList, dropped);
    SimProcess sim;
    QVERIFY(sim.start({ "--rate", "10", "--roles", "gateway,glider" }));
    GatewayClient gateway;
    QVERIFY(gateway.open(sim.gatewayPort()));

    // Both arrive before the vehicle's next session.
    gateway.send(sbdRequest(shortCommand(21, CMD_SONAR_SCRIPT, 1), false)
        + sbdRequest(shortCommand(22, CMD_SONAR_SCRIPT, 2), flush));
    QByteArray confirmation;
    QVERIFY(gateway.waitForConfirmation(22, &confirmation));
    QVERIFY(gateway.imeis().contains(Imei));
    for (const QString &line : run)
        QVERIFY2(sim.log().contains("Iridium command " + line), qPrintable(sim.log()));
    for (const QString &line : dropped)
        QVERIFY2(!sim.log().contains("Iridium command " + line), qPrintable(sim.log()));
}

void tst_VardaSim::relayhubPayloadTaken()
{
    GatewayClient gateway;
    QVERIFY(gateway.open(m_sim.gatewayPort()));
    QByteArray callsign("RLHB-1");
    callsign.append(QByteArray(11 - callsign.size(), '\0'));
    gateway.send(gatewayMessage(RawPayload, callsign + QByteArray(5, 'x')));
    QVERIFY(m_sim.waitForLog("relayhub: 5 bytes from RLHB-1"));
}

void tst_VardaSim::badInputSurvived_data()
{
    QTest::addColumn<bool>("toGateway");
    QTest::addColumn<QByteArray>("bytes");

    QByteArray noise(3000, '\0');
    for (int i = 0; i < noise.size(); i++)
        noise[i] = char((i * 151 + 17) ^ (i >> 3));
    VardaExtension badBlock;
    badBlock.addDestination(Glider);
    badBlock.addData(QByteArray("\x07\x01\x02", 3));

    QTest::newRow("modem: noise") << false << noise;
    QTest::newRow("modem: empty frame swallowing")
        << false << QByteArray("$\x00\x00\x03\x00", 5) + noise.left(300);
    QTest::newRow("modem: bad CRC") << false << QByteArray("$\x12\x34\x03\x04ping", 9);
    QTest::newRow("modem: transmit without packet")
        << false << reference::sppFrame(SPP_TYPE_TX, QByteArray(1, '\1'));
    QTest::newRow("modem: unknown type") << false << reference::sppFrame(9, "abc");
    QTest::newRow("glider: malformed command block")
        << false << reference::sppFrame(SPP_TYPE_TX, char(1) + badBlock.getPacket());
    QTest::newRow("gateway: huge length")
        << true << QByteArray("\xff\xff\xff\xff\xa0\x68\x06\x00", 8) + noise;
    QTest::newRow("gateway: length below type") << true << QByteArray("\x02\x00\x00\x00\xa0\x68", 6);
    QTest::newRow("gateway: short request") << true << gatewayMessage(SbdTxRequest, "300");
    QTest::newRow("gateway: unknown IMEI")
        << true << sbdRequest(shortCommand(1, 0, 0), false, "999999999999999");
    QTest::newRow("gateway: unknown type") << true << gatewayMessage(7, "hello");
}

void tst_VardaSim::badInputSurvived()
{
    QFETCH(bool, toGateway);
    QFETCH(QByteArray, bytes);
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, toGateway ? m_sim.gatewayPort() : m_sim.modemPort());
    QVERIFY(socket.waitForConnected(5000));
    socket.write(bytes);
    QVERIFY(socket.waitForBytesWritten(5000));
    QVERIFY(modemStillAnswers());
    QCOMPARE(m_sim.process()->state(), QProcess::Running);
}

bool tst_VardaSim::modemStillAnswers()
{
    ModemClient client;
    if (!client.open(ModemClient::Tcp, m_sim.modemPort(), QString()))
        return false;
    client.send(reference::sppFrame(SPP_TYPE_CMD, "ping"));
    return client.waitFor([](const Frame &f) { return f.type == SPP_TYPE_CMD && f.payload == "pong\r\n"; });
}

void tst_VardaSim::badOptionsRefused_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QString>("message");
    QTest::newRow("port 0") << QStringList { "--modem-port", "0" } << "ports are numbers";
    QTest::newRow("port too high") << QStringList { "--gateway-port", "70000" } << "ports are numbers";
    QTest::newRow("rate 0") << QStringList { "--rate", "0" } << "rate is a number";
    QTest::newRow("rate not a number") << QStringList { "--rate", "fast" } << "rate is a number";
    QTest::newRow("unknown role") << QStringList { "--roles", "modem,radio" } << "roles are";
    QTest::newRow("glider alone") << QStringList { "--roles", "glider" } << "roles are";
    QTest::newRow("too many stations") << QStringList { "--stations", "9" } << "stations is 0 to 8";
    QTest::newRow("bad address") << QStringList { "--bind", "nowhere" } << "not an address";
    QTest::newRow("bad seed") << QStringList { "--seed", "-3" } << "seed is";
}

void tst_VardaSim::badOptionsRefused()
{
    QFETCH(QStringList, args);
    QFETCH(QString, message);
    QProcess process;
    process.start(SimProcess::program(), args);
    QVERIFY(process.waitForFinished(10000));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 2);
    QVERIFY(QString::fromLocal8Bit(process.readAllStandardError()).contains(message));
}

void tst_VardaSim::busyPortReported()
{
    QTcpServer occupant;
    QVERIFY(occupant.listen(QHostAddress::LocalHost, 0));
    QProcess process;
    process.start(SimProcess::program(),
        { "--modem-port", QString::number(occupant.serverPort()), "--gateway-port",
            QString::number(SimProcess::freePort()) });
    QVERIFY(process.waitForFinished(10000));
    QCOMPARE(process.exitCode(), 1);
    QVERIFY(QString::fromLocal8Bit(process.readAllStandardError())
                .contains(QString("TCP port %1").arg(occupant.serverPort())));
}

QTEST_GUILESS_MAIN(tst_VardaSim)
#include "tst_varda_sim.moc"
