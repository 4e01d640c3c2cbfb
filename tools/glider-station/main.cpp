#include <QApplication>
#include <QCommandLineParser>

#include <stdio.h>

#include "cockpit.h"
#include "cockpitoptions.h"
#include "gliderstation.h"
#include "stylesheet.h"

int main(int argc, char *argv[])
{
    if (CockpitOptions::headless(argc, argv))
        return CockpitOptions::runHeadless(argc, argv);
    QApplication app(argc, argv);
    app.setStyleSheet(QLatin1String(TOOLBOX_STYLE_SHEET));
    QCommandLineParser parser;
    CockpitOptions cockpit;
    cockpit.addTo(&parser);
    parser.process(app);
    QString error;
    if (!cockpit.read(parser, &error)) {
        fprintf(stderr, "glider-station: %s\n", qPrintable(error));
        return 2;
    }
    GliderStation window;
    cockpit.applyTo(window.cockpit()->journal());
    window.show();
    return app.exec();
}
