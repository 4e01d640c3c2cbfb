#include "capturefile.h"

#include <errno.h>
#include <stdio.h>
#include <string.h>

#include <memory>

bool CaptureFile::read(const std::string &path, const Visit &visit)
{
    m_error.clear();
    m_error_offset = 0;
    std::unique_ptr<FILE, int (*)(FILE *)> file(fopen(path.c_str(), "rb"), fclose);
    if (!file) {
        m_error = std::string("cannot open: ") + strerror(errno);
        return false;
    }
    CaptureReader reader;
    uint8_t chunk[1 << 16];
    uint64_t offset = 0;
    for (;;) {
        const size_t n = fread(chunk, 1, sizeof chunk, file.get());
        if (n == 0)
            break;
        offset += n;
        reader.append(chunk, n);
        if (!drain(&reader, visit))
            return false;
    }
    if (ferror(file.get())) {
        m_error = std::string("cannot read: ") + strerror(errno);
        m_error_offset = offset;
        return false;
    }
    if (reader.finish() == CaptureReader::Damaged) {
        m_error = reader.damage();
        m_error_offset = reader.damageOffset();
        return false;
    }
    return true;
}

bool CaptureFile::drain(CaptureReader *reader, const Visit &visit)
{
    CaptureRecord record;
    for (;;) {
        switch (reader->next(&record)) {
        case CaptureReader::Packet:
            visit(record, reader->interfaces()[record.interface_id]);
            break;
        case CaptureReader::NeedMore:
            return true;
        case CaptureReader::Damaged:
            m_error = reader->damage();
            m_error_offset = reader->damageOffset();
            return false;
        }
    }
}

uint64_t CaptureFile::errorOffset() const
{
    return m_error_offset;
}

const std::string &CaptureFile::error() const
{
    return m_error;
}
