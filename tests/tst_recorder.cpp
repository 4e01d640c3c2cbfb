#include <QCheckBox>
#include <QComboBox>
#include <QCommandLineParser>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStatusBar>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QtTest>

#include "capturefile.h"
#include "iridiumtcp.h"
#include "mainwindow.h"
#include "recorder.h"
#include "recordingoptions.h"
#include "recordingsession.h"
#include "spp_host_qt.h"

namespace
{
struct Packet {
    uint16_t linkType;
    QString link;
    int dir;
    QByteArray bytes;
};

QList<Packet> readCapture(const QString &path)
{
    QList<Packet> packets;
    CaptureFile file;
    file.read(path.toStdString(), [&packets](const CaptureRecord &r, const CaptureInterface &link) {
        packets.append({ link.link_type, QString::fromStdString(link.name), int(r.direction),
            QByteArray(reinterpret_cast<const char *>(r.data.data()), int(r.data.size())) });
    });
    return packets;
}

RecordingOptions options(const QStringList &args)
{
    QCommandLineParser parser;
    RecordingOptions recording;
    recording.addTo(&parser);
    parser.process(QStringList("tool") + args);
    QString error;
    recording.read(parser, &error);
    return recording;
}

void touch(const QString &path, int size)
{
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(QByteArray(size, 'x'));
}
} // namespace

class TestRecorder : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void defaultFolder();
    void badOptions_data();
    void badOptions();
    void capRemovesOldestFirst();
    void unwritableFolderSaidOnce();
    void noRecord();
    void modemLinkBothWays();
    void gatewayMessages();

private:
    QTemporaryDir m_dir;
};

void TestRecorder::initTestCase()
{
    QCoreApplication::setApplicationName("varda-toolbox");
}

void TestRecorder::defaultFolder()
{
    QCOMPARE(RecordingOptions::defaultFolder(), QDir::home().filePath(".local/share/varda-toolbox/captures"));
    QCOMPARE(Recorder::fileNameFor(QDateTime(QDate(2026, 3, 4), QTime(5, 6, 7), Qt::UTC)),
        QString("20260304T050607Z.pcapng"));
    const RecordingOptions plain = options({});
    QVERIFY(plain.enabled());
    QCOMPARE(plain.capBytes(), qint64(2048) << 20);
}

void TestRecorder::badOptions_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::newRow("cap zero") << QStringList { "--record-cap", "0" };
    QTest::newRow("cap words") << QStringList { "--record-cap", "lots" };
    QTest::newRow("empty dir") << QStringList { "--record-dir", "" };
}

void TestRecorder::badOptions()
{
    QFETCH(QStringList, args);
    QCommandLineParser parser;
    RecordingOptions recording;
    recording.addTo(&parser);
    parser.process(QStringList("tool") + args);
    QString error;
    QVERIFY(!recording.read(parser, &error));
    QVERIFY(!error.isEmpty());
}

// Older captures go, oldest first, until the folder fits; other files and
// the one being written stay.
void TestRecorder::capRemovesOldestFirst()
{
    const QString folder = m_dir.filePath("capped");
    QDir().mkpath(folder);
    const int MiB = 1 << 20;
    touch(folder + "/20200101T000000Z.pcapng", MiB);
    touch(folder + "/20210101T000000Z.pcapng", MiB);
    touch(folder + "/20220101T000000Z.pcapng", MiB / 2);
    touch(folder + "/notes.txt", 3 * MiB);
    Recorder recorder;
    QVERIFY(recorder.start(folder, 2 * MiB));
    QVERIFY(!QFile::exists(folder + "/20200101T000000Z.pcapng"));
    QVERIFY(QFile::exists(folder + "/20210101T000000Z.pcapng"));
    QVERIFY(QFile::exists(folder + "/20220101T000000Z.pcapng"));
    QVERIFY(QFile::exists(folder + "/notes.txt"));
    QVERIFY(QFile::exists(recorder.filePath()));

    // The current file alone at the cap: recording stops, the file stays.
    QSignalSpy stopped(&recorder, &Recorder::stopped);
    const QByteArray noise(60000, 'n');
    for (int i = 0; i < 40 && recorder.isRecording(); ++i)
        recorder.recordLinkReceived("tcp:127.0.0.1:1", noise);
    QCOMPARE(stopped.count(), 1);
    QVERIFY(!recorder.isRecording());
    QVERIFY(QFile::exists(recorder.filePath()));
    QVERIFY(!QFile::exists(folder + "/20210101T000000Z.pcapng"));
}

void TestRecorder::unwritableFolderSaidOnce()
{
    const QString blocker = m_dir.filePath("a-file");
    touch(blocker, 1);
    MainWindow window;
    RecordingSession session(options({ "--record-dir", blocker + "/captures" }), &window);
    QVERIFY(!session.recorder()->isRecording());
    QCOMPARE(window.findChild<QLabel *>("recordingLabel")->text(), QString("Not recording"));
    QVERIFY(window.statusBar()->currentMessage().contains(blocker));
}

void TestRecorder::noRecord()
{
    const QString folder = m_dir.filePath("off");
    MainWindow window;
    RecordingSession session(options({ "--no-record", "--record-dir", folder }), &window);
    QCOMPARE(window.findChild<QLabel *>("recordingLabel")->text(), QString("Not recording"));
    QVERIFY(!QDir(folder).exists());
}

// What the window reads and writes on a TCP link, under the link's name.
void TestRecorder::modemLinkBothWays()
{
    QTcpServer modem;
    QVERIFY(modem.listen(QHostAddress::LocalHost, 0));
    const QString folder = m_dir.filePath("link");
    const QByteArray noise("boot\r\n");
    const QByteArray reply = SppHost::packCommand("ok");
    QString path;
    {
        MainWindow window;
        RecordingSession session(options({ "--record-dir", folder }), &window);
        path = session.recorder()->filePath();
        QVERIFY(window.findChild<QLabel *>("recordingLabel")->text().contains(path));
        auto *type = window.findChild<QComboBox *>("linkTypeCombo");
        type->setCurrentIndex(type->findText("TCP"));
        window.findChild<QLineEdit *>("portText")->setText(QString::number(modem.serverPort()));
        window.findChild<QPushButton *>("connectButton")->click();
        QVERIFY(modem.waitForNewConnection(5000));
        QTcpSocket *peer = modem.nextPendingConnection();
        QTRY_COMPARE(window.linkName(), QString("tcp:127.0.0.1:%1").arg(modem.serverPort()));
        QSignalSpy packets(window.sppHost(), &SppHost::newPacket);
        peer->write(noise + reply.left(3));
        peer->flush();
        QTest::qWait(50);
        peer->write(reply.mid(3));
        QVERIFY(packets.wait(5000));
        window.sendData(SppHost::packCommand("status"));
    }
    const QList<Packet> packets = readCapture(path);
    QCOMPARE(packets.size(), 3);
    QCOMPARE(packets[0].link, QString("tcp:127.0.0.1:%1").arg(modem.serverPort()));
    QCOMPARE(packets[0].linkType, uint16_t(147));
    QCOMPARE(packets[0].bytes, noise);
    QCOMPARE(packets[1].bytes, reply);
    QCOMPARE(packets[1].dir, 1);
    QCOMPARE(packets[2].bytes, SppHost::packCommand("status"));
    QCOMPARE(packets[2].dir, 2);
}

// Whole messages with their length field, in both directions.
void TestRecorder::gatewayMessages()
{
    QTcpServer gateway;
    // The client dials this fixed port; CTest keeps the tests that take it
    // apart, but a program outside them may hold it.
    if (!gateway.listen(QHostAddress::LocalHost, IridiumTcp::GatewayPort))
        QSKIP("port 10020 is taken by another program");
    const QString folder = m_dir.filePath("gateway");
    QPushButton button;
    QLineEdit host("127.0.0.1");
    QCheckBox flush;
    const QByteArray mo = QByteArray::fromHex("16000000a1680600") + "300234010203040" + "abc";
    QString path;
    {
        MainWindow window;
        IridiumTcp client(&button, &host, &flush);
        RecordingSession session(options({ "--record-dir", folder }), &window);
        session.watchGateway(&client);
        path = session.recorder()->filePath();
        client.connectPressed();
        QVERIFY(gateway.waitForNewConnection(5000));
        QTcpSocket *peer = gateway.nextPendingConnection();
        QSignalSpy data(&client, &IridiumTcp::newData);
        peer->write(mo);
        QVERIFY(data.wait(5000));
        QVERIFY(client.sendSBD("300234010203040", "hi") > 0);
    }
    const QList<Packet> packets = readCapture(path);
    QCOMPARE(packets.size(), 2);
    QCOMPARE(packets[0].linkType, uint16_t(148));
    QCOMPARE(packets[0].link, QString("gateway:127.0.0.1:10020"));
    QCOMPARE(packets[0].bytes, mo);
    QCOMPARE(packets[0].dir, 1);
    QCOMPARE(packets[1].dir, 2);
    QCOMPARE(packets[1].bytes.mid(8), QByteArray("300234010203040\0hi", 18));
}

QTEST_MAIN(TestRecorder)
#include "tst_recorder.moc"
