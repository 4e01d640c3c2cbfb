#include <QApplication>
#include <QCommandLineParser>

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
    if (!links.accept(parser))
        return 2;
    app.setStyleSheet(QLatin1String(TOOLBOX_STYLE_SHEET));
    MainWindow window;
    window.show();
    links.applyTo(&window);
    return app.exec();
}
