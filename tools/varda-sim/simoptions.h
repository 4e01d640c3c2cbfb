#ifndef SIMOPTIONS_H
#define SIMOPTIONS_H

#include <QHostAddress>
#include <QString>

class CommandLine;

// What the simulator runs, and where.
struct SimOptions {
    QHostAddress bind = QHostAddress::LocalHost;
    quint16 modemPort = 10004;
    quint16 gatewayPort = 10020;
    double rate = 1.0;
    quint32 seed = 0;
    bool seedGiven = false;
    bool modem = true;
    bool glider = true;
    bool gateway = true;
    bool pty = false;
    int stations = 4;
    // Replay: the modem plays a capture's inbound bytes instead, nothing else runs.
    QString replay;
    double speed = 1.0;
    // Faults on demand: close every modem client (and the pty) each
    // dropEvery seconds, send that share of frames with a bad CRC, send the
    // gateway's clients one message with an absurd length.
    double dropEvery = 0;
    double corrupt = 0;
    bool gatewayCorruptLength = false;

    // Adds the simulator's options to the command line.
    static void declare(CommandLine *cli);
    // Reads them once the command line is parsed. On a bad value returns
    // false with a message in *error.
    static bool read(const CommandLine &cli, SimOptions *options, QString *error);
};

#endif
