#include "blockformatter.h"

#include <stdio.h>
#include <time.h>

namespace
{
const char *const Columns[]
    = { "time", "link", "dir", "kind", "crc_ok", "spp_type", "len", "rssi_dbm", "noise_dbm", "flags", "src",
          "seq", "dest", "subpackets", "text", "gateway_type", "imei", "callsign", "hex" };

const char *direction(pcapng_direction_t dir)
{
    switch (dir) {
    case PCAPNG_DIR_IN:
        return "in";
    case PCAPNG_DIR_OUT:
        return "out";
    default:
        return nullptr;
    }
}

std::string hex(const std::vector<uint8_t> &bytes)
{
    static const char digits[] = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const uint8_t b : bytes) {
        text += digits[b >> 4];
        text += digits[b & 0xF];
    }
    return text;
}

std::string jsonString(const std::string &text)
{
    std::string out = "\"";
    for (const char c : text) {
        const unsigned char u = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (u < 0x20) {
            char escaped[8];
            snprintf(escaped, sizeof escaped, "\\u%04x", u);
            out += escaped;
        } else {
            out += c;
        }
    }
    return out + "\"";
}

std::string csvField(const std::string &text)
{
    if (text.find_first_of(",\"\r\n") == std::string::npos)
        return text;
    std::string out = "\"";
    for (const char c : text) {
        if (c == '"')
            out += '"';
        out += c;
    }
    return out + "\"";
}

std::string joined(const std::vector<std::string> &names, const char *separator)
{
    std::string out;
    for (size_t i = 0; i < names.size(); ++i)
        out += (i ? separator : "") + names[i];
    return out;
}

template <typename T> std::string number(const std::optional<T> &v)
{
    return v ? std::to_string(*v) : std::string();
}

std::string boolean(const std::optional<bool> &v)
{
    return v ? (*v ? "true" : "false") : "";
}

// The values of one block in column order, as plain texts, with which of
// them are JSON strings; absent values are empty and left out of JSON.
struct Cell {
    bool present;
    bool quoted;
    std::string text;
};

std::vector<Cell> cells(const DecodedBlock &b)
{
    const char *dir = direction(b.dir);
    const auto text = [](const std::optional<std::string> &v) {
        return Cell { bool(v), true, v.value_or("") };
    };
    const auto num = [](const auto &v) { return Cell { bool(v), false, number(v) }; };
    std::vector<Cell> row = {
        { true, true, BlockFormatter::isoTime(b.time_us) },
        { true, true, b.link },
        { dir != nullptr, true, dir ? dir : "" },
        { !b.kind.empty(), true, b.kind },
        { bool(b.crc_ok), false, boolean(b.crc_ok) },
        num(b.spp_type),
        num(b.len),
        num(b.rssi_dbm),
        num(b.noise_dbm),
        num(b.flags),
        text(b.src),
        num(b.seq),
        text(b.dest),
        { bool(b.subpackets), false, "" }, // filled by the format
        text(b.text),
        num(b.gateway_type),
        text(b.imei),
        text(b.callsign),
        { true, true, hex(b.bytes) },
    };
    return row;
}

const size_t SubpacketsColumn = 13;
} // namespace

BlockFormatter::BlockFormatter(Format format)
    : m_format(format)
{
}

std::string BlockFormatter::header() const
{
    if (m_format == Jsonl)
        return std::string();
    return joined(std::vector<std::string>(std::begin(Columns), std::end(Columns)), ",") + "\n";
}

std::string BlockFormatter::line(const DecodedBlock &block) const
{
    return (m_format == Jsonl ? json(block) : csv(block)) + "\n";
}

std::string BlockFormatter::json(const DecodedBlock &block) const
{
    std::vector<Cell> row = cells(block);
    if (block.subpackets) {
        std::vector<std::string> quoted;
        for (const std::string &name : *block.subpackets)
            quoted.push_back(jsonString(name));
        row[SubpacketsColumn].text = "[" + joined(quoted, ",") + "]";
    }
    std::string out = "{";
    for (size_t i = 0; i < row.size(); ++i) {
        if (!row[i].present)
            continue;
        if (out.size() > 1)
            out += ",";
        out += jsonString(Columns[i]) + ":" + (row[i].quoted ? jsonString(row[i].text) : row[i].text);
    }
    return out + "}";
}

std::string BlockFormatter::csv(const DecodedBlock &block) const
{
    std::vector<Cell> row = cells(block);
    if (block.subpackets)
        row[SubpacketsColumn].text = joined(*block.subpackets, ";");
    std::string out;
    for (size_t i = 0; i < row.size(); ++i)
        out += (i ? "," : "") + csvField(row[i].text);
    return out;
}

std::string BlockFormatter::isoTime(uint64_t time_us)
{
    const time_t seconds = time_t(time_us / 1000000);
    struct tm utc;
    if (!gmtime_r(&seconds, &utc))
        return std::string();
    char text[64];
    snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%03uZ", utc.tm_year + 1900, utc.tm_mon + 1,
        utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec, unsigned(time_us / 1000 % 1000));
    return text;
}
