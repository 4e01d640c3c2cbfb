#ifndef BLOCKFORMATTER_H
#define BLOCKFORMATTER_H

#include <string>

#include "decodedblock.h"

// Prints decoded blocks one per line, as JSON Lines (fields that do not
// apply left out) or CSV (one column per field, empty where a field does not
// apply, a header line first). Column order and names:
//   time link dir kind crc_ok spp_type len rssi_dbm noise_dbm flags src seq
//   dest subpackets text gateway_type imei callsign hex
// time is ISO 8601 UTC with milliseconds; dir "in" or "out"; subpackets a
// JSON array of names (CSV: names joined by ";"); hex the block's bytes.
class BlockFormatter
{
public:
    enum Format { Jsonl, Csv };

    explicit BlockFormatter(Format format);

    // The line before the first block: CSV's header, nothing for JSON Lines.
    std::string header() const;
    // One line, with its newline.
    std::string line(const DecodedBlock &block) const;

    static std::string isoTime(uint64_t time_us);

private:
    Format m_format;
};

#endif
