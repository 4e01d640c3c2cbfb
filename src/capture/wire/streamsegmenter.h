#ifndef STREAMSEGMENTER_H
#define STREAMSEGMENTER_H

#include <stddef.h>
#include <stdint.h>

#include <functional>
#include <vector>

#include "varda_spp_host.h"

// Cuts one direction of a modem link into capture blocks, as the modem's
// frame receiver sees the bytes: one block per SPP frame as it completes
// (good CRC or bad), and the bytes between frames in blocks of their own.
// The blocks, put together in order, are the stream byte for byte.
//
// Bytes outside a frame are handed out at the end of each feed (and in
// pieces of at most MaxNoise), so nothing waits for the next frame; a frame
// is handed out the moment its last byte arrives.
class StreamSegmenter
{
public:
    using Sink = std::function<void(const uint8_t *data, size_t len)>;
    static const size_t MaxNoise = 4096;

    explicit StreamSegmenter(Sink sink);

    void feed(const uint8_t *bytes, size_t len);
    // The bytes of a frame still incomplete go out as a block of their own.
    void finish();

private:
    void flush();

    Sink m_sink;
    std::vector<uint8_t> m_pending;
    uint8_t m_frame[SPP_MAX_FRAME];
    uint16_t m_len = 0;
    uint16_t m_target = 0;
    uint8_t m_state = VRD_FRAME_START;
    uint64_t m_dropped = 0; // the receiver's count; the blocks keep those bytes
};

#endif
