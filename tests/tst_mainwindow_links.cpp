#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QFormLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProcess>
#include <QProgressBar>
#include <QPushButton>
#include <QSerialPort>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QStatusBar>
#include <QTabWidget>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QUdpSocket>

#include "mainwindow_harness.h"

using namespace harness;

namespace
{

const int KEEP_ALIVE_WAIT_MS = 15000;

QStringList formLabels(QFormLayout *layout)
{
    QStringList labels;
    for (int row = 0; row < layout->rowCount(); row++) {
        QLayoutItem *item = layout->itemAt(row, QFormLayout::LabelRole);
        const auto *label = item ? qobject_cast<const QLabel *>(item->widget()) : nullptr;
        labels.append(label ? label->text() : QString());
    }
    return labels;
}

bool showsIcon(const QLabel *label, const char *resource)
{
    const QImage::Format format = QImage::Format_ARGB32_Premultiplied;
    return label->pixmap(Qt::ReturnByValue).toImage().convertToFormat(format)
        == QImage(QLatin1String(resource)).convertToFormat(format);
}

const char GREY_ICON[] = ":/img/888888-rfid-signal-16.png";
const char BLUE_ICON[] = ":/img/blue-rfid-signal-16.png";

// A UDP peer on 127.0.0.1 that plays the modem.
struct UdpPeer {
    QUdpSocket socket;
    QHostAddress client;
    quint16 client_port = 0;

    UdpPeer()
    {
        socket.bind(QHostAddress(QHostAddress::LocalHost), 0);
    }

    // Waits for one datagram from the window and returns its size (-1 when
    // none came).
    int waitForDatagram(int timeout_ms = 5000)
    {
        if (!QTest::qWaitFor([this] { return socket.hasPendingDatagrams(); }, timeout_ms))
            return -1;
        QByteArray datagram(int(socket.pendingDatagramSize()), '\0');
        socket.readDatagram(datagram.data(), datagram.size(), &client, &client_port);
        return datagram.size();
    }

    void send(const QByteArray &datagram)
    {
        socket.writeDatagram(datagram, client, client_port);
    }
};

} // namespace

class TestMainWindowLinks : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void startState();
    void linkTypeRebuildsRows_data();
    void linkTypeRebuildsRows();
    void hostResolution_data();
    void hostResolution();
    void tcpFramesBothWays();
    void tcpDisconnect_data();
    void tcpDisconnect();
    void udpKeepAliveAndSplitFrames();
    void udpTickFollowsPortField();
    void serialFramesBothWays();
    void serialOpenFailure();
};

void TestMainWindowLinks::initTestCase()
{
    MessageLog::install();
}

void TestMainWindowLinks::startState()
{
    WindowDriver driver;
    MainWindow *window = driver.window();
    QCOMPARE(window->windowTitle(), QStringLiteral("Varda toolbox v1.5"));

    // Nothing selected, and only the "Link type" row.
    QCOMPARE(driver.find<QComboBox>("linkTypeCombo")->currentIndex(), -1);
    auto *settings = qobject_cast<QFormLayout *>(driver.find<QGroupBox>("UdpSettingsGroup")->layout());
    QCOMPARE(formLabels(settings), QStringList { "Link type" });
    QVERIFY(!driver.find<QGroupBox>("iridiumGroup"));
    QVERIFY(driver.find<QGroupBox>("localCallsignGroup")->isVisible());
    QVERIFY(driver.find<QPlainTextEdit>("commandOutputTextEdit")->isReadOnly());

    QVERIFY(showsIcon(driver.find<QLabel>("m_packet_inducator"), GREY_ICON));
    QCOMPARE(window->statusBar()->currentMessage(), QStringLiteral("Ready"));
    QTRY_VERIFY_WITH_TIMEOUT(window->statusBar()->currentMessage().isEmpty(), 10000);
}

void TestMainWindowLinks::linkTypeRebuildsRows_data()
{
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");
    QTest::addColumn<QStringList>("labels");
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("value");

    const QStringList serial { "Link type", "Port", "Baud rate", QString() };
    const QStringList network { "Link type", "Host", "Port", QString() };
    QTest::newRow("serial") << "TCP"
                            << "Serial" << serial << "serialBaudText"
                            << "38400";
    QTest::newRow("tcp after serial") << "Serial"
                                      << "TCP" << network << "hostText"
                                      << "127.0.0.1";
    QTest::newRow("udp after tcp") << "TCP"
                                   << "UDP" << network << "portText"
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

    auto *settings = qobject_cast<QFormLayout *>(driver.find<QGroupBox>("UdpSettingsGroup")->layout());
    QCOMPARE(formLabels(settings), labels);
    QCOMPARE(driver.find<QLineEdit>(field.toLatin1().constData())->text(), value);
    QCOMPARE(driver.connectText(), QStringLiteral("Connect"));
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
    if (line.startsWith("DNS lookup failed"))
        QCOMPARE(driver.connectText(), QStringLiteral("Connect"));
}

void TestMainWindowLinks::tcpFramesBothWays()
{
    TcpModem modem;
    WindowDriver driver;
    QVERIFY(driver.connectTcp(&modem));
    driver.find<QTabWidget>("tabWidget")->setCurrentWidget(driver.find<QWidget>("tabPackets"));
    auto *log = driver.find<QTableView>("packetTable");
    QSignalSpy rows(log->model(), &QAbstractItemModel::rowsInserted);

    // One frame in two writes: logged, laid out as if it had come alone, and
    // the activity icon blinks.
    const QByteArray frame = rxFrame(113, 1, src("ALPHA-1", 5) + stat());
    modem.send(frame.left(7));
    modem.send(frame.mid(7));
    QVERIFY(rows.wait());
    QCOMPARE(driver.packetCell(0, 1), QStringLiteral("rx(-87), tcp"));
    const auto *indicator = driver.find<QLabel>("m_packet_inducator");
    QVERIFY(showsIcon(indicator, BLUE_ICON));
    QVERIFY(log->verticalHeader()->isVisible());
    const QRect bar = driver.rssiBar(0)->geometry();
    log->doItemsLayout();
    QCOMPARE(driver.rssiBar(0)->geometry(), bar);
    QTRY_VERIFY(showsIcon(indicator, GREY_ICON));

    driver.typeCommand("ver");
    const QList<SentFrame> sent = modem.waitForFrames(1);
    QCOMPARE(sent.size(), 1);
    QCOMPARE(sent.at(0).type, 3);
    QCOMPARE(sent.at(0).payload, QByteArray("ver"));
}

void TestMainWindowLinks::tcpDisconnect_data()
{
    QTest::addColumn<bool>("reconnect");
    QTest::addColumn<bool>("byPeer");
    QTest::addColumn<bool>("reported");

    QTest::newRow("peer closes") << false << true << true;
    QTest::newRow("user disconnects") << false << false << false;
    QTest::newRow("peer closes after a reconnect") << true << true << true;
}

// "TCP disconnected!" only for a loss the user did not ask for.
void TestMainWindowLinks::tcpDisconnect()
{
    QFETCH(bool, reconnect);
    QFETCH(bool, byPeer);
    QFETCH(bool, reported);

    TcpModem modem;
    WindowDriver driver;
    QVERIFY(driver.connectTcp(&modem));
    if (reconnect) {
        // Each notification now runs its handler twice; the second run finds
        // nothing, so every frame still counts once.
        driver.pressConnect();
        driver.pressConnect();
        QVERIFY(modem.accept());
        QTRY_COMPARE(driver.connectText(), QStringLiteral("Disconnect"));
        modem.send(replyFrame("one") + replyFrame("two"));
        QTRY_COMPARE(driver.packetRows(), 2);
    }

    QSignalSpy peerGone(modem.socket(), &QTcpSocket::disconnected);
    if (byPeer)
        modem.socket()->disconnectFromHost();
    else
        driver.pressConnect();
    QTRY_COMPARE(driver.connectText(), QStringLiteral("Connect"));
    QVERIFY(byPeer || peerGone.wait());
    const QString message = driver.window()->statusBar()->currentMessage();
    QCOMPARE(message == QLatin1String("TCP disconnected!"), reported);
}

void TestMainWindowLinks::udpKeepAliveAndSplitFrames()
{
    UdpPeer peer;
    WindowDriver driver;
    driver.chooseLinkType("UDP");
    driver.setField("portText", QString::number(peer.socket.localPort()));
    driver.pressConnect();
    QCOMPARE(driver.connectText(), QStringLiteral("Disconnect"));
    QCOMPARE(peer.waitForDatagram(), 0);

    // Datagram boundaries are not frame boundaries.
    const QByteArray first = rxFrame(140, 1, src("BRAVO-2", 1));
    const QByteArray second = replyFrame("ok");
    const QByteArray stream = first + second;
    peer.send(stream.left(4));
    peer.send(stream.mid(4, first.size()));
    peer.send(stream.mid(4 + first.size()));
    QTRY_COMPARE(driver.packetRows(), 2);
    QCOMPARE(driver.packetCell(1, 0), QStringLiteral("BRAVO-2"));
    QCOMPARE(driver.packetCell(1, 1), QStringLiteral("rx(-60), udp"));
    QCOMPARE(driver.packetCell(0, 1), QStringLiteral("local, udp"));

    driver.typeCommand("ver");
    QCOMPARE(peer.waitForDatagram(), 8);

    driver.pressConnect();
    QCOMPARE(driver.connectText(), QStringLiteral("Connect"));
    QVERIFY(!driver.find<QTimer>("m_udp_tick_timer")->isActive());
}

// The keep-alive goes to the port written in the field at each tick.
void TestMainWindowLinks::udpTickFollowsPortField()
{
    UdpPeer first;
    UdpPeer second;
    WindowDriver driver;
    driver.chooseLinkType("UDP");
    driver.setField("portText", QString::number(first.socket.localPort()));
    driver.pressConnect();
    QCOMPARE(first.waitForDatagram(), 0);

    driver.setField("portText", QString::number(second.socket.localPort()));
    QCOMPARE(second.waitForDatagram(KEEP_ALIVE_WAIT_MS), 0);
    QVERIFY(!first.socket.hasPendingDatagrams());
}

void TestMainWindowLinks::serialFramesBothWays()
{
    const QString socat = QStandardPaths::findExecutable("socat");
    if (socat.isEmpty())
        QSKIP("socat is not installed");
    QTemporaryDir dir;
    const QString windowEnd = dir.filePath("a");
    const QString modemEnd = dir.filePath("b");
    QProcess pair;
    pair.start(socat, { "-d", "-d", "pty,raw,echo=0,link=" + windowEnd, "pty,raw,echo=0,link=" + modemEnd });
    QTRY_VERIFY(QFile::exists(windowEnd) && QFile::exists(modemEnd));

    QSerialPort modem;
    modem.setPortName(modemEnd);
    QVERIFY2(modem.open(QIODevice::ReadWrite), qPrintable(modem.errorString()));

    WindowDriver driver;
    driver.chooseLinkType("Serial");
    auto *ports = driver.find<QComboBox>("serialPortCombo");
    ports->addItem(windowEnd);
    ports->setCurrentIndex(ports->count() - 1);
    driver.pressConnect();
    QCOMPARE(driver.connectText(), QStringLiteral("Disconnect"));
    const auto *port = driver.window()->findChild<QSerialPort *>();
    QVERIFY(port->isOpen());
    QCOMPARE(port->baudRate(), 38400);

    // The second half goes out only after the window has read the first.
    const QByteArray frame = rxFrame(120, 1, src("CHARLIE", 9));
    QSignalSpy portRead(port, &QSerialPort::readyRead);
    modem.write(frame.left(10));
    QVERIFY(modem.waitForBytesWritten(1000));
    QVERIFY(portRead.wait());
    QCOMPARE(driver.packetRows(), 0);
    modem.write(frame.mid(10));
    QVERIFY(modem.waitForBytesWritten(1000));
    QTRY_COMPARE(driver.packetRows(), 1);
    QCOMPARE(driver.packetCell(0, 1), QStringLiteral("rx(-80), serial"));

    driver.find<QCheckBox>("terminalAddNewline")->setChecked(true);
    driver.typeCommand("status");
    QByteArray received;
    QList<SentFrame> sent;
    QVERIFY(QTest::qWaitFor([&] {
        received += modem.readAll();
        sent += takeFrames(&received);
        return !sent.isEmpty();
    }));
    QCOMPARE(sent.at(0).payload, QByteArray("status\r\n"));

    // Another link type closes the port.
    driver.chooseLinkType("TCP");
    QVERIFY(!port->isOpen());
    QCOMPARE(driver.connectText(), QStringLiteral("Connect"));

    modem.close();
    pair.terminate();
    QVERIFY(pair.waitForFinished(5000));
}

void TestMainWindowLinks::serialOpenFailure()
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
}

QTEST_MAIN(TestMainWindowLinks)
#include "tst_mainwindow_links.moc"
