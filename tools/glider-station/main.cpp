#include <QApplication>

#include "commandline.h"
#include "desktopidentity.h"
#include "gatewaysettings.h"
#include "gliderstation.h"
#include "recordingoptions.h"
#include "recordingsession.h"
#include "stylesheet.h"

int main(int argc, char *argv[])
{
    CommandLine cli("glider-station",
        "Vehicle station for an ocean glider: the Varda radio tool, the glider panel (telemetry, log files "
        "and the command queue) and the Iridium gateway client in one window.");
    cli.acceptToolkitOptions();
    RecordingOptions recording;
    recording.addTo(&cli.parser());
    if (!cli.parse(argc, argv))
        return cli.exitCode();
    QString error;
    if (!recording.read(cli.parser(), &error))
        return cli.refuse(error);

    QApplication app(argc, argv);
    setDesktopIdentity("glider-station");
    app.setStyleSheet(QLatin1String(TOOLBOX_STYLE_SHEET));
    GliderStation window;
    RecordingSession session(recording, window.radio());
    session.watchGateway(window.gateway()->client());
    window.show();
    return app.exec();
}
