#ifndef CAPTUREREADER_H
#define CAPTUREREADER_H

#include <stddef.h>
#include <stdint.h>

#include <string>
#include <vector>

#include "pcapng.h"

// One link of a capture (an interface description).
struct CaptureInterface {
    uint16_t link_type = 0;
    std::string name;
    // Timestamp units per second; microseconds unless the file says
    // otherwise.
    uint64_t units_per_second = 1000000;
};

// One packet of a capture.
struct CaptureRecord {
    uint64_t offset = 0; // of its block in the file
    uint32_t interface_id = 0;
    uint64_t time_us = 0;
    pcapng_direction_t direction = PCAPNG_DIR_UNKNOWN;
    std::vector<uint8_t> data;
};

// Reads a capture file (layout in pcapng.h) handed over in pieces of any
// size, and tells where the first damage is.
//
// Damage, reported once with the byte offset of the block it is in (after
// which next() keeps returning Damaged):
// - the file does not start with a little-endian section header
//   ("not a capture file");
// - a block length below 12, not a multiple of 4, above MaxBlock, or not
//   repeated at the block's end; a block body too short for its type; a
//   packet of an interface never described; options running past their
//   block ("corrupt block");
// - input that ends inside a block (finish(): "truncated block").
// Block types other than section, interface and enhanced packet are skipped.
class CaptureReader
{
public:
    enum Result { NeedMore, Packet, Damaged };
    static const uint32_t MaxBlock = 16u << 20;

    void append(const uint8_t *bytes, size_t len);
    // The next packet into *record; NeedMore leaves it alone.
    Result next(CaptureRecord *record);
    // No more input: Damaged when a block was left unfinished (after next()
    // has returned NeedMore).
    Result finish();

    uint64_t damageOffset() const;
    const std::string &damage() const;
    // Interfaces described so far; a packet's interface_id indexes them.
    const std::vector<CaptureInterface> &interfaces() const;

private:
    Result fail(uint64_t offset, const char *what);
    Result readBlock(const uint8_t *block, uint32_t length, CaptureRecord *record);
    bool readSection(const uint8_t *body, size_t len);
    bool readInterface(const uint8_t *body, size_t len);
    bool readPacket(const uint8_t *body, size_t len, CaptureRecord *record);

    std::vector<uint8_t> m_buffer;
    size_t m_head = 0; // bytes at the front already read
    uint64_t m_offset = 0; // file offset of m_buffer[m_head]
    bool m_section = false;
    bool m_damaged = false;
    uint64_t m_damage_offset = 0;
    std::string m_damage;
    std::vector<CaptureInterface> m_interfaces;
};

#endif
