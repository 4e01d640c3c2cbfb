// The radio tool and the vehicle station against the simulator process, driven
// through their widgets. With VARDA_SCREENSHOTS set to a directory, screenshots()
// leaves pictures of both windows with live traffic there (under Xvfb for the real look).

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTableView>
#include <QTcpServer>
#include <QTest>
#include <QTextBrowser>

#include <memory>

#include "glider.h"
#include "gliderstation.h"
#include "mainwindow.h"
#include "simprocess.h"

namespace
{

const int WaitMs = 20000;

template <typename T> T *w(const QWidget *root, const char *name)
{
    return root->findChild<T *>(QLatin1String(name));
}

// Presses a button, picks an entry of a combo box, or types a line.
void act(const QWidget *root, const char *name, const QString &text = QString())
{
    auto *box = w<QComboBox>(root, name);
    QLineEdit *edit = box ? box->lineEdit() : w<QLineEdit>(root, name);
    if (auto *button = w<QPushButton>(root, name)) {
        QTest::mouseClick(button, Qt::LeftButton);
    } else if (!edit) {
        box->setCurrentIndex(box->findText(text));
    } else {
        edit->clear();
        QTest::keyClicks(edit, text + '\r');
    }
}

QStringList column(const QWidget *root, const char *view)
{
    const QAbstractItemModel *model = w<QTableView>(root, view)->model();
    QStringList texts;
    for (int r = 0; r < model->rowCount(); r++)
        texts << model->index(r, 0).data().toString();
    return texts;
}

bool connectRadio(const QWidget *root, const QString &link, quint16 port)
{
    w<QCheckBox>(root, "localCallAutoSetBox")->setChecked(true);
    act(root, "linkTypeCombo", link);
    act(root, "portText", QString::number(port));
    act(root, "connectButton");
    return QTest::qWaitFor(
        [root] { return w<QPushButton>(root, "connectButton")->text() == "Disconnect"; }, WaitMs);
}

QString homeFile(const QString &name)
{
    QFile file(QDir::home().filePath(".toolbox/" + name));
    return file.open(QIODevice::ReadOnly) ? QString::fromLatin1(file.readAll()) : QString();
}

} // namespace

class tst_EndToEnd : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void radioTool();
    void vehicleCommandConfirmed_data();
    void vehicleCommandConfirmed();
    void radioTelemetry_data();
    void radioTelemetry();
    void screenshots();

private:
    std::unique_ptr<GliderStation> station(bool radio, bool gateway, bool forward = true);
    SimProcess m_sim;
};

void tst_EndToEnd::initTestCase()
{
    // The gateway client dials port 10020 only; another test may hold it for a while.
    if (!QTest::qWaitFor([] { return QTcpServer().listen(QHostAddress::LocalHost, 10020); }, 30000))
        QSKIP("port 10020 stayed busy");
    QVERIFY(m_sim.start({ "--rate", "10", "--seed", "3", "--gateway-port", "10020" }));
}

void tst_EndToEnd::radioTool()
{
    MainWindow window;
    window.show();
    QVERIFY(connectRadio(&window, "UDP", m_sim.modemPort));
    // The modem's beacon names the local station, so the reply finds its way back.
    QTRY_COMPARE_WITH_TIMEOUT(w<QLineEdit>(&window, "localCallEdit")->text(), QString("BASE-1"), WaitMs);
    QTRY_VERIFY_WITH_TIMEOUT(column(&window, "stationsTable").size() >= 4, WaitMs);
    act(&window, "configModeBox", "Ext. cmd (select below)");
    act(&window, "terminalSelectActive", "alpha-1");
    act(&window, "commandLineEdit", "ping");
    QTRY_VERIFY_WITH_TIMEOUT(
        w<QPlainTextEdit>(&window, "commandOutputTextEdit")->toPlainText().contains("pong"), WaitMs);
}

// A vehicle station connected to the simulated modem, gateway or both.
std::unique_ptr<GliderStation> tst_EndToEnd::station(bool radio, bool gateway, bool forward)
{
    auto station = std::make_unique<GliderStation>();
    const QWidget *root = station.get();
    station->show();
    w<QCheckBox>(root, "relayhubForwardVarda")->setChecked(forward);
    if (radio && !connectRadio(root, "TCP", m_sim.modemPort))
        return nullptr;
    if (gateway)
        act(root, "iridiumConnect");
    const auto up = [root] { return w<QPushButton>(root, "iridiumConnect")->text() == "Disconnect"; };
    return !gateway || QTest::qWaitFor(up, WaitMs) ? std::move(station) : nullptr;
}

void tst_EndToEnd::vehicleCommandConfirmed_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<bool>("radio");
    QTest::newRow("radio: power") << "powerSet" << true;
    QTest::newRow("gateway: datastore flush") << "cardFlush" << false;
}

void tst_EndToEnd::vehicleCommandConfirmed()
{
    QFETCH(QString, button);
    QFETCH(bool, radio);
    // Only the link under test: the vehicle's housekeeping comes over both.
    const auto glider = station(radio, !radio);
    QVERIFY(glider);
    act(glider.get(), "activeLinkCombo", radio ? "Pell" : "Iridium");
    w<QCheckBox>(glider.get(), "powerState")->setChecked(true);
    act(glider.get(), qPrintable(button));
    // Dark green once the vehicle's housekeeping reports that number.
    QTRY_COMPARE_WITH_TIMEOUT(w<QLabel>(glider.get(), "ackLabel")->palette().color(QPalette::WindowText),
        QColor(Qt::darkGreen), WaitMs);
}

void tst_EndToEnd::radioTelemetry_data()
{
    QTest::addColumn<bool>("forward");
    QTest::newRow("forwarded to relayhub") << true;
    QTest::newRow("not forwarded") << false;
}

void tst_EndToEnd::radioTelemetry()
{
    QFETCH(bool, forward);
    QDir(QDir::home().filePath(".toolbox")).removeRecursively(); // what earlier tests logged
    const QRegularExpression relayed("relayhub: \\d+ bytes from RLHB-1\n");
    const int before = m_sim.log().count(relayed);
    const auto glider = station(true, true, forward);
    QVERIFY(glider);
    QSignalSpy heard(glider->glider(), &Glider::gliderPayloadReceived);
    for (const char *name : { "Last cmd. seq.", "Lat", "CTD salinity", "CO2 (mg/l)", "Light (µV)" })
        QTRY_VERIFY2_WITH_TIMEOUT(column(glider.get(), "telemetryTableView").contains(name), name, WaitMs);
    // Samples go to telemetry.txt; the sonar, which runs now and then, to event.txt.
    for (const char *kind : { "housekeeping2;", "postime;", "ctd;", "o2;", "pco2;", "light;", "pth;" })
        QTRY_VERIFY2_WITH_TIMEOUT(homeFile("telemetry.txt").contains(kind), kind, WaitMs);
    for (const char *kind : { "sonar_report;", "sonar_desc;", "sonar_wcol8;" })
        QTRY_VERIFY2_WITH_TIMEOUT(homeFile("event.txt").contains(kind), kind, WaitMs);
    QVERIFY(!w<QTextBrowser>(glider.get(), "logView")->toPlainText().isEmpty());

    // Then a command over the same gateway connection: once it is queued,
    // every payload forwarded before it has been read too.
    QVERIFY(!heard.isEmpty());
    act(glider.get(), "activeLinkCombo", "Iridium");
    const int queued = m_sim.log().count("queued ");
    act(glider.get(), "telemetryRequestButton");
    QTRY_VERIFY_WITH_TIMEOUT(m_sim.log().count("queued ") > queued, WaitMs);
    QCOMPARE(m_sim.log().count(relayed) > before, forward);
}

void tst_EndToEnd::screenshots()
{
    const QString dir = qEnvironmentVariable("VARDA_SCREENSHOTS");
    if (dir.isEmpty())
        QSKIP("set VARDA_SCREENSHOTS to a directory to take them");
    MainWindow radio;
    radio.resize(1000, 700);
    radio.show();
    QVERIFY(connectRadio(&radio, "TCP", m_sim.modemPort));
    QTRY_VERIFY_WITH_TIMEOUT(column(&radio, "packetTable").size() >= 14, WaitMs);
    w<QTabWidget>(&radio, "tabWidget")->setCurrentIndex(1);
    QTest::qWait(300);
    QVERIFY(radio.grab().save(dir + "/varda-toolbox.png"));

    const auto glider = station(true, true);
    QVERIFY(glider);
    w<QTabWidget>(glider.get(), "stationTabs")->setCurrentIndex(1);
    w<QCheckBox>(glider.get(), "ignoreHousekeepingCheck")->setChecked(false);
    QTRY_VERIFY_WITH_TIMEOUT(column(glider.get(), "telemetryTableView").size() >= 30, WaitMs);
    act(glider.get(), "telemetryRequestButton");
    QTRY_COMPARE_WITH_TIMEOUT(w<QLabel>(glider.get(), "ackLabel")->palette().color(QPalette::WindowText),
        QColor(Qt::darkGreen), WaitMs);
    QTRY_VERIFY_WITH_TIMEOUT(
        w<QTextBrowser>(glider.get(), "logView")->toPlainText().count('\n') >= 11, WaitMs);
    QTest::qWait(300);
    QVERIFY(glider->grab().save(dir + "/glider-station.png"));
}

QTEST_MAIN(tst_EndToEnd)
#include "tst_end_to_end.moc"
