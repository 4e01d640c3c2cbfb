#include <QApplication>

#include "cockpit.h"
#include "cockpitoptions.h"
#include "commandline.h"
#include "desktopidentity.h"
#include "gatewaysettings.h"
#include "gliderstation.h"
#include "linkoptions.h"
#include "recordingoptions.h"
#include "recordingsession.h"
#include "stylesheet.h"

int main(int argc, char *argv[])
{
    CommandLine cli("glider-station",
        "Vehicle station for an ocean glider: the Varda radio tool, the glider panel (telemetry, log files "
        "and the command queue) and the Iridium gateway client in one window, with a journal of every "
        "command, plots of the telemetry and the vehicle's track.");
    cli.acceptToolkitOptions();
    RecordingOptions recording;
    cli.addGroup(&recording);
    CockpitOptions cockpit;
    cli.addGroup(&cockpit);
    LinkOptions links(LinkOptions::WithGateway);
    cli.addGroup(&links);
    if (!cli.parse(argc, argv))
        return cli.exitCode();
    QString error;
    if (!cockpit.exportTrack().isEmpty())
        return cockpit.runExport(&error) ? CommandLine::Success : cli.refuse(error);

    QApplication app(argc, argv);
    setDesktopIdentity("glider-station");
    app.setStyleSheet(QLatin1String(TOOLBOX_STYLE_SHEET));
    GliderStation window;
    cockpit.applyTo(window.cockpit()->journal());
    RecordingSession session(recording, window.radio());
    session.watchGateway(window.gateway()->client());
    // A wedged gateway client is replaced; the new one is recorded too.
    QObject::connect(window.gateway(), &GatewaySettings::stalled, &session,
        [&session, &window] { session.watchGateway(window.gateway()->client()); });
    window.show();
    links.applyTo(window.radio());
    window.gateway()->setReconnect(links.reconnect());
    if (!links.gatewayHost().isEmpty())
        window.gateway()->connectTo(links.gatewayHost());
    return app.exec();
}
