#include <QtTest>

#include "reference_frames.h"
#include "varda_pp_host.h"

using reference::ppFrame;

static QList<QByteArray> s_delivered;

static void collect(uint8_t *payload, uint16_t len)
{
    s_delivered << QByteArray(reinterpret_cast<char *>(payload), len);
}

static QList<QByteArray> parseAll(const QByteArray &stream)
{
    s_delivered.clear();
    varda_pp_ctx_t ctx;
    varda_pp_init(&ctx, &collect);
    for (char c : stream)
        varda_pp_parse(&ctx, uint8_t(c));
    return s_delivered;
}

class tst_PpFraming : public QObject
{
    Q_OBJECT
private slots:
    void streams_data();
    void streams();
    void fillHeader_data();
    void fillHeader();
};

void tst_PpFraming::streams_data()
{
    QTest::addColumn<QByteArray>("stream");
    QTest::addColumn<QList<QByteArray>>("expected");

    const QByteArray abc = ppFrame("abc");
    const QByteArray next = ppFrame("next");
    QByteArray flipped = abc;
    flipped[5] = char(flipped.at(5) ^ 0x40);

    QTest::newRow("one frame") << abc << QList<QByteArray> { "abc" };
    QTest::newRow("SPP start byte ignored while hunting")
        << QByteArray("$$$") + abc << QList<QByteArray> { "abc" };
    QTest::newRow("SPP frame is not a PP frame") << reference::sppFrame(3, "ok") << QList<QByteArray> {};
    QTest::newRow("bad crc, then a good frame") << flipped + next << QList<QByteArray> { "next" };
    QTest::newRow("start byte inside the payload") << ppFrame("###") << QList<QByteArray> { "###" };
    QTest::newRow("largest payload") << ppFrame(reference::pattern(255))
                                     << QList<QByteArray> { reference::pattern(255) };
    QTest::newRow("back to back") << abc + next + abc << QList<QByteArray> { "abc", "next", "abc" };
    QTest::newRow("cut frame eats the head of the next")
        << ppFrame("hello").left(5) + ppFrame("lost") + next << QList<QByteArray> { "next" };

    // A zero-length frame is never delivered; of the bytes after its
    // header 255 are stored and the 256th is dropped.
    const QByteArray empty = ppFrame("");
    QTest::newRow("zero length swallows a frame")
        << empty + abc + QByteArray(256 - abc.size(), 'x') + next << QList<QByteArray> { "next" };
    QTest::newRow("zero length drops the 256th byte")
        << empty + QByteArray(255, 'x') + abc + next << QList<QByteArray> { "next" };
    QTest::newRow("zero length, a frame 256 bytes later")
        << empty + QByteArray(256, 'x') + next << QList<QByteArray> { "next" };
}

void tst_PpFraming::streams()
{
    QFETCH(QByteArray, stream);
    QFETCH(QList<QByteArray>, expected);
    QCOMPARE(parseAll(stream), expected);
}

void tst_PpFraming::fillHeader_data()
{
    QTest::addColumn<QByteArray>("payload");
    QTest::newRow("three bytes") << QByteArray("\x01\x02\x03");
    QTest::newRow("largest") << reference::pattern(255, 2);
    QTest::newRow("empty") << QByteArray();
}

void tst_PpFraming::fillHeader()
{
    QFETCH(QByteArray, payload);
    vrd_pphdr_t hdr;
    varda_pp_fill_header(
        &hdr, reinterpret_cast<const uint8_t *>(payload.constData()), uint8_t(payload.size()));
    const QByteArray wire = QByteArray(reinterpret_cast<const char *>(&hdr), sizeof hdr) + payload;
    QCOMPARE(wire, ppFrame(payload));
    QCOMPARE(parseAll(wire), payload.isEmpty() ? QList<QByteArray> {} : QList<QByteArray> { payload });
}

QTEST_APPLESS_MAIN(tst_PpFraming)
#include "tst_pp_framing.moc"
