#include <QApplication>
#include <QCommandLineParser>

#include "gatewaysettings.h"
#include "gliderstation.h"
#include "linkoptions.h"
#include "stylesheet.h"

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QCommandLineParser parser;
    LinkOptions links(LinkOptions::WithGateway);
    links.addTo(parser);
    parser.process(app);
    if (!links.accept(parser))
        return 2;
    app.setStyleSheet(QLatin1String(TOOLBOX_STYLE_SHEET));
    GliderStation window;
    window.show();
    links.applyTo(window.radio());
    window.gateway()->setReconnect(links.reconnect());
    if (!links.gatewayHost().isEmpty())
        window.gateway()->connectTo(links.gatewayHost());
    return app.exec();
}
