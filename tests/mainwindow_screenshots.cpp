// Grabs each tab of the main window while it is connected over TCP to a
// modem on 127.0.0.1 (scripts/screenshots.sh starts the simulator for it).
//
//   mainwindow_screenshots PORT DIRECTORY
//
// Writes tab-settings.png, tab-packets.png, tab-stations.png and
// tab-terminal.png into DIRECTORY.
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QTabWidget>
#include <QTableView>
#include <QTest>

#include <functional>
#include <stdio.h>

#include "mainwindow_harness.h"
#include "stylesheet.h"

using namespace harness;

namespace
{

const int TRAFFIC_WAIT_MS = 60000;
const int REPLY_WAIT_MS = 10000;
const int MIN_STATIONS = 3;
const int MIN_PACKETS = 25;

bool waitFor(const std::function<bool()> &done, int timeout_ms)
{
    return QTest::qWaitFor(done, timeout_ms);
}

// Picks the first heard station other than the local one as destination.
void pickRemoteStation(WindowDriver *driver)
{
    const QString local = driver->find<QLineEdit>("localCallEdit")->text();
    auto *destination = driver->find<QComboBox>("terminalSelectActive");
    destination->setFocus();
    do
        QTest::keyClick(destination, Qt::Key_Down);
    while (destination->currentText() == local && destination->currentIndex() + 1 < destination->count());
}

void sendAndWait(WindowDriver *driver, const char *mode, const char *command)
{
    const QString before = driver->terminalOutput();
    driver->chooseTerminalMode(mode);
    driver->typeCommand(command);
    waitFor([&] { return driver->terminalOutput() != before; }, REPLY_WAIT_MS);
}

void showStation(WindowDriver *driver, int row)
{
    auto *table = driver->find<QTableView>("stationsTable");
    const QRect cell = table->visualRect(table->model()->index(row, 0));
    QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::NoModifier, cell.center());
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    app.setStyleSheet(QLatin1String(TOOLBOX_STYLE_SHEET));
    const QStringList args = app.arguments();
    if (args.size() != 3) {
        fprintf(stderr, "usage: %s PORT DIRECTORY\n", qPrintable(args.value(0)));
        return 2;
    }
    const QDir out(args.at(2));

    WindowDriver driver;
    driver.find<QCheckBox>("localCallAutoSetBox")->setChecked(true);
    driver.chooseLinkType("TCP");
    driver.setField("portText", args.at(1));
    driver.pressConnect();
    if (!waitFor([&] { return driver.connectText() == QLatin1String("Disconnect"); }, REPLY_WAIT_MS)) {
        fprintf(stderr, "no modem on port %s\n", qPrintable(args.at(1)));
        return 1;
    }
    waitFor([&] { return driver.stationRows() >= MIN_STATIONS && driver.packetRows() >= MIN_PACKETS; },
        TRAFFIC_WAIT_MS);

    driver.find<QCheckBox>("terminalAddNewline")->setChecked(true);
    pickRemoteStation(&driver);
    sendAndWait(&driver, "SPP cmd (local)", "help");
    sendAndWait(&driver, "Ext. cmd (select below)", "status");
    sendAndWait(&driver, "Ext. cmd (select below)", "uptime");
    showStation(&driver, driver.find<QComboBox>("terminalSelectActive")->currentIndex());

    auto *tabs = driver.find<QTabWidget>("tabWidget");
    const char *const names[]
        = { "tab-settings.png", "tab-packets.png", "tab-stations.png", "tab-terminal.png" };
    for (int tab = 0; tab < tabs->count(); tab++) {
        tabs->setCurrentIndex(tab);
        QTest::qWait(300);
        const QString file = out.filePath(QLatin1String(names[tab]));
        if (!driver.window()->grab().save(file)) {
            fprintf(stderr, "cannot write %s\n", qPrintable(file));
            return 1;
        }
        printf("%s\n", qPrintable(file));
    }
    return 0;
}
