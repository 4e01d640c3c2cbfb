#include "capturereader.h"

namespace
{
uint16_t le16(const uint8_t *p)
{
    return uint16_t(p[0] | p[1] << 8);
}

uint32_t le32(const uint8_t *p)
{
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}

size_t padded(size_t len)
{
    return (len + 3) & ~size_t(3);
}

// Walks the options at p (len bytes), calling take(code, value, length) for
// each. False when an option runs past the end.
template <typename Take> bool readOptions(const uint8_t *p, size_t len, Take take)
{
    size_t at = 0;
    while (at + 4 <= len) {
        const uint16_t code = le16(p + at);
        const uint16_t value_len = le16(p + at + 2);
        if (code == PCAPNG_OPT_END)
            return true;
        if (padded(value_len) > len - at - 4)
            return false;
        take(code, p + at + 4, value_len);
        at += 4 + padded(value_len);
    }
    return at == len;
}

// if_tsresol: bit 7 clear, a power of ten; set, a power of two.
uint64_t unitsPerSecond(uint8_t resolution)
{
    const unsigned exponent = resolution & 0x7F;
    uint64_t units = 1;
    for (unsigned i = 0; i < exponent && units < (uint64_t(1) << 60); ++i)
        units *= (resolution & 0x80) ? 2 : 10;
    return units;
}

uint64_t toMicroseconds(uint64_t stamp, uint64_t units)
{
    if (units == 1000000)
        return stamp;
    const unsigned __int128 us = (unsigned __int128)stamp * 1000000 / units;
    return uint64_t(us);
}
} // namespace

void CaptureReader::append(const uint8_t *bytes, size_t len)
{
    if (m_head > 0 && m_head >= m_buffer.size() / 2) {
        m_buffer.erase(m_buffer.begin(), m_buffer.begin() + long(m_head));
        m_head = 0;
    }
    m_buffer.insert(m_buffer.end(), bytes, bytes + len);
}

CaptureReader::Result CaptureReader::next(CaptureRecord *record)
{
    while (!m_damaged) {
        const size_t available = m_buffer.size() - m_head;
        if (available < 8)
            return NeedMore;
        const uint8_t *block = m_buffer.data() + m_head;
        const uint32_t type = le32(block);
        if (!m_section && type != PCAPNG_SECTION_HEADER)
            return fail(m_offset, "not a capture file");
        const uint32_t length = le32(block + 4);
        if (length < PCAPNG_BLOCK_OVERHEAD || length % 4 != 0 || length > MaxBlock)
            return fail(m_offset, m_section ? "corrupt block" : "not a capture file");
        if (available < length)
            return NeedMore;
        const Result result = readBlock(block, length, record);
        if (result == Damaged)
            return result;
        m_head += length;
        m_offset += length;
        if (result == Packet)
            return result;
    }
    return Damaged;
}

CaptureReader::Result CaptureReader::readBlock(const uint8_t *block, uint32_t length, CaptureRecord *record)
{
    if (le32(block + length - 4) != length)
        return fail(m_offset, "corrupt block");
    const uint8_t *body = block + 8;
    const size_t body_len = length - PCAPNG_BLOCK_OVERHEAD;
    switch (le32(block)) {
    case PCAPNG_SECTION_HEADER:
        if (!readSection(body, body_len))
            return fail(m_offset, m_section ? "corrupt block" : "not a capture file");
        return NeedMore;
    case PCAPNG_INTERFACE:
        return readInterface(body, body_len) ? NeedMore : fail(m_offset, "corrupt block");
    case PCAPNG_ENHANCED_PACKET:
        if (!readPacket(body, body_len, record))
            return fail(m_offset, "corrupt block");
        record->offset = m_offset;
        return Packet;
    default:
        return NeedMore;
    }
}

// A new section starts a new list of interfaces.
bool CaptureReader::readSection(const uint8_t *body, size_t len)
{
    if (len < 16 || le32(body) != PCAPNG_BYTE_ORDER_MAGIC || le16(body + 4) != 1)
        return false;
    m_section = true;
    m_interfaces.clear();
    return readOptions(body + 16, len - 16, [](uint16_t, const uint8_t *, uint16_t) {});
}

bool CaptureReader::readInterface(const uint8_t *body, size_t len)
{
    if (len < 8)
        return false;
    CaptureInterface iface;
    iface.link_type = le16(body);
    const bool ok = readOptions(body + 8, len - 8, [&iface](uint16_t code, const uint8_t *value, uint16_t n) {
        if (code == PCAPNG_OPT_IF_NAME)
            iface.name.assign(reinterpret_cast<const char *>(value), n);
        else if (code == PCAPNG_OPT_IF_TSRESOL && n >= 1)
            iface.units_per_second = unitsPerSecond(value[0]);
    });
    m_interfaces.push_back(iface);
    return ok;
}

bool CaptureReader::readPacket(const uint8_t *body, size_t len, CaptureRecord *record)
{
    if (len < PCAPNG_EPB_FIXED)
        return false;
    const uint32_t id = le32(body);
    const uint32_t captured = le32(body + 12);
    if (id >= m_interfaces.size() || padded(captured) > len - PCAPNG_EPB_FIXED)
        return false;
    const uint64_t stamp = uint64_t(le32(body + 4)) << 32 | le32(body + 8);
    const uint8_t *data = body + PCAPNG_EPB_FIXED;
    pcapng_direction_t direction = PCAPNG_DIR_UNKNOWN;
    const size_t options = PCAPNG_EPB_FIXED + padded(captured);
    const bool ok = readOptions(
        body + options, len - options, [&direction](uint16_t code, const uint8_t *value, uint16_t n) {
            if (code == PCAPNG_OPT_EPB_FLAGS && n >= 4)
                direction = pcapng_direction_t(le32(value) & PCAPNG_EPB_DIRECTION_MASK);
        });
    if (!ok)
        return false;
    record->interface_id = id;
    record->time_us = toMicroseconds(stamp, m_interfaces[id].units_per_second);
    record->direction = direction;
    record->data.assign(data, data + captured);
    return true;
}

CaptureReader::Result CaptureReader::finish()
{
    if (m_damaged)
        return Damaged;
    if (m_buffer.size() > m_head)
        return fail(m_offset, m_section ? "truncated block" : "not a capture file");
    if (!m_section)
        return fail(0, "not a capture file");
    return NeedMore;
}

CaptureReader::Result CaptureReader::fail(uint64_t offset, const char *what)
{
    m_damaged = true;
    m_damage_offset = offset;
    m_damage = what;
    return Damaged;
}

uint64_t CaptureReader::damageOffset() const
{
    return m_damage_offset;
}

const std::string &CaptureReader::damage() const
{
    return m_damage;
}

const std::vector<CaptureInterface> &CaptureReader::interfaces() const
{
    return m_interfaces;
}
