#include <QtTest>

#include "crc_ccitt.h"
#include "reference_frames.h"
#include "spp_host_qt.h"
#include "varda_pp_host.h"
#include "varda_spp_host.h"

using reference::pattern;
using reference::sppFrame;
using Payloads = QList<QByteArray>;

static Payloads s_frames; // as delivered, SPP frames as type + payload

static const uint8_t *bytes(const QByteArray &array)
{
    return reinterpret_cast<const uint8_t *>(array.constData());
}

static void deliver(uint8_t type, uint8_t *data, uint16_t len)
{
    s_frames << char(type) + QByteArray(reinterpret_cast<char *>(data), len);
}

class tst_Framing : public QObject
{
    Q_OBJECT
    std::unique_ptr<SppHost> m_host; // made anew for each test: it has no reset
    spp_ctx_t m_spp;
    varda_pp_ctx_t m_pp;

private slots:
    void init()
    {
        s_frames.clear();
        m_host.reset(new SppHost);
        connect(m_host.get(), &SppHost::newPacket, this,
            [](uint8_t type, uint8_t *data, uint16_t len) { deliver(type, data, len); });
        varda_spp_init(&m_spp, deliver);
        varda_pp_init(&m_pp,
            [](uint8_t *data, uint16_t len) { s_frames << QByteArray(reinterpret_cast<char *>(data), len); });
    }

    void crc()
    {
        // The catalogue's check value for this parameter set.
        QCOMPARE(crc_ccitt(bytes("123456789"), 9), quint16(0x906E));
        QCOMPARE(crc_ccitt(nullptr, 0), quint16(0x0000));
    }

    void streams_data()
    {
        QTest::addColumn<bool>("pp");
        QTest::addColumn<QByteArray>("stream");
        QTest::addColumn<Payloads>("expected");
        QTest::addColumn<int>("badCrc");
        QTest::addColumn<int>("dropped");
        for (const bool pp : { false, true }) {
            const auto frame = [pp](const QByteArray &payload) {
                return pp ? reference::ppFrame(payload) : sppFrame(3, payload);
            };
            const auto row = [pp](const char *name) -> QTestData & {
                return QTest::addRow("%s: %s", pp ? "pp" : "spp", name) << pp;
            };
            const QByteArray ok = frame("ok"), next = frame("next");
            const int header = frame("").size();
            // Expected payloads, then frames with a bad CRC and bytes dropped outside frames.
            row("garbage first") << QByteArray("\0\x11##$$", 6).replace(pp ? '#' : '$', '.') + ok
                                 << Payloads { "ok" } << 0 << 6;
            row("back to back") << ok + next + ok << Payloads { "ok", "next", "ok" } << 0 << 0;
            row("largest payload") << frame(pattern(255, 1)) << Payloads { pattern(255, 1) } << 0 << 0;
            // No resynchronisation inside a frame, and a bad frame is not rescanned.
            row("bad crc") << ok.left(ok.size() - 1) + '~' + next << Payloads { "next" } << 1 << 0;
            // "hello" takes the first four bytes of "lost"; the rest of "lost" is skipped.
            row("cut frame eats the next") << frame("hello").left(header + 1) + frame("lost") + next
                                           << Payloads { "next" } << 1 << header;
            row("good frame inside a bad one")
                << frame(ok).replace(1, 2, "~~") + next << Payloads { "next" } << 1 << 0;
            // A zero-length frame is never delivered; it stores 255 more bytes and drops the 256th.
            row("zero length, 255 later") << frame("") + QByteArray(255, 'x') + frame("lost") + next
                                          << Payloads { "next" } << 0 << header + 256 + header + 3;
            row("zero length, 256 later")
                << frame("") + QByteArray(256, 'x') + next << Payloads { "next" } << 0 << header + 256;
        }
        vrd_pphdr_t hdr;
        varda_pp_fill_header(&hdr, bytes("\1\2\3"), 3);
        QTest::newRow("pp: header filled here")
            << true << QByteArray(reinterpret_cast<const char *>(&hdr), sizeof hdr) + "\1\2\3"
            << Payloads { "\1\2\3" } << 0 << 0;
    }
    void streams()
    {
        QFETCH(bool, pp);
        QFETCH(QByteArray, stream);
        QFETCH(Payloads, expected);
        for (char c : stream)
            pp ? varda_pp_parse(&m_pp, uint8_t(c))
               : (m_host->parse(uint8_t(c)), varda_spp_parse(&m_spp, uint8_t(c)));
        Payloads wanted; // SppHost delivers before the plain parser
        for (const QByteArray &payload : expected)
            wanted += pp ? Payloads { payload } : Payloads { '\x03' + payload, '\x03' + payload };
        QCOMPARE(s_frames, wanted);

        QFETCH(int, badCrc);
        QFETCH(int, dropped);
        const vrd_frame_counters_t &counters = pp ? m_pp.counters : m_spp.counters;
        QCOMPARE(counters.bad_crc, quint64(badCrc));
        QCOMPARE(counters.dropped, quint64(dropped));
        if (!pp) {
            QCOMPARE(m_host->badCrcFrames(), quint64(badCrc));
            QCOMPARE(m_host->droppedBytes(), quint64(dropped));
        }
    }

    // The length byte is the character count, not the encoded byte count.
    void packCommand()
    {
        for (const QString &cmd :
            { QString("ok"), QString(300, 'a'), QString::fromUtf8("bl\xC3\xA5 \xE2\x82\xAC") })
            QCOMPARE(SppHost::packCommand(cmd),
                reference::withCrc('$', "\x03" + QByteArray(1, char(cmd.length())) + cmd.toLocal8Bit()));
    }

    // The most a frame carries.
    void packTransmit()
    {
        const QByteArray data = pattern(221, 9), payload = '\x81' + data.left(220); // spp_txhdr_t, then data
        QVERIFY(SppHost::packTransmit(bytes(data), 221, 0x81).isNull());
        const QByteArray packed = SppHost::packTransmit(data.left(220), 0x81);
        QCOMPARE(packed, sppFrame(1, payload));
    }
};

QTEST_GUILESS_MAIN(tst_Framing)
#include "tst_framing.moc"
