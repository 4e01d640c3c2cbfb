#include "streamsegmenter.h"

StreamSegmenter::StreamSegmenter(Sink sink)
    : m_sink(std::move(sink))
{
    m_pending.reserve(MaxNoise);
}

void StreamSegmenter::feed(const uint8_t *bytes, size_t len)
{
    for (size_t i = 0; i < len; ++i) {
        const uint8_t before = m_state;
        const bool complete = vrd_frame_rx_byte(
            &VARDA_SPP_FORMAT, m_frame, &m_len, &m_target, &m_state, &m_dropped, bytes[i]);
        if (before == VRD_FRAME_START && m_state == VRD_FRAME_HEADER)
            flush(); // the bytes before a start byte
        m_pending.push_back(bytes[i]);
        // A frame, or a zero-length one that ran over the buffer and was
        // given up: either way the receiver hunts again from the next byte.
        const bool given_up = before == VRD_FRAME_PAYLOAD && m_state == VRD_FRAME_START;
        if (complete || given_up || (m_state == VRD_FRAME_START && m_pending.size() >= MaxNoise))
            flush();
    }
    if (m_state == VRD_FRAME_START)
        flush();
}

void StreamSegmenter::finish()
{
    flush();
    m_state = VRD_FRAME_START;
    m_len = 0;
}

void StreamSegmenter::flush()
{
    if (m_pending.empty())
        return;
    m_sink(m_pending.data(), m_pending.size());
    m_pending.clear();
}
