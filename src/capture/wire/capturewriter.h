#ifndef CAPTUREWRITER_H
#define CAPTUREWRITER_H

#include <stddef.h>
#include <stdint.h>

#include <string>

#include "pcapng.h"

// Writes a capture file (layout in pcapng.h). The header blocks go to the
// file at once; packets wait in the process only until flush(), which the
// owner calls at the end of each batch it hands over (one read from a link),
// so that a batch costs one write. A killed writer leaves a file that reads
// cleanly up to the last block flushed: blocks are never split across
// writes.
class CaptureWriter
{
public:
    CaptureWriter() = default;
    ~CaptureWriter();
    CaptureWriter(const CaptureWriter &) = delete;
    CaptureWriter &operator=(const CaptureWriter &) = delete;

    // Creates (or empties) the file and writes the section header naming
    // the application. False with error() set when the file cannot be
    // created or written.
    bool open(const std::string &path, const std::string &application);
    bool isOpen() const;
    void close();

    // Writes an interface description; returns its id (0, 1, ... in order),
    // or -1 when the file is not open or the write fails.
    int addInterface(uint16_t link_type, const std::string &name);
    // Adds one enhanced packet block to what flush() writes. False when the
    // file is not open or the interface id was never handed out.
    bool writePacket(uint32_t interface_id, uint64_t time_us, pcapng_direction_t direction,
        const uint8_t *data, size_t len);
    // Writes the packets added since the last flush. False when the file is
    // not open or the write fails (the file is closed then).
    bool flush();

    // Bytes in the file so far, flushed or not.
    uint64_t size() const;
    const std::string &error() const;

private:
    bool writeBlock(const std::vector<uint8_t> &block);

    int m_fd = -1;
    std::vector<uint8_t> m_pending;
    uint64_t m_size = 0;
    uint32_t m_interfaces = 0;
    std::string m_error;
};

#endif
