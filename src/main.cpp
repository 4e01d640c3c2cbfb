#include <QApplication>
#include <QCommandLineParser>

#include <cstdio>

#include "linkoptions.h"
#include "mainwindow.h"
#include "stylesheet.h"

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QCommandLineParser parser;
    LinkOptions links;
    links.addTo(parser);
    parser.process(app);
    QString error;
    if (!links.read(parser, &error)) {
        fprintf(stderr, "varda-toolbox: %s\n", qPrintable(error));
        return 2;
    }
    app.setStyleSheet(QLatin1String(TOOLBOX_STYLE_SHEET));
    MainWindow window;
    window.show();
    links.applyTo(&window);
    return app.exec();
}
