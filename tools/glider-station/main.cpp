#include <QApplication>
#include <QCommandLineParser>

#include <cstdio>

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
    QString error;
    if (!links.read(parser, &error)) {
        fprintf(stderr, "glider-station: %s\n", qPrintable(error));
        return 2;
    }
    app.setStyleSheet(QLatin1String(TOOLBOX_STYLE_SHEET));
    GliderStation window;
    window.show();
    links.applyTo(window.radio());
    window.gateway()->setReconnect(links.reconnect());
    if (!links.gatewayHost().isEmpty())
        window.gateway()->connectTo(links.gatewayHost());
    return app.exec();
}
