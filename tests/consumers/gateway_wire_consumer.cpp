// Uses the gateway wire library alone: builds messages and takes them off a
// stream with GatewayFramer, unbounded (as the gateway client reads) and
// bounded (as the simulated gateway reads), whole and in chunks.
#include <algorithm>
#include <vector>

#include "consumer_check.h"
#include "gatewayframer.h"

using consumer::check;
using Bytes = std::vector<uint8_t>;

namespace
{

Bytes message(uint32_t type, size_t content_len)
{
    Bytes content(content_len);
    for (size_t i = 0; i < content_len; i++)
        content[i] = uint8_t(i * 7 + 1);
    return GatewayFramer::frame(type, content.data(), content.size());
}

Bytes header(uint32_t tot_length)
{
    return { uint8_t(tot_length), uint8_t(tot_length >> 8), uint8_t(tot_length >> 16),
        uint8_t(tot_length >> 24) };
}

// Feeds stream in chunks of chunk bytes (all at once for 0) and collects
// the packets; stops at the first Malformed.
std::vector<Bytes> packets(
    GatewayFramer &framer, const Bytes &stream, size_t chunk, bool *malformed = nullptr)
{
    std::vector<Bytes> out;
    size_t pos = 0;
    do {
        const size_t n = chunk ? std::min(chunk, stream.size() - pos) : stream.size();
        framer.append(stream.data() + pos, n);
        pos += n;
        Bytes packet;
        for (;;) {
            const GatewayFramer::Result result = framer.next(&packet);
            if (result == GatewayFramer::NeedMore)
                break;
            if (result == GatewayFramer::Malformed) {
                if (malformed)
                    *malformed = true;
                return out;
            }
            out.push_back(packet);
        }
    } while (pos < stream.size());
    return out;
}

void layout()
{
    const Bytes built
        = GatewayFramer::frame(GATEWAY_RAW_PAYLOAD, reinterpret_cast<const uint8_t *>("abc"), 3);
    // tot_length 7, type 420001, both little-endian, then the content.
    const Bytes expected { 7, 0, 0, 0, 0xA1, 0x68, 0x06, 0x00, 'a', 'b', 'c' };
    check(built == expected, "message layout");
}

// The same messages come out whatever the chunking, bounded or not.
void chunks()
{
    const Bytes first = message(GATEWAY_SBD_TX_REQUEST, 0);
    const Bytes second = message(GATEWAY_RAW_PAYLOAD, 3);
    const Bytes third = message(GATEWAY_RAW_PAYLOAD, 300);
    Bytes stream = first;
    stream.insert(stream.end(), second.begin(), second.end());
    stream.insert(stream.end(), third.begin(), third.end());
    const std::vector<Bytes> expected { Bytes(first.begin() + 4, first.end()),
        Bytes(second.begin() + 4, second.end()), Bytes(third.begin() + 4, third.end()) };
    for (const uint32_t bound : { 0u, 304u }) {
        for (const size_t chunk : { size_t(0), size_t(1), size_t(7), size_t(300) }) {
            GatewayFramer framer(bound);
            check(packets(framer, stream, chunk) == expected, "three messages, any chunking");
            check(framer.pending() == 0, "nothing left over");
        }
    }
}

void shortLength()
{
    Bytes stream = header(2);
    stream.insert(stream.end(), { 9, 9, 1, 2, 3 });
    GatewayFramer unbounded;
    const std::vector<Bytes> got = packets(unbounded, stream, 0);
    check(got.size() == 1 && got[0] == Bytes({ 9, 9 }), "unbounded: a length below 4 is taken at its word");
    check(unbounded.pending() == 3, "unbounded: the rest waits");

    GatewayFramer bounded(100);
    bool malformed = false;
    check(packets(bounded, stream, 0, &malformed).empty(), "bounded: no packet below 4");
    check(malformed, "bounded: malformed below 4");
    check(bounded.pending() == 0, "bounded: the stream is dropped");
}

void longLength()
{
    Bytes stream = header(101);
    stream.insert(stream.end(), 50, 0);
    GatewayFramer unbounded;
    check(packets(unbounded, stream, 5).empty(), "unbounded: waits for the whole message");
    check(unbounded.announcedLength() == 101, "unbounded: the announced length");
    check(unbounded.pending() == 54, "unbounded: everything kept");

    GatewayFramer bounded(100);
    bool malformed = false;
    packets(bounded, stream, 1, &malformed);
    check(malformed, "bounded: over the bound is malformed");
    check(bounded.pending() == 0 && bounded.announcedLength() == 0, "bounded: the stream is dropped");

    GatewayFramer exact(104);
    check(
        packets(exact, message(GATEWAY_RAW_PAYLOAD, 100), 0).size() == 1, "bounded: the bound itself passes");
}

} // namespace

int main()
{
    layout();
    chunks();
    shortLength();
    longLength();
    return consumer::result("gateway_wire");
}
