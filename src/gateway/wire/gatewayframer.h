#ifndef GATEWAYFRAMER_H
#define GATEWAYFRAMER_H

#include <stddef.h>
#include <stdint.h>

#include <vector>

#include "gateway_message.h"

// Splits the byte stream of one gateway connection into messages (layout in
// gateway_message.h) and builds them.
//
// Unbounded (max_length 0), every tot_length is taken at its word: a
// corrupt length makes the framer wait for bytes that never come, and a
// tot_length below 4 yields a packet too short to hold its type. Bounded, a
// tot_length below 4 or above max_length makes next() return Malformed and
// drop everything buffered, since the stream cannot be followed any further.
class GatewayFramer
{
public:
    enum Result { NeedMore, Message, Malformed };

    explicit GatewayFramer(uint32_t max_length = 0);

    void append(const uint8_t *bytes, size_t len);
    // Takes the next whole message off the stream into packet: the bytes
    // after the length field (type, then content). NeedMore leaves packet
    // alone.
    Result next(std::vector<uint8_t> *packet);
    // Bytes received and not yet handed out.
    size_t pending() const;
    // tot_length of the message at the head of the buffer; 0 while fewer
    // than four bytes wait.
    uint32_t announcedLength() const;

    // A whole message: length field, type, content.
    static std::vector<uint8_t> frame(uint32_t type, const uint8_t *content, size_t len);

private:
    uint32_t m_max_length;
    std::vector<uint8_t> m_buffer;
    size_t m_head = 0; // bytes at the front already handed out
};

#endif
