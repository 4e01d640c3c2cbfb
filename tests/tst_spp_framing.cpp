#include <QtTest>

#include "reference_frames.h"
#include "spp_host_qt.h"
#include "varda_spp_host.h"

using reference::sppFrame;
using Payloads = QList<QByteArray>;

// SppHost and the plain parser fed the same bytes; frames kept as type + payload.
struct BothParsers {
    explicit BothParsers(const QByteArray &bytes = QByteArray())
    {
        s_current = this;
        varda_spp_init(&ctx, [](uint8_t type, uint8_t *data, uint16_t len) {
            s_current->plain << char(type) + QByteArray(reinterpret_cast<char *>(data), len);
        });
        QObject::connect(&host, &SppHost::newPacket, &host,
            [this](uint8_t type, uint8_t *data, uint16_t len, const QString &source) {
                fromHost << char(type) + QByteArray(reinterpret_cast<char *>(data), len);
                sources << source;
            });
        feed(bytes);
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
    Payloads fromHost, plain;
    QStringList sources;
    static inline BothParsers *s_current = nullptr;
};

class tst_SppFraming : public QObject
{
    Q_OBJECT
private slots:
    void streams_data()
    {
        reference::addStreamRows('$', [](const QByteArray &payload) { return sppFrame(3, payload); });
        const QByteArray ok = sppFrame(3, "ok");
        QTest::newRow("type damaged") << ok.left(3) + '\x02' + ok.mid(4) + ok << Payloads { "ok" };
    }
    void streams()
    {
        QFETCH(QByteArray, stream);
        QFETCH(Payloads, expected);
        for (QByteArray &payload : expected)
            payload.prepend('\x03');
        BothParsers parsers(stream);
        QCOMPARE(parsers.fromHost, expected);
        QCOMPARE(parsers.plain, expected);
    }

    // The length byte is the character count, not the encoded byte count.
    void packCommand()
    {
        for (const QString &command :
            { QString("ok"), QString(), QString(300, 'a'), QString::fromUtf8("bl\xC3\xA5 \xE2\x82\xAC") })
            QCOMPARE(SppHost::packCommand(command),
                reference::withCrc(
                    '$', "\x03" + QByteArray(1, char(command.length())) + command.toLocal8Bit()));
    }

    void packTransmit_data()
    {
        QTest::addColumn<int>("len");
        QTest::addColumn<int>("frameSize");
        QTest::newRow("nothing") << 0 << 6;
        QTest::newRow("largest") << 220 << 226;
        QTest::newRow("one too many") << 221 << 0;
    }
    void packTransmit()
    {
        QFETCH(int, len);
        QFETCH(int, frameSize);
        const QByteArray data = reference::pattern(len, 9);
        const QByteArray packed = SppHost::packTransmit(data, 0x81);
        QCOMPARE(
            SppHost::packTransmit(reinterpret_cast<const uint8_t *>(data.constData()), len, 0x81), packed);
        QCOMPARE(packed.size(), frameSize);
        if (frameSize) {
            const QByteArray payload = '\x81' + data; // spp_txhdr_t counts as payload
            QCOMPARE(packed, sppFrame(1, payload));
            // Fed back in two reads across a change of link: the receive state
            // survives it, and the source set last is reported.
            BothParsers parsers;
            parsers.host.setSource("serial");
            parsers.feed(packed.left(4));
            parsers.host.setSource("tcp");
            parsers.feed(packed.mid(4));
            QCOMPARE(parsers.fromHost, Payloads { '\x01' + payload });
            QCOMPARE(parsers.sources, QStringList { "tcp" });
        }
    }
};

QTEST_GUILESS_MAIN(tst_SppFraming)
#include "tst_spp_framing.moc"
