// The simulator as a separate process, talked to over real sockets and its
// pseudo-terminal the way the tool and the gateway client do.

#include <QRegularExpression>
#include <QSerialPort>
#include <QTcpSocket>
#include <QTest>
#include <QUdpSocket>

#include <algorithm>
#include <functional>

#include "reference_frames.h"
#include "simprocess.h"
#include "varda_spp_host.h"

namespace
{

using Frame = QPair<int, QByteArray>; // SPP type, payload

// A client of the simulated modem. Frames are checked with Qt's own CRC-16,
// independently of the project's framing code.
class Modem
{
public:
    // link: "tcp", "udp" or the name of a pseudo-terminal.
    bool open(const QString &link, quint16 port)
    {
        if (link != "tcp" && link != "udp") {
            m_serial.setPortName(link);
            m_io = &m_serial;
            return m_serial.open(QIODevice::ReadWrite) && m_serial.clear(); // drops what piled up unread
        }
        QAbstractSocket *socket = link == "tcp" ? static_cast<QAbstractSocket *>(&m_tcp) : &m_udp;
        m_io = socket;
        socket->connectToHost(QHostAddress::LocalHost, port);
        return socket->waitForConnected(5000);
    }

    bool send(const QByteArray &bytes)
    {
        return m_io->write(bytes) == bytes.size();
    }

    // Until count frames received so far match.
    bool waitFor(const std::function<bool(const Frame &)> &match, int count = 1)
    {
        return QTest::qWaitFor(
            [&] {
                read();
                return std::count_if(m_frames.cbegin(), m_frames.cend(), match) >= count;
            },
            15000);
    }

    int badFrames = 0;

private:
    // Each frame must follow the one before directly, with a good CRC. Only
    // bytes before the first are skipped: a serial reader may join mid-frame.
    void read()
    {
        m_stream += m_io->readAll();
        int length;
        while (m_stream.size() >= SPP_HEADER_LEN
            && m_stream.size() >= (length = SPP_HEADER_LEN + quint8(m_stream.at(4)))) {
            const Frame frame { quint8(m_stream.at(3)),
                m_stream.mid(SPP_HEADER_LEN, length - SPP_HEADER_LEN) };
            const bool good = m_stream.left(length) == reference::sppFrame(quint8(frame.first), frame.second);
            if (good)
                m_frames.append(frame);
            else
                badFrames += !m_frames.isEmpty();
            m_stream.remove(0, good ? length : 1);
        }
    }

    QIODevice *m_io = nullptr;
    QTcpSocket m_tcp;
    QUdpSocket m_udp;
    QSerialPort m_serial;
    QByteArray m_stream;
    QList<Frame> m_frames;
};

} // namespace

class tst_VardaSim : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void gatewayInput_data();
    void gatewayInput();
    void modemLink_data();
    void modemLink();
    void optionsChecked_data();
    void optionsChecked();

private:
    SimProcess m_sim;
};

void tst_VardaSim::initTestCase()
{
    QVERIFY2(m_sim.start({ "--rate", "10", "--seed", "7", "--pty" }), qPrintable(m_sim.log()));
}

void tst_VardaSim::gatewayInput_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("logged");
    const QByteArray sbd = QByteArray::fromHex("a0680600") + "300100000000000"; // SBDTXRequest, IMEI
    QTest::newRow("huge length") << QByteArray::fromHex("ffffffff") + sbd << "malformed";
    QTest::newRow("length below type") << QByteArray::fromHex("03000000 a0680600") << "malformed";
    QTest::newRow("no flush byte") << QByteArray::fromHex("13000000") + sbd << "SBD request too short";
}

// Run before modemLink, which shows that the simulator survived.
void tst_VardaSim::gatewayInput()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, logged);
    const int before = m_sim.log().count(logged);
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, m_sim.gatewayPort);
    QVERIFY(socket.waitForConnected(5000));
    socket.write(bytes);
    QTRY_VERIFY_WITH_TIMEOUT(m_sim.log().count(logged) > before, 15000);
}

void tst_VardaSim::modemLink_data()
{
    QTest::addColumn<QString>("link");
    QTest::newRow("tcp") << "tcp";
    QTest::newRow("udp") << "udp";
    QTest::newRow("pty") << QRegularExpression("serial link on (\\S+)").match(m_sim.log()).captured(1);
}

void tst_VardaSim::modemLink()
{
    QFETCH(QString, link);
    Modem modem;
    QVERIFY(modem.open(link, m_sim.modemPort));
    // Garbage first, an empty frame (which swallows what follows) and a transmit
    // request without a packet; over UDP the first datagram makes the modem answer here.
    QVERIFY(
        modem.send(reference::pattern(3000, 17) + QByteArray::fromHex("2400000300") + QByteArray(300, '\0')
            + reference::sppFrame(SPP_TYPE_TX, "\1") + reference::sppFrame(SPP_TYPE_CMD, "call")));
    QVERIFY(modem.waitFor(
        [](const Frame &f) { return f.first == SPP_TYPE_CMD && f.second == "callsign BASE-1\r\n"; }));
    QVERIFY(modem.waitFor([](const Frame &f) { return f.first == SPP_TYPE_RX; }, 10));
    QCOMPARE(modem.badFrames, 0);
}

void tst_VardaSim::optionsChecked_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<int>("exitCode"); // 0: starts
    QTest::addColumn<QString>("message");
    const auto row = [](const char *name, const QStringList &args, int exitCode, const QString &message) {
        QTest::newRow(name) << args << exitCode << message;
    };
    const QString busy = QString::number(m_sim.modemPort);
    row("port 0", { "--modem-port", "0" }, 2, "ports are numbers from 1 to 65535");
    row("port too high", { "--gateway-port", "65536" }, 2, "ports are numbers from 1 to 65535");
    row("rate too low", { "--rate", "0.09" }, 2, "the rate is a number from 0.1 to 100");
    row("rate too high", { "--rate", "100.5" }, 2, "the rate is a number from 0.1 to 100");
    row("slowest rate, most stations", { "--rate", "0.1", "--stations", "8" }, 0, "");
    row("fastest rate, no stations", { "--rate", "100", "--stations", "0" }, 0, "");
    row("too many stations", { "--stations", "9" }, 2, "the number of stations is 0 to 8");
    row("unknown role", { "--roles", "modem,radio" }, 2, "roles are modem, glider and gateway");
    row("glider alone", { "--roles", "glider" }, 2, "at least modem or gateway");
    row("bad address", { "--bind", "nowhere" }, 2, "not an address: nowhere");
    row("bad seed", { "--seed", "-3" }, 2, "the seed is an unsigned number");
    row("busy port", { "--modem-port", busy, "--gateway-port", QString::number(SimProcess::freePort()) }, 1,
        "TCP port " + busy);
}

void tst_VardaSim::optionsChecked()
{
    QFETCH(QStringList, args);
    QFETCH(int, exitCode);
    QFETCH(QString, message);
    SimProcess sim;
    if (exitCode == 0) {
        QVERIFY2(sim.start(args), qPrintable(sim.log()));
        return;
    }
    sim.process.start(SimProcess::program, args);
    QVERIFY(sim.process.waitForFinished(10000));
    QCOMPARE(sim.process.exitCode(), exitCode);
    QVERIFY(sim.log().contains(message));
}

QTEST_GUILESS_MAIN(tst_VardaSim)
#include "tst_varda_sim.moc"
