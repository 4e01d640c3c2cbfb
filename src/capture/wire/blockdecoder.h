#ifndef BLOCKDECODER_H
#define BLOCKDECODER_H

#include <stddef.h>
#include <stdint.h>

#include "capturereader.h"
#include "decodedblock.h"

// Turns the bytes of one capture block into fields. Never fails: bytes that
// are too short for a field leave it empty.
//
// On a modem link a block is a frame when it starts with the start byte and
// is exactly as long as its length byte says (header + pl_len, pl_len above
// 0), and noise otherwise: that is how the recorder cut the stream. A frame
// with a bad CRC shows its header fields and nothing of its payload.
// Payload by SPP type: 0 receive header (rssi, noise, flags) then the radio
// packet; 1 and 2 a flags byte then the radio packet; 3 a command or reply
// text. The radio packet is read as extension sub-packets when flags bit 0
// is set and the chain is valid.
class BlockDecoder
{
public:
    // A packet of the interface it came in on: time, link, direction and
    // bytes, then the fields its link type gives.
    static DecodedBlock decode(const CaptureRecord &record, const CaptureInterface &link);

    static bool isFrame(const uint8_t *data, size_t len);

    static void decodeModem(const uint8_t *data, size_t len, DecodedBlock *out);
    // A gateway message with its length field: type, then by type and
    // direction the IMEI (SBD request out, raw payload in) or the callsign
    // (raw payload out).
    static void decodeGateway(const uint8_t *data, size_t len, pcapng_direction_t dir, DecodedBlock *out);

private:
    static void decodePayload(uint8_t type, const uint8_t *payload, size_t len, DecodedBlock *out);
    static void decodeExtension(const uint8_t *radio, size_t len, DecodedBlock *out);
};

#endif
