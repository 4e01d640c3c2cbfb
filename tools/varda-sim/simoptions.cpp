#include "simoptions.h"

#include "commandline.h"

namespace
{
const QCommandLineOption Bind("bind", "Address to listen on (default 127.0.0.1).", "address", "127.0.0.1");
const QCommandLineOption ModemPort(
    "modem-port", "TCP and UDP port of the modem (default 10004).", "port", "10004");
const QCommandLineOption GatewayPort(
    "gateway-port", "TCP port of the Iridium gateway (default 10020).", "port", "10020");
const QCommandLineOption Rate(
    "rate", "Traffic rate relative to normal, 0.1 to 100 (default 1).", "factor", "1");
const QCommandLineOption Seed(
    "seed", "Seed of the random values, for repeatable runs (default a new one each run).", "number");
const QCommandLineOption Roles("roles",
    "Roles to play, comma separated: modem, glider, gateway (default all).", "list", "modem,glider,gateway");
const QCommandLineOption Stations("stations", "Number of remote stations, 0 to 8 (default 4).", "count", "4");
const QCommandLineOption Replay("replay",
    "Play the inbound modem bytes of a capture file to every client instead of the simulated network; "
    "commands are not answered (default: none, the simulated network plays).",
    "file");
const QCommandLineOption Speed("speed",
    "Replay speed: recorded gaps divided by this factor; 0 plays as fast as the link takes the bytes "
    "(default 1).",
    "factor", "1");
const QCommandLineOption Pty("pty", "Also serve the modem on a pseudo-terminal; its name is logged.");
const QCommandLineOption DropEvery("drop-every",
    "Fault: close the modem's TCP connections and pseudo-terminal every SECONDS (default: never).",
    "seconds");
const QCommandLineOption Corrupt(
    "corrupt", "Fault: send this share (0 to 1) of frames with a bad CRC.", "fraction", "0");
const QCommandLineOption GatewayCorruptLength(
    "gateway-corrupt-length", "Fault: the gateway sends one message with an absurd length, then carries on.");

// Reads an optional number in [low, high]; false when given and not one.
bool readFault(
    const CommandLine &parser, const QCommandLineOption &option, double low, double high, double *value)
{
    if (!parser.isSet(option))
        return true;
    bool ok = false;
    *value = parser.value(option).toDouble(&ok);
    return ok && *value >= low && *value <= high;
}

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
    // The glider needs a way in.
    return options->modem || options->gateway;
}

bool readReplay(const CommandLine &parser, SimOptions *options, QString *error)
{
    options->replay = parser.value(Replay);
    bool ok = false;
    options->speed = parser.value(Speed).toDouble(&ok);
    if (!ok || options->speed < 0 || options->speed > 1e6) {
        *error = "the speed is a number from 0 to 1000000";
        return false;
    }
    return true;
}

bool readNumbers(const CommandLine &parser, SimOptions *options, QString *error)
{
    if (!readPort(parser.value(ModemPort), &options->modemPort)
        || !readPort(parser.value(GatewayPort), &options->gatewayPort)) {
        *error = "ports are numbers from 1 to 65535";
        return false;
    }
    bool ok = false;
    options->rate = parser.value(Rate).toDouble(&ok);
    if (!ok || options->rate < 0.1 || options->rate > 100) {
        *error = "the rate is a number from 0.1 to 100";
        return false;
    }
    options->stations = parser.value(Stations).toInt(&ok);
    if (!ok || options->stations < 0 || options->stations > 8) {
        *error = "the number of stations is 0 to 8";
        return false;
    }
    if (!readFault(parser, DropEvery, 0.5, 86400, &options->dropEvery)
        || !readFault(parser, Corrupt, 0, 1, &options->corrupt)) {
        *error = "--drop-every takes 0.5 to 86400 seconds, --corrupt a fraction from 0 to 1";
        return false;
    }
    options->gatewayCorruptLength = parser.isSet(GatewayCorruptLength);
    options->seedGiven = parser.isSet(Seed);
    options->seed = parser.value(Seed).toUInt(&ok);
    if (options->seedGiven && !ok) {
        *error = "the seed is an unsigned number";
        return false;
    }
    return true;
}
}

void SimOptions::declare(CommandLine *cli)
{
    for (const QCommandLineOption &option : { Bind, ModemPort, GatewayPort, Rate, Seed, Roles, Stations, Pty,
             DropEvery, Corrupt, GatewayCorruptLength, Replay, Speed })
        cli->addOption(option);
}

bool SimOptions::read(const CommandLine &parser, SimOptions *options, QString *error)
{
    if (!options->bind.setAddress(parser.value(Bind))) {
        *error = "not an address: " + parser.value(Bind);
        return false;
    }
    if (!readNumbers(parser, options, error))
        return false;
    if (!readRoles(parser.value(Roles), options)) {
        *error = "roles are modem, glider and gateway; at least modem or gateway";
        return false;
    }
    options->pty = parser.isSet(Pty);
    return readReplay(parser, options, error);
}
