#include <QtTest>

#include <string.h>

#include "reference_frames.h"
#include "varda_extension.h"

static QByteArray hex(const char *text)
{
    return QByteArray::fromHex(text);
}

static const uint8_t *bytes(const QByteArray &array)
{
    return reinterpret_cast<const uint8_t *>(array.constData());
}

static QByteArray sub(int type, const QByteArray &data)
{
    return char(type) + QByteArray(1, char(data.size())) + data;
}

class tst_ExtensionCodec : public QObject
{
    Q_OBJECT
private slots:
    void typeNames()
    {
        QCOMPARE(QStringList(EXT_TYPE_STRINGS, EXT_TYPE_STRINGS + VRD_EXT_TYPES).join(' '),
            QString("data src stat simplehop pos toh dest cmd_req text request "
                    "car_bat car_charge car_trip rx_src ipv4_src ipv6_src"));
    }

    void numpkts_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<int>("expected");
        // Each fixed-size type only at its own size; 9 stands for variable.
        const int sizes[VRD_EXT_TYPES] = { 9, 7, 22, 1, 17, 5, 6, 9, 9, 1, 4, 2, 10, 7, 4, 16 };
        for (int code = 0; code < VRD_EXT_TYPES; code++) {
            QTest::addRow("type %d", code) << sub(code, QByteArray(sizes[code], 1)) << 1;
            QTest::addRow("type %d, one more", code)
                << sub(code, QByteArray(sizes[code] + 1, 1)) << int(sizes[code] == 9);
        }
        const QByteArray src = hex("01 07 B2 14 61 8A 30 05 7B");
        QTest::newRow("empty") << QByteArray() << 0;
        QTest::newRow("type 16") << hex("10 00") << 0;
        QTest::newRow("type 255") << hex("FF 00") << 0;
        QTest::newRow("type 16 after a good one") << src + hex("10 00") << 0;
        QTest::newRow("src then a cut data") << src + hex("00 05 01") << 1;
        QTest::newRow("src then one trailing byte") << src + hex("00") << 1;
        QTest::newRow("cut short is tested before the type") << src + hex("10 05 01") << 1;
        QTest::newRow("variable sizes, empty and largest")
            << sub(0, "") + sub(8, "abc") + sub(7, QByteArray(255, 'c')) << 3;
    }
    void numpkts()
    {
        QFETCH(QByteArray, data);
        QFETCH(int, expected);
        QCOMPARE(int(vrd_ext_numpkts(bytes(data), uint16_t(data.size()))), expected);
    }

    void builders_data()
    {
        QTest::addColumn<int>("size"); // -1: a tx_pkt_t, limit 220 although its array holds 512
        QTest::addColumn<int>("used");
        QTest::addColumn<int>("dataLen");
        QTest::addColumn<bool>("fits");
        QTest::newRow("packet: ends at 220") << -1 << 208 << 10 << true;
        QTest::newRow("packet: would end at 221") << -1 << 209 << 10 << false;
        QTest::newRow("buffer: fills it") << 16 << 0 << 14 << true;
        QTest::newRow("buffer: one byte too many") << 16 << 0 << 15 << false;
        QTest::newRow("buffer: used beyond the size") << 16 << 17 << 0 << false;
        // Not refused: the size byte keeps the low 8 bits.
        QTest::newRow("buffer: size above 255") << 400 << 0 << 300 << true;
    }
    // An allocate, filled by hand, and an append into rooms of 0xAA bytes give the same bytes.
    void builders()
    {
        QFETCH(int, size);
        QFETCH(int, used);
        QFETCH(int, dataLen);
        QFETCH(bool, fits);
        const QByteArray data = reference::pattern(dataLen, 1);
        tx_pkt_t p[2];
        memset(p, 0xAA, sizeof p);
        p[0].pl_len = p[1].pl_len = uint16_t(used);
        uint16_t lens[2] = { uint16_t(used), uint16_t(used) };
        uint8_t *dst = size < 0 ? vrd_ext_allocate_pkt(&p[0], VRD_EXT_TEXT, dataLen)
                                : vrd_ext_allocate_buffer(p[0].pl, &lens[0], size, VRD_EXT_TEXT, dataLen);
        if (size < 0)
            vrd_ext_append_pkt(&p[1], VRD_EXT_TEXT, bytes(data), dataLen);
        else
            vrd_ext_append_buffer(p[1].pl, &lens[1], size, VRD_EXT_TEXT, bytes(data), dataLen);
        QCOMPARE(dst != nullptr, fits);
        if (dst)
            memcpy(dst, data.constData(), dataLen);
        const int end = fits ? used + 2 + dataLen : used;
        const QByteArray room(VRD_PKT_BUFFER, '\xAA');
        const QByteArray expected = room.left(used) + (fits ? sub(VRD_EXT_TEXT, data) : "") + room.mid(end);
        for (int i = 0; i < 2; i++) {
            QCOMPARE(int(size < 0 ? p[i].pl_len : lens[i]), end);
            QCOMPARE(QByteArray(reinterpret_cast<const char *>(p[i].pl), VRD_PKT_BUFFER), expected);
        }
    }

    // Encoded or refused (empty), then decoded within the 11 bytes the caller provides.
    void callsigns_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QByteArray>("encoded");
        QTest::addColumn<QString>("decoded");
        QTest::newRow("lower case") << QByteArray("la1abc-5") << hex("B2 14 61 8A 30 05") << "LA1ABC-5";
        QTest::newRow("cut to 7") << QByteArray("ABCDEFGH") << hex("86 28 E4 96 69 C0") << "ABCDEFG";
        QTest::newRow("7 and SSID") << QByteArray("ABCDEFG-5") << hex("86 28 E4 96 69 C5") << "ABCDEFG-5";
        QTest::newRow("cut before the dash")
            << QByteArray("ABCDEFGH-5") << hex("86 28 E4 96 69 C0") << "ABCDEFG";
        QTest::newRow("two digit SSID") << QByteArray("AB-12") << hex("86 20 00 00 00 0C") << "AB-12";
        QTest::newRow("SSID above 63") << QByteArray("AB-99") << hex("86 20 00 00 00 23") << "AB-35";
        QTest::newRow("third digit not read") << QByteArray("AB-123") << hex("86 20 00 00 00 0C") << "AB-12";
        QTest::newRow("dash at the end") << QByteArray("AB-") << QByteArray() << QString();
        QTest::newRow("letter SSID") << QByteArray("AB-x") << QByteArray() << QString();
        QTest::newRow("digit then letter") << QByteArray("AB-7x") << QByteArray() << QString();
        QTest::newRow("all ones: longest text") << QByteArray() << hex("FF FF FF FF FF FF") << "_______-63";
        QTest::newRow("end mark first, values after it") << QByteArray() << hex("00 00 01 00 00 05") << "-5";
    }
    void callsigns()
    {
        QFETCH(QByteArray, text);
        QFETCH(QByteArray, encoded);
        QFETCH(QString, decoded);
        if (!text.isNull()) {
            uint8_t enc[VRD_CALLSIGN_ENC_LEN];
            QCOMPARE(vrd_ext_encode_callsign(enc, text.constData()), !encoded.isEmpty());
            if (encoded.isEmpty())
                return;
            QCOMPARE(QByteArray(reinterpret_cast<const char *>(enc), sizeof enc), encoded);
        }
        char back[VRD_CALLSIGN_TEXT_LEN + 4];
        memset(back, 0x7F, sizeof back);
        vrd_ext_decode_callsign(back, bytes(encoded));
        QCOMPARE(QString(back), decoded);
        QCOMPARE(QByteArray(back + VRD_CALLSIGN_TEXT_LEN, 4), QByteArray(4, '\x7F'));
    }
};

QTEST_APPLESS_MAIN(tst_ExtensionCodec)
#include "tst_extension_codec.moc"
