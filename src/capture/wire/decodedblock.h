#ifndef DECODEDBLOCK_H
#define DECODEDBLOCK_H

#include <stdint.h>

#include <optional>
#include <string>
#include <vector>

#include "pcapng.h"

// What a capture block says, field by field; a field is empty where it does
// not apply. Texts are UTF-8.
struct DecodedBlock {
    uint64_t time_us = 0; // since 1970-01-01 UTC
    std::string link; // the interface name
    pcapng_direction_t dir = PCAPNG_DIR_UNKNOWN;
    std::string kind; // "frame", "noise", "gateway"; empty on other links
    std::optional<bool> crc_ok;
    std::optional<int> spp_type;
    // SPP payload length of a frame, tot_length of a gateway message, byte
    // count of noise.
    std::optional<long> len;
    std::optional<int> rssi_dbm;
    std::optional<int> noise_dbm;
    std::optional<int> flags; // varda_flags of a received, local or transmitted packet
    std::optional<std::string> src; // callsign with SSID
    std::optional<int> seq;
    std::optional<std::string> dest;
    std::optional<std::vector<std::string>> subpackets; // names in wire order
    std::optional<std::string> text; // "text" sub-packet, or a command and its reply
    std::optional<uint32_t> gateway_type;
    std::optional<std::string> imei;
    std::optional<std::string> callsign;
    std::vector<uint8_t> bytes; // the block's bytes, printed as hex
};

#endif
