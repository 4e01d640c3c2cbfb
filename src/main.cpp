#include <QApplication>

#include "commandline.h"
#include "desktopidentity.h"
#include "linkoptions.h"
#include "mainwindow.h"
#include "recordingoptions.h"
#include "recordingsession.h"
#include "stylesheet.h"

int main(int argc, char *argv[])
{
    CommandLine cli("varda-toolbox",
        "Operator's tool for a Varda packet-radio network: connects to the local Varda radio modem over a "
        "serial port, TCP or UDP, lists the stations heard and every packet, and sends modem and station "
        "commands from its terminal.");
    cli.acceptToolkitOptions();
    RecordingOptions recording;
    cli.addGroup(&recording);
    LinkOptions links;
    cli.addGroup(&links);
    if (!cli.parse(argc, argv))
        return cli.exitCode();

    QApplication app(argc, argv);
    setDesktopIdentity("varda-toolbox");
    app.setStyleSheet(QLatin1String(TOOLBOX_STYLE_SHEET));
    MainWindow window;
    RecordingSession session(recording, &window);
    window.show();
    links.applyTo(&window);
    return app.exec();
}
