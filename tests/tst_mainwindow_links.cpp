#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QProcess>
#include <QSerialPort>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTimer>
#include <QUdpSocket>

#include "mainwindow_harness.h"

using namespace harness;

namespace
{

QStringList formLabels(const WindowDriver &driver)
{
    QStringList labels;
    for (const QLabel *label : driver.find<QGroupBox>("UdpSettingsGroup")->findChildren<QLabel *>())
        labels.append(label->text());
    return labels;
}

bool showsIcon(const WindowDriver &driver, const char *resource)
{
    const QImage::Format format = QImage::Format_ARGB32_Premultiplied;
    return driver.find<QLabel>("m_packet_inducator")
               ->pixmap(Qt::ReturnByValue)
               .toImage()
               .convertToFormat(format)
        == QImage(QLatin1String(resource)).convertToFormat(format);
}

// A UDP peer on 127.0.0.1 that plays the modem.
struct UdpPeer {
    QUdpSocket socket;
    QHostAddress client;
    quint16 client_port = 0;
    UdpPeer()
    {
        socket.bind(QHostAddress(QHostAddress::LocalHost), 0);
    }
    // The size of the next datagram from the window, -1 when none came.
    int waitForDatagram(int timeout_ms = 5000)
    {
        if (!QTest::qWaitFor([this] { return socket.hasPendingDatagrams(); }, timeout_ms))
            return -1;
        QByteArray datagram(int(socket.pendingDatagramSize()), '\0');
        socket.readDatagram(datagram.data(), datagram.size(), &client, &client_port);
        return datagram.size();
    }
};

} // namespace

class TestMainWindowLinks : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        MessageLog::install();
    }
    void startState();
    void linkTypeRebuildsRows_data();
    void linkTypeRebuildsRows();
    void hostResolution_data();
    void hostResolution();
    void tcpDisconnect_data();
    void tcpDisconnect();
    void udpLink();
    void serialLink();
};

void TestMainWindowLinks::startState()
{
    WindowDriver driver;
    QCOMPARE(driver.window()->windowTitle(), QStringLiteral("Varda toolbox v1.5"));
    QCOMPARE(driver.find<QComboBox>("linkTypeCombo")->currentIndex(), -1);
    QCOMPARE(formLabels(driver), QStringList { "Link type" });
    QVERIFY(!driver.find<QGroupBox>("iridiumGroup"));
    QVERIFY(showsIcon(driver, ":/img/888888-rfid-signal-16.png"));
    QCOMPARE(driver.window()->statusBar()->currentMessage(), QStringLiteral("Ready"));
}

void TestMainWindowLinks::linkTypeRebuildsRows_data()
{
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");
    QTest::addColumn<QStringList>("labels");
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("value");
    QTest::newRow("serial") << "TCP"
                            << "Serial" << QStringList { "Link type", "Port", "Baud rate" }
                            << "serialBaudText"
                            << "38400";
    QTest::newRow("udp") << "Serial"
                         << "UDP" << QStringList { "Link type", "Host", "Port" } << "portText"
                         << "10004";
}

// Every change of the link type builds fresh rows with fresh widgets.
void TestMainWindowLinks::linkTypeRebuildsRows()
{
    QFETCH(QString, first);
    QFETCH(QString, second);
    QFETCH(QStringList, labels);
    QFETCH(QString, field);
    QFETCH(QString, value);
    WindowDriver driver;
    driver.chooseLinkType(first);
    QPointer<QPushButton> oldButton = driver.find<QPushButton>("connectButton");
    driver.chooseLinkType(second);
    QVERIFY(oldButton.isNull());
    QCOMPARE(formLabels(driver), labels);
    QCOMPARE(driver.find<QLineEdit>(field.toLatin1().constData())->text(), value);
    QCOMPARE(driver.window()->findChildren<QPushButton *>("connectButton").size(), 1);
}

void TestMainWindowLinks::hostResolution_data()
{
    QTest::addColumn<QString>("host");
    QTest::addColumn<QString>("line");
    QTest::newRow("ipv4 literal") << "127.0.0.1"
                                  << "Valid IPv4 address.";
    QTest::newRow("ipv6 literal is looked up") << "::1"
                                               << "DNS lookup success: ::1";
    QTest::newRow("invalid name") << "no such host!"
                                  << "DNS lookup failed:";
}

void TestMainWindowLinks::hostResolution()
{
    QFETCH(QString, host);
    QFETCH(QString, line);
    TcpModem modem;
    WindowDriver driver;
    driver.chooseLinkType("TCP");
    driver.setField("hostText", host);
    driver.setField("portText", QString::number(modem.port()));
    MessageLog::clear();
    driver.pressConnect();
    QVERIFY2(MessageLog::startsWith(line), qPrintable(line));
    QVERIFY(!line.startsWith("DNS lookup failed") || driver.connectText() == "Connect");
}

void TestMainWindowLinks::tcpDisconnect_data()
{
    QTest::addColumn<bool>("reconnect");
    QTest::addColumn<bool>("byPeer");
    QTest::newRow("peer closes") << false << true;
    QTest::newRow("user disconnects") << false << false;
    QTest::newRow("peer closes after a reconnect") << true << true;
}

// A frame in two writes is logged once; "TCP disconnected!" only for a loss the user did not ask for.
void TestMainWindowLinks::tcpDisconnect()
{
    QFETCH(bool, reconnect);
    QFETCH(bool, byPeer);
    TcpModem modem;
    WindowDriver driver;
    QVERIFY(driver.connectTcp(&modem));
    if (reconnect) {
        // The handlers are now connected twice; every frame still counts once.
        driver.pressConnect();
        driver.pressConnect();
        QVERIFY(modem.accept());
        QTRY_COMPARE(driver.connectText(), QStringLiteral("Disconnect"));
        modem.send(replyFrame("one") + replyFrame("two"));
        QTRY_COMPARE(driver.packetRows(), 2);
    } else {
        const QByteArray frame = rxFrame(113, 1, src("ALPHA-1", 5) + stat());
        modem.send(frame.left(7));
        QTest::qWait(50);
        modem.send(frame.mid(7));
        QTRY_COMPARE(driver.packetRows(), 1);
        QCOMPARE(driver.packetCell(0, 1), QStringLiteral("rx(-87), tcp"));
        QVERIFY(showsIcon(driver, ":/img/blue-rfid-signal-16.png"));
        QTRY_VERIFY(showsIcon(driver, ":/img/888888-rfid-signal-16.png"));
    }
    QSignalSpy peerGone(modem.socket(), &QTcpSocket::disconnected);
    if (byPeer)
        modem.socket()->disconnectFromHost();
    else
        driver.pressConnect();
    QTRY_COMPARE(driver.connectText(), QStringLiteral("Connect"));
    QVERIFY(byPeer || peerGone.wait());
    QCOMPARE(driver.window()->statusBar()->currentMessage() == "TCP disconnected!", byPeer);
}

// Keep-alive on connect and at each tick, to the port in the field at that
// tick; datagram boundaries are not frame boundaries.
void TestMainWindowLinks::udpLink()
{
    UdpPeer peer, second;
    WindowDriver driver;
    driver.chooseLinkType("UDP");
    driver.setField("portText", QString::number(peer.socket.localPort()));
    driver.pressConnect();
    QCOMPARE(driver.connectText(), QStringLiteral("Disconnect"));
    QCOMPARE(peer.waitForDatagram(), 0);

    const QByteArray first = rxFrame(140, 1, src("BRAVO-2", 1));
    const QByteArray stream = first + replyFrame("ok");
    for (const QByteArray &part :
        { stream.left(4), stream.mid(4, first.size()), stream.mid(4 + first.size()) })
        peer.socket.writeDatagram(part, peer.client, peer.client_port);
    QTRY_COMPARE(driver.packetRows(), 2);
    QCOMPARE(driver.packetCell(1, 0), QStringLiteral("BRAVO-2"));
    QCOMPARE(driver.packetCell(1, 1), QStringLiteral("rx(-60), udp"));
    QCOMPARE(driver.packetCell(0, 1), QStringLiteral("local, udp"));
    driver.typeCommand("ver");
    QCOMPARE(peer.waitForDatagram(), 8);

    driver.setField("portText", QString::number(second.socket.localPort()));
    QCOMPARE(second.waitForDatagram(15000), 0);
    QVERIFY(!peer.socket.hasPendingDatagrams());
    driver.pressConnect();
    QCOMPARE(driver.connectText(), QStringLiteral("Connect"));
    QVERIFY(!driver.find<QTimer>("m_udp_tick_timer")->isActive());
}

void TestMainWindowLinks::serialLink()
{
    QTemporaryDir dir;
    WindowDriver driver;
    driver.chooseLinkType("Serial");
    auto *ports = driver.find<QComboBox>("serialPortCombo");
    ports->addItem(dir.filePath("no-such-port"));
    ports->setCurrentIndex(ports->count() - 1);
    MessageLog::clear();
    driver.pressConnect();
    QVERIFY(MessageLog::startsWith("Port NOT opened: "));
    QCOMPARE(driver.connectText(), QStringLiteral("Connect"));

    const QString socat = QStandardPaths::findExecutable("socat");
    if (socat.isEmpty())
        QSKIP("socat is not installed");
    const QString windowEnd = dir.filePath("a"), modemEnd = dir.filePath("b");
    QProcess pair;
    pair.start(socat, { "-d", "-d", "pty,raw,echo=0,link=" + windowEnd, "pty,raw,echo=0,link=" + modemEnd });
    QTRY_VERIFY(QFile::exists(windowEnd) && QFile::exists(modemEnd));
    QSerialPort modem;
    modem.setPortName(modemEnd);
    QVERIFY2(modem.open(QIODevice::ReadWrite), qPrintable(modem.errorString()));
    ports->addItem(windowEnd);
    ports->setCurrentIndex(ports->count() - 1);
    driver.pressConnect();
    QCOMPARE(driver.connectText(), QStringLiteral("Disconnect"));
    const auto *port = driver.window()->findChild<QSerialPort *>();
    QCOMPARE(port->baudRate(), 38400);

    modem.write(rxFrame(120, 1, src("CHARLIE", 9)));
    QTRY_COMPARE(driver.packetRows(), 1);
    QCOMPARE(driver.packetCell(0, 1), QStringLiteral("rx(-80), serial"));

    driver.find<QCheckBox>("terminalAddNewline")->setChecked(true);
    driver.typeCommand("status");
    QByteArray received;
    QList<SentFrame> sent;
    QVERIFY(QTest::qWaitFor([&] { return !(sent += takeFrames(&(received += modem.readAll()))).isEmpty(); }));
    QCOMPARE(sent.at(0).payload, QByteArray("status\r\n"));

    driver.chooseLinkType("TCP"); // closes the port
    QVERIFY(!port->isOpen());
    modem.close();
    pair.terminate();
    QVERIFY(pair.waitForFinished(5000));
}

QTEST_MAIN(TestMainWindowLinks)
#include "tst_mainwindow_links.moc"
