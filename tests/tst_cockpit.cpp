// The vehicle station's cockpit: the command journal and its file across a
// restart, the question before a power-off and the offer of the other link,
// the freshness thresholds, the telemetry history read back, and the track
// written as GPX read back by gpsbabel.
#include <QtNetwork>
#include <QtTest>
#include <QtWidgets>

#include <cmath>

#include "cockpit.h"
#include "commandguard.h"
#include "commandjournal.h"
#include "freshnessmonitor.h"
#include "glider.h"
#include "gliderstation.h"
#include "mainwindow.h"
#include "plotview.h"
#include "telemetry.h"
#include "telemetrystore.h"
#include "trackexporter.h"

namespace
{

const int WaitMs = 10000;
const QDateTime T0 = QDateTime(QDate(2026, 11, 23), QTime(12, 0), Qt::UTC);

template <typename T> T *w(const QWidget *root, const char *name)
{
    return root->findChild<T *>(QLatin1String(name));
}

QWidget *dialog(const char *name)
{
    for (QWidget *top : QApplication::topLevelWidgets()) {
        if (top->objectName() == QLatin1String(name) && top->isVisible())
            return top;
    }
    return nullptr;
}

// Answers the question named name, once it shows, with the button named button.
bool answer(const char *name, const char *button)
{
    if (!QTest::qWaitFor([=] { return dialog(name) != nullptr; }, WaitMs))
        return false;
    QTest::mouseClick(w<QPushButton>(dialog(name), button), Qt::LeftButton);
    return QTest::qWaitFor([=] { return dialog(name) == nullptr; }, WaitMs);
}

// Power "Pell" off, one click of "Set" under "Set power".
void pressPellOff(Glider *glider)
{
    auto *channel = w<QComboBox>(glider, "powerChannel");
    channel->setCurrentIndex(channel->findText("Pell"));
    w<QCheckBox>(glider, "powerState")->setChecked(false);
    QTest::mouseClick(w<QPushButton>(glider, "powerSet"), Qt::LeftButton);
}

QByteArray hk2Payload(uint8_t last_command_seq)
{
    housekeeping2_t hk {};
    hk.pell_rssi = 150;
    hk.last_command_seq = last_command_seq;
    return char(MSG_HOUSEKEEPING2) + QByteArray(reinterpret_cast<const char *>(&hk), sizeof(hk));
}

QByteArray shortCommand(uint8_t seq, uint8_t type, uint8_t arg)
{
    const command_t cmd { seq, type, arg };
    return char(MSG_COMMAND) + QByteArray(reinterpret_cast<const char *>(&cmd), sizeof(cmd));
}

QString path(const char *name)
{
    return QDir::home().filePath(QString(".toolbox/") + name);
}

TelemetryRecord position(int minute, double lat, double lon)
{
    TelemetryRecord r;
    r.received = T0.addSecs(60 * minute);
    r.link = "Iridium";
    r.kind = "postime";
    r.values = { lat, lon, double(T0.addSecs(60 * minute - 5).toSecsSinceEpoch()) };
    return r;
}

// Opens the radio tool's TCP link to modem, a server the test plays; returns
// the station's end as the modem sees it, null on failure.
QTcpSocket *connectRadio(GliderStation *station, QTcpServer *modem)
{
    if (!modem->listen(QHostAddress::LocalHost))
        return nullptr;
    auto *type = w<QComboBox>(station->radio(), "linkTypeCombo");
    type->setCurrentIndex(type->findText("TCP"));
    w<QLineEdit>(station->radio(), "hostText")->setText("127.0.0.1");
    w<QLineEdit>(station->radio(), "portText")->setText(QString::number(modem->serverPort()));
    QTest::mouseClick(w<QPushButton>(station->radio(), "connectButton"), Qt::LeftButton);
    if (!modem->waitForNewConnection(WaitMs))
        return nullptr;
    QTcpSocket *peer = modem->nextPendingConnection();
    const bool up = QTest::qWaitFor(
        [&] { return w<QPushButton>(station->radio(), "connectButton")->text() == "Disconnect"; }, WaitMs);
    return up ? peer : nullptr;
}

// A shown station whose radio link is open to a modem played by the test.
struct ConnectedStation {
    ConnectedStation()
    {
        station.show();
        peer = connectRadio(&station, &modem);
    }
    QTcpServer modem;
    GliderStation station;
    QTcpSocket *peer = nullptr;
};

} // namespace

class TstCockpit : public QObject
{
    Q_OBJECT
private slots:
    void init()
    {
        QDir::home().mkpath(".toolbox");
        QFile::remove(path("commands.csv"));
        QFile::remove(path("telemetry.csv"));
    }

    void commandText_data();
    void commandText();
    void journalStatesSurviveRestart();
    void powerOffCancelledAndLinkDown();
    void powerOffConfirmedSentAndConfirmed();
    void otherLinkOffered();
    void rateSurvivesRestart();
    void freshness_data();
    void freshness();
    void freshnessAnnouncedOncePerEpisode();
    void telemetryReadBack();
    void thinningKeepsPeaks();
    void plotExportsWhatIsShown();
    void gpxReadByGpsbabel();
    void headlessExport_data();
    void headlessExport();
};

void TstCockpit::commandText_data()
{
    QTest::addColumn<QByteArray>("block");
    QTest::addColumn<QString>("text");
    QTest::newRow("power Pell off") << shortCommand(7, CMD_POWER, 0x60) << "power Pell off";
    QTest::newRow("power CTD on") << shortCommand(7, CMD_POWER, 0x41) << "power CTD on";
    QTest::newRow("Iridium rate 30 min")
        << shortCommand(7, CMD_TELEMETRY_RATE_IRIDIUM, 90) << "telemetry rate Iridium 30 min";
    QTest::newRow("Pell rate 2 h") << shortCommand(7, CMD_TELEMETRY_RATE_PELL, 122)
                                   << "telemetry rate Pell 2 h";
    QTest::newRow("sonar RUN ENSEMBLE 5") << shortCommand(7, CMD_SONAR, 0xE5) << "sonar RUN ENSEMBLE 5";
    QTest::newRow("sonar sleep") << shortCommand(7, CMD_SONAR, 0) << "sonar SLEEP";
    const command_long_t ds { 9, CMD_DATASTORE, DS_ClearFlag };
    QTest::newRow("datastore clear flag")
        << char(MSG_COMMAND_LONG) + QByteArray(reinterpret_cast<const char *>(&ds), sizeof(ds))
        << "datastore clear flag";
    const command_long_t mask { 9, CMD_TELEMETRY_MESSAGES_PELL, TM_HOUSEKEEPING2 | TM_POSTIME };
    QTest::newRow("messages") << char(MSG_COMMAND_LONG) + QByteArray(reinterpret_cast<const char *>(&mask), 6)
                              << "telemetry messages Pell: housekeeping 2, pos/time";
    QTest::newRow("cut block") << shortCommand(7, CMD_POWER, 0x60).left(3) << "unreadable block";
}

void TstCockpit::commandText()
{
    QFETCH(QByteArray, block);
    QFETCH(QString, text);
    CommandJournal journal(path("commands.csv"));
    const int id = journal.add(block, "Pell", CommandJournal::Sent, T0);
    QCOMPARE(journal.entry(id)->commands.join("; "), text);
}

void TstCockpit::journalStatesSurviveRestart()
{
    int confirmed, overdue, late, unsent;
    {
        CommandJournal journal(path("commands.csv"));
        QAbstractItemModelTester tester(&journal, QAbstractItemModelTester::FailureReportingMode::QtTest);
        journal.setDeadline("Pell", 60000);
        confirmed = journal.add(shortCommand(10, CMD_POWER, 0x41), "Pell", CommandJournal::Sent, T0);
        overdue = journal.add(shortCommand(11, CMD_SONAR, 0), "Pell", CommandJournal::Sent, T0);
        late = journal.add(shortCommand(12, CMD_SONAR, 0), "Pell", CommandJournal::Sent, T0);
        unsent = journal.add(shortCommand(13, CMD_SONAR, 0), "Iridium", CommandJournal::NotSent, T0);
        QCOMPARE(journal.confirm(10, T0.addSecs(5), "Iridium"), 1);
        QCOMPARE(journal.expire(T0.addSecs(30)), 0);
        QCOMPARE(journal.expire(T0.addSecs(61)), 2);
        QCOMPARE(journal.confirm(12, T0.addSecs(90), "Pell"), 1);
        QCOMPARE(journal.confirm(13, T0.addSecs(90), "Pell"), 0); // never went out
    }
    CommandJournal again(path("commands.csv"));
    QAbstractItemModelTester tester(&again, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QCOMPARE(again.load(), 4);
    QCOMPARE(again.entry(confirmed)->state, CommandJournal::Confirmed);
    QCOMPARE(again.entry(confirmed)->stateLink, QString("Iridium"));
    QCOMPARE(again.entry(confirmed)->stateTime, T0.addSecs(5));
    QCOMPARE(again.entry(overdue)->state, CommandJournal::NotConfirmed);
    QCOMPARE(again.entry(late)->state, CommandJournal::Confirmed);
    QCOMPARE(again.entry(unsent)->state, CommandJournal::NotSent);
    QCOMPARE(again.entry(unsent)->seqs, QVector<int> { 13 });
    QCOMPARE(again.entry(overdue)->block, shortCommand(11, CMD_SONAR, 0));
    // Numbering goes on after the entries read back.
    QVERIFY(again.add(QByteArray(), "Pell", CommandJournal::Sent, T0) > unsent);

    QFile file(path("commands.csv"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readLine().startsWith("id,time_sent_utc,"));
    QVERIFY(file.readLine().startsWith("1,2026-11-23T12:00:00Z,10,power CTD on,Pell,"));
}

// No link open: the question comes first, then the word that nothing went out.
void TstCockpit::powerOffCancelledAndLinkDown()
{
    {
        GliderStation station;
        station.show();
        CommandJournal *journal = station.cockpit()->journal();
        pressPellOff(station.glider());
        QVERIFY(answer(CommandGuard::PowerOffDialog, "cancelButton"));
        QCOMPARE(journal->count(), 1);
        QCOMPARE(
            journal->data(journal->index(0, CommandJournal::StateColumn)).toString(), QString("cancelled"));
        QCOMPARE(journal->data(journal->index(0, CommandJournal::CommandColumn)).toString(),
            QString("power Pell off"));

        pressPellOff(station.glider());
        const auto *box = qobject_cast<QMessageBox *>(dialog(CommandGuard::PowerOffDialog));
        QVERIFY(QTest::qWaitFor(
            [&] { return (box = qobject_cast<QMessageBox *>(dialog(CommandGuard::PowerOffDialog))); },
            WaitMs));
        QVERIFY(box->text().contains("power Pell off"));
        QVERIFY(box->text().contains("over Pell"));
        QVERIFY(answer(CommandGuard::PowerOffDialog, "acceptButton"));
        QCOMPARE(journal->data(journal->index(0, CommandJournal::StateColumn)).toString(),
            QString("not sent: Pell link down"));
        QVERIFY(station.cockpit()->statusLabel()->text().contains("Pell link is down"));
        // Neither link is up: nothing to offer.
        QCOMPARE(dialog(CommandGuard::OtherLinkDialog), nullptr);
    }
    GliderStation restarted;
    const CommandJournal *journal = restarted.cockpit()->journal();
    QCOMPARE(journal->count(), 2);
    QCOMPARE(journal->data(journal->index(0, CommandJournal::StateColumn)).toString(),
        QString("not sent: Pell link down"));
    QCOMPARE(journal->data(journal->index(1, CommandJournal::StateColumn)).toString(), QString("cancelled"));
}

// A modem played by a TCP server: the block goes out once confirmed, and the
// vehicle's housekeeping confirms it.
void TstCockpit::powerOffConfirmedSentAndConfirmed()
{
    ConnectedStation connected;
    QVERIFY(connected.peer != nullptr);
    GliderStation &station = connected.station;
    QTcpSocket *peer = connected.peer;

    CommandJournal *journal = station.cockpit()->journal();
    pressPellOff(station.glider());
    QVERIFY(answer(CommandGuard::PowerOffDialog, "acceptButton"));
    QVERIFY(QTest::qWaitFor([&] { return peer->bytesAvailable() > 0; }, WaitMs));
    const QByteArray frame = peer->readAll();
    const CommandJournal::Entry entry = *journal->entry(1);
    QCOMPARE(entry.state, CommandJournal::Sent);
    QVERIFY(frame.contains(entry.block));
    QCOMPARE(entry.block.mid(2), QByteArray::fromHex("1060"));

    station.cockpit()->takePayload("Pell", hk2Payload(uint8_t(entry.seqs.value(0))));
    QCOMPARE(journal->entry(1)->state, CommandJournal::Confirmed);
    QVERIFY(journal->data(journal->index(0, CommandJournal::StateColumn)).toString().endsWith("over Pell"));
}

// "Iridium" chosen while the gateway is down and the radio up: the station
// says so, offers Pell, and sends the same block over the radio.
void TstCockpit::otherLinkOffered()
{
    ConnectedStation connected;
    QVERIFY(connected.peer != nullptr);
    GliderStation &station = connected.station;
    QTcpSocket *peer = connected.peer;
    auto *active = w<QComboBox>(station.glider(), "activeLinkCombo");
    active->setCurrentIndex(active->findText("Iridium"));
    QTest::mouseClick(w<QPushButton>(station.glider(), "sonarSleep"), Qt::LeftButton);
    const CommandJournal *journal = station.cockpit()->journal();
    QCOMPARE(journal->entry(1)->state, CommandJournal::NotSent);
    QVERIFY(station.cockpit()->statusLabel()->text().contains("Iridium link is down"));
    QVERIFY(answer(CommandGuard::OtherLinkDialog, "acceptButton"));
    QVERIFY(QTest::qWaitFor([&] { return peer->bytesAvailable() > 0; }, WaitMs));
    QVERIFY(peer->readAll().contains(journal->entry(1)->block));
    QCOMPARE(journal->entry(1)->state, CommandJournal::Sent);
    QCOMPARE(journal->entry(1)->link, QString("Pell"));
    QCOMPARE(journal->count(), 1);
}

// The expected interval of a link is the telemetry rate last sent to it,
// before a restart as well.
void TstCockpit::rateSurvivesRestart()
{
    {
        ConnectedStation connected;
        QVERIFY(connected.peer != nullptr);
        w<QSlider>(connected.station.glider(), "telemetryRateSlider")->setValue(5);
        QTest::mouseClick(w<QPushButton>(connected.station.glider(), "telemetryRateSet"), Qt::LeftButton);
        connected.station.cockpit()->takePayload("Pell", hk2Payload(0));
        QCOMPARE(connected.station.cockpit()->freshness()->expected("housekeeping2"), qint64(5000));
    }
    GliderStation restarted;
    QCOMPARE(restarted.cockpit()->freshness()->kinds(), QStringList { "housekeeping2" });
    QCOMPARE(restarted.cockpit()->freshness()->expected("housekeeping2"), qint64(5000));
}

void TstCockpit::freshness_data()
{
    QTest::addColumn<qint64>("intervalMs"); // 0: none set
    QTest::addColumn<int>("ageS");
    QTest::addColumn<int>("level");
    QTest::newRow("default, fresh") << qint64(0) << 20 * 60 << int(FreshnessMonitor::Fresh);
    QTest::newRow("default, late") << qint64(0) << 20 * 60 + 1 << int(FreshnessMonitor::Warning);
    QTest::newRow("default, missing") << qint64(0) << 40 * 60 + 1 << int(FreshnessMonitor::Alarm);
    QTest::newRow("30 s, fresh") << qint64(30000) << 60 << int(FreshnessMonitor::Fresh);
    QTest::newRow("30 s, late") << qint64(30000) << 61 << int(FreshnessMonitor::Warning);
    QTest::newRow("30 s, still late") << qint64(30000) << 120 << int(FreshnessMonitor::Warning);
    QTest::newRow("30 s, missing") << qint64(30000) << 121 << int(FreshnessMonitor::Alarm);
}

void TstCockpit::freshness()
{
    QFETCH(qint64, intervalMs);
    QFETCH(int, ageS);
    QFETCH(int, level);
    FreshnessMonitor monitor;
    if (intervalMs)
        monitor.setInterval("Pell", intervalMs);
    monitor.setInterval("Iridium", 1); // another link's rate does not count
    monitor.seen("housekeeping2", "Pell", T0);
    QCOMPARE(int(monitor.level("housekeeping2", T0.addSecs(ageS))), level);
    const QString text = monitor.text("housekeeping2", T0.addSecs(ageS));
    QVERIFY(text.startsWith("housekeeping2 "));
    QCOMPARE(text.endsWith(": late"), level == FreshnessMonitor::Warning);
    QCOMPARE(text.endsWith(": missing"), level == FreshnessMonitor::Alarm);
}

void TstCockpit::freshnessAnnouncedOncePerEpisode()
{
    FreshnessMonitor monitor;
    QSignalSpy raised(&monitor, &FreshnessMonitor::levelRaised);
    monitor.seen("ctd", "Pell", T0);
    for (int minute : { 5, 21, 22, 30, 41, 50 })
        monitor.check(T0.addSecs(60 * minute));
    QCOMPARE(raised.count(), 2); // late, then missing
    QCOMPARE(raised.at(0).at(2).toString(), QString("ctd 21 min ago (Pell): late"));
    monitor.seen("ctd", "Pell", T0.addSecs(51 * 60));
    monitor.check(T0.addSecs(52 * 60));
    monitor.check(T0.addSecs(72 * 60));
    QCOMPARE(raised.count(), 3); // a new episode
}

void TstCockpit::telemetryReadBack()
{
    {
        TelemetryStore store(path("telemetry.csv"));
        for (int i = 0; i < 3; i++)
            QVERIFY(store.append(position(i, 59.1 + i / 100.0, 10.5)));
        TelemetryRecord ctd;
        ctd.received = T0.addSecs(30);
        ctd.link = "Pell";
        ctd.kind = "ctd";
        ctd.values = { 7, 35.12, 8.5, 100.25, 1.5, 0.25, 1490.5 };
        QVERIFY(store.append(ctd));
    }
    TelemetryStore again(path("telemetry.csv"));
    QCOMPARE(again.load(), 4);
    QCOMPARE(again.count("postime"), 3);
    QCOMPARE(again.lastLink("ctd"), QString("Pell"));
    QCOMPARE(again.lastReceived("ctd"), T0.addSecs(30));
    const QVector<QPointF> pressure
        = again.series("ctd", "pressure", 0, T0.addDays(1).toMSecsSinceEpoch(), 100);
    QCOMPARE(pressure.size(), 1);
    QCOMPARE(pressure.at(0), QPointF(T0.addSecs(30).toMSecsSinceEpoch(), 100.25));
    QCOMPARE(again.track().size(), 3);
    QCOMPARE(again.track().at(2).lat, 59.12);
    QCOMPARE(again.track().at(2).fix, T0.addSecs(115));
}

// 10,000 flat CTD pressures with one dive and one spike, thinned to about
// 100 points: both extremes survive, in time order.
void TstCockpit::thinningKeepsPeaks()
{
    TelemetryStore store(path("telemetry.csv"));
    for (int i = 0; i < 10000; i++) {
        TelemetryRecord ctd;
        ctd.received = T0.addSecs(i);
        ctd.link = "Pell";
        ctd.kind = "ctd";
        ctd.values = { double(i), 35, 8, i == 1234 ? 200.0 : i == 8765 ? -1.0 : 50.0, 0, 0, 1500 };
        store.add(ctd);
    }
    const QVector<QPointF> points
        = store.series("ctd", "pressure", T0.toMSecsSinceEpoch(), T0.addSecs(10000).toMSecsSinceEpoch(), 100);
    QVERIFY(points.size() <= 102);
    QVERIFY(points.size() >= 50);
    QVERIFY(std::is_sorted(
        points.cbegin(), points.cend(), [](const QPointF &a, const QPointF &b) { return a.x() < b.x(); }));
    const auto peak = std::max_element(
        points.cbegin(), points.cend(), [](const QPointF &a, const QPointF &b) { return a.y() < b.y(); });
    const auto dip = std::min_element(
        points.cbegin(), points.cend(), [](const QPointF &a, const QPointF &b) { return a.y() < b.y(); });
    QCOMPARE(*peak, QPointF(T0.addSecs(1234).toMSecsSinceEpoch(), 200));
    QCOMPARE(*dip, QPointF(T0.addSecs(8765).toMSecsSinceEpoch(), -1));
    // Within a window the thinning looks only at the window.
    QCOMPARE(store
                 .series("ctd", "pressure", T0.addSecs(2000).toMSecsSinceEpoch(),
                     T0.addSecs(2009).toMSecsSinceEpoch(), 100)
                 .size(),
        10);
}

void TstCockpit::plotExportsWhatIsShown()
{
    TelemetryStore store(path("telemetry.csv"));
    for (int i = 0; i < 3; i++)
        store.add(position(i, 59 + i, 10));
    PlotView view(&store);
    view.setSelected({ "postime.lat" });
    QCOMPARE(view.pointsShown(), 3);
    const QString csv = QDir::home().filePath("plot.csv");
    QString error;
    QVERIFY2(view.exportCsv(csv, &error), qPrintable(error));
    QFile file(csv);
    QVERIFY(file.open(QIODevice::ReadOnly | QIODevice::Text));
    const QStringList lines = QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), 4);
    QCOMPARE(lines.at(0), QString("time_utc,series,value"));
    QCOMPARE(lines.at(3), QString("2026-11-23T12:02:00.000Z,\"postime.lat (deg)\",61"));
}

void TstCockpit::gpxReadByGpsbabel()
{
    const QString gpsbabel = QStandardPaths::findExecutable("gpsbabel");
    if (gpsbabel.isEmpty())
        QSKIP("gpsbabel is not installed");
    TelemetryStore store(path("telemetry.csv"));
    const QVector<QPointF> points { { 59.9127, 10.7461 }, { 59.9131234, 10.7502 }, { -33.8568, 151.2153 } };
    for (int i = 0; i < points.size(); i++)
        store.add(position(i, points.at(i).x(), points.at(i).y()));
    const QString gpx = QDir::home().filePath("track.gpx");
    QString error;
    QVERIFY2(TrackExporter::write(store.track(), gpx, &error), qPrintable(error));

    QProcess babel;
    babel.start(gpsbabel, { "-t", "-i", "gpx", "-f", gpx, "-o", "unicsv,utc=0", "-F", "-" });
    QVERIFY(babel.waitForFinished(WaitMs));
    QCOMPARE(babel.exitCode(), 0);
    QStringList lines = QString::fromUtf8(babel.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
    const QStringList header = lines.takeFirst().trimmed().split(',');
    QCOMPARE(lines.size(), points.size());
    for (int i = 0; i < lines.size(); i++) {
        const QStringList fields = lines.at(i).trimmed().split(',');
        // unicsv prints six decimals.
        QVERIFY(qAbs(fields.value(header.indexOf("Latitude")).toDouble() - points.at(i).x()) < 1e-6);
        QVERIFY(qAbs(fields.value(header.indexOf("Longitude")).toDouble() - points.at(i).y()) < 1e-6);
        QCOMPARE(fields.value(header.indexOf("Time")), T0.addSecs(60 * i - 5).toString("HH:mm:ss"));
    }
}

void TstCockpit::headlessExport_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("exitCode");
    QTest::newRow("gpx") << "out.gpx" << 0;
    QTest::newRow("kml") << "out.KML" << 0;
    QTest::newRow("unknown extension") << "out.txt" << 2;
    QTest::newRow("no directory") << "missing/dir/out.gpx" << 2;
}

void TstCockpit::headlessExport()
{
    QFETCH(QString, file);
    QFETCH(int, exitCode);
    {
        TelemetryStore store(path("telemetry.csv"));
        QVERIFY(store.append(position(0, 59.5, 10.25)));
        QVERIFY(store.append(position(1, 59.6, 10.35)));
    }
    QProcess station;
    station.setWorkingDirectory(QDir::homePath());
    station.start(GLIDER_STATION_PATH, { "--export-track", file });
    QVERIFY(station.waitForFinished(WaitMs));
    QCOMPARE(station.exitCode(), exitCode);
    const QByteArray err = station.readAllStandardError();
    QCOMPARE(err.count('\n'), exitCode ? 1 : 0);
    if (exitCode)
        return;
    QFile out(QDir::home().filePath(file));
    QVERIFY(out.open(QIODevice::ReadOnly));
    const QByteArray text = out.readAll();
    QVERIFY(text.contains("59.6000000"));
    QVERIFY(text.contains("10.3500000"));
}

QTEST_MAIN(TstCockpit)
#include "tst_cockpit.moc"
