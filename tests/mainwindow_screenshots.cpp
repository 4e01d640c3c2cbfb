// mainwindow_screenshots PORT DIRECTORY: grabs each tab of the main window connected over TCP to a modem
// on 127.0.0.1 (scripts/screenshots.sh starts the simulator) into tab-settings.png, tab-packets.png,
// tab-stations.png and tab-terminal.png.
#include <stdio.h>

#include "mainwindow_harness.h"
#include "stylesheet.h"

using namespace harness;

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    app.setStyleSheet(QLatin1String(TOOLBOX_STYLE_SHEET));
    const QStringList args = app.arguments();
    if (args.size() != 3) {
        fprintf(stderr, "usage: %s PORT DIRECTORY\n", qPrintable(args.value(0)));
        return 2;
    }
    WindowDriver driver;
    driver.find<QCheckBox>("localCallAutoSetBox")->setChecked(true);
    driver.choose("linkTypeCombo", "TCP");
    driver.setField("portText", args.at(1));
    driver.pressConnect();
    if (!QTest::qWaitFor([&] { return driver.connectText() == "Disconnect"; }, 10000)) {
        fprintf(stderr, "no modem on port %s\n", qPrintable(args.at(1)));
        return 1;
    }
    static_cast<void>(QTest::qWaitFor(
        [&] { return driver.rows("stationsTable") >= 3 && driver.rows("packetTable") >= 25; }, 60000));

    // A few commands to the first station heard other than the local one, and its properties.
    driver.find<QCheckBox>("terminalAddNewline")->setChecked(true);
    auto *destination = driver.find<QComboBox>("terminalSelectActive");
    destination->setFocus();
    do
        QTest::keyClick(destination, Qt::Key_Down);
    while (destination->currentText() == driver.find<QLineEdit>("localCallEdit")->text()
        && destination->currentIndex() + 1 < destination->count());
    for (const QString command : { "help", "status", "uptime" }) {
        const QString before = driver.terminalOutput();
        driver.choose("configModeBox", command == "help" ? "SPP cmd (local)" : "Ext. cmd (select below)");
        driver.typeCommand(command);
        static_cast<void>(QTest::qWaitFor([&] { return driver.terminalOutput() != before; }, 10000));
    }
    auto *table = driver.find<QTableView>("stationsTable");
    const QRect cell = table->visualRect(table->model()->index(destination->currentIndex(), 0));
    QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::NoModifier, cell.center());

    auto *tabs = driver.find<QTabWidget>("tabWidget");
    for (int tab = 0; tab < tabs->count(); tab++) {
        tabs->setCurrentIndex(tab);
        QTest::qWait(300);
        const char *name = QList<const char *> { "settings", "packets", "stations", "terminal" }.value(tab);
        const QString file = QDir(args.at(2)).filePath(QString("tab-%1.png").arg(name));
        if (!driver.window.grab().save(file)) {
            fprintf(stderr, "cannot write %s\n", qPrintable(file));
            return 1;
        }
        printf("%s\n", qPrintable(file));
    }
    return 0;
}
