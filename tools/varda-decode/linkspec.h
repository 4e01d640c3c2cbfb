#ifndef LINKSPEC_H
#define LINKSPEC_H

#include <QString>

// A modem link on the command line: tcp:HOST:PORT, udp:HOST:PORT or
// serial:DEVICE[@BAUD] (38400 baud when not given).
struct LinkSpec {
    enum Kind { Tcp, Udp, Serial };

    Kind kind = Tcp;
    QString host; // or the serial device
    quint16 port = 0;
    qint32 baud = 38400;

    // False with a message in *error when the text is none of the forms.
    static bool parse(const QString &text, LinkSpec *spec, QString *error);
    // The link's name in captures and decoded lines.
    QString name() const;
};

#endif
