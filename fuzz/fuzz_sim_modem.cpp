// Client bytes into the simulated modem: command lines, transmit requests
// for the stations and the vehicle, garbage. Every frame the modem sends
// back must be a whole SPP frame, and nothing may read past its input.
#include <stdint.h>

#include <QByteArray>
#include <QCoreApplication>
#include <QRandomGenerator>

#include "extchain.h"
#include "fuzz_app.h"
#include "modemserver.h"
#include "simmodem.h"
#include "simstation.h"
#include "spplink.h"
#include "varda_extension.h"
#include "varda_spp_host.h"

namespace
{

using fuzz::check;

void checkFrame(const QByteArray &frame)
{
    check(frame.size() >= SPP_HEADER_LEN + 1 && frame.at(0) == SPP_START);
    check(frame.size() == SPP_HEADER_LEN + quint8(frame.at(4)));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::application<QCoreApplication>();
    const QByteArray input(reinterpret_cast<const char *>(data), int(size));

    // The same bytes read as an extension chain.
    const ExtChain chain(input);
    check(chain.bytes().size() <= input.size());
    chain.callsign(VRD_EXT_SRC);
    chain.callsign(VRD_EXT_DEST);

    QRandomGenerator rng(1);
    ModemServer server; // not listening: broadcasts reach nobody
    SimModem modem("BASE-1", &server, &rng);
    SimStation::Profile profile;
    profile.callsign = "ALPHA-1";
    profile.beaconMs = 0;
    auto *station = new SimStation(profile, &rng, &modem);
    modem.addStation(station);
    QObject::connect(station, &SimStation::transmitted, station,
        [](const AirPacket &p) { check(p.payload.size() <= 220); });

    SppLink link("fuzz", checkFrame);
    QObject::connect(&link, &SppLink::frameReceived, &modem, &SimModem::handleFrame);
    link.feed(input);
    // The input also as a packet the modem puts on the air.
    station->hear(input, 1);
    QCoreApplication::processEvents();
    return 0;
}
