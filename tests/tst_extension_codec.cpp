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

static QByteArray subPacket(int type, const QByteArray &data)
{
    return QByteArray(1, char(type)) + char(data.size()) + data;
}

static const QByteArray s_src = subPacket(1, hex("B2 14 61 8A 30 05 7B"));

// The room after one allocate call and one append call of the same
// sub-packet, each on its own copy of a room filled with 0xAA.
struct Built {
    QByteArray allocated;
    QByteArray appended;
    int allocatedLen = 0;
    int appendedLen = 0;
    int dataOffset = -1; // where allocate put the data; -1 for null
};

// A tx_pkt_t (limit 220 of its 512 bytes) or a caller's buffer of the given
// size, both used up to `used` bytes.
static Built build(bool packet, int size, int used, const QByteArray &data)
{
    const uint16_t dataLen = uint16_t(data.size());
    Built built;
    if (packet) {
        tx_pkt_t p[2];
        memset(p, 0xAA, sizeof p);
        p[0].pl_len = p[1].pl_len = uint16_t(used);
        const uint8_t *dst = vrd_ext_allocate_pkt(&p[0], VRD_EXT_TEXT, dataLen);
        vrd_ext_append_pkt(&p[1], VRD_EXT_TEXT, bytes(data), dataLen);
        built.dataOffset = dst ? int(dst - p[0].pl) : -1;
        built.allocated = QByteArray(reinterpret_cast<const char *>(p[0].pl), VRD_PKT_BUFFER);
        built.appended = QByteArray(reinterpret_cast<const char *>(p[1].pl), VRD_PKT_BUFFER);
        built.allocatedLen = p[0].pl_len;
        built.appendedLen = p[1].pl_len;
        return built;
    }
    built.allocated = built.appended = QByteArray(VRD_PKT_BUFFER, '\xAA');
    uint16_t lens[2] = { uint16_t(used), uint16_t(used) };
    uint8_t *rooms[2] = { reinterpret_cast<uint8_t *>(built.allocated.data()),
        reinterpret_cast<uint8_t *>(built.appended.data()) };
    const uint8_t *dst = vrd_ext_allocate_buffer(rooms[0], &lens[0], uint16_t(size), VRD_EXT_TEXT, dataLen);
    vrd_ext_append_buffer(rooms[1], &lens[1], uint16_t(size), VRD_EXT_TEXT, bytes(data), dataLen);
    built.dataOffset = dst ? int(dst - rooms[0]) : -1;
    built.allocatedLen = lens[0];
    built.appendedLen = lens[1];
    return built;
}

class tst_ExtensionCodec : public QObject
{
    Q_OBJECT
private slots:
    void typeTable_data();
    void typeTable();
    void numpkts_data();
    void numpkts();
    void builders_data();
    void builders();
    void sizeAbove255KeepsLowByte();
    void encodeCallsign_data();
    void encodeCallsign();
    void decodeArbitraryBytes_data();
    void decodeArbitraryBytes();
    void statRecord();
    void simplehopRecord();
    void tohRecord();
    void srcRecord();
};

void tst_ExtensionCodec::typeTable_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("size"); // -1: variable
    const struct {
        const char *name;
        int size;
    } types[VRD_EXT_TYPES] = {
        { "data", -1 },
        { "src", 7 },
        { "stat", 22 },
        { "simplehop", 1 },
        { "pos", 17 },
        { "toh", 5 },
        { "dest", 6 },
        { "cmd_req", -1 },
        { "text", -1 },
        { "request", 1 },
        { "car_bat", 4 },
        { "car_charge", 2 },
        { "car_trip", 10 },
        { "rx_src", 7 },
        { "ipv4_src", 4 },
        { "ipv6_src", 16 },
    };
    for (int code = 0; code < VRD_EXT_TYPES; code++)
        QTest::newRow(types[code].name) << code << QString(types[code].name) << types[code].size;
}

// The name and size tables, and numpkts accepting exactly the listed size.
void tst_ExtensionCodec::typeTable()
{
    QFETCH(int, code);
    QFETCH(QString, name);
    QFETCH(int, size);
    QCOMPARE(QString(EXT_TYPE_STRINGS[code]), name);
    QCOMPARE(int(EXT_TYPE_SIZES[code]), size < 0 ? int(VRD_EXT_SIZE_VARIABLE) : size);

    const int probe = size < 0 ? 9 : size;
    const QByteArray good = subPacket(code, QByteArray(probe, '\x01'));
    QCOMPARE(vrd_ext_numpkts(bytes(good), uint16_t(good.size())), uint16_t(1));
    const QByteArray longer = subPacket(code, QByteArray(probe + 1, '\x01'));
    QCOMPARE(vrd_ext_numpkts(bytes(longer), uint16_t(longer.size())), uint16_t(size < 0 ? 1 : 0));
}

void tst_ExtensionCodec::numpkts_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<int>("expected");
    QTest::newRow("empty") << QByteArray() << 0;
    QTest::newRow("single byte") << hex("01") << 0;
    QTest::newRow("src") << hex("01 07 00 00 00 00 00 00 00") << 1;
    QTest::newRow("src of wrong size") << hex("01 06 00 00 00 00 00 00") << 0;
    QTest::newRow("type 16") << hex("10 00") << 0;
    QTest::newRow("type 255") << hex("FF 00") << 0;
    QTest::newRow("src then a cut data") << s_src + hex("00 05 01") << 1;
    QTest::newRow("src then one trailing byte") << s_src + hex("00") << 1;
    QTest::newRow("type 16 after a good one") << s_src + hex("10 00") << 0;
    QTest::newRow("wrong fixed size after a good one") << s_src + hex("03 02 00 00") << 0;
    QTest::newRow("cut short is tested before the type") << s_src + hex("10 05 01") << 1;
    QTest::newRow("first one cut short") << hex("08 05 61 62") << 0;
    QTest::newRow("variable sizes, empty and largest")
        << subPacket(0, "") + subPacket(8, "abc") + subPacket(7, QByteArray(255, 'c')) << 3;
    QTest::newRow("whole packet") << s_src + subPacket(6, hex("86 20 00 00 00 00")) + subPacket(7, "ping")
                                  << 3;
}

void tst_ExtensionCodec::numpkts()
{
    QFETCH(QByteArray, data);
    QFETCH(int, expected);
    QCOMPARE(int(vrd_ext_numpkts(bytes(data), uint16_t(data.size()))), expected);
}

void tst_ExtensionCodec::builders_data()
{
    QTest::addColumn<bool>("packet");
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("used");
    QTest::addColumn<int>("dataLen");
    QTest::addColumn<bool>("fits");
    // A tx_pkt_t takes at most 220 bytes although its array holds 512.
    QTest::newRow("packet: ends at 220") << true << 0 << 208 << 10 << true;
    QTest::newRow("packet: would end at 221") << true << 0 << 209 << 10 << false;
    QTest::newRow("packet: largest into an empty one") << true << 0 << 0 << 218 << true;
    QTest::newRow("packet: one too many into an empty one") << true << 0 << 0 << 219 << false;
    QTest::newRow("packet: empty sub-packet at the end") << true << 0 << 218 << 0 << true;
    QTest::newRow("packet: already full") << true << 0 << 220 << 0 << false;
    QTest::newRow("packet: length beyond the limit") << true << 0 << 400 << 0 << false;
    QTest::newRow("buffer: fills it") << false << 16 << 0 << 14 << true;
    QTest::newRow("buffer: one byte too many") << false << 16 << 0 << 15 << false;
    QTest::newRow("buffer: after earlier sub-packets") << false << 16 << 3 << 11 << true;
    QTest::newRow("buffer: used beyond the size") << false << 16 << 17 << 0 << false;
    QTest::newRow("buffer: no room at all") << false << 0 << 0 << 0 << false;
    QTest::newRow("buffer: room for an empty one") << false << 2 << 0 << 0 << true;
    QTest::newRow("buffer: larger than a packet") << false << 300 << 0 << 250 << true;
}

void tst_ExtensionCodec::builders()
{
    QFETCH(bool, packet);
    QFETCH(int, size);
    QFETCH(int, used);
    QFETCH(int, dataLen);
    QFETCH(bool, fits);
    const QByteArray data = reference::pattern(dataLen, 1);
    const Built built = build(packet, size, used, data);
    if (!fits) {
        QCOMPARE(built.dataOffset, -1);
        QCOMPARE(built.allocatedLen, used);
        QCOMPARE(built.appendedLen, used);
        QCOMPARE(built.allocated, QByteArray(VRD_PKT_BUFFER, '\xAA'));
        QCOMPARE(built.appended, built.allocated);
        return;
    }
    const QByteArray header = QByteArray(1, char(VRD_EXT_TEXT)) + char(dataLen);
    QCOMPARE(built.dataOffset, used + 2);
    QCOMPARE(built.allocatedLen, used + 2 + dataLen);
    QCOMPARE(built.appendedLen, used + 2 + dataLen);
    QCOMPARE(built.allocated.mid(used, 2), header);
    QCOMPARE(built.appended.mid(used, 2 + dataLen), header + data);
    QCOMPARE(built.appended.mid(used + 2 + dataLen), QByteArray(VRD_PKT_BUFFER - used - 2 - dataLen, '\xAA'));
}

// Not refused: the size byte keeps the low 8 bits, the length advances by all.
void tst_ExtensionCodec::sizeAbove255KeepsLowByte()
{
    uint8_t buffer[400];
    memset(buffer, 0xAA, sizeof buffer);
    uint16_t used = 0;
    const uint8_t *dst = vrd_ext_allocate_buffer(buffer, &used, sizeof buffer, VRD_EXT_DATA, 300);
    QVERIFY(dst);
    QCOMPARE(int(used), 302);
    QCOMPARE(int(buffer[1]), 300 & 0xFF);
}

void tst_ExtensionCodec::encodeCallsign_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<QByteArray>("encoded");
    QTest::addColumn<QString>("decoded");
    QTest::newRow("lower case") << QByteArray("la1abc-5") << true << hex("B2 14 61 8A 30 05") << "LA1ABC-5";
    QTest::newRow("upper case") << QByteArray("LA1ABC-5") << true << hex("B2 14 61 8A 30 05") << "LA1ABC-5";
    QTest::newRow("cut to 7") << QByteArray("ABCDEFGH") << true << hex("86 28 E4 96 69 C0") << "ABCDEFG";
    QTest::newRow("7 characters and SSID")
        << QByteArray("ABCDEFG-5") << true << hex("86 28 E4 96 69 C5") << "ABCDEFG-5";
    QTest::newRow("cut before the dash")
        << QByteArray("ABCDEFGH-5") << true << hex("86 28 E4 96 69 C0") << "ABCDEFG";
    QTest::newRow("two digit SSID") << QByteArray("AB-12") << true << hex("86 20 00 00 00 0C") << "AB-12";
    QTest::newRow("SSID above 63 masked")
        << QByteArray("AB-99") << true << hex("86 20 00 00 00 23") << "AB-35";
    QTest::newRow("third digit not read")
        << QByteArray("AB-123") << true << hex("86 20 00 00 00 0C") << "AB-12";
    QTest::newRow("SSID 0 not shown") << QByteArray("AB-0") << true << hex("86 20 00 00 00 00") << "AB";
    QTest::newRow("leading zero") << QByteArray("A-09") << true << hex("84 00 00 00 00 09") << "A-9";
    QTest::newRow("largest SSID") << QByteArray("N0CALL-63") << true << hex("B9 08 E1 B2 C0 3F")
                                  << "N0CALL-63";
    QTest::newRow("empty") << QByteArray("") << true << hex("00 00 00 00 00 00") << "";
    QTest::newRow("dash at the end") << QByteArray("AB-") << false << QByteArray() << QString();
    QTest::newRow("letter SSID") << QByteArray("AB-x") << false << QByteArray() << QString();
    QTest::newRow("digit then letter") << QByteArray("AB-7x") << false << QByteArray() << QString();
    QTest::newRow("second dash") << QByteArray("AB-1-") << false << QByteArray() << QString();
}

void tst_ExtensionCodec::encodeCallsign()
{
    QFETCH(QByteArray, text);
    QFETCH(bool, ok);
    QFETCH(QByteArray, encoded);
    QFETCH(QString, decoded);
    uint8_t enc[VRD_CALLSIGN_ENC_LEN];
    QCOMPARE(vrd_ext_encode_callsign(enc, text.constData()), ok);
    if (!ok)
        return;
    QCOMPARE(QByteArray(reinterpret_cast<const char *>(enc), sizeof enc), encoded);
    char back[VRD_CALLSIGN_TEXT_LEN];
    vrd_ext_decode_callsign(back, enc);
    QCOMPARE(QString(back), decoded);
}

void tst_ExtensionCodec::decodeArbitraryBytes_data()
{
    QTest::addColumn<QByteArray>("encoded");
    QTest::addColumn<QString>("decoded");
    QTest::newRow("all ones: longest text") << hex("FF FF FF FF FF FF") << "_______-63";
    QTest::newRow("all zero") << hex("00 00 00 00 00 00") << "";
    QTest::newRow("end mark first, values after it") << hex("00 00 01 00 00 05") << "-5";
    QTest::newRow("one character") << hex("04 00 00 00 00 00") << "!";
    QTest::newRow("end mark in the middle") << hex("86 20 00 FF FF C0") << "AB";
}

// Whatever the bytes, the text ends within the 11 bytes the caller provides.
void tst_ExtensionCodec::decodeArbitraryBytes()
{
    QFETCH(QByteArray, encoded);
    QFETCH(QString, decoded);
    char text[VRD_CALLSIGN_TEXT_LEN + 5];
    memset(text, 0x7F, sizeof text);
    vrd_ext_decode_callsign(text, bytes(encoded));
    QCOMPARE(QString(text), decoded);
    for (size_t i = VRD_CALLSIGN_TEXT_LEN; i < sizeof text; i++)
        QCOMPARE(int(text[i]), 0x7F);
}

void tst_ExtensionCodec::statRecord()
{
    const QByteArray wire = hex("43 01 34 12 05 21 CD 5F 01 00 7B F6 8C 5A E8 03 02 00 00 01 FF FF");
    varda_stat_t stat;
    QCOMPARE(wire.size(), int(sizeof stat));
    memcpy(&stat, wire.constData(), sizeof stat);
    QCOMPARE(int(stat.hw_ver), 0x0143);
    QCOMPARE(int(stat.serial), 0x1234);
    QCOMPARE(int(stat.sw_ver), 0x2105);
    QCOMPARE(uint(stat.uptime_s), 90061u);
    QCOMPARE(int(stat.voltage), 123);
    QCOMPARE(int(stat.temp), -10);
    QCOMPARE(int(stat.signal), 140);
    QCOMPARE(int(stat.noise), 90);
    QCOMPARE(int(stat.cntr_rx_ok), 1000);
    QCOMPARE(int(stat.cntr_rx_fix), 2);
    QCOMPARE(int(stat.cntr_rx_err), 256);
    QCOMPARE(int(stat.cntr_tx), 65535);
}

void tst_ExtensionCodec::simplehopRecord()
{
    const uint8_t wire = 0xAD; // 101 011 01
    varda_simplehop_t hop;
    memcpy(&hop, &wire, sizeof hop);
    QCOMPARE(int(hop.hops_remaining), 5);
    QCOMPARE(int(hop.hops_total), 3);
    QCOMPARE(int(hop.reserved), 1);
}

void tst_ExtensionCodec::tohRecord()
{
    const QByteArray wire = hex("78 56 34 12 01");
    varda_toh_t toh;
    QCOMPARE(wire.size(), int(sizeof toh));
    memcpy(&toh, wire.constData(), sizeof toh);
    QCOMPARE(uint(toh.toh_us), 0x12345678u);
    QCOMPARE(int(toh.toh_val), 1);
}

void tst_ExtensionCodec::srcRecord()
{
    const QByteArray wire = s_src.mid(2);
    varda_src_t src;
    QCOMPARE(wire.size(), int(sizeof src));
    memcpy(&src, wire.constData(), sizeof src);
    QCOMPARE(int(src.sequence), 0x7B);
    char text[VRD_CALLSIGN_TEXT_LEN];
    vrd_ext_decode_callsign(text, src.call_ssid);
    QCOMPARE(QString(text), QString("LA1ABC-5"));
}

QTEST_APPLESS_MAIN(tst_ExtensionCodec)
#include "tst_extension_codec.moc"
