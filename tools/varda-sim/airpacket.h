#ifndef AIRPACKET_H
#define AIRPACKET_H

#include <QByteArray>

// A radio packet as the base modem hears it: the payload with its flags and
// the reception figures the modem reports in spp_rxhdr_t.
struct AirPacket {
    QByteArray payload;
    quint8 flags = 0; // varda_flags; bit 0: extension sub-packets
    int rssiDbm = -100;
    int noiseDbm = -120;
    quint8 errors = 0; // corrected symbol errors
};

#endif
