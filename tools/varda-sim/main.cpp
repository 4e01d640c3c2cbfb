#include <QCoreApplication>

#include "simlog.h"
#include "simoptions.h"
#include "simulator.h"

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    app.setApplicationName("varda-sim");
    app.setApplicationVersion("1.0");

    SimOptions options;
    QString error;
    if (!SimOptions::parse(app.arguments(), &options, &error)) {
        simLog("varda-sim", error);
        return 2;
    }
    Simulator simulator(options);
    if (!simulator.start(&error)) {
        simLog("varda-sim", error);
        return 1;
    }
    return app.exec();
}
