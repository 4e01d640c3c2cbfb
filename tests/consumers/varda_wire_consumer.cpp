// Uses the radio wire library alone: CRC, SPP framing both ways, the split
// of a delivered payload, the extension codec and callsigns.
#include <string.h>

#include <vector>

#include "consumer_check.h"
#include "crc_ccitt.h"
#include "varda_extension.h"
#include "varda_spp_host.h"
#include "varda_spp_payload.h"

using consumer::check;

namespace
{

std::vector<std::vector<uint8_t>> g_frames; // type byte, then the payload

void collect(uint8_t type, uint8_t *payload, uint16_t len)
{
    std::vector<uint8_t> frame { type };
    frame.insert(frame.end(), payload, payload + len);
    g_frames.push_back(frame);
}

void crc()
{
    // The catalogue's check value of this parameter set (CRC-16/X-25).
    check(crc_ccitt(reinterpret_cast<const uint8_t *>("123456789"), 9) == 0x906E, "crc check value");
    check(crc_ccitt(nullptr, 0) == 0x0000, "crc of nothing");
}

// A received packet from the modem: receive header, then a "src" sub-packet.
void receivedPacket()
{
    uint8_t payload[8 + 2 + VRD_CALLSIGN_ENC_LEN + 1] = { 0x10, 0, 0, 0, 82, 113, 2, VARDA_FLAG_EXTENSION };
    uint16_t used = 8;
    const uint8_t src[VRD_CALLSIGN_ENC_LEN + 1] = { 0 };
    vrd_ext_append_buffer(payload, &used, sizeof payload, VRD_EXT_SRC, src, sizeof src);
    check(vrd_ext_encode_callsign(payload + 10, "la1abc-5"), "callsign encodes");

    vrd_spphdr_t hdr;
    varda_spp_fill_header(&hdr, SPP_TYPE_RX, payload, sizeof payload);
    std::vector<uint8_t> stream { 'x', 'y' }; // noise before the frame is skipped
    stream.insert(
        stream.end(), reinterpret_cast<uint8_t *>(&hdr), reinterpret_cast<uint8_t *>(&hdr) + sizeof hdr);
    stream.insert(stream.end(), payload, payload + sizeof payload);

    spp_ctx_t ctx;
    varda_spp_init(&ctx, collect);
    for (uint8_t byte : stream)
        varda_spp_parse(&ctx, byte);
    check(g_frames.size() == 1, "one frame delivered");
    if (g_frames.size() != 1)
        return;

    const std::vector<uint8_t> &frame = g_frames[0];
    varda_spp_payload_t pkt;
    const auto result = varda_spp_split_payload(frame[0], frame.data() + 1, uint16_t(frame.size() - 1), &pkt);
    check(result == VARDA_SPP_PAYLOAD_OK, "payload splits");
    check(pkt.rssi_dbm == -87 && pkt.noise_dbm == -118, "levels in dBm");
    check(pkt.extension, "extension flag");
    check(vrd_ext_numpkts(pkt.payload, pkt.payload_len) == 1, "one sub-packet");

    char callsign[VRD_CALLSIGN_TEXT_LEN];
    vrd_ext_decode_callsign(callsign, pkt.payload + 2);
    check(strcmp(callsign, "LA1ABC-5") == 0, "callsign decodes upper-cased with its SSID");
}

} // namespace

int main()
{
    crc();
    receivedPacket();
    return consumer::result("varda_wire");
}
