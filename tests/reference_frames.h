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

// '$' crc type len payload
inline QByteArray sppFrame(uint8_t type, const QByteArray &payload)
{
    return withCrc('$', char(type) + QByteArray(1, char(payload.size())) + payload);
}

// '#' crc len payload
inline QByteArray ppFrame(const QByteArray &payload)
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

// Receive cases common to SPP and PP: a "stream" and the payloads "expected" from it.
inline void addStreamRows(char start, QByteArray (*frame)(const QByteArray &))
{
    using Payloads = QList<QByteArray>;
    QTest::addColumn<QByteArray>("stream");
    QTest::addColumn<Payloads>("expected");
    const QByteArray ok = frame("ok"), next = frame("next");
    const auto damaged = [](QByteArray bytes, int index) {
        return bytes.replace(index, 1, QByteArray(1, char(bytes[index] ^ 1)));
    };
    QTest::newRow("garbage before it")
        << QByteArray("\0\x11##$$", 6).replace(start, '.') + ok << Payloads { "ok" };
    QTest::newRow("bad crc, then a good frame") << damaged(ok, ok.size() - 1) + next << Payloads { "next" };
    QTest::newRow("start bytes as length and payload")
        << frame(QByteArray(start, start)) << Payloads { QByteArray(start, start) };
    QTest::newRow("back to back") << ok + next + ok << Payloads { "ok", "next", "ok" };
    QTest::newRow("largest payload") << frame(pattern(255, 1)) << Payloads { pattern(255, 1) };
    QTest::newRow("one byte payload") << frame("\x01") << Payloads { "\x01" };
    // No resynchronisation inside a frame, and a bad frame is not rescanned.
    QTest::newRow("cut frame eats the head of the next")
        << frame("hello").left(frame("").size() + 1) + frame("lost") + next << Payloads { "next" };
    QTest::newRow("good frame inside a bad one") << damaged(frame(ok), 1) + next << Payloads { "next" };
    // A zero-length frame is never delivered; it stores 255 more bytes and drops the 256th.
    QTest::newRow("zero length, a frame 255 bytes later")
        << frame("") + QByteArray(255, 'x') + frame("lost") + next << Payloads { "next" };
    QTest::newRow("zero length, a frame 256 bytes later")
        << frame("") + QByteArray(256, 'x') + next << Payloads { "next" };
}

} // namespace reference

#endif
