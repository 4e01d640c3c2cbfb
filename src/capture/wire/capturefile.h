#ifndef CAPTUREFILE_H
#define CAPTUREFILE_H

#include <stdint.h>

#include <functional>
#include <string>

#include "capturereader.h"

// Reads a capture file from its start to its end, packet by packet.
class CaptureFile
{
public:
    using Visit = std::function<void(const CaptureRecord &record, const CaptureInterface &link)>;

    // Hands every packet before the first damage to visit. True when the
    // whole file was read cleanly. False when the file cannot be opened or
    // read (error() "cannot open: ..." or "cannot read: ...", offset 0 or
    // where reading stopped) or is damaged (the reader's words and offset).
    bool read(const std::string &path, const Visit &visit);

    uint64_t errorOffset() const;
    const std::string &error() const;

private:
    bool drain(CaptureReader *reader, const Visit &visit);

    uint64_t m_error_offset = 0;
    std::string m_error;
};

#endif
