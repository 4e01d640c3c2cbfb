#ifndef SIMOPTIONS_H
#define SIMOPTIONS_H

#include <QHostAddress>
#include <QString>
#include <QStringList>

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
    // Faults on demand: close every modem client (and the pty) each
    // dropEvery seconds, send that share of frames with a bad CRC, send the
    // gateway's clients one message with an absurd length.
    double dropEvery = 0;
    double corrupt = 0;
    bool gatewayCorruptLength = false;

    // Reads the command line (arguments()[0] is the program). On failure
    // returns false with a message in *error; --help and --version print
    // and exit as QCommandLineParser does.
    static bool parse(const QStringList &arguments, SimOptions *options, QString *error);
};

#endif
