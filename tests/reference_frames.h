#ifndef REFERENCE_FRAMES_H
#define REFERENCE_FRAMES_H

// Modem frames built independently of the code under test: the CRC comes
// from Qt's own CRC-16 (ISO 3309 is the same parameter set), so a fault in
// our CRC or framing code cannot cancel itself out in the tests.

#include <QByteArray>
#include <QList>
#include <QMetaType>
#include <QString>

#include <stdint.h>

namespace reference
{

inline QByteArray withCrc(char start, const QByteArray &covered)
{
    const quint16 crc = qChecksum(covered.constData(), uint(covered.size()), Qt::ChecksumIso3309);
    QByteArray frame;
    frame.append(start);
    frame.append(char(crc & 0xFF)); // little-endian on the wire
    frame.append(char(crc >> 8));
    frame.append(covered);
    return frame;
}

// '$' crc type len payload
inline QByteArray sppFrame(uint8_t type, const QByteArray &payload)
{
    QByteArray covered;
    covered.append(char(type));
    covered.append(char(payload.size()));
    covered.append(payload);
    return withCrc('$', covered);
}

// '#' crc len payload
inline QByteArray ppFrame(const QByteArray &payload)
{
    return withCrc('#', char(payload.size()) + payload);
}

inline QByteArray pattern(int size, int seed = 0)
{
    QByteArray bytes(size, '\0');
    for (int i = 0; i < size; i++)
        bytes[i] = char((i * 7 + seed) & 0xFF);
    return bytes;
}

// One delivered frame as a receiver saw it.
struct Frame {
    int type = -1; // -1: the framing has no type
    QByteArray payload;
    QString source;

    bool operator==(const Frame &other) const
    {
        return type == other.type && payload == other.payload && source == other.source;
    }
};
using Frames = QList<Frame>;

} // namespace reference

Q_DECLARE_METATYPE(reference::Frame)
Q_DECLARE_METATYPE(reference::Frames)

#endif
