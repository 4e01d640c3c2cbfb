#include <QtTest>

#include <string.h>

#include "reference_frames.h"
#include "spp_host_qt.h"
#include "varda_spp_host.h"

using reference::Frame;
using reference::Frames;
using reference::sppFrame;

static Frame frame(int type, const QByteArray &payload, const QString &source = QString())
{
    Frame f;
    f.type = type;
    f.payload = payload;
    f.source = source;
    return f;
}

// SppHost and the plain parser side by side, fed the same bytes.
class BothParsers
{
public:
    BothParsers()
    {
        s_current = this;
        varda_spp_init(&ctx, &BothParsers::onPlainFrame);
        QObject::connect(&host, &SppHost::newPacket, &host,
            [this](uint8_t type, uint8_t *data, uint16_t len, const QString &source) {
                hostFrames << frame(type, QByteArray(reinterpret_cast<char *>(data), len), source);
            });
    }
    ~BothParsers()
    {
        s_current = nullptr;
    }

    void feed(const QByteArray &bytes)
    {
        for (char c : bytes) {
            host.parse(uint8_t(c));
            varda_spp_parse(&ctx, uint8_t(c));
        }
    }

    SppHost host;
    spp_ctx_t ctx;
    Frames hostFrames;
    Frames plainFrames;

private:
    static void onPlainFrame(uint8_t type, uint8_t *payload, uint16_t len)
    {
        s_current->plainFrames << frame(type, QByteArray(reinterpret_cast<char *>(payload), len));
    }
    static BothParsers *s_current;
};
BothParsers *BothParsers::s_current = nullptr;

static QByteArray damaged(QByteArray bytes, int index)
{
    bytes[index] = char(bytes.at(index) ^ 0x01);
    return bytes;
}

class tst_SppFraming : public QObject
{
    Q_OBJECT
private slots:
    void streams_data();
    void streams();
    void frameSplitAnywhere_data();
    void frameSplitAnywhere();
    void deliversSynchronouslyWithSource();
    void plainInitRestartsHunting();
    void plainParserWithoutCallback();
    void packCommand_data();
    void packCommand();
    void packTransmit_data();
    void packTransmit();
    void fillHeader_data();
    void fillHeader();
};

void tst_SppFraming::streams_data()
{
    QTest::addColumn<QByteArray>("stream");
    QTest::addColumn<Frames>("expected");

    const QByteArray ok = sppFrame(3, "ok");
    const QByteArray next = sppFrame(3, "next");
    QTest::newRow("command reply") << ok << Frames { frame(3, "ok") };
    QTest::newRow("garbage before the start byte")
        << QByteArray("\x00\x11noise#\xFF", 9) + ok << Frames { frame(3, "ok") };
    QTest::newRow("payload bit flipped, then a good frame")
        << damaged(ok, 5) + next << Frames { frame(3, "next") };
    QTest::newRow("stored crc damaged") << damaged(ok, 2) << Frames {};
    QTest::newRow("type damaged") << damaged(ok, 3) + next << Frames { frame(3, "next") };
    QTest::newRow("start byte inside the payload") << sppFrame(3, "$$$$") << Frames { frame(3, "$$$$") };
    QTest::newRow("start byte as type and length")
        << sppFrame(0x24, reference::pattern(0x24)) << Frames { frame(0x24, reference::pattern(0x24)) };
    QTest::newRow("back to back") << ok + sppFrame(0, reference::pattern(20))
            + next << Frames { frame(3, "ok"), frame(0, reference::pattern(20)), frame(3, "next") };
    QTest::newRow("largest payload") << sppFrame(2, reference::pattern(255, 1))
                                     << Frames { frame(2, reference::pattern(255, 1)) };
    QTest::newRow("one byte payload") << sppFrame(1, "\x01") << Frames { frame(1, "\x01") };
    QTest::newRow("lone start byte") << QByteArray("$") << Frames {};

    // No resynchronisation inside a frame: a cut frame takes its missing
    // bytes from whatever follows, and a bad frame is not rescanned.
    QTest::newRow("cut frame eats the head of the next")
        << sppFrame(3, "hello").left(6) + sppFrame(3, "lost") + next << Frames { frame(3, "next") };
    QTest::newRow("good frame inside a bad one")
        << damaged(sppFrame(3, ok), 1) + next << Frames { frame(3, "next") };

    // A zero-length frame is never delivered; the 255 bytes after its header
    // are stored and the 256th is dropped.
    const QByteArray empty = sppFrame(3, "");
    QByteArray swallowed = sppFrame(3, "gone");
    swallowed.append(QByteArray(256 - swallowed.size(), 'x'));
    QTest::newRow("zero length swallows the next 256 bytes")
        << empty + swallowed + next << Frames { frame(3, "next") };
    QTest::newRow("zero length drops the 256th byte")
        << empty + QByteArray(255, 'x') + sppFrame(3, "lost") + next << Frames { frame(3, "next") };
    QTest::newRow("zero length, a frame 256 bytes later")
        << empty + QByteArray(256, 'x') + next << Frames { frame(3, "next") };
}

void tst_SppFraming::streams()
{
    QFETCH(QByteArray, stream);
    QFETCH(Frames, expected);
    BothParsers parsers;
    parsers.feed(stream);
    QCOMPARE(parsers.hostFrames, expected);
    QCOMPARE(parsers.plainFrames, expected);
}

void tst_SppFraming::frameSplitAnywhere_data()
{
    QTest::addColumn<int>("split");
    const int size = sppFrame(0, reference::pattern(20)).size();
    for (int split = 0; split <= size; split++)
        QTest::newRow(qPrintable(QString("at %1").arg(split))) << split;
}

// The receive state survives a change of link; the frame carries the
// source set last.
void tst_SppFraming::frameSplitAnywhere()
{
    QFETCH(int, split);
    const QByteArray payload = reference::pattern(20);
    const QByteArray bytes = sppFrame(0, payload);
    BothParsers parsers;
    parsers.host.setSource("serial");
    parsers.feed(bytes.left(split));
    parsers.host.setSource("tcp");
    parsers.feed(bytes.mid(split));
    const QString source = split == bytes.size() ? "serial" : "tcp";
    QCOMPARE(parsers.hostFrames, Frames { frame(0, payload, source) });
    QCOMPARE(parsers.plainFrames, Frames { frame(0, payload) });
}

void tst_SppFraming::deliversSynchronouslyWithSource()
{
    BothParsers parsers;
    parsers.host.setSource("udp");
    const QByteArray bytes = sppFrame(3, "ok");
    parsers.feed(bytes.chopped(1));
    QVERIFY(parsers.hostFrames.isEmpty());
    parsers.feed(bytes.right(1));
    QCOMPARE(parsers.hostFrames, Frames { frame(3, "ok", "udp") });
}

void tst_SppFraming::plainInitRestartsHunting()
{
    BothParsers parsers;
    const QByteArray bytes = sppFrame(3, "ok");
    parsers.feed(bytes.left(4));
    varda_spp_init(&parsers.ctx, parsers.ctx.data_cb);
    for (char c : bytes)
        varda_spp_parse(&parsers.ctx, uint8_t(c));
    QCOMPARE(parsers.plainFrames, Frames { frame(3, "ok") });
}

void tst_SppFraming::plainParserWithoutCallback()
{
    spp_ctx_t ctx;
    varda_spp_init(&ctx, nullptr);
    for (char c : sppFrame(3, "ok") + sppFrame(0, reference::pattern(255)))
        varda_spp_parse(&ctx, uint8_t(c));
    QCOMPARE(ctx.state, uint8_t(SppHost::START));
}

void tst_SppFraming::packCommand_data()
{
    QTest::addColumn<QString>("command");
    QTest::newRow("short") << "ok";
    QTest::newRow("modem command") << "AT+FREQ=433.500";
    QTest::newRow("empty") << "";
    QTest::newRow("longer than a length byte") << QString(300, 'a');
    QTest::newRow("non-ASCII") << QString::fromUtf8("bl\xC3\xA5 \xE2\x82\xAC");
}

// The length byte is the character count, not the encoded byte count, so
// only a frame whose count matches its bytes can be received again.
void tst_SppFraming::packCommand()
{
    QFETCH(QString, command);
    const QByteArray encoded = command.toLocal8Bit();
    const QByteArray covered = QByteArray(1, '\x03') + char(command.length() & 0xFF) + encoded;
    const QByteArray packed = SppHost::packCommand(command);
    QCOMPARE(packed, reference::withCrc('$', covered));

    const bool roundTrips
        = !command.isEmpty() && command.length() <= 255 && encoded.size() == command.length();
    BothParsers parsers;
    parsers.feed(packed);
    QCOMPARE(parsers.hostFrames, roundTrips ? Frames { frame(3, encoded) } : Frames {});
}

void tst_SppFraming::packTransmit_data()
{
    QTest::addColumn<int>("len");
    QTest::addColumn<int>("flags");
    QTest::addColumn<int>("frameSize");
    QTest::newRow("nothing") << 0 << 1 << 6;
    QTest::newRow("one byte") << 1 << 0 << 7;
    QTest::newRow("largest") << 220 << 1 << 226;
    QTest::newRow("one too many") << 221 << 1 << 0;
    QTest::newRow("far too many") << 1000 << 1 << 0;
}

void tst_SppFraming::packTransmit()
{
    QFETCH(int, len);
    QFETCH(int, flags);
    QFETCH(int, frameSize);
    const QByteArray data = reference::pattern(len, 9);
    const QByteArray packed = SppHost::packTransmit(data, uint8_t(flags));
    const QByteArray fromPointer = SppHost::packTransmit(
        reinterpret_cast<const uint8_t *>(data.constData()), unsigned(len), uint8_t(flags));
    QCOMPARE(packed, fromPointer);
    QCOMPARE(packed.size(), frameSize);
    if (frameSize == 0) {
        QVERIFY(packed.isNull());
        return;
    }
    const QByteArray payload = char(flags) + data; // spp_txhdr_t counts as payload
    QCOMPARE(packed, sppFrame(1, payload));

    BothParsers parsers;
    parsers.feed(packed);
    QCOMPARE(parsers.hostFrames, Frames { frame(1, payload) });
    QCOMPARE(parsers.plainFrames, Frames { frame(1, payload) });
}

void tst_SppFraming::fillHeader_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("payload");
    QTest::newRow("reply") << 3 << QByteArray("ok");
    QTest::newRow("largest") << 0 << reference::pattern(255, 4);
    QTest::newRow("empty") << 2 << QByteArray();
}

void tst_SppFraming::fillHeader()
{
    QFETCH(int, type);
    QFETCH(QByteArray, payload);
    vrd_spphdr_t hdr;
    varda_spp_fill_header(
        &hdr, uint8_t(type), reinterpret_cast<const uint8_t *>(payload.constData()), uint8_t(payload.size()));
    const QByteArray wire = QByteArray(reinterpret_cast<const char *>(&hdr), sizeof hdr) + payload;
    QCOMPARE(wire, sppFrame(uint8_t(type), payload));

    BothParsers parsers;
    parsers.feed(wire);
    QCOMPARE(parsers.plainFrames, payload.isEmpty() ? Frames {} : Frames { frame(type, payload) });
}

QTEST_GUILESS_MAIN(tst_SppFraming)
#include "tst_spp_framing.moc"
