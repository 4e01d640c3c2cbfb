// Arbitrary files into the capture reader, once whole and once in
// input-derived pieces: the packets read and the damage reported (what and
// where) must not depend on how the file was cut. Every packet is decoded
// and printed in both formats.
#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>

#include <string>

#include "blockdecoder.h"
#include "blockformatter.h"
#include "capturereader.h"

namespace
{
// Reads data in pieces of 1..256 bytes chosen by seed (0: whole); returns
// the printed packets and the damage.
std::string readAll(const uint8_t *data, size_t size, uint8_t seed)
{
    const BlockFormatter jsonl(BlockFormatter::Jsonl);
    const BlockFormatter csv(BlockFormatter::Csv);
    CaptureReader reader;
    CaptureRecord record;
    std::string out;
    size_t at = 0;
    CaptureReader::Result result = CaptureReader::NeedMore;
    while (result != CaptureReader::Damaged) {
        result = reader.next(&record);
        if (result == CaptureReader::Packet) {
            if (record.interface_id >= reader.interfaces().size())
                abort();
            const DecodedBlock block = BlockDecoder::decode(record, reader.interfaces()[record.interface_id]);
            out += jsonl.line(block);
            if (csv.line(block).empty())
                abort();
        } else if (result == CaptureReader::NeedMore) {
            if (at == size) {
                result = reader.finish();
                break;
            }
            const size_t n = seed ? 1 + (data[at] ^ seed) : size;
            const size_t take = n < size - at ? n : size - at;
            reader.append(data + at, take);
            at += take;
        }
    }
    if (result == CaptureReader::Damaged)
        out += reader.damage() + " at " + std::to_string(reader.damageOffset());
    return out;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string whole = readAll(data, size, 0);
    const uint8_t seed = size > 0 ? uint8_t(data[size - 1] | 1) : 1;
    if (readAll(data, size, seed) != whole)
        abort();
    return 0;
}
