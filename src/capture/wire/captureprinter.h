#ifndef CAPTUREPRINTER_H
#define CAPTUREPRINTER_H

#include <stdio.h>

#include <string>

#include "blockformatter.h"
#include "decodedblock.h"

// Prints decoded blocks on a stream, the format's header line once before
// the first.
class CapturePrinter
{
public:
    CapturePrinter(BlockFormatter::Format format, FILE *out);

    void print(const DecodedBlock &block);
    // Every block of a capture file. On damage the blocks before it are
    // printed, then "PROGRAM: FILE: WHAT at byte offset N" on err; returns
    // false then.
    bool printFile(const std::string &path, const char *program, FILE *err);

private:
    BlockFormatter m_formatter;
    FILE *m_out;
    bool m_headerDone = false;
};

#endif
