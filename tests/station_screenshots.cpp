// Not a test: grabs the vehicle station's journal, plots and track against
// the simulator for the README (scripts/station-screenshots.sh runs it
// under Xvfb with a temporary HOME).
#include <QtNetwork>
#include <QtTest>
#include <QtWidgets>

#include "cockpit.h"
#include "commandguard.h"
#include "gliderstation.h"
#include "mainwindow.h"
#include "plotview.h"
#include "simprocess.h"

namespace
{
const int WaitMs = 20000;

template <typename T> T *w(const QWidget *root, const char *name)
{
    return root->findChild<T *>(QLatin1String(name));
}

void press(const QWidget *root, const char *name)
{
    QTest::mouseClick(w<QPushButton>(root, name), Qt::LeftButton);
}

bool connectRadio(GliderStation *station, quint16 port)
{
    auto *type = w<QComboBox>(station, "linkTypeCombo");
    type->setCurrentIndex(type->findText("TCP"));
    w<QLineEdit>(station, "portText")->setText(QString::number(port));
    press(station, "connectButton");
    press(station, "iridiumConnect");
    return QTest::qWaitFor(
        [=] {
            return w<QPushButton>(station, "connectButton")->text() == "Disconnect"
                && w<QPushButton>(station, "iridiumConnect")->text() == "Disconnect";
        },
        WaitMs);
}

QWidget *dialog(const char *name)
{
    for (QWidget *top : QApplication::topLevelWidgets()) {
        if (top->objectName() == QLatin1String(name) && top->isVisible())
            return top;
    }
    return nullptr;
}

void shoot(QWidget *widget, const QString &dir, const char *name)
{
    QTest::qWait(300);
    widget->grab().save(dir + '/' + name);
}
}

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    const QString dir = app.arguments().value(1, ".");
    SimProcess sim;
    if (!sim.start({ "--rate", "60", "--seed", "5", "--gateway-port", "10020" }))
        return 1;
    GliderStation station;
    station.resize(1280, 860);
    station.show();
    if (!connectRadio(&station, sim.modemPort))
        return 1;
    auto *tabs = w<QTabWidget>(&station, "stationTabs");
    tabs->setCurrentIndex(1);
    QTest::qWait(25000); // telemetry of about 25 simulated minutes
    press(&station, "telemetryRequestButton");
    auto *channel = w<QComboBox>(&station, "powerChannel");
    channel->setCurrentIndex(channel->findText("Pell"));
    press(&station, "powerSet");
    if (!QTest::qWaitFor([] { return dialog(CommandGuard::PowerOffDialog) != nullptr; }, WaitMs))
        return 1;
    if (QWidget *box = dialog(CommandGuard::PowerOffDialog)) {
        shoot(box, dir, "station-confirm.png");
        press(box, "cancelButton");
    }
    press(&station, "sonarSleep");
    QTest::qWait(3000);
    shoot(&station, dir, "station-glider.png");
    tabs->setCurrentIndex(2);
    shoot(&station, dir, "station-journal.png");
    tabs->setCurrentIndex(3);
    station.cockpit()->plotView()->setSelected(
        { "ctd.pressure", "ctd.temperature", "housekeeping2.pell_rssi" });
    shoot(&station, dir, "station-plots.png");
    tabs->setCurrentIndex(4);
    shoot(&station, dir, "station-track.png");
    return 0;
}
