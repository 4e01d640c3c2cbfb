#include <QCheckBox>
#include <QLabel>
#include <QSignalSpy>

#include "mainwindow_harness.h"
#include "reference_frames.h"

using namespace harness;

// Frames from a modem on TCP, as the packet log, the station list, the
// local callsign field and the terminal show them.
class TestMainWindowDispatch : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        MessageLog::install();
        qRegisterMetaType<QList<QPersistentModelIndex>>();
        qRegisterMetaType<QAbstractItemModel::LayoutChangeHint>();
    }
    void init()
    {
        m_modem.reset(new TcpModem);
        m_driver.reset(new WindowDriver);
        QVERIFY(m_driver->connectTcp(m_modem.get()));
    }
    void packetLog_data();
    void packetLog();
    void stations();
    void ignoreLocalPackets_data();
    void ignoreLocalPackets();
    void autoLocalCallsign_data();
    void autoLocalCallsign();
    void repliesInTerminal_data();
    void repliesInTerminal();
    void framesWithoutRoomForTheirHeader_data();
    void framesWithoutRoomForTheirHeader();

private:
    // Sends the frames one by one, each waited for in the log or the station list.
    void send(const QByteArrayList &frames)
    {
        QSignalSpy rows(
            m_driver->find<QTableView>("packetTable")->model(), &QAbstractItemModel::rowsInserted);
        QSignalSpy stations(
            m_driver->find<QTableView>("stationsTable")->model(), &QAbstractItemModel::layoutChanged);
        for (const QByteArray &frame : frames) {
            rows.clear();
            stations.clear();
            m_modem->send(frame);
            QTRY_VERIFY(!rows.isEmpty() || !stations.isEmpty());
        }
    }
    std::unique_ptr<TcpModem> m_modem;
    std::unique_ptr<WindowDriver> m_driver;
};

void TestMainWindowDispatch::packetLog_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<QString>("station");
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("rssi"); // 0: no bar
    QTest::addColumn<int>("size");
    QTest::addColumn<QString>("content");
    const QByteArray alpha = src("ALPHA-1", 5) + stat();
    QTest::newRow("rx, names in type order")
        << rxFrame(180, 1, text("hi") + alpha) << "ALPHA-1"
        << "rx(-20), tcp" << -20 << 37 << "spp(rx), ext(src, stat, text)";
    QTest::newRow("rx, no extension flag") << rxFrame(150, 0, "plain") << ""
                                           << "rx(-50), tcp" << -50 << 5 << "spp(rx)";
    QTest::newRow("rx, invalid extension data") << rxFrame(150, 1, QByteArray("\x20\x01\x00", 3)) << ""
                                                << "rx(-50), tcp" << -50 << 3 << "spp(rx), ext()";
    QTest::newRow("local echo") << localFrame(1, alpha) << "ALPHA-1"
                                << "local, tcp" << 0 << 33 << "spp(local), ext(src, stat)";
    QTest::newRow("command reply") << replyFrame("ok") << ""
                                   << "local, tcp" << 0 << 2 << "spp(cmd)";
    QTest::newRow("transmit request") << reference::sppFrame(1, "\x01xyz") << ""
                                      << "tcp" << 0 << 4 << "spp(";
    QTest::newRow("unknown type") << reference::sppFrame(0x42, "abc") << ""
                                  << "tcp" << 0 << 3 << "spp(";
    QTest::newRow("satellite") << QByteArray() << "300234010753370"
                               << "iridium" << 0 << 3 << "";
}

void TestMainWindowDispatch::packetLog()
{
    QFETCH(QByteArray, frame);
    QFETCH(QString, station);
    QFETCH(QString, path);
    QFETCH(int, rssi);
    QFETCH(int, size);
    QFETCH(QString, content);
    send({ replyFrame("earlier") });
    if (frame.isEmpty()) // nothing delivers satellite messages yet
        m_driver->window()->incomingSbd(station, QByteArray("\x01\x02\x03", 3));
    else
        send({ frame });
    QCOMPARE(m_driver->packetRows(), 2);
    const QStringList row { m_driver->packetCell(0, 0), m_driver->packetCell(0, 1),
        m_driver->packetCell(0, 3), m_driver->packetCell(0, 4) };
    QCOMPARE(row, (QStringList { station, path, QString::number(size), content }));
    const QProgressBar *bar = m_driver->rssiBar(0);
    QCOMPARE(bar ? bar->value() : 0, rssi);
    QCOMPARE(m_driver->stationRows(), station.isEmpty() ? 0 : 1);
    if (!station.isEmpty())
        QCOMPARE(m_driver->stationCell(0, 2), path == "iridium" ? QString() : path);
}

// One row per callsign with the latest packet's path; no source or no flag, no row.
void TestMainWindowDispatch::stations()
{
    send({ rxFrame(113, 0, src("ZULU", 1)), rxFrame(113, 1, stat()), rxFrame(113, 1, src("ALPHA-1", 1)),
        rxFrame(140, 1, src("BRAVO-2", 1)), localFrame(1, src("ALPHA-1", 2)) });
    QCOMPARE(m_driver->stationRows(), 2);
    QCOMPARE(m_driver->stationCell(0, 0) + "/" + m_driver->stationCell(0, 2),
        QStringLiteral("ALPHA-1/local, tcp"));
    QCOMPARE(m_driver->stationCell(1, 0) + "/" + m_driver->stationCell(1, 2),
        QStringLiteral("BRAVO-2/rx(-60), tcp"));
}

void TestMainWindowDispatch::ignoreLocalPackets_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<bool>("logged");
    QTest::newRow("received") << rxFrame(113, 1, src("ALPHA-1", 1)) << true;
    QTest::newRow("local echo") << localFrame(1, src("ALPHA-1", 1)) << false;
    QTest::newRow("command reply") << replyFrame("ok") << true;
}

// Only local echoes stay out of the log and leave the icon grey; their stations still count.
void TestMainWindowDispatch::ignoreLocalPackets()
{
    QFETCH(QByteArray, frame);
    QFETCH(bool, logged);
    m_driver->find<QCheckBox>("ignoreLocalBox")->setChecked(true);
    const auto *indicator = m_driver->find<QLabel>("m_packet_inducator");
    const qint64 idle = indicator->pixmap(Qt::ReturnByValue).cacheKey();
    send({ frame });
    QCOMPARE(m_driver->packetRows(), logged ? 1 : 0);
    QVERIFY(
        logged || (m_driver->stationRows() == 1 && indicator->pixmap(Qt::ReturnByValue).cacheKey() == idle));
}

void TestMainWindowDispatch::autoLocalCallsign_data()
{
    QTest::addColumn<bool>("autoSet");
    QTest::addColumn<QByteArrayList>("frames");
    QTest::addColumn<QString>("callsign");
    const QByteArray alpha1 = localFrame(1, src("ALPHA-1", 1) + stat());
    QTest::newRow("a later echo replaces it")
        << true << QByteArrayList { alpha1, localFrame(1, src("ALPHA-2", 2)) } << "ALPHA-2";
    QTest::newRow("box unchecked") << false << QByteArrayList { alpha1 } << "";
    QTest::newRow("received packet") << true << QByteArrayList { rxFrame(113, 1, src("BRAVO-2", 1)) } << "";
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

void TestMainWindowDispatch::repliesInTerminal_data()
{
    QTest::addColumn<QStringList>("modes");
    QTest::addColumn<QString>("destination");
    QTest::addColumn<QByteArrayList>("frames");
    QTest::addColumn<QString>("output");
    const QString ext = "Ext. cmd (select below)";
    const QByteArrayList spp { replyFrame("OK"), replyFrame("\tv1.2") };
    const QByteArrayList reply { rxFrame(113, 1, src("ALPHA-1", 1) + text("uptime 42")) };
    // The box starts showing "Dumb terminal (local)" while the mode is "SPP cmd".
    QTest::newRow("spp reply at start") << QStringList() << "" << spp << "OK\tv1.2";
    QTest::newRow("spp reply, dumb") << QStringList { "SPP cmd (local)", "Dumb terminal (local)" } << ""
                                     << spp << "";
    QTest::newRow("spp reply, ext cmd") << QStringList { ext } << "" << spp << "";
    QTest::newRow("text from the active station") << QStringList { ext } << "ALPHA-1" << reply << "uptime 42";
    QTest::newRow("text from another station") << QStringList { ext } << "BRAVO-2" << reply << "";
    QTest::newRow("text in spp cmd mode") << QStringList { "SPP cmd (local)" } << "ALPHA-1" << reply << "";
    QTest::newRow("text without extension flag")
        << QStringList { ext } << "ALPHA-1"
        << QByteArrayList { rxFrame(113, 0, src("ALPHA-1", 1) + text("x")) } << "";
}

// Written as they come, with no line break added.
void TestMainWindowDispatch::repliesInTerminal()
{
    QFETCH(QStringList, modes);
    QFETCH(QString, destination);
    QFETCH(QByteArrayList, frames);
    QFETCH(QString, output);
    for (const QString &mode : modes)
        m_driver->chooseTerminalMode(mode);
    if (!destination.isEmpty())
        m_driver->typeDestination(destination);
    send(frames);
    QCOMPARE(m_driver->terminalOutput(), output);
}

void TestMainWindowDispatch::framesWithoutRoomForTheirHeader_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("content");
    // rssi is byte 5 of the receive header, the flags byte 7; what is missing reads as zero.
    QTest::newRow("rx, 1 byte") << 0 << QByteArray(1, '\x01') << "rx(-200), serial"
                                << "spp(rx)";
    QTest::newRow("rx, no flags") << 0 << QByteArray("\0\0\0\0\0\xA0\0", 7) << "rx(-40), serial"
                                  << "spp(rx)";
    QTest::newRow("rx, header only") << 0 << QByteArray("\0\0\0\0\0\xA0\0\x01", 8) << "rx(-40), serial"
                                     << "spp(rx), ext()";
    QTest::newRow("local, empty") << 2 << QByteArray() << "local, serial"
                                  << "spp(local)";
}

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
    const QStringList row { m_driver->packetCell(0, 1), m_driver->packetCell(0, 3),
        m_driver->packetCell(0, 4) };
    QCOMPARE(row, (QStringList { path, "0", content }));
    QCOMPARE(m_driver->stationRows(), 0);
}

QTEST_MAIN(TestMainWindowDispatch)
#include "tst_mainwindow_dispatch.moc"
