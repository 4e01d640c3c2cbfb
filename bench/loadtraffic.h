#ifndef LOADTRAFFIC_H
#define LOADTRAFFIC_H

#include <QByteArray>
#include <QString>

// What a busy modem delivers on a network with many stations. Every ten
// frames hold seven beacons received over the air (src, stat, simplehop and
// toh), one received packet without extensions, one local echo of the
// modem's own beacon and one reply to a modem command. Beacons come from the
// stations in turn, so a batch of at least as many beacons as stations
// hears every station once.
class LoadTraffic
{
public:
    static const int FRAMES_PER_CYCLE = 10;
    static const int BEACONS_PER_CYCLE = 7;

    explicit LoadTraffic(int stations);

    // The next frames of the stream, as one buffer.
    QByteArray next(int frames);
    // Enough frames to hear every station at least once.
    int framesToHearAll() const;

    static QString callsign(int station);

private:
    QByteArray frame(int slot);
    QByteArray beacon(int station);

    int m_stations;
    int m_next_station = 0;
    int m_slot = 0;
    uint8_t m_seq = 0;
};

#endif
