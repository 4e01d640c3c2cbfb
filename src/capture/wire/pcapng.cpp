#include "pcapng.h"

namespace
{
size_t padded(size_t len)
{
    return (len + 3) & ~size_t(3);
}

void put16(std::vector<uint8_t> *out, uint16_t v)
{
    out->push_back(uint8_t(v));
    out->push_back(uint8_t(v >> 8));
}

void put32(std::vector<uint8_t> *out, uint32_t v)
{
    for (int i = 0; i < 4; ++i)
        out->push_back(uint8_t(v >> (8 * i)));
}

void putPadded(std::vector<uint8_t> *out, const uint8_t *data, size_t len)
{
    out->insert(out->end(), data, data + len);
    out->resize(out->size() + padded(len) - len, 0);
}

void putOption(std::vector<uint8_t> *out, uint16_t code, const uint8_t *value, size_t len)
{
    put16(out, code);
    put16(out, uint16_t(len));
    putPadded(out, value, len);
}

void putTextOption(std::vector<uint8_t> *out, uint16_t code, const std::string &text)
{
    // An option value holds at most 65535 bytes; names are far shorter.
    const size_t len = text.size() < 0xFFFC ? text.size() : 0xFFFC;
    putOption(out, code, reinterpret_cast<const uint8_t *>(text.data()), len);
}

void putEndOfOptions(std::vector<uint8_t> *out)
{
    put16(out, PCAPNG_OPT_END);
    put16(out, 0);
}

// Opens a block at the end of out: type and a length that closeBlock
// patches. Returns where the block starts.
size_t openBlock(std::vector<uint8_t> *out, uint32_t type)
{
    const size_t start = out->size();
    put32(out, type);
    put32(out, 0);
    return start;
}

void closeBlock(std::vector<uint8_t> *out, size_t start)
{
    const uint32_t total = uint32_t(out->size() - start + 4);
    for (int i = 0; i < 4; ++i)
        (*out)[start + 4 + size_t(i)] = uint8_t(total >> (8 * i));
    put32(out, total);
}
} // namespace

std::vector<uint8_t> pcapng_section_header(const std::string &application)
{
    std::vector<uint8_t> block;
    const size_t start = openBlock(&block, PCAPNG_SECTION_HEADER);
    put32(&block, PCAPNG_BYTE_ORDER_MAGIC);
    put16(&block, 1);
    put16(&block, 0);
    put32(&block, 0xFFFFFFFF);
    put32(&block, 0xFFFFFFFF);
    if (!application.empty()) {
        putTextOption(&block, PCAPNG_OPT_SHB_USERAPPL, application);
        putEndOfOptions(&block);
    }
    closeBlock(&block, start);
    return block;
}

std::vector<uint8_t> pcapng_interface(uint16_t link_type, const std::string &name)
{
    std::vector<uint8_t> block;
    const size_t start = openBlock(&block, PCAPNG_INTERFACE);
    put16(&block, link_type);
    put16(&block, 0);
    put32(&block, 0);
    putTextOption(&block, PCAPNG_OPT_IF_NAME, name);
    putEndOfOptions(&block);
    closeBlock(&block, start);
    return block;
}

void pcapng_append_enhanced_packet(std::vector<uint8_t> *out, uint32_t interface_id, uint64_t time_us,
    pcapng_direction_t direction, const uint8_t *data, size_t len)
{
    const size_t start = openBlock(out, PCAPNG_ENHANCED_PACKET);
    put32(out, interface_id);
    put32(out, uint32_t(time_us >> 32));
    put32(out, uint32_t(time_us));
    put32(out, uint32_t(len));
    put32(out, uint32_t(len));
    putPadded(out, data, len);
    if (direction != PCAPNG_DIR_UNKNOWN) {
        uint8_t flags[4] = { uint8_t(direction), 0, 0, 0 };
        putOption(out, PCAPNG_OPT_EPB_FLAGS, flags, sizeof flags);
        putEndOfOptions(out);
    }
    closeBlock(out, start);
}
