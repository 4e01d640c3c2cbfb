#include <QApplication>

#include "commandline.h"
#include "desktopidentity.h"
#include "gliderstation.h"
#include "stylesheet.h"

int main(int argc, char *argv[])
{
    CommandLine cli("glider-station",
        "Vehicle station for an ocean glider: the Varda radio tool, the glider panel (telemetry, log files "
        "and the command queue) and the Iridium gateway client in one window.");
    cli.acceptToolkitOptions();
    if (!cli.parse(argc, argv))
        return cli.exitCode();

    QApplication app(argc, argv);
    setDesktopIdentity("glider-station");
    app.setStyleSheet(QLatin1String(TOOLBOX_STYLE_SHEET));
    GliderStation window;
    window.show();
    return app.exec();
}
