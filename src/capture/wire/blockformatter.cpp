#include "blockformatter.h"

#include <charconv>
#include <stdio.h>

#include <algorithm>
#include <time.h>

namespace
{
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

void appendHex(std::string *out, const std::vector<uint8_t> &bytes)
{
    static const char digits[] = "0123456789abcdef";
    const size_t at = out->size();
    out->resize(at + bytes.size() * 2);
    char *p = &(*out)[at];
    for (const uint8_t b : bytes) {
        *p++ = digits[b >> 4];
        *p++ = digits[b & 0xF];
    }
}

void appendJsonString(std::string *out, const std::string &text)
{
    *out += '"';
    const bool plain = std::none_of(text.begin(), text.end(),
        [](char c) { return c == '"' || c == '\\' || static_cast<unsigned char>(c) < 0x20; });
    if (plain) {
        *out += text;
        *out += '"';
        return;
    }
    for (const char c : text) {
        const unsigned char u = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            *out += '\\';
            *out += c;
        } else if (u < 0x20) {
            char escaped[8];
            snprintf(escaped, sizeof escaped, "\\u%04x", u);
            *out += escaped;
        } else {
            *out += c;
        }
    }
    *out += '"';
}

void appendCsvField(std::string *out, const std::string &text)
{
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
        *out += text;
        return;
    }
    *out += '"';
    for (const char c : text) {
        if (c == '"')
            *out += '"';
        *out += c;
    }
    *out += '"';
}

void appendNumber(std::string *out, long long v)
{
    char digits[24];
    const std::to_chars_result r = std::to_chars(digits, digits + sizeof digits, v);
    out->append(digits, r.ptr);
}

// Writes the fields in column order, as JSON members (absent ones left out)
// or CSV cells (absent ones empty).
// A CSV header row writes the names only.
class Row
{
public:
    enum Kind { Json, Csv, CsvHeader };

    Row(Kind kind, std::string *out)
        : m_json(kind == Json)
        , m_header(kind == CsvHeader)
        , m_out(out)
    {
        *m_out += m_json ? "{" : "";
    }
    void text(const char *name, const std::string *value)
    {
        if (!open(name, value != nullptr))
            return;
        if (m_json)
            appendJsonString(m_out, *value);
        else
            appendCsvField(m_out, *value);
    }
    void text(const char *name, const std::optional<std::string> &value)
    {
        text(name, value ? &*value : nullptr);
    }
    template <typename T> void number(const char *name, const std::optional<T> &value)
    {
        if (open(name, bool(value)))
            appendNumber(m_out, (long long)*value);
    }
    void boolean(const char *name, const std::optional<bool> &value)
    {
        if (open(name, bool(value)))
            *m_out += *value ? "true" : "false";
    }
    void names(const char *name, const std::optional<std::vector<std::string>> &value)
    {
        if (!open(name, bool(value)))
            return;
        std::string joined;
        for (size_t i = 0; i < value->size(); ++i) {
            if (m_json) {
                *m_out += i ? "," : "[";
                appendJsonString(m_out, (*value)[i]);
            } else {
                joined += (i ? ";" : "") + (*value)[i];
            }
        }
        if (m_json)
            *m_out += value->empty() ? "[]" : "]";
        else
            appendCsvField(m_out, joined);
    }
    void hex(const char *name, const std::vector<uint8_t> &bytes)
    {
        if (!open(name, true))
            return;
        *m_out += m_json ? "\"" : "";
        appendHex(m_out, bytes);
        *m_out += m_json ? "\"}" : "";
    }

private:
    // The separator and, in JSON, the member name; false when there is no
    // value to write.
    bool open(const char *name, bool present)
    {
        if (m_json && !present)
            return false;
        if (m_fields++ > 0)
            *m_out += ',';
        if (m_header) {
            *m_out += name;
            return false;
        }
        if (m_json) {
            *m_out += '"';
            *m_out += name;
            *m_out += "\":";
        }
        return present;
    }

    bool m_json;
    bool m_header;
    std::string *m_out;
    int m_fields = 0;
};

// One block, the columns in order.
void writeRow(Row *row, const DecodedBlock &b, const std::string &time)
{
    const char *dir = direction(b.dir);
    const std::string dirText = dir ? dir : "";
    row->text("time", &time);
    row->text("link", &b.link);
    row->text("dir", dir ? &dirText : nullptr);
    row->text("kind", b.kind.empty() ? nullptr : &b.kind);
    row->boolean("crc_ok", b.crc_ok);
    row->number("spp_type", b.spp_type);
    row->number("len", b.len);
    row->number("rssi_dbm", b.rssi_dbm);
    row->number("noise_dbm", b.noise_dbm);
    row->number("flags", b.flags);
    row->text("src", b.src);
    row->number("seq", b.seq);
    row->text("dest", b.dest);
    row->names("subpackets", b.subpackets);
    row->text("text", b.text);
    row->number("gateway_type", b.gateway_type);
    row->text("imei", b.imei);
    row->text("callsign", b.callsign);
    row->hex("hex", b.bytes);
}
} // namespace

BlockFormatter::BlockFormatter(Format format)
    : m_format(format)
{
}

std::string BlockFormatter::header() const
{
    if (m_format == Jsonl)
        return std::string();
    std::string line;
    Row row(Row::CsvHeader, &line);
    writeRow(&row, DecodedBlock(), std::string());
    return line + "\n";
}

std::string BlockFormatter::line(const DecodedBlock &block) const
{
    std::string out;
    out.reserve(256 + block.bytes.size() * 2);
    Row row(m_format == Jsonl ? Row::Json : Row::Csv, &out);
    writeRow(&row, block, isoTime(block.time_us));
    out += '\n';
    return out;
}

// Blocks come many to a second: the date and time of the last second are
// kept, only the milliseconds are new.
std::string BlockFormatter::isoTime(uint64_t time_us)
{
    static thread_local time_t lastSecond = -1;
    static thread_local char lastText[64];
    const time_t seconds = time_t(time_us / 1000000);
    if (seconds != lastSecond) {
        struct tm utc;
        if (!gmtime_r(&seconds, &utc))
            return std::string();
        snprintf(lastText, sizeof lastText, "%04d-%02d-%02dT%02d:%02d:%02d", utc.tm_year + 1900,
            utc.tm_mon + 1, utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec);
        lastSecond = seconds;
    }
    const unsigned ms = unsigned(time_us / 1000 % 1000);
    const char tail[] = { '.', char('0' + ms / 100), char('0' + ms / 10 % 10), char('0' + ms % 10), 'Z' };
    return std::string(lastText) + std::string(tail, sizeof tail);
}
