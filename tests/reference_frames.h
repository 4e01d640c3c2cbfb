#ifndef REFERENCE_FRAMES_H
#define REFERENCE_FRAMES_H

// Modem frames built with Qt's own CRC-16 (ISO 3309 is the same parameter set),
// so that a fault in our CRC or framing code cannot cancel itself out.

#include <QtTest>

#include <stdint.h>

namespace reference
{

inline QByteArray withCrc(char start, const QByteArray &covered)
{
    const quint16 crc = qChecksum(covered.constData(), uint(covered.size()), Qt::ChecksumIso3309);
    return start + QByteArray(1, char(crc & 0xFF)) + char(crc >> 8) + covered; // little-endian on the wire
}

inline QByteArray sppFrame(uint8_t type, const QByteArray &payload) // '$' crc type len payload
{
    return withCrc('$', char(type) + QByteArray(1, char(payload.size())) + payload);
}

inline QByteArray ppFrame(const QByteArray &payload) // '#' crc len payload
{
    return withCrc('#', char(payload.size()) + payload);
}

inline QByteArray pattern(int size, int seed = 0)
{
    QByteArray bytes;
    for (int i = 0; i < size; i++)
        bytes += char(i * 7 + seed);
    return bytes;
}

// An extension sub-packet: type, size, data.
inline QByteArray sub(int type, const QByteArray &data)
{
    return char(type) + QByteArray(1, char(data.size())) + data;
}

} // namespace reference

#endif
