// link_status_screenshots DIRECTORY: grabs the main window's status bar in
// each state of the link status label (link-*.png), against a modem played
// in this process over TCP on 127.0.0.1 (scripts/screenshots.sh runs it).
#include <stdio.h>

#include "linkaddress.h"
#include "linkstatus.h"
#include "mainwindow_harness.h"
#include "stylesheet.h"

using namespace harness;

namespace
{

bool grab(WindowDriver &driver, const QString &directory, const char *state)
{
    // The status bar lays the new text out; sockets wait.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    const QString file = QDir(directory).filePath(QString("link-%1.png").arg(state));
    if (!driver.window.statusBar()->grab().save(file)) {
        fprintf(stderr, "cannot write %s\n", qPrintable(file));
        return false;
    }
    printf("%s: %s\n", qPrintable(file), qPrintable(driver.find<QLabel>("linkStatusLabel")->text()));
    return true;
}

bool waitForLabel(WindowDriver &driver, const QString &part)
{
    return QTest::qWaitFor(
        [&] { return driver.find<QLabel>("linkStatusLabel")->text().contains(part); }, 15000);
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    app.setStyleSheet(QLatin1String(TOOLBOX_STYLE_SHEET));
    if (app.arguments().size() != 2) {
        fprintf(stderr, "usage: %s DIRECTORY\n", qPrintable(app.arguments().value(0)));
        return 2;
    }
    const QString directory = app.arguments().at(1);
    Modem modem;
    WindowDriver driver;
    driver.window.resize(900, 700);
    driver.window.linkStatus()->setSilentAfter(3000);
    LinkAddress address;
    if (!modem.open() || !LinkAddress::parse("tcp:127.0.0.1:" + modem.address, &address, nullptr))
        return 1;

    bool ok = grab(driver, directory, "none");
    driver.window.openLink(address);
    ok = ok && grab(driver, directory, "connecting") && modem.accept();
    for (int n = 0; n < 25; n++) {
        modem.send(rxFrame(uint8_t(110 + n % 20), 1, src(QString("ALPHA-%1").arg(n % 4), uint8_t(n))));
        QTest::qWait(80);
    }
    ok = ok && waitForLabel(driver, "frames/s") && grab(driver, directory, "up");
    ok = ok && waitForLabel(driver, "silent for 3 s") && grab(driver, directory, "silent");
    modem.drop();
    ok = ok && waitForLabel(driver, "down: lost") && grab(driver, directory, "down");
    modem.server.close();
    driver.window.setReconnect(true);
    driver.pressConnect();
    ok = ok && waitForLabel(driver, "reconnecting in") && grab(driver, directory, "reconnecting");
    return ok ? 0 : 1;
}
