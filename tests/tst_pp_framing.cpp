#include <QtTest>

#include "reference_frames.h"
#include "varda_pp_host.h"

using Payloads = QList<QByteArray>;

static Payloads parseAll(const QByteArray &stream)
{
    static Payloads delivered;
    delivered.clear();
    varda_pp_ctx_t ctx;
    varda_pp_init(&ctx, [](uint8_t *payload, uint16_t len) {
        delivered << QByteArray(reinterpret_cast<char *>(payload), len);
    });
    for (char c : stream)
        varda_pp_parse(&ctx, uint8_t(c));
    return delivered;
}

class tst_PpFraming : public QObject
{
    Q_OBJECT
private slots:
    void streams_data()
    {
        reference::addStreamRows('#', &reference::ppFrame);
    }
    void streams()
    {
        QFETCH(QByteArray, stream);
        QFETCH(Payloads, expected);
        QCOMPARE(parseAll(stream), expected);
    }
    void fillHeader()
    {
        const uint8_t payload[] = { 1, 2, 3 };
        vrd_pphdr_t hdr;
        varda_pp_fill_header(&hdr, payload, 3);
        const QByteArray wire = QByteArray(reinterpret_cast<const char *>(&hdr), sizeof hdr) + "\x01\x02\x03";
        QCOMPARE(wire, reference::ppFrame("\x01\x02\x03"));
        QCOMPARE(parseAll(wire), Payloads { "\x01\x02\x03" });
    }
};

QTEST_APPLESS_MAIN(tst_PpFraming)
#include "tst_pp_framing.moc"
