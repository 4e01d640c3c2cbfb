// The radio tool and the vehicle station against the simulator process, driven
// through their widgets; with VARDA_SCREENSHOTS set, pictures of both (under Xvfb for the real look).

#include <QtNetwork>
#include <QtTest>
#include <QtWidgets>

#include "cockpit.h"
#include "commandjournal.h"
#include "gliderstation.h"
#include "mainwindow.h"
#include "simprocess.h"
#include "telemetrystore.h"

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

bool listed(const QWidget *root, const char *view, const QString &name) // in the first column
{
    const QAbstractItemModel *model = w<QTableView>(root, view)->model();
    return !model->match(model->index(0, 0), Qt::DisplayRole, name, 1, Qt::MatchExactly).isEmpty();
}

// Connects the radio link (with a port) or the gateway (without).
bool connectTo(const QWidget *root, const char *link, quint16 port = 0)
{
    w<QCheckBox>(root, "localCallAutoSetBox")->setChecked(true);
    if (port) {
        act(root, "linkTypeCombo", link);
        act(root, "portText", QString::number(port));
    }

    const char *button = port ? "connectButton" : "iridiumConnect";
    act(root, button);
    return QTest::qWaitFor([=] { return w<QPushButton>(root, button)->text() == "Disconnect"; }, WaitMs);
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
    void initTestCase()
    {
        // The gateway client dials port 10020 only; another test may hold it for a while.
        if (!QTest::qWaitFor([] { return QTcpServer().listen(QHostAddress::LocalHost, 10020); }, 30000))
            QSKIP("port 10020 stayed busy");
        QVERIFY(m_sim.start({ "--rate", "10", "--seed", "3", "--gateway-port", "10020" }));
    }

    void radioTool()
    {
        MainWindow window;
        window.show();
        QVERIFY(connectTo(&window, "UDP", m_sim.modemPort));
        // The modem's beacon names the local station, so the reply finds its way back.
        QTRY_COMPARE_WITH_TIMEOUT(w<QLineEdit>(&window, "localCallEdit")->text(), QString("BASE-1"), WaitMs);
        QTRY_VERIFY_WITH_TIMEOUT(w<QTableView>(&window, "stationsTable")->model()->rowCount() >= 4, WaitMs);
        act(&window, "configModeBox", "Ext. cmd (select below)");
        act(&window, "terminalSelectActive", "alpha-1");
        act(&window, "commandLineEdit", "ping");
        QTRY_VERIFY_WITH_TIMEOUT(
            w<QPlainTextEdit>(&window, "commandOutputTextEdit")->toPlainText().contains("pong"), WaitMs);
        if (qEnvironmentVariableIsSet("VARDA_SCREENSHOTS"))
            QVERIFY(window.grab().save(qEnvironmentVariable("VARDA_SCREENSHOTS") + "/varda-toolbox.png"));
    }

    // Telemetry over the radio, forwarded to relayhub; a command over the gateway, confirmed.
    void vehicleStation()
    {
        QDir(QDir::home().filePath(".toolbox")).removeRecursively();
        const QRegularExpression relayed("relayhub: \\d+ bytes from RLHB-1\n");
        const int before = m_sim.log().count(relayed);
        GliderStation station;
        station.show();
        w<QCheckBox>(&station, "relayhubForwardVarda")->setChecked(true);
        QVERIFY(connectTo(&station, "TCP", m_sim.modemPort));
        QVERIFY(connectTo(&station, "Iridium"));
        for (const char *name : { "Last cmd. seq.", "Lat", "CTD salinity", "CO2 (mg/l)", "Light (µV)" })
            QTRY_VERIFY2_WITH_TIMEOUT(listed(&station, "telemetryTableView", name), name, WaitMs);
        // Samples go to telemetry.txt; the sonar, which runs now and then, to event.txt.
        for (const char *kind : { "housekeeping2;", "postime;", "ctd;", "o2;", "pco2;", "light;", "pth;" })
            QTRY_VERIFY2_WITH_TIMEOUT(homeFile("telemetry.txt").contains(kind), kind, WaitMs);
        for (const char *kind : { "sonar_report;", "sonar_desc;", "sonar_wcol8;" })
            QTRY_VERIFY2_WITH_TIMEOUT(homeFile("event.txt").contains(kind), kind, WaitMs);
        QVERIFY(!w<QTextBrowser>(&station, "logView")->toPlainText().isEmpty());

        // Once the command is queued, every payload forwarded before it has been read too.
        act(&station, "activeLinkCombo", "Iridium");
        const int queued = m_sim.log().count("queued ");
        act(&station, "telemetryRequestButton");
        QTRY_VERIFY_WITH_TIMEOUT(m_sim.log().count("queued ") > queued, WaitMs);
        QVERIFY(m_sim.log().count(relayed) > before);
        QTRY_COMPARE_WITH_TIMEOUT(w<QLabel>(&station, "ackLabel")->palette().color(QPalette::WindowText),
            QColor(Qt::darkGreen), WaitMs);
        // The journal says the same, and the history holds positions for the track.
        const CommandJournal *journal = station.cockpit()->journal();
        QTRY_COMPARE_WITH_TIMEOUT(journal->entryAt(0).state, CommandJournal::Confirmed, WaitMs);
        QCOMPARE(journal->entryAt(0).commands, QStringList { "telemetry request Pell" });
        QVERIFY(!station.cockpit()->store()->track().isEmpty());
        if (qEnvironmentVariableIsSet("VARDA_SCREENSHOTS"))
            QVERIFY(station.grab().save(qEnvironmentVariable("VARDA_SCREENSHOTS") + "/glider-station.png"));
    }

private:
    SimProcess m_sim;
};

QTEST_MAIN(tst_EndToEnd)
#include "tst_end_to_end.moc"
