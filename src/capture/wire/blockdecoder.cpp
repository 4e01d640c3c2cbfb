#include "blockdecoder.h"

#include "gateway_message.h"
#include "varda_extension.h"
#include "varda_frame_rx.h"
#include "varda_spp_host.h"
#include "varda_spp_payload.h"

namespace
{
// A level the modem did not report, in dBm.
const int UNKNOWN_DBM = VRD_RSSI_UNKNOWN - VRD_DBM_OFFSET;

uint32_t le32(const uint8_t *p)
{
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}

// Latin-1 to UTF-8.
std::string latin1(const uint8_t *p, size_t len)
{
    std::string text;
    text.reserve(len);
    for (size_t i = 0; i < len; ++i) {
        if (p[i] < 0x80) {
            text += char(p[i]);
        } else {
            text += char(0xC0 | p[i] >> 6);
            text += char(0x80 | (p[i] & 0x3F));
        }
    }
    return text;
}

// Text up to the first zero byte.
std::string field(const uint8_t *p, size_t len)
{
    size_t n = 0;
    while (n < len && p[n] != 0)
        ++n;
    return latin1(p, n);
}

std::string callsign(const uint8_t *encoded)
{
    char text[VRD_CALLSIGN_TEXT_LEN];
    vrd_ext_decode_callsign(text, encoded);
    return text;
}
} // namespace

DecodedBlock BlockDecoder::decode(const CaptureRecord &record, const CaptureInterface &link)
{
    DecodedBlock out;
    out.time_us = record.time_us;
    out.link = link.name;
    out.dir = record.direction;
    out.bytes = record.data;
    const uint8_t *data = record.data.data();
    if (link.link_type == PCAPNG_LINK_MODEM)
        decodeModem(data, record.data.size(), &out);
    else if (link.link_type == PCAPNG_LINK_GATEWAY)
        decodeGateway(data, record.data.size(), record.direction, &out);
    return out;
}

bool BlockDecoder::isFrame(const uint8_t *data, size_t len)
{
    return len > SPP_HEADER_LEN && data[0] == SPP_START && len == size_t(SPP_HEADER_LEN + data[4]);
}

void BlockDecoder::decodeModem(const uint8_t *data, size_t len, DecodedBlock *out)
{
    if (!isFrame(data, len)) {
        out->kind = "noise";
        out->len = long(len);
        return;
    }
    out->kind = "frame";
    out->crc_ok = vrd_frame_crc_ok(data, uint16_t(len));
    out->spp_type = data[3];
    out->len = data[4];
    if (*out->crc_ok)
        decodePayload(data[3], data + SPP_HEADER_LEN, len - SPP_HEADER_LEN, out);
}

void BlockDecoder::decodePayload(uint8_t type, const uint8_t *payload, size_t len, DecodedBlock *out)
{
    varda_spp_payload_t split;
    if (varda_spp_split_payload(type, payload, uint16_t(len), &split) != VARDA_SPP_PAYLOAD_OK)
        return;
    if (type == SPP_TYPE_CMD) {
        out->text = latin1(split.payload, split.payload_len);
        return;
    }
    if (type == SPP_TYPE_RX) {
        if (split.rssi_dbm != UNKNOWN_DBM)
            out->rssi_dbm = split.rssi_dbm;
        if (split.noise_dbm != UNKNOWN_DBM)
            out->noise_dbm = split.noise_dbm;
    }
    out->flags = split.varda_flags;
    if (split.extension)
        decodeExtension(split.payload, split.payload_len, out);
}

// As the tool reads it: of two sub-packets of one type the later one counts.
void BlockDecoder::decodeExtension(const uint8_t *radio, size_t len, DecodedBlock *out)
{
    const uint16_t count = vrd_ext_numpkts(radio, uint16_t(len > 0xFFFF ? 0xFFFF : len));
    if (count == 0)
        return;
    out->subpackets.emplace();
    size_t at = 0;
    for (uint16_t i = 0; i < count; ++i) {
        const uint8_t type = radio[at];
        const uint8_t size = radio[at + 1];
        const uint8_t *data = radio + at + 2;
        out->subpackets->push_back(EXT_TYPE_STRINGS[type]);
        if (type == VRD_EXT_SRC) {
            out->src = callsign(data);
            out->seq = data[VRD_CALLSIGN_ENC_LEN];
        } else if (type == VRD_EXT_DEST) {
            out->dest = callsign(data);
        } else if (type == VRD_EXT_TEXT) {
            out->text = latin1(data, size);
        }
        at += size_t(size) + 2;
    }
}

void BlockDecoder::decodeGateway(const uint8_t *data, size_t len, pcapng_direction_t dir, DecodedBlock *out)
{
    out->kind = "gateway";
    if (len < size_t(GATEWAY_LENGTH_FIELD))
        return;
    out->len = long(le32(data));
    if (len < size_t(GATEWAY_LENGTH_FIELD + GATEWAY_TYPE_FIELD))
        return;
    const uint32_t type = le32(data + GATEWAY_LENGTH_FIELD);
    out->gateway_type = type;
    const uint8_t *content = data + GATEWAY_LENGTH_FIELD + GATEWAY_TYPE_FIELD;
    const size_t content_len = len - GATEWAY_LENGTH_FIELD - GATEWAY_TYPE_FIELD;
    const auto take = [&](size_t n) { return field(content, content_len < n ? content_len : n); };
    if (type == GATEWAY_SBD_TX_REQUEST || (type == GATEWAY_RAW_PAYLOAD && dir != PCAPNG_DIR_OUT))
        out->imei = take(size_t(GATEWAY_IMEI_LEN));
    else if (type == GATEWAY_RAW_PAYLOAD)
        out->callsign = take(size_t(GATEWAY_CALLSIGN_FIELD));
}
