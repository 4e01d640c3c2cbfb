#ifndef SIMSTATION_H
#define SIMSTATION_H

#include <QByteArray>
#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

#include "airpacket.h"

class QRandomGenerator;

// A remote station on the air: beacons its status now and then, answers
// extension commands addressed to it with a "text" reply, and hands the
// data sub-packets addressed to it to whatever sits behind its modem.
class SimStation : public QObject
{
    Q_OBJECT
public:
    struct Profile {
        QString callsign;
        int signalDbm = -90; // mean level at the base modem
        int hopsTotal = 0; // hops allowed for its packets
        int beaconMs = 8000; // mean beacon period at rate 1; 0: never
        quint16 serial = 0;
    };

    SimStation(const Profile &profile, QRandomGenerator *rng, QObject *parent = nullptr);

    QString callsign() const;
    void setCallsign(const QString &callsign);
    // Starts beaconing; rate multiplies how often.
    void start(double rate);

    // Text of the reply to one command line.
    QString answer(const QString &command) const;
    // Beacon chain: src, stat, simplehop, toh. Counts as a transmission.
    QByteArray beacon();

public slots:
    // A packet the base modem sent.
    void hear(const QByteArray &payload, quint8 flags);
    // Sends data from behind the modem: src + data sub-packets.
    void sendData(const QByteArray &data);
    void sendBeacon();

signals:
    void transmitted(const AirPacket &packet);
    void dataReceived(const QByteArray &data);

private:
    void transmit(const QByteArray &payload);
    void reply(const QString &to, const QString &text);
    void scheduleBeacon();
    QByteArray status() const;
    QByteArray simplehop() const;
    quint32 uptime() const;
    int jitter(int spread) const;

    Profile m_profile;
    QRandomGenerator *m_rng;
    QTimer m_beacon;
    QElapsedTimer m_clock;
    double m_rate = 1.0;
    quint32 m_uptimeBase;
    quint8 m_seq = 0;
    quint16 m_rxCount = 0;
    quint16 m_txCount = 0;
};

#endif
