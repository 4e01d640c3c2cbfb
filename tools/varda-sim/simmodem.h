#ifndef SIMMODEM_H
#define SIMMODEM_H

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>

#include "airpacket.h"
#include "simstation.h"

class ModemServer;
class QRandomGenerator;
class SppLink;

// The base radio modem the tool connects to: hands every packet heard on
// the air to its clients (SPP type 0), sends what a client asks it to
// transmit and echoes it (type 2), beacons as a local packet (type 2) and
// answers command lines (type 3).
class SimModem : public QObject
{
    Q_OBJECT
public:
    SimModem(const QString &callsign, ModemServer *server, QRandomGenerator *rng, QObject *parent = nullptr);

    // The station's packets reach the modem, the modem's reach the station.
    void addStation(SimStation *station);
    void start(double rate);
    // Reply text to one command line, "\r\n" ended.
    QString commandReply(const QString &command);

public slots:
    void handleFrame(SppLink *link, quint8 type, const QByteArray &payload);
    void receive(const AirPacket &packet);
    void greet(SppLink *link);

signals:
    // A packet put on the air: payload and varda_flags.
    void transmitted(const QByteArray &payload, quint8 flags);

private:
    void transmitRequest(SppLink *link, const QByteArray &payload);
    void sendReply(SppLink *link, const QString &text);
    QByteArray localFrame(const QByteArray &chain) const;
    QString stationList() const;

    ModemServer *m_server;
    SimStation m_local;
    QList<SimStation *> m_stations;
};

#endif
