// Arbitrary bytes as a command block: the splitter must stay inside the
// block, and every command's text must stay inside a buffer of an
// input-derived size, always terminated.

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <vector>

#include "fuzz_app.h"
#include "vehicle_payload.h"

using fuzz::check;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    const size_t bufferSize = data[0] % 64; // 0 tests the empty buffer
    const int max = data[0] % 16;
    std::vector<uint8_t> block(data + 1, data + size); // exact size: ASan sees overreads
    std::vector<vehicle_subpacket_t> subs(size_t(max) + 1);
    const int count = vehicle_payload_split(block.data(), block.size(), subs.data(), max);
    check(count >= -1 && count <= max);
    for (int i = 0; i < count; i++) {
        uint8_t seq, type;
        uint32_t arg;
        if (!vehicle_command_fields(&subs[size_t(i)], &seq, &type, &arg))
            continue;
        std::vector<char> text(bufferSize + 1, 'x');
        const int length = vehicle_command_text(bufferSize ? text.data() : nullptr, bufferSize, type, arg);
        check(length >= 0);
        check(text[bufferSize] == 'x');
        if (bufferSize)
            check(strlen(text.data()) < bufferSize);
    }
    return 0;
}
