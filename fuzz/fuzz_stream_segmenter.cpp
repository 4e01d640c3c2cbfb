// Arbitrary modem byte streams into the recorder's segmenter, once whole and
// once in input-derived pieces: the blocks, put together, must be the stream
// again, and every frame block must come out the same however it was cut.
#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>

#include <string>
#include <vector>

#include "blockdecoder.h"
#include "streamsegmenter.h"

namespace
{
std::vector<std::string> segment(const uint8_t *data, size_t size, uint8_t seed)
{
    std::vector<std::string> blocks;
    StreamSegmenter segmenter([&blocks](const uint8_t *d, size_t n) {
        if (n == 0)
            abort();
        blocks.emplace_back(reinterpret_cast<const char *>(d), n);
    });
    for (size_t at = 0; at < size;) {
        const size_t n = seed ? 1 + (data[at] ^ seed) % 97 : size;
        const size_t take = n < size - at ? n : size - at;
        segmenter.feed(data + at, take);
        at += take;
    }
    segmenter.finish();
    return blocks;
}

std::vector<std::string> frames(const std::vector<std::string> &blocks)
{
    std::vector<std::string> out;
    for (const std::string &b : blocks) {
        if (BlockDecoder::isFrame(reinterpret_cast<const uint8_t *>(b.data()), b.size()))
            out.push_back(b);
    }
    return out;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::vector<std::string> whole = segment(data, size, 0);
    const std::vector<std::string> cut = segment(data, size, size ? uint8_t(data[0] | 1) : 1);
    std::string joined;
    for (const std::string &b : cut)
        joined += b;
    if (joined != std::string(reinterpret_cast<const char *>(data), size))
        abort();
    if (frames(whole) != frames(cut))
        abort();
    return 0;
}
