#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QProcess>
#include <QSerialPort>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>
#include <QUdpSocket>

#include <functional>

#include "mainwindow_harness.h"

using namespace harness;

// Links that fail under the window: a modem that drops the TCP connection in
// the middle of a frame, a UDP peer that goes away, a pseudo-terminal whose
// far end is closed. The window must keep running, come back when the user
// connects again, and deliver every complete frame, except those the framing
// host swallows after a cut frame: it keeps its state across links, so the
// first bytes of the new link complete the cut frame (which then fails its
// CRC), and a frame that those bytes run into is lost with it.

namespace
{

const int WAIT_MS = 10000;

QString callsign(int n)
{
    return QStringLiteral("F%1").arg(n, 2, 10, QLatin1Char('0'));
}

// Received packets from the stations F00, F01, ...: 22 bytes each, none
// with a start byte inside, so that after a cut the receiver can only start
// again at a frame boundary.
QByteArray numbered(int n)
{
    return rxFrame(120, 1, src(callsign(n), uint8_t(n)));
}

QByteArray numberedFrames(int first, int count)
{
    QByteArray frames;
    for (int n = first; n < first + count; n++)
        frames += numbered(n);
    return frames;
}

QStringList callsigns(int first, int count)
{
    QStringList list;
    for (int n = first; n < first + count; n++)
        list.append(callsign(n));
    return list;
}

// How many frames of the new link a frame cut after `cut` bytes swallows:
// the new bytes complete it, up to the length it declared; a cut in the
// five header bytes takes that length from the new bytes themselves.
int framesLost(int cut, const QByteArray &next)
{
    if (cut == 0)
        return 0;
    const int frame = numbered(0).size();
    const int declared = cut > 4 ? frame : 5 + uint8_t(next.at(4 - cut));
    const int swallowed = declared - cut;
    return (swallowed + frame - 1) / frame;
}

// The "Station" column, oldest row first.
QStringList loggedStations(const WindowDriver &driver)
{
    QStringList list;
    for (int row = driver.packetRows() - 1; row >= 0; row--)
        list.append(driver.packetCell(row, 0));
    return list;
}

// A UDP peer on a fixed port of 127.0.0.1 that can go away and come back.
class UdpModem
{
public:
    bool open(quint16 port = 0)
    {
        m_socket.reset(new QUdpSocket);
        return m_socket->bind(QHostAddress::LocalHost, port);
    }
    void close()
    {
        m_socket.reset();
    }
    quint16 port() const
    {
        return m_socket->localPort();
    }
    // Waits for a keep-alive and remembers where it came from.
    bool waitForKeepAlive()
    {
        if (!QTest::qWaitFor([this] { return m_socket->hasPendingDatagrams(); }, WAIT_MS))
            return false;
        QByteArray datagram(int(m_socket->pendingDatagramSize()), '\0');
        m_socket->readDatagram(datagram.data(), datagram.size(), &m_client, &m_client_port);
        return datagram.isEmpty();
    }
    void send(const QByteArray &datagram)
    {
        m_socket->writeDatagram(datagram, m_client, m_client_port);
    }

private:
    std::unique_ptr<QUdpSocket> m_socket;
    QHostAddress m_client;
    quint16 m_client_port = 0;
};

// A pseudo-terminal pair made by socat; the window opens one end, the test
// plays the modem on the other.
class PtyPair
{
public:
    explicit PtyPair(const QString &dir)
        : m_window_end(dir + "/window")
        , m_modem_end(dir + "/modem")
    {
    }
    ~PtyPair()
    {
        stop();
    }
    bool start()
    {
        m_socat.start(QStandardPaths::findExecutable("socat"),
            { "pty,raw,echo=0,link=" + m_window_end, "pty,raw,echo=0,link=" + m_modem_end });
        if (!QTest::qWaitFor([this] { return QFile::exists(m_window_end) && QFile::exists(m_modem_end); }))
            return false;
        m_modem.setPortName(m_modem_end);
        return m_modem.open(QIODevice::ReadWrite);
    }
    // Both ends go away with socat.
    void stop()
    {
        m_modem.close();
        if (m_socat.state() != QProcess::NotRunning) {
            m_socat.terminate();
            m_socat.waitForFinished(5000);
        }
    }
    QString windowEnd() const
    {
        return m_window_end;
    }
    void send(const QByteArray &bytes)
    {
        m_modem.write(bytes);
        m_modem.waitForBytesWritten(1000);
    }

private:
    QString m_window_end;
    QString m_modem_end;
    QProcess m_socat;
    QSerialPort m_modem;
};

} // namespace

class TestLinkFaults : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void tcpDropMidFrame_data();
    void tcpDropMidFrame();
    void udpPeerGoesAndReturns_data();
    void udpPeerGoesAndReturns();
    void serialFarEndGoesAway_data();
    void serialFarEndGoesAway();

private:
    void cutData();
    void deliversAfterTheCut(
        const WindowDriver &driver, int cut, const std::function<void(const QByteArray &)> &send);
};

void TestLinkFaults::initTestCase()
{
    MessageLog::install();
    for (int n = 0; n < 17; n++)
        QVERIFY2(!numbered(n).mid(1).contains('$'), qPrintable(QString::number(n)));
}

// Frames F00 and F01 arrive whole, F02 is cut after `cut` bytes (0: not
// sent at all); after the link comes back, F03 to F16 follow.
void TestLinkFaults::cutData()
{
    QTest::addColumn<int>("cut");
    QTest::newRow("between frames") << 0;
    QTest::newRow("in the payload") << 12;
    QTest::newRow("after the length byte") << 5;
    QTest::newRow("in the header") << 3;
}

// F03 to F16 over the link that came back: all of them are logged after
// F00 and F01, except those the cut frame swallows.
void TestLinkFaults::deliversAfterTheCut(
    const WindowDriver &driver, int cut, const std::function<void(const QByteArray &)> &send)
{
    const QByteArray after = numberedFrames(3, 14);
    send(after);
    const int lost = framesLost(cut, after);
    QTRY_COMPARE_WITH_TIMEOUT(driver.packetCell(0, 0), QStringLiteral("F16"), WAIT_MS);
    QCOMPARE(loggedStations(driver), callsigns(0, 2) + callsigns(3 + lost, 14 - lost));
}

void TestLinkFaults::tcpDropMidFrame_data()
{
    cutData();
}

void TestLinkFaults::tcpDropMidFrame()
{
    QFETCH(int, cut);

    TcpModem modem;
    WindowDriver driver;
    QVERIFY(driver.connectTcp(&modem));
    // Closed in the middle of a frame; what was sent before still arrives.
    modem.send(numberedFrames(0, 2) + numbered(2).left(cut));
    modem.socket()->disconnectFromHost();
    QTRY_COMPARE(driver.connectText(), QStringLiteral("Connect"));
    QCOMPARE(driver.window()->statusBar()->currentMessage(), QStringLiteral("TCP disconnected!"));

    driver.pressConnect();
    QVERIFY(modem.accept());
    QTRY_COMPARE(driver.connectText(), QStringLiteral("Disconnect"));
    deliversAfterTheCut(driver, cut, [&modem](const QByteArray &bytes) { modem.send(bytes); });
}

void TestLinkFaults::udpPeerGoesAndReturns_data()
{
    cutData();
}

// UDP knows no connection: the window keeps sending to a peer that is gone.
// The peer comes back on its port; the user connects again, which tells it
// the window's new address.
void TestLinkFaults::udpPeerGoesAndReturns()
{
    QFETCH(int, cut);

    UdpModem modem;
    QVERIFY(modem.open());
    const quint16 port = modem.port();
    WindowDriver driver;
    driver.chooseLinkType("UDP");
    driver.setField("portText", QString::number(port));
    driver.pressConnect();
    QVERIFY(modem.waitForKeepAlive());
    modem.send(numberedFrames(0, 2) + numbered(2).left(cut));
    QTRY_COMPARE(driver.packetRows(), 2);

    modem.close();
    driver.typeCommand("ver"); // into the void
    QCOMPARE(driver.connectText(), QStringLiteral("Disconnect"));

    QVERIFY(modem.open(port));
    driver.pressConnect();
    QCOMPARE(driver.connectText(), QStringLiteral("Connect"));
    driver.pressConnect();
    QVERIFY(modem.waitForKeepAlive());
    deliversAfterTheCut(driver, cut, [&modem](const QByteArray &bytes) { modem.send(bytes); });
}

void TestLinkFaults::serialFarEndGoesAway_data()
{
    cutData();
}

// The far end of the pseudo-terminal closes while the window has it open:
// the window closes the port, says so, and can open it again once it is
// back; the port path is typed in, the system does not list it.
void TestLinkFaults::serialFarEndGoesAway()
{
    QFETCH(int, cut);
    if (QStandardPaths::findExecutable("socat").isEmpty())
        QSKIP("socat is not installed");

    QTemporaryDir dir;
    PtyPair pty(dir.path());
    QVERIFY(pty.start());
    WindowDriver driver;
    driver.chooseLinkType("Serial");
    QLineEdit *portPath = driver.find<QComboBox>("serialPortCombo")->lineEdit();
    QVERIFY(portPath);
    portPath->clear();
    QTest::keyClicks(portPath, pty.windowEnd());
    driver.pressConnect();
    QCOMPARE(driver.connectText(), QStringLiteral("Disconnect"));
    const auto *port = driver.window()->findChild<QSerialPort *>();

    pty.send(numberedFrames(0, 2));
    QTRY_COMPARE(driver.packetRows(), 2);
    if (cut > 0) {
        QSignalSpy portRead(port, &QSerialPort::readyRead);
        pty.send(numbered(2).left(cut));
        QVERIFY(portRead.wait(WAIT_MS));
    }
    MessageLog::clear();
    pty.stop();
    QTRY_COMPARE_WITH_TIMEOUT(driver.connectText(), QStringLiteral("Connect"), WAIT_MS);
    QVERIFY(!port->isOpen());
    QCOMPARE(driver.window()->statusBar()->currentMessage(), QStringLiteral("Serial port lost!"));
    QVERIFY(MessageLog::startsWith("Serial port lost:"));

    QVERIFY(pty.start());
    driver.pressConnect();
    QCOMPARE(driver.connectText(), QStringLiteral("Disconnect"));
    deliversAfterTheCut(driver, cut, [&pty](const QByteArray &bytes) { pty.send(bytes); });
}

QTEST_MAIN(TestLinkFaults)
#include "tst_link_faults.moc"
