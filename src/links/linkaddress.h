#ifndef LINKADDRESS_H
#define LINKADDRESS_H

#include <QString>

// One link to a modem as the command line names it:
//
//   tcp:HOST:PORT      e.g. tcp:127.0.0.1:10004, tcp:[::1]:10004
//   udp:HOST:PORT
//   serial:DEVICE      e.g. serial:/dev/ttyUSB0 (38400 baud)
//   serial:DEVICE@BAUD e.g. serial:/dev/ttyUSB0@115200
//
// An IPv6 host is written in brackets. The kind is case-insensitive.
struct LinkAddress {
    enum Kind { Tcp, Udp, Serial };

    static const int DefaultBaud = 38400;

    Kind kind = Tcp;
    QString host; // TCP and UDP
    quint16 port = 0;
    QString device; // serial
    qint32 baud = DefaultBaud;

    // Reads text into *address. Fails, leaving *address alone and a one-line
    // reason in *error (when not null), on: an unknown kind, a missing host or device, a
    // port that is not 1..65535, a baud rate that is not a positive number.
    static bool parse(const QString &text, LinkAddress *address, QString *error);

    // The link type as the window's link type chooser names it.
    QString typeName() const;
    // "tcp 127.0.0.1:10004", "serial /dev/ttyUSB0 @38400".
    QString describe() const;
    // The link's name in captures and decoded lines, in the command line's
    // own form with the baud rate always given: "tcp:127.0.0.1:10004",
    // "serial:/dev/ttyUSB0@38400".
    QString name() const;
};

#endif
