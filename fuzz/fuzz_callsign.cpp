// Decodes any 6 bytes into an exactly sized text buffer, encodes any text,
// and checks that a valid callsign made from the input survives encoding
// then decoding.
#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

#include "fuzz_check.h"
#include "varda_extension.h"

namespace
{

using fuzz::check;

void decodeAnyBytes(const uint8_t *data, size_t size)
{
    uint8_t enc[VRD_CALLSIGN_ENC_LEN] = { 0 };
    memcpy(enc, data, size < sizeof enc ? size : sizeof enc);
    std::vector<char> text(VRD_CALLSIGN_TEXT_LEN); // exact size: ASan sees any overrun
    vrd_ext_decode_callsign(text.data(), enc);
    check(memchr(text.data(), '\0', text.size()) != nullptr);
}

void encodeAnyText(const uint8_t *data, size_t size)
{
    const std::string text(reinterpret_cast<const char *>(data), size);
    std::vector<uint8_t> enc(VRD_CALLSIGN_ENC_LEN);
    vrd_ext_encode_callsign(enc.data(), text.c_str());
}

// Callsign characters: 0x21..0x5F except '-'; lower case letters allowed.
char callsignChar(uint8_t byte)
{
    char c = char(0x21 + byte % 63);
    if (c == '-')
        c = 'Q';
    if ((byte & 0x80) && c >= 'A' && c <= 'Z')
        c = char(c + 0x20);
    return c;
}

void roundTripValidCallsign(const uint8_t *data, size_t size)
{
    if (size < 2)
        return;
    const size_t length = 1 + data[0] % 7;
    const unsigned ssid = data[1] % 64;
    std::string call;
    for (size_t i = 0; i < length; i++)
        call += callsignChar(i + 2 < size ? data[i + 2] : 0);
    std::string text = call;
    if (ssid != 0 || (data[0] & 0x80))
        text += "-" + std::to_string(ssid);

    uint8_t enc[VRD_CALLSIGN_ENC_LEN];
    check(vrd_ext_encode_callsign(enc, text.c_str()));
    char back[VRD_CALLSIGN_TEXT_LEN];
    vrd_ext_decode_callsign(back, enc);

    std::string expected;
    for (char c : call)
        expected += (c >= 'a' && c <= 'z') ? char(c - 0x20) : c;
    if (ssid != 0)
        expected += "-" + std::to_string(ssid);
    check(expected == back);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    decodeAnyBytes(data, size);
    encodeAnyText(data, size);
    roundTripValidCallsign(data, size);
    return 0;
}
