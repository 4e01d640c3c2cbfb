// The real windows against the real simulator, run as a separate process:
// the radio tool and the vehicle station connected the way an operator
// connects them, driven through their widgets.
//
// With VARDA_SCREENSHOTS set to a directory, screenshots() leaves pictures
// of both windows with live traffic there (run it under Xvfb for the real
// look; offscreen works too).

#include <QAbstractItemModel>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTableView>
#include <QTcpServer>
#include <QTest>
#include <QTextBrowser>
#include <QTextDocument>

#include <memory>

#include "glider.h"
#include "gliderstation.h"
#include "mainwindow.h"
#include "simprocess.h"

namespace
{

const int WaitMs = 20000;
const quint16 GatewayPort = 10020; // the gateway client dials no other

template <typename T> T *find(const QWidget *root, const char *name)
{
    T *widget = root->findChild<T *>(QLatin1String(name));
    if (!widget)
        qFatal("no widget %s", name);
    return widget;
}

void press(const QWidget *root, const char *button)
{
    QTest::mouseClick(find<QPushButton>(root, button), Qt::LeftButton);
}

void choose(const QWidget *root, const char *combo, const QString &text)
{
    auto *box = find<QComboBox>(root, combo);
    box->setCurrentIndex(box->findText(text));
}

void type(const QWidget *root, const char *field, const QString &text)
{
    auto *edit = find<QLineEdit>(root, field);
    edit->clear();
    QTest::keyClicks(edit, text);
}

int rows(const QWidget *root, const char *view)
{
    return find<QTableView>(root, view)->model()->rowCount();
}

// Column 0 of a table, top to bottom.
QStringList column(const QWidget *root, const char *view, int col = 0)
{
    const QAbstractItemModel *model = find<QTableView>(root, view)->model();
    QStringList texts;
    for (int r = 0; r < model->rowCount(); r++)
        texts << model->index(r, col).data().toString();
    return texts;
}

// Connects the radio tool inside root to the simulated modem.
bool connectRadio(const QWidget *root, const QString &link, quint16 port)
{
    find<QCheckBox>(root, "localCallAutoSetBox")->setChecked(true);
    choose(root, "linkTypeCombo", link);
    type(root, "portText", QString::number(port));
    press(root, "connectButton");
    return QTest::qWaitFor(
        [root] { return find<QPushButton>(root, "connectButton")->text() == "Disconnect"; }, WaitMs);
}

QColor ackColour(const QWidget *root)
{
    const QLabel *ack = find<QLabel>(root, "ackLabel");
    return ack->palette().color(ack->foregroundRole());
}

QString homeFile(const QString &name)
{
    QFile file(QDir::home().filePath(".toolbox/" + name));
    return file.open(QIODevice::ReadOnly) ? QString::fromLatin1(file.readAll()) : QString();
}

// The housekeeping line that reports seq as the last command run.
bool confirmationLogged(const QString &seq)
{
    const QStringList lines = homeFile("telemetry.txt").split("\r\n");
    for (const QString &line : lines) {
        if (line.startsWith("housekeeping2;") && line.endsWith(";" + seq))
            return true;
    }
    return false;
}

bool portFree(quint16 port)
{
    QTcpServer probe;
    return probe.listen(QHostAddress::LocalHost, port);
}

} // namespace

class tst_EndToEnd : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();

    void radioToolShowsTraffic_data();
    void radioToolShowsTraffic();
    void terminalCommandAnswered_data();
    void terminalCommandAnswered();
    void vehicleCommandConfirmed_data();
    void vehicleCommandConfirmed();
    void telemetryTableAndLogsFill();
    void radioPayloadsForwarded_data();
    void radioPayloadsForwarded();
    void screenshots();

private:
    std::unique_ptr<GliderStation> connectedStation(bool radio, bool gateway, bool forward = true);
    bool m_haveGateway = false;
    SimProcess m_sim;
};

void tst_EndToEnd::initTestCase()
{
    // Another test may be playing the gateway on its fixed port for a while.
    m_haveGateway = QTest::qWaitFor([] { return portFree(GatewayPort); }, 30000);
    QStringList args = { "--rate", "10", "--seed", "3" };
    if (m_haveGateway)
        args << "--gateway-port" << QString::number(GatewayPort);
    QVERIFY2(m_sim.start(args), qPrintable(m_sim.log()));
}

void tst_EndToEnd::cleanupTestCase()
{
    m_sim.stop();
}

void tst_EndToEnd::radioToolShowsTraffic_data()
{
    QTest::addColumn<QString>("link");
    QTest::newRow("TCP") << "TCP";
    QTest::newRow("UDP") << "UDP";
}

void tst_EndToEnd::radioToolShowsTraffic()
{
    QFETCH(QString, link);
    MainWindow window;
    window.show();
    QVERIFY(connectRadio(&window, link, m_sim.modemPort()));

    // The modem's beacon names the local station; stations fill the lists.
    QTRY_COMPARE_WITH_TIMEOUT(find<QLineEdit>(&window, "localCallEdit")->text(), QString("BASE-1"), WaitMs);
    QTRY_VERIFY_WITH_TIMEOUT(rows(&window, "stationsTable") >= 4, WaitMs);
    QTRY_VERIFY_WITH_TIMEOUT(column(&window, "packetTable").contains("RLHB-1"), WaitMs);
    const QString path = link.toLower();
    QTRY_VERIFY_WITH_TIMEOUT(
        column(&window, "packetTable", 1).filter(QRegExp("^rx\\(-\\d+\\), " + path + "$")).size() >= 3,
        WaitMs);
    QVERIFY(column(&window, "packetTable", 4).contains("spp(rx), ext(src, stat, simplehop, toh)"));
}

void tst_EndToEnd::terminalCommandAnswered_data()
{
    QTest::addColumn<QString>("mode");
    QTest::addColumn<QString>("destination");
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("reply");
    QTest::newRow("modem command") << "SPP cmd (local)" << QString() << "status"
                                   << "BASE-1 up ";
    QTest::newRow("station command") << "Ext. cmd (select below)"
                                     << "alpha-1"
                                     << "ping"
                                     << "pong";
}

void tst_EndToEnd::terminalCommandAnswered()
{
    QFETCH(QString, mode);
    QFETCH(QString, destination);
    QFETCH(QString, command);
    QFETCH(QString, reply);
    MainWindow window;
    window.show();
    QVERIFY(connectRadio(&window, "TCP", m_sim.modemPort()));
    // The command carries the local callsign, so the reply comes back to it.
    QTRY_COMPARE_WITH_TIMEOUT(find<QLineEdit>(&window, "localCallEdit")->text(), QString("BASE-1"), WaitMs);

    choose(&window, "configModeBox", mode);
    if (!destination.isEmpty()) {
        auto *station = find<QComboBox>(&window, "terminalSelectActive");
        station->lineEdit()->clear();
        QTest::keyClicks(station->lineEdit(), destination);
        QTest::keyClick(station->lineEdit(), Qt::Key_Return);
    }
    type(&window, "commandLineEdit", command);
    press(&window, "cmdPushButton");
    QTRY_VERIFY_WITH_TIMEOUT(
        find<QPlainTextEdit>(&window, "commandOutputTextEdit")->toPlainText().contains(reply), WaitMs);
}

// A vehicle station connected to the simulated modem, gateway or both.
std::unique_ptr<GliderStation> tst_EndToEnd::connectedStation(bool radio, bool gateway, bool forward)
{
    auto station = std::make_unique<GliderStation>();
    station->show();
    find<QCheckBox>(station.get(), "relayhubForwardVarda")->setChecked(forward);
    if (radio && !connectRadio(station.get(), "TCP", m_sim.modemPort()))
        return nullptr;
    if (gateway) {
        type(station.get(), "iridiumHost", "127.0.0.1");
        press(station.get(), "iridiumConnect");
        if (!QTest::qWaitFor(
                [&station] {
                    return find<QPushButton>(station.get(), "iridiumConnect")->text() == "Disconnect";
                },
                WaitMs))
            return nullptr;
    }
    return station;
}

void tst_EndToEnd::vehicleCommandConfirmed_data()
{
    QTest::addColumn<QString>("link");
    QTest::addColumn<QString>("button");
    QTest::newRow("radio: telemetry request") << "Pell"
                                              << "telemetryRequestButton";
    QTest::newRow("radio: power") << "Pell"
                                  << "powerSet";
    QTest::newRow("gateway: telemetry request") << "Iridium"
                                                << "telemetryRequestButton";
    QTest::newRow("gateway: datastore flush") << "Iridium"
                                              << "cardFlush";
}

void tst_EndToEnd::vehicleCommandConfirmed()
{
    QFETCH(QString, link);
    QFETCH(QString, button);
    const bool gateway = link == "Iridium";
    if (gateway && !m_haveGateway)
        QSKIP("port 10020 stayed busy: no simulated gateway where the client dials");
    // Only the link under test is connected: the vehicle's housekeeping
    // comes over both.
    auto station = connectedStation(!gateway, gateway);
    QVERIFY(station);

    choose(station.get(), "activeLinkCombo", link);
    find<QCheckBox>(station.get(), "powerState")->setChecked(true); // power commands switch on
    press(station.get(), qPrintable(button));
    const QString seq = find<QLabel>(station.get(), "ackLabel")->text();
    QVERIFY(!seq.isEmpty());
    QCOMPARE(ackColour(station.get()), QColor(Qt::red));
    // Dark green once the vehicle's housekeeping reports that number.
    QTRY_COMPARE_WITH_TIMEOUT(ackColour(station.get()), QColor(Qt::darkGreen), WaitMs);
    QTRY_VERIFY_WITH_TIMEOUT(confirmationLogged(seq), WaitMs);
}

void tst_EndToEnd::telemetryTableAndLogsFill()
{
    auto station = connectedStation(true, false);
    QVERIFY(station);
    QTRY_VERIFY_WITH_TIMEOUT(column(station.get(), "telemetryTableView").contains("CTD salinity"), WaitMs);
    const QStringList properties = column(station.get(), "telemetryTableView");
    for (const char *name :
        { "Last cmd. seq.", "Lat", "O2 concentration", "CO2 (mg/l)", "Light (µV)", "PTH pressure" })
        QVERIFY2(properties.contains(QString::fromUtf8(name)), name);

    // Samples to telemetry.txt, the sonar's reports and water columns to
    // event.txt (the vehicle runs its sonar now and then).
    for (const char *kind : { "housekeeping2;", "postime;", "ctd;", "o2;", "pco2;", "light;", "pth;" })
        QTRY_VERIFY2_WITH_TIMEOUT(homeFile("telemetry.txt").contains(kind), kind, WaitMs);
    for (const char *kind : { "sonar_report;", "sonar_desc;", "sonar_wcol8;" })
        QTRY_VERIFY2_WITH_TIMEOUT(homeFile("event.txt").contains(kind), kind, WaitMs);
    QTRY_VERIFY_WITH_TIMEOUT(!find<QTextBrowser>(station.get(), "logView")->toPlainText().isEmpty(), WaitMs);
}

void tst_EndToEnd::radioPayloadsForwarded_data()
{
    QTest::addColumn<bool>("forward");
    QTest::newRow("ticked") << true;
    QTest::newRow("not ticked") << false;
}

void tst_EndToEnd::radioPayloadsForwarded()
{
    QFETCH(bool, forward);
    if (!m_haveGateway)
        QSKIP("port 10020 stayed busy: no simulated gateway where the client dials");
    const int before = m_sim.log().count("relayhub: ");
    auto station = connectedStation(true, true, forward);
    QVERIFY(station);

    // Two vehicle payloads heard on the radio...
    QSignalSpy heard(station->glider(), &Glider::gliderPayloadReceived);
    QTRY_VERIFY_WITH_TIMEOUT(heard.count() >= 2, WaitMs);
    // ...then a command over the same gateway connection: once the gateway
    // has queued it, anything forwarded before it has been read too.
    choose(station.get(), "activeLinkCombo", "Iridium");
    const int queued = m_sim.log().count("queued ");
    press(station.get(), "telemetryRequestButton");
    QTRY_VERIFY_WITH_TIMEOUT(m_sim.log().count("queued ") > queued, WaitMs);
    const int forwarded = m_sim.log().count("relayhub: ") - before;
    QCOMPARE(forwarded > 0, forward);
    if (forward)
        QVERIFY(m_sim.log().contains("bytes from RLHB-1"));
}

void tst_EndToEnd::screenshots()
{
    const QString dir = qEnvironmentVariable("VARDA_SCREENSHOTS");
    if (dir.isEmpty())
        QSKIP("set VARDA_SCREENSHOTS to a directory to take them");

    MainWindow radio;
    radio.resize(1000, 700);
    radio.show();
    QVERIFY(connectRadio(&radio, "TCP", m_sim.modemPort()));
    QTRY_VERIFY_WITH_TIMEOUT(rows(&radio, "packetTable") >= 14, WaitMs);
    find<QTabWidget>(&radio, "tabWidget")->setCurrentIndex(1);
    QTest::qWait(300);
    QVERIFY(radio.grab().save(dir + "/varda-toolbox.png"));

    auto station = connectedStation(true, m_haveGateway);
    QVERIFY(station);
    find<QTabWidget>(station.get(), "stationTabs")->setCurrentIndex(1);
    find<QCheckBox>(station.get(), "ignoreHousekeepingCheck")->setChecked(false);
    QTRY_VERIFY_WITH_TIMEOUT(rows(station.get(), "telemetryTableView") >= 30, WaitMs);
    press(station.get(), "telemetryRequestButton");
    QTRY_COMPARE_WITH_TIMEOUT(ackColour(station.get()), QColor(Qt::darkGreen), WaitMs);
    QTRY_VERIFY_WITH_TIMEOUT(
        find<QTextBrowser>(station.get(), "logView")->document()->blockCount() >= 12, WaitMs);
    QTest::qWait(300);
    QVERIFY(station->grab().save(dir + "/glider-station.png"));
}

QTEST_MAIN(tst_EndToEnd)
#include "tst_end_to_end.moc"
