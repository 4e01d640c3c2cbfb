#include <QCoreApplication>

#include "commandline.h"
#include "simlog.h"
#include "simoptions.h"
#include "simulator.h"

int main(int argc, char *argv[])
{
    CommandLine cli("varda-sim",
        "Plays a Varda radio modem with stations on the air, a glider behind its radio modem and an "
        "Iridium gateway, on this machine.");
    SimOptions::declare(&cli);
    if (!cli.parse(argc, argv))
        return cli.exitCode();
    SimOptions options;
    QString error;
    if (!SimOptions::read(cli, &options, &error))
        return cli.refuse(error);

    QCoreApplication app(argc, argv);
    Simulator simulator(options);
    if (!simulator.start(&error)) {
        simLog("varda-sim", error);
        return 1;
    }
    return app.exec();
}
