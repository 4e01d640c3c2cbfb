// Counts sub-packets in any bytes, then builds a packet from input-driven
// operations into a tx_pkt_t and into a small heap buffer of exact size, and
// checks that every accepted sub-packet is counted again.
#include <string.h>

#include <vector>

#include "fuzz_check.h"
#include "varda_extension.h"

namespace
{

using fuzz::check;

// Input bytes taken one at a time; zeros once they run out.
class Reader
{
public:
    Reader(const uint8_t *data, size_t size)
        : m_data(data)
        , m_size(size)
    {
    }
    bool atEnd() const
    {
        return m_pos >= m_size;
    }
    uint8_t next()
    {
        return m_pos < m_size ? m_data[m_pos++] : 0;
    }

private:
    const uint8_t *m_data;
    size_t m_size;
    size_t m_pos = 0;
};

// One sub-packet as the builders see it: a type below 16 with its fixed size,
// or a variable-size type with a size of at most 255.
struct Op {
    uint8_t type;
    uint16_t size;
    bool allocate;
};

Op nextOp(Reader &in)
{
    const uint8_t control = in.next();
    Op op;
    op.type = control % VRD_EXT_TYPES;
    op.allocate = control & 0x80;
    op.size = EXT_TYPE_SIZES[op.type] == VRD_EXT_SIZE_VARIABLE ? in.next() : EXT_TYPE_SIZES[op.type];
    return op;
}

uint8_t g_source[256];

void buildPacket(Reader &in)
{
    tx_pkt_t p;
    memset(&p, 0xA5, sizeof p);
    tx_pkt_init(&p);
    uint16_t accepted = 0;
    for (int i = 0; i < 64 && !in.atEnd(); i++) {
        const Op op = nextOp(in);
        const uint16_t before = p.pl_len;
        if (op.allocate) {
            uint8_t *dst = vrd_ext_allocate_pkt(&p, op.type, op.size);
            if (dst)
                memset(dst, 0x5A, op.size);
        } else {
            vrd_ext_append_pkt(&p, op.type, g_source, op.size);
        }
        check(p.pl_len == before || p.pl_len == before + 2 + op.size);
        accepted += p.pl_len != before;
    }
    check(p.pl_len <= VRD_MAX_PAYLOAD);
    for (int i = VRD_MAX_PAYLOAD; i < VRD_PKT_BUFFER; i++)
        check(p.pl[i] == 0xA5); // room past the radio limit stays untouched
    check(vrd_ext_numpkts(p.pl, p.pl_len) == accepted);
}

void buildBuffer(Reader &in)
{
    const uint16_t size = in.next() % 64;
    std::vector<uint8_t> buffer(size); // exact size: ASan sees any overrun
    uint16_t used = 0;
    uint16_t accepted = 0;
    for (int i = 0; i < 32 && !in.atEnd(); i++) {
        const Op op = nextOp(in);
        const uint16_t before = used;
        if (op.allocate) {
            uint8_t *dst = vrd_ext_allocate_buffer(buffer.data(), &used, size, op.type, op.size);
            if (dst)
                memset(dst, 0x5A, op.size);
        } else {
            vrd_ext_append_buffer(buffer.data(), &used, size, op.type, g_source, op.size);
        }
        accepted += used != before;
    }
    check(used <= size);
    check(vrd_ext_numpkts(buffer.data(), used) == accepted);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const uint16_t len = uint16_t(size < 0xFFFF ? size : 0xFFFF);
    std::vector<uint8_t> copy(data, data + len); // exact size: ASan sees any overread
    const uint16_t count = vrd_ext_numpkts(copy.data(), len);
    check(count <= len / 2);

    for (size_t i = 0; i < sizeof g_source; i++)
        g_source[i] = uint8_t(i);
    Reader in(data, size);
    buildPacket(in);
    buildBuffer(in);
    return 0;
}
