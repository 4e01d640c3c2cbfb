#include "captureprinter.h"

#include <inttypes.h>

#include "blockdecoder.h"
#include "capturefile.h"

CapturePrinter::CapturePrinter(BlockFormatter::Format format, FILE *out)
    : m_formatter(format)
    , m_out(out)
{
}

void CapturePrinter::print(const DecodedBlock &block)
{
    if (!m_headerDone) {
        fputs(m_formatter.header().c_str(), m_out);
        m_headerDone = true;
    }
    fputs(m_formatter.line(block).c_str(), m_out);
}

bool CapturePrinter::printFile(const std::string &path, const char *program, FILE *err)
{
    CaptureFile file;
    const bool clean = file.read(path, [this](const CaptureRecord &record, const CaptureInterface &link) {
        print(BlockDecoder::decode(record, link));
    });
    if (clean)
        return true;
    fflush(m_out);
    fprintf(err, "%s: %s: %s at byte offset %" PRIu64 "\n", program, path.c_str(), file.error().c_str(),
        file.errorOffset());
    return false;
}
