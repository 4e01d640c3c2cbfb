#include "simoptions.h"

#include <QCommandLineParser>

namespace
{
bool readPort(const QString &text, quint16 *port)
{
    bool ok = false;
    const uint value = text.toUInt(&ok);
    if (!ok || value == 0 || value > 65535)
        return false;
    *port = quint16(value);
    return true;
}

bool readRoles(const QString &text, SimOptions *options)
{
    options->modem = options->glider = options->gateway = false;
    for (const QString &role : text.split(',', Qt::SkipEmptyParts)) {
        if (role == "modem")
            options->modem = true;
        else if (role == "glider")
            options->glider = true;
        else if (role == "gateway")
            options->gateway = true;
        else
            return false;
    }
    return options->modem || options->gateway;
}
}

bool SimOptions::parse(const QStringList &arguments, SimOptions *options, QString *error)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Plays a Varda radio modem with stations on the air, a glider behind its radio modem and an "
        "Iridium gateway, on this machine.");
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption bind("bind", "Address to listen on.", "address", "127.0.0.1");
    const QCommandLineOption modemPort("modem-port", "TCP and UDP port of the modem.", "port", "10004");
    const QCommandLineOption gatewayPort("gateway-port", "TCP port of the Iridium gateway.", "port", "10020");
    const QCommandLineOption rate("rate", "Traffic rate, relative to normal (0.1 to 100).", "factor", "1");
    const QCommandLineOption seed("seed", "Seed of the random values, for repeatable runs.", "number");
    const QCommandLineOption roles(
        "roles", "Roles to play, comma separated: modem, glider, gateway.", "list", "modem,glider,gateway");
    const QCommandLineOption stations("stations", "Number of remote stations (0 to 8).", "count", "4");
    const QCommandLineOption pty("pty", "Also serve the modem on a pseudo-terminal; its name is logged.");
    parser.addOptions({ bind, modemPort, gatewayPort, rate, seed, roles, stations, pty });
    parser.process(arguments);

    bool ok = true;
    if (!options->bind.setAddress(parser.value(bind))) {
        *error = "not an address: " + parser.value(bind);
        return false;
    }
    if (!readPort(parser.value(modemPort), &options->modemPort)
        || !readPort(parser.value(gatewayPort), &options->gatewayPort)) {
        *error = "ports are numbers from 1 to 65535";
        return false;
    }
    options->rate = parser.value(rate).toDouble(&ok);
    if (!ok || options->rate < 0.1 || options->rate > 100) {
        *error = "the rate is a number from 0.1 to 100";
        return false;
    }
    options->stations = parser.value(stations).toInt(&ok);
    if (!ok || options->stations < 0 || options->stations > 8) {
        *error = "the number of stations is 0 to 8";
        return false;
    }
    options->seedGiven = parser.isSet(seed);
    options->seed = parser.value(seed).toUInt(&ok);
    if (options->seedGiven && !ok) {
        *error = "the seed is an unsigned number";
        return false;
    }
    if (!readRoles(parser.value(roles), options)) {
        *error = "roles are modem, glider and gateway; at least modem or gateway";
        return false;
    }
    options->pty = parser.isSet(pty);
    return true;
}
