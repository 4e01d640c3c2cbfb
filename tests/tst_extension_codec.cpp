#include <QtTest>

#include <string.h>

#include "reference_frames.h"
#include "varda_extension.h"
#include "varda_packets.h"

static const uint8_t *bytes(const QByteArray &array)
{
    return reinterpret_cast<const uint8_t *>(array.constData());
}

using reference::pattern;
using reference::sub;

class tst_ExtensionCodec : public QObject
{
    Q_OBJECT
private slots:
    void numpkts_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<int>("expected");
        const QByteArray src = sub(VRD_EXT_SRC, QByteArray::fromHex("B214618A30057B"));
        QTest::newRow("empty") << QByteArray() << 0;
        QTest::newRow("src, stat") << src + sub(VRD_EXT_STAT, QByteArray(22, 1)) << 2;
        QTest::newRow("src one byte short") << sub(VRD_EXT_SRC, src.mid(2, 6)) << 0;
        QTest::newRow("ipv6_src one byte long") << sub(VRD_EXT_IPV6_SRC, QByteArray(17, 1)) << 0;
        QTest::newRow("variable sizes, empty and largest")
            << sub(VRD_EXT_DATA, "") + sub(VRD_EXT_TEXT, "abc") + sub(VRD_EXT_CMD_REQ, QByteArray(255, 'c'))
            << 3;
        QTest::newRow("type 16 after a good one") << src + sub(16, "") << 0;
        QTest::newRow("src then a cut data") << src + sub(VRD_EXT_DATA, "abcde").left(3) << 1;
        QTest::newRow("src then one trailing byte") << src + '\x08' << 1;
        QTest::newRow("cut short is tested before the type") << src + sub(16, "abcde").left(3) << 1;
    }
    void numpkts()
    {
        QFETCH(QByteArray, data);
        QFETCH(int, expected);
        QCOMPARE(int(vrd_ext_numpkts(bytes(data), uint16_t(data.size()))), expected);
    }

    // The inits set only the fields with an unknown-value marker (see the packed records for the
    // order). A sub-packet fits while used + 2 + size stays within the limit: 220 for a packet,
    // though its array holds 512, or the size of a buffer. Refused ones leave everything as it was.
    void packetsAndBuilders()
    {
        rx_pkt_t rx;
        tx_pkt_t p;
        memset(&rx, 0xAA, sizeof rx);
        memset(&p, 0xAA, sizeof p);
        rx_pkt_init(&rx);
        tx_pkt_init(&p);
        QCOMPARE(QByteArray(reinterpret_cast<const char *>(&rx), 16)
                + QByteArray(reinterpret_cast<const char *>(&p), 5),
            QByteArray::fromHex("0000AAAAAAAAAAFFFFFFFFFFFF0000AA"
                                "00000000AA"));
        const QByteArray text = pattern(10, 1), room(VRD_PKT_BUFFER, '\xAA');
        p.pl_len = 208;
        memcpy(vrd_ext_allocate_pkt(&p, VRD_EXT_TEXT, 10), text.constData(), 10);
        vrd_ext_append_pkt(&p, VRD_EXT_TEXT, bytes(text), 0);
        QCOMPARE(int(p.pl_len), 220);
        p.pl_len = 209;
        vrd_ext_append_pkt(&p, VRD_EXT_TEXT, bytes(text), 10);
        QVERIFY(!vrd_ext_allocate_pkt(&p, VRD_EXT_TEXT, 10));
        QVERIFY(p.pl_len == 209);
        uint16_t used = 0;
        vrd_ext_append_buffer(p.pl, &used, 12, VRD_EXT_DATA, bytes(text), 10);
        vrd_ext_append_buffer(p.pl, &used, 14, VRD_EXT_DATA, bytes(text), 1);
        QVERIFY(vrd_ext_allocate_buffer(p.pl, &used, 400, VRD_EXT_DATA, 300) == p.pl + 14);
        QCOMPARE(used, uint16_t(314));
        // The size byte of the 300-byte one holds the low 8 bits.
        QCOMPARE(QByteArray(reinterpret_cast<const char *>(p.pl), VRD_PKT_BUFFER),
            sub(VRD_EXT_DATA, text) + QByteArray("\0\x2c", 2) + room.mid(14, 194) + sub(VRD_EXT_TEXT, text)
                + room.mid(220));
    }

    // Encoded (hex) or refused (empty: nothing packed), then decoded within the 11 bytes the caller provides.
    void callsigns_data()
    {
        QTest::addColumn<QString>("text"); // null: decoding only
        QTest::addColumn<QString>("encoded");
        QTest::addColumn<QString>("decoded");
        // clang-format off
        QTest::newRow("lower case") << "la1abc-5" << "B214618A3005" << "LA1ABC-5";
        QTest::newRow("7 and SSID") << "ABCDEFG-5" << "8628E49669C5" << "ABCDEFG-5";
        QTest::newRow("cut to 7, before the dash") << "ABCDEFGH-5" << "8628E49669C0" << "ABCDEFG";
        QTest::newRow("two digit SSID") << "AB-12" << "86200000000C" << "AB-12";
        QTest::newRow("SSID above 63") << "AB-99" << "862000000023" << "AB-35";
        QTest::newRow("third digit not read") << "AB-123" << "86200000000C" << "AB-12";
        QTest::newRow("dash alone") << "AB-" << "" << "";
        QTest::newRow("letter SSID") << "AB-x" << "" << "";
        QTest::newRow("digit then letter") << "AB-7x" << "" << "";
        QTest::newRow("all ones: longest text") << QString() << "FFFFFFFFFFFF" << "_______-63";
        QTest::newRow("end mark first, values after it") << QString() << "000001000005" << "-5";
        // clang-format on
    }
    void callsigns()
    {
        QFETCH(QString, text);
        QFETCH(QString, decoded);
        QFETCH(QString, encoded);
        const QByteArray enc = QByteArray::fromHex(encoded.toLatin1());
        if (!text.isNull()) {
            uint8_t out[VRD_CALLSIGN_ENC_LEN];
            memset(out, 0xAA, sizeof out);
            QCOMPARE(vrd_ext_encode_callsign(out, text.toLatin1().constData()), !enc.isEmpty());
            const QByteArray packed(reinterpret_cast<const char *>(out), sizeof out);
            QCOMPARE(packed, enc.isEmpty() ? QByteArray(sizeof out, '\xAA') : enc);
            if (enc.isEmpty())
                return;
        }
        char back[VRD_CALLSIGN_TEXT_LEN + 4];
        memset(back, 0x7F, sizeof back);
        vrd_ext_decode_callsign(back, bytes(enc));
        QCOMPARE(QString(back), decoded);
        QCOMPARE(QByteArray(back + VRD_CALLSIGN_TEXT_LEN, 4), QByteArray(4, '\x7F'));
    }
};

QTEST_APPLESS_MAIN(tst_ExtensionCodec)
#include "tst_extension_codec.moc"
