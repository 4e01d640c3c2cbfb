#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>

#include "mainwindow_harness.h"
#include "reference_frames.h"

using namespace harness;

namespace
{

const int NO_BAR = 255;

enum PacketColumn { STATION, PATH, RSSI, SIZE, CONTENT };
enum StationColumn { CALLSIGN, LAST_ACTIVITY, STATION_PATH };

} // namespace

// Frames from a modem on TCP, as the packet log, the station list, the
// local callsign field and the terminal show them.
class TestMainWindowDispatch : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void packetLog_data();
    void packetLog();
    void stationsFromPackets();
    void ignoreLocalPackets_data();
    void ignoreLocalPackets();
    void autoLocalCallsign_data();
    void autoLocalCallsign();
    void sppReplyInTerminal_data();
    void sppReplyInTerminal();
    void extTextReply_data();
    void extTextReply();
    void framesWithoutRoomForTheirHeader_data();
    void framesWithoutRoomForTheirHeader();
    void satelliteMessage();

private:
    void send(const QByteArrayList &frames);

    std::unique_ptr<TcpModem> m_modem;
    std::unique_ptr<WindowDriver> m_driver;
};

void TestMainWindowDispatch::initTestCase()
{
    MessageLog::install();
    qRegisterMetaType<QList<QPersistentModelIndex>>();
    qRegisterMetaType<QAbstractItemModel::LayoutChangeHint>();
}

void TestMainWindowDispatch::init()
{
    m_modem.reset(new TcpModem);
    m_driver.reset(new WindowDriver);
    QVERIFY(m_driver->connectTcp(m_modem.get()));
}

void TestMainWindowDispatch::cleanup()
{
    m_driver.reset();
    m_modem.reset();
}

// Sends the frames and waits until each has been handled; every frame
// type the tests send adds a log row or touches the station list.
void TestMainWindowDispatch::send(const QByteArrayList &frames)
{
    QSignalSpy rows(m_driver->find<QTableView>("packetTable")->model(), &QAbstractItemModel::rowsInserted);
    QSignalSpy stations(
        m_driver->find<QTableView>("stationsTable")->model(), &QAbstractItemModel::layoutChanged);
    for (const QByteArray &frame : frames) {
        rows.clear();
        stations.clear();
        m_modem->send(frame);
        QTRY_VERIFY(!rows.isEmpty() || !stations.isEmpty());
    }
}

void TestMainWindowDispatch::packetLog_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<QString>("station");
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("rssi");
    QTest::addColumn<int>("size");
    QTest::addColumn<QString>("content");

    const QByteArray alpha = src("ALPHA-1", 5) + stat();
    QTest::newRow("received with extensions") << rxFrame(113, 1, alpha) << "ALPHA-1"
                                              << "rx(-87), tcp" << -87 << 33 << "spp(rx), ext(src, stat)";
    QTest::newRow("received, type names in type order")
        << rxFrame(180, 1, text("hi") + src("BRAVO-2", 1)) << "BRAVO-2"
        << "rx(-20), tcp" << -20 << 13 << "spp(rx), ext(src, text)";
    QTest::newRow("received without extension flag") << rxFrame(150, 0, QByteArray("plain")) << ""
                                                     << "rx(-50), tcp" << -50 << 5 << "spp(rx)";
    QTest::newRow("received, invalid extension data") << rxFrame(150, 1, QByteArray("\x20\x01\x00", 3)) << ""
                                                      << "rx(-50), tcp" << -50 << 3 << "spp(rx), ext()";
    QTest::newRow("local echo") << localFrame(1, alpha) << "ALPHA-1"
                                << "local, tcp" << NO_BAR << 33 << "spp(local), ext(src, stat)";
    QTest::newRow("local echo without flag") << localFrame(0, QByteArray("xy")) << ""
                                             << "local, tcp" << NO_BAR << 2 << "spp(local)";
    QTest::newRow("command reply") << replyFrame("ok") << ""
                                   << "local, tcp" << NO_BAR << 2 << "spp(cmd)";
    QTest::newRow("transmit request is not interpreted") << reference::sppFrame(1, "\x01xyz") << ""
                                                         << "tcp" << NO_BAR << 4 << "spp(";
    QTest::newRow("unknown type") << reference::sppFrame(0x42, "abc") << ""
                                  << "tcp" << NO_BAR << 3 << "spp(";
}

void TestMainWindowDispatch::packetLog()
{
    QFETCH(QByteArray, frame);
    QFETCH(QString, station);
    QFETCH(QString, path);
    QFETCH(int, rssi);
    QFETCH(int, size);
    QFETCH(QString, content);

    send({ replyFrame("earlier"), frame });
    QCOMPARE(m_driver->packetRows(), 2);
    QCOMPARE(m_driver->packetCell(0, STATION), station);
    QCOMPARE(m_driver->packetCell(0, PATH), path);
    QCOMPARE(m_driver->packetCell(0, SIZE), QString::number(size));
    QCOMPARE(m_driver->packetCell(0, CONTENT), content);
    const QProgressBar *bar = m_driver->rssiBar(0);
    if (rssi == NO_BAR) {
        QVERIFY(!bar);
    } else {
        QVERIFY(bar);
        QCOMPARE(bar->value(), rssi);
    }
    QCOMPARE(m_driver->packetCell(1, CONTENT), QStringLiteral("spp(cmd)"));
}

// Only packets with the extension flag and a source reach the station list;
// one row per callsign, showing the latest packet's path.
void TestMainWindowDispatch::stationsFromPackets()
{
    send({ rxFrame(113, 0, src("ZULU", 1)), rxFrame(113, 1, stat()) });
    QCOMPARE(m_driver->stationRows(), 0);

    send({ rxFrame(113, 1, src("ALPHA-1", 1) + stat()), rxFrame(140, 1, src("BRAVO-2", 1)),
        localFrame(1, src("ALPHA-1", 2)) });
    QCOMPARE(m_driver->stationRows(), 2);
    QCOMPARE(m_driver->stationCell(0, CALLSIGN), QStringLiteral("ALPHA-1"));
    QCOMPARE(m_driver->stationCell(0, STATION_PATH), QStringLiteral("local, tcp"));
    QCOMPARE(m_driver->stationCell(1, CALLSIGN), QStringLiteral("BRAVO-2"));
    QCOMPARE(m_driver->stationCell(1, STATION_PATH), QStringLiteral("rx(-60), tcp"));
}

void TestMainWindowDispatch::ignoreLocalPackets_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<bool>("logged");

    QTest::newRow("received") << rxFrame(113, 1, src("ALPHA-1", 1)) << true;
    QTest::newRow("local echo") << localFrame(1, src("ALPHA-1", 1)) << false;
    QTest::newRow("command reply") << replyFrame("ok") << true;
}

// With the box checked only local echoes stay out of the log and leave the
// icon grey; their stations are still updated.
void TestMainWindowDispatch::ignoreLocalPackets()
{
    QFETCH(QByteArray, frame);
    QFETCH(bool, logged);

    m_driver->find<QCheckBox>("ignoreLocalBox")->setChecked(true);
    const auto *indicator = m_driver->find<QLabel>("m_packet_inducator");
    const qint64 idle = indicator->pixmap(Qt::ReturnByValue).cacheKey();
    send({ frame });
    QCOMPARE(m_driver->packetRows(), logged ? 1 : 0);
    if (!logged) {
        QCOMPARE(m_driver->stationRows(), 1);
        QCOMPARE(indicator->pixmap(Qt::ReturnByValue).cacheKey(), idle);
    }
}

void TestMainWindowDispatch::autoLocalCallsign_data()
{
    QTest::addColumn<bool>("autoSet");
    QTest::addColumn<QByteArrayList>("frames");
    QTest::addColumn<QString>("callsign");

    const QByteArray alpha1 = localFrame(1, src("ALPHA-1", 1) + stat());
    QTest::newRow("local echo teaches it") << true << QByteArrayList { alpha1 } << "ALPHA-1";
    QTest::newRow("a later one replaces it")
        << true << QByteArrayList { alpha1, localFrame(1, src("ALPHA-2", 2)) } << "ALPHA-2";
    QTest::newRow("box unchecked") << false << QByteArrayList { alpha1 } << "";
    QTest::newRow("received packet does not")
        << true << QByteArrayList { rxFrame(113, 1, src("BRAVO-2", 1)) } << "";
    QTest::newRow("echo without source") << true << QByteArrayList { localFrame(1, stat()) } << "";
}

void TestMainWindowDispatch::autoLocalCallsign()
{
    QFETCH(bool, autoSet);
    QFETCH(QByteArrayList, frames);
    QFETCH(QString, callsign);

    m_driver->find<QCheckBox>("localCallAutoSetBox")->setChecked(autoSet);
    send(frames);
    QCOMPARE(m_driver->find<QLineEdit>("localCallEdit")->text(), callsign);
}

void TestMainWindowDispatch::sppReplyInTerminal_data()
{
    QTest::addColumn<QStringList>("modes");
    QTest::addColumn<QString>("output");

    // The box starts showing "Dumb terminal (local)" while the mode is "SPP cmd".
    QTest::newRow("at start") << QStringList() << "OK\tv1.2";
    QTest::newRow("spp cmd") << QStringList { "Ext. cmd (select below)", "SPP cmd (local)" } << "OK\tv1.2";
    QTest::newRow("dumb") << QStringList { "SPP cmd (local)", "Dumb terminal (local)" } << "";
    QTest::newRow("ext cmd") << QStringList { "Ext. cmd (select below)" } << "";
}

// Replies are written as they come, with no line break added.
void TestMainWindowDispatch::sppReplyInTerminal()
{
    QFETCH(QStringList, modes);
    QFETCH(QString, output);

    for (const QString &mode : modes)
        m_driver->chooseTerminalMode(mode);
    send({ replyFrame("OK"), replyFrame("\tv1.2") });
    QCOMPARE(m_driver->terminalOutput(), output);
    QCOMPARE(m_driver->packetRows(), 2);
}

void TestMainWindowDispatch::extTextReply_data()
{
    QTest::addColumn<QString>("mode");
    QTest::addColumn<QString>("destination");
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<QString>("output");

    const QString ext = "Ext. cmd (select below)";
    const QByteArray reply = rxFrame(113, 1, src("ALPHA-1", 1) + text("uptime 42"));
    QTest::newRow("from the active station") << ext << "ALPHA-1" << reply << "uptime 42";
    QTest::newRow("from another station") << ext << "BRAVO-2" << reply << "";
    QTest::newRow("spp cmd mode") << "SPP cmd (local)"
                                  << "ALPHA-1" << reply << "";
    QTest::newRow("without text") << ext << "ALPHA-1" << rxFrame(113, 1, src("ALPHA-1", 1) + stat()) << "";
    QTest::newRow("without extension flag")
        << ext << "ALPHA-1" << rxFrame(113, 0, src("ALPHA-1", 1) + text("uptime 42")) << "";
}

void TestMainWindowDispatch::extTextReply()
{
    QFETCH(QString, mode);
    QFETCH(QString, destination);
    QFETCH(QByteArray, frame);
    QFETCH(QString, output);

    m_driver->chooseTerminalMode(mode);
    m_driver->typeDestination(destination);
    send({ frame });
    QCOMPARE(m_driver->terminalOutput(), output);
}

void TestMainWindowDispatch::framesWithoutRoomForTheirHeader_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("content");

    // The receive header's rssi is byte 5 and its flags byte 7; what is
    // missing reads as zero.
    QTest::newRow("rx, 1 byte") << 0 << QByteArray(1, '\x01') << "rx(-200), serial"
                                << "spp(rx)";
    QTest::newRow("rx, rssi but no flags") << 0 << QByteArray("\0\0\0\0\0\xA0\0", 7) << "rx(-40), serial"
                                           << "spp(rx)";
    QTest::newRow("rx, header only") << 0 << QByteArray("\0\0\0\0\0\xA0\0\x01", 8) << "rx(-40), serial"
                                     << "spp(rx), ext()";
    QTest::newRow("local, empty") << 2 << QByteArray() << "local, serial"
                                  << "spp(local)";
}

// Frames too short for their header (a zero-length one cannot come over a
// link, the framing never delivers it) carry no packet.
void TestMainWindowDispatch::framesWithoutRoomForTheirHeader()
{
    QFETCH(int, type);
    QFETCH(QByteArray, payload);
    QFETCH(QString, path);
    QFETCH(QString, content);

    // A copy on the heap, so that a read past its end is caught by ASan.
    std::unique_ptr<uint8_t[]> bytes(new uint8_t[qMax(1, payload.size())]);
    memcpy(bytes.get(), payload.constData(), size_t(payload.size()));
    m_driver->window()->handleSppPacket(uint8_t(type), bytes.get(), uint16_t(payload.size()), "serial");
    QCOMPARE(m_driver->packetRows(), 1);
    QCOMPARE(m_driver->packetCell(0, PATH), path);
    QCOMPARE(m_driver->packetCell(0, SIZE), QStringLiteral("0"));
    QCOMPARE(m_driver->packetCell(0, CONTENT), content);
    QCOMPARE(m_driver->stationRows(), 0);
}

// Nothing delivers satellite messages yet; the entry point is called as a
// gateway client would.
void TestMainWindowDispatch::satelliteMessage()
{
    const QString imei = "300234010753370";
    m_driver->window()->incomingSbd(imei, QByteArray("\x01\x02\x03", 3));
    QCOMPARE(m_driver->packetRows(), 1);
    QCOMPARE(m_driver->packetCell(0, STATION), imei);
    QCOMPARE(m_driver->packetCell(0, PATH), QStringLiteral("iridium"));
    QCOMPARE(m_driver->packetCell(0, SIZE), QStringLiteral("3"));
    QCOMPARE(m_driver->packetCell(0, CONTENT), QString());
    QVERIFY(!m_driver->rssiBar(0));
    QCOMPARE(m_driver->stationRows(), 1);
    QCOMPARE(m_driver->stationCell(0, CALLSIGN), imei);
    QCOMPARE(m_driver->stationCell(0, STATION_PATH), QString());
}

QTEST_MAIN(TestMainWindowDispatch)
#include "tst_mainwindow_dispatch.moc"
