#include "gatewayframer.h"

namespace
{
uint32_t readLe32(const uint8_t *p)
{
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}

void appendLe32(std::vector<uint8_t> *out, uint32_t v)
{
    for (int i = 0; i < 4; ++i)
        out->push_back(uint8_t(v >> (8 * i)));
}
} // namespace

GatewayFramer::GatewayFramer(uint32_t max_length)
    : m_max_length(max_length)
{
}

void GatewayFramer::append(const uint8_t *bytes, size_t len)
{
    // Handed-out bytes are dropped lazily, so that a burst of small messages
    // does not move the rest of the buffer once per message.
    if (m_head > 0 && m_head >= m_buffer.size() / 2) {
        m_buffer.erase(m_buffer.begin(), m_buffer.begin() + long(m_head));
        m_head = 0;
    }
    m_buffer.insert(m_buffer.end(), bytes, bytes + len);
}

size_t GatewayFramer::pending() const
{
    return m_buffer.size() - m_head;
}

uint32_t GatewayFramer::announcedLength() const
{
    return pending() < size_t(GATEWAY_LENGTH_FIELD) ? 0 : readLe32(m_buffer.data() + m_head);
}

GatewayFramer::Result GatewayFramer::next(std::vector<uint8_t> *packet)
{
    if (pending() < size_t(GATEWAY_LENGTH_FIELD))
        return NeedMore;
    const uint32_t totLength = announcedLength();
    if (m_max_length != 0 && (totLength < uint32_t(GATEWAY_TYPE_FIELD) || totLength > m_max_length)) {
        m_buffer.clear();
        m_head = 0;
        return Malformed;
    }
    if (uint64_t(totLength) > uint64_t(pending() - GATEWAY_LENGTH_FIELD))
        return NeedMore;
    const auto first = m_buffer.begin() + long(m_head) + GATEWAY_LENGTH_FIELD;
    packet->assign(first, first + long(totLength));
    m_head += GATEWAY_LENGTH_FIELD + size_t(totLength);
    if (m_head == m_buffer.size()) {
        m_buffer.clear();
        m_head = 0;
    }
    return Message;
}

std::vector<uint8_t> GatewayFramer::frame(uint32_t type, const uint8_t *content, size_t len)
{
    std::vector<uint8_t> out;
    out.reserve(sizeof(iridium_msg_hdr_t) + len);
    appendLe32(&out, uint32_t(GATEWAY_TYPE_FIELD + len));
    appendLe32(&out, type);
    out.insert(out.end(), content, content + len);
    return out;
}
