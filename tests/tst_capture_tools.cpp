#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include "capturefile.h"
#include "simprocess.h"

// The capture tools together, as a user runs them: a session recorded from
// the simulator with a fixed seed, read by varda-decode and by tshark with
// our dissector, replayed and recorded again, cut short by kill -9, and
// damaged on purpose.
namespace
{
const int RecordSeconds = 3;

struct Run {
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

Run run(const QString &program, const QStringList &args)
{
    QProcess process;
    process.start(program, args);
    Run result;
    if (!process.waitForFinished(60000))
        return result;
    result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.out = process.readAllStandardOutput();
    result.err = process.readAllStandardError();
    return result;
}

QList<QByteArray> lines(const QByteArray &text)
{
    QList<QByteArray> all = text.split('\n');
    if (!all.isEmpty() && all.last().isEmpty())
        all.removeLast();
    return all;
}

// The capture a recording session names on its standard error.
QString capturePath(QProcess *session)
{
    QString path;
    (void)QTest::qWaitFor(
        [&] {
            const QString line = QString::fromLocal8Bit(session->readLine()).trimmed();
            if (line.startsWith("recording "))
                path = line.mid(10);
            return !path.isEmpty() || session->state() == QProcess::NotRunning;
        },
        15000);
    return path;
}

// Inbound frames of a capture as hex, in order.
QStringList inboundFrames(const QString &path)
{
    const Run decoded = run(VARDA_DECODE_PATH, { path });
    QStringList frames;
    for (const QByteArray &line : lines(decoded.out)) {
        const QJsonObject o = QJsonDocument::fromJson(line).object();
        if (o["kind"] == "frame" && o["dir"] == "in")
            frames.append(o["hex"].toString());
    }
    return frames;
}
} // namespace

class TestCaptureTools : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void tsharkAgreesWithDecoder();
    void csvHasAllBlocks();
    void replayRecordedAgain();
    void killNineLeavesReadableFile();
    void damagedFiles_data();
    void damagedFiles();

private:
    QString record(quint16 port, int seconds);

    QTemporaryDir m_dir;
    QString m_tshark;
    QString m_capture;
};

QString TestCaptureTools::record(quint16 port, int seconds)
{
    QProcess session;
    session.setProcessChannelMode(QProcess::SeparateChannels);
    session.start(RECORD_SESSION_PATH,
        { "--port", QString::number(port), "--seconds", QString::number(seconds), "--record-dir",
            m_dir.filePath("captures") });
    session.setReadChannel(QProcess::StandardError);
    const QString path = capturePath(&session);
    session.waitForFinished(seconds * 1000 + 30000);
    return path;
}

void TestCaptureTools::initTestCase()
{
    m_tshark = QStandardPaths::findExecutable("tshark");
    SimProcess sim;
    QVERIFY(sim.start({ "--seed", "7", "--rate", "20", "--roles", "modem", "--stations", "8" }));
    m_capture = record(sim.modemPort, RecordSeconds);
    QVERIFY(QFile::exists(m_capture));
    QVERIFY2(inboundFrames(m_capture).size() > 20, "too few frames recorded");
}

// Same packets, same source callsigns and sequence numbers, noise included
// (empty on both sides).
void TestCaptureTools::tsharkAgreesWithDecoder()
{
    if (m_tshark.isEmpty())
        QSKIP("tshark is not installed (scripts/install-deps installs it)");
    const QString lua = QString(qgetenv("VARDA_SOURCE_DIR")) + "/tools/wireshark/varda.lua";
    const Run shark = run(m_tshark,
        { "-X", "lua_script:" + lua, "-r", m_capture, "-T", "fields", "-e", "varda.src", "-e", "varda.seq" });
    QCOMPARE(shark.exitCode, 0);
    QStringList fromShark;
    for (const QByteArray &line : lines(shark.out))
        fromShark.append(QString::fromUtf8(line));

    const Run decoded = run(VARDA_DECODE_PATH, { m_capture });
    QCOMPARE(decoded.exitCode, 0);
    QStringList fromDecoder;
    for (const QByteArray &line : lines(decoded.out)) {
        const QJsonObject o = QJsonDocument::fromJson(line).object();
        const QString seq = o.contains("seq") ? QString::number(o["seq"].toInt()) : QString();
        fromDecoder.append(o["src"].toString() + '\t' + seq);
    }
    QCOMPARE(fromShark, fromDecoder);
    QVERIFY(fromDecoder.filter("ALPHA-1\t").size() > 0);
}

void TestCaptureTools::csvHasAllBlocks()
{
    const Run jsonl = run(VARDA_DECODE_PATH, { m_capture });
    const Run csv = run(VARDA_DECODE_PATH, { "--format", "csv", m_capture });
    QCOMPARE(csv.exitCode, 0);
    const QList<QByteArray> rows = lines(csv.out);
    QVERIFY(rows.value(0).startsWith("time,link,dir,kind,crc_ok,spp_type,len,"));
    QCOMPARE(rows.size(), lines(jsonl.out).size() + 1);
}

// The replayed session, recorded by a second session, holds the same
// inbound frames in the same order.
void TestCaptureTools::replayRecordedAgain()
{
    SimProcess replay;
    QVERIFY(replay.start({ "--replay", m_capture, "--speed", "0" }));
    const QString again = record(replay.modemPort, 2);
    QVERIFY(QFile::exists(again));
    QCOMPARE(inboundFrames(again), inboundFrames(m_capture));
}

void TestCaptureTools::killNineLeavesReadableFile()
{
    SimProcess sim;
    QVERIFY(sim.start({ "--seed", "7", "--rate", "50", "--roles", "modem" }));
    QProcess session;
    session.start(RECORD_SESSION_PATH,
        { "--port", QString::number(sim.modemPort), "--record-dir", m_dir.filePath("killed") });
    session.setReadChannel(QProcess::StandardError);
    const QString path = capturePath(&session);
    QVERIFY(QTest::qWaitFor([&] { return inboundFrames(path).size() >= 10; }, 20000));
    session.kill(); // SIGKILL
    QVERIFY(session.waitForFinished(5000));

    const Run decoded = run(VARDA_DECODE_PATH, { path });
    QCOMPARE(decoded.exitCode, 0);
    QVERIFY(decoded.err.isEmpty());
    if (m_tshark.isEmpty())
        QSKIP("tshark is not installed");
    const QString lua = QString(qgetenv("VARDA_SOURCE_DIR")) + "/tools/wireshark/varda.lua";
    const Run shark
        = run(m_tshark, { "-X", "lua_script:" + lua, "-r", path, "-T", "fields", "-e", "varda.src" });
    QCOMPARE(shark.exitCode, 0);
    QCOMPARE(lines(shark.out).size(), lines(decoded.out).size());
}

void TestCaptureTools::damagedFiles_data()
{
    QTest::addColumn<int>("cut"); // bytes chopped off the end
    QTest::addColumn<int>("flipAt"); // block whose length field is broken, -1 none
    QTest::addColumn<QString>("error");
    QTest::newRow("truncated") << 7 << -1 << "truncated block";
    QTest::newRow("corrupt") << 0 << 5 << "corrupt block";
}

// The lines before the damage, then one line naming the file and offset,
// and exit code 2.
void TestCaptureTools::damagedFiles()
{
    QFETCH(int, cut);
    QFETCH(int, flipAt);
    QFETCH(QString, error);
    QFile original(m_capture);
    QVERIFY(original.open(QIODevice::ReadOnly));
    QByteArray bytes = original.readAll();
    QList<qint64> offsets; // of the packets
    CaptureFile file;
    QVERIFY(file.read(m_capture.toStdString(),
        [&offsets](const CaptureRecord &r, const CaptureInterface &) { offsets.append(qint64(r.offset)); }));
    qint64 damageAt = 0;
    int before = 0;
    if (cut > 0) {
        bytes.chop(cut);
        damageAt = offsets.last();
        before = offsets.size() - 1;
    } else {
        damageAt = offsets[flipAt];
        bytes[int(damageAt) + 4] = char(bytes[int(damageAt) + 4] + 1);
        before = flipAt;
    }
    const QString damaged = m_dir.filePath("damaged.pcapng");
    QFile out(damaged);
    QVERIFY(out.open(QIODevice::WriteOnly | QIODevice::Truncate));
    out.write(bytes);
    out.close();

    const Run decoded = run(VARDA_DECODE_PATH, { damaged });
    QCOMPARE(decoded.exitCode, 2);
    QCOMPARE(lines(decoded.out).size(), before);
    QCOMPARE(QString::fromLocal8Bit(decoded.err),
        QString("varda-decode: %1: %2 at byte offset %3\n").arg(damaged, error).arg(damageAt));
}

QTEST_GUILESS_MAIN(TestCaptureTools)
#include "tst_capture_tools.moc"
