// Uses the capture wire library alone: cuts a modem stream into blocks,
// writes them as a capture file, reads it back and prints it.
#include <stdio.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "blockdecoder.h"
#include "blockformatter.h"
#include "capturefile.h"
#include "capturewriter.h"
#include "consumer_check.h"
#include "streamsegmenter.h"

using consumer::check;

int main()
{
    char path[] = "/tmp/capture_wire_consumerXXXXXX";
    const int fd = mkstemp(path);
    check(fd >= 0, "a temporary file");
    close(fd);

    // "ok" as a modem reply, with noise in front.
    const uint8_t stream[] = { 'x', 0x24, 0x00, 0x00, 0x03, 0x02, 'o', 'k' };
    CaptureWriter writer;
    check(writer.open(path, "consumer"), "the file opens");
    check(writer.addInterface(PCAPNG_LINK_MODEM, "tcp:127.0.0.1:10004") == 0, "first interface is 0");
    StreamSegmenter segmenter(
        [&writer](const uint8_t *d, size_t n) { writer.writePacket(0, 1, PCAPNG_DIR_IN, d, n); });
    segmenter.feed(stream, sizeof stream);
    segmenter.finish();
    writer.close();

    std::vector<std::string> kinds;
    CaptureFile file;
    const bool clean = file.read(path, [&kinds](const CaptureRecord &record, const CaptureInterface &link) {
        kinds.push_back(BlockDecoder::decode(record, link).kind);
    });
    unlink(path);
    check(clean, "the file reads cleanly");
    check(kinds.size() == 2, "two blocks: the noise and the frame");
    check(kinds.size() == 2 && kinds[0] == "noise", "the noise first");
    check(!BlockFormatter(BlockFormatter::Csv).header().empty(), "CSV has a header");
    return consumer::result("capture_wire");
}
