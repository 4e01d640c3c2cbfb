#include <QAbstractItemModelTester>
#include <QStandardItemModel>
#include <QtTest>

#include "varda_extension.h"
#include "varda_extension_qt.h"

namespace
{

// Encoded callsigns worked out by hand from the 6-bit packing.
const QByteArray DL1ABC_5("\x92\xc4\x61\x8a\x30\x05", 6);
const QByteArray OE3XYZ("\xbe\x54\xf8\xe7\xa0\x00", 6);
const QByteArray N0CALL_12("\xb9\x08\xe1\xb2\xc0\x0c", 6);

QByteArray sub(uint8_t type, const QByteArray &data)
{
    return QByteArray(1, char(type)) + char(data.size()) + data;
}

QByteArray src(const QByteArray &call, uint8_t seq)
{
    return sub(VRD_EXT_SRC, call + char(seq));
}

QByteArray le16(unsigned v)
{
    return QByteArray(1, char(v & 0xFF)) + char(v >> 8);
}

QByteArray le32(quint32 v)
{
    return le16(v & 0xFFFF) + le16(v >> 16);
}

struct Stat {
    unsigned hw, serial, sw;
    quint32 uptime;
    uint8_t voltage, temp, signal, noise;
    unsigned rxOk, rxFix, rxErr, tx;
};

QByteArray stat(const Stat &s)
{
    QByteArray d = le16(s.hw) + le16(s.serial) + le16(s.sw) + le32(s.uptime);
    d += char(s.voltage);
    d += char(s.temp);
    d += char(s.signal);
    d += char(s.noise);
    d += le16(s.rxOk) + le16(s.rxFix) + le16(s.rxErr) + le16(s.tx);
    return sub(VRD_EXT_STAT, d);
}

const Stat TYPICAL_STAT { (3 << 6) | 2, 1234, 0x1203, 90061, 123, 0xF6, 140, 95, 500, 7, 3, 65535 };

VardaExtension parsed(const QByteArray &payload)
{
    VardaExtension ext;
    ext.parse(reinterpret_cast<const uint8_t *>(payload.constData()), uint16_t(payload.size()));
    return ext;
}

QStandardItem *topItem(const QStandardItemModel &model, const QString &name)
{
    const QList<QStandardItem *> found = model.findItems(name);
    return found.size() == 1 ? found.first() : nullptr;
}

// The rows under a type's item as "label=value", in model order.
QStringList rowsOf(const QStandardItemModel &model, const QString &name)
{
    QStringList rows;
    const QStandardItem *parent = topItem(model, name);
    if (!parent)
        return { "<no single item " + name + ">" };
    for (int i = 0; i < parent->rowCount(); i++)
        rows << parent->child(i, 0)->text() + "=" + parent->child(i, 1)->text();
    return rows;
}

QStringList topLevelNames(const QStandardItemModel &model)
{
    QStringList names;
    for (int i = 0; i < model.rowCount(); i++)
        names << model.item(i, 0)->text();
    return names;
}

// Collects the "New item" lines written while it lives.
class NewItemLog
{
public:
    NewItemLog()
    {
        s_lines.clear();
        m_previous = qInstallMessageHandler(&NewItemLog::handler);
    }
    ~NewItemLog()
    {
        qInstallMessageHandler(m_previous);
    }
    QStringList lines() const
    {
        return s_lines;
    }

private:
    static void handler(QtMsgType type, const QMessageLogContext &, const QString &msg)
    {
        if (type == QtDebugMsg && msg.startsWith("New item"))
            s_lines << msg;
    }
    static QStringList s_lines;
    QtMessageHandler m_previous;
};
QStringList NewItemLog::s_lines;

} // namespace

class tst_VardaExtension : public QObject
{
    Q_OBJECT
private slots:
    void typeStrings_data();
    void typeStrings();
    void laterSubPacketReplacesEarlier();
    void secondParseAddsToFirst();
    void invalidSecondParseKeepsFirst();
    void getters();
    void emptyGetters();
    void rows_data();
    void rows();
    void sameModelUpdatedByLaterPacket();
    void foreignRowsInModel();
    void secondsToDhms_data();
    void secondsToDhms();
    void builders();
    void builtPacketParsesBack();
    void packCommand_data();
    void packCommand();
};

void tst_VardaExtension::typeStrings_data()
{
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QStringList>("names");
    const QByteArray text = sub(VRD_EXT_TEXT, "OK");
    const QByteArray s = src(DL1ABC_5, 1);
    QTest::newRow("src stat text") << s + stat(TYPICAL_STAT) + text << QStringList { "src", "stat", "text" };
    QTest::newRow("text src: ascending code") << text + s << QStringList { "src", "text" };
    QTest::newRow("empty") << QByteArray() << QStringList();
    QTest::newRow("one stray byte") << QByteArray(1, 1) << QStringList();
    QTest::newRow("type 16") << s + sub(16, "") << QStringList();
    QTest::newRow("type 255 first") << sub(255, "x") + s << QStringList();
    QTest::newRow("src of 6 bytes") << sub(VRD_EXT_SRC, DL1ABC_5) << QStringList();
    QTest::newRow("stat of 23 bytes") << s + sub(VRD_EXT_STAT, QByteArray(23, 0)) << QStringList();
    QTest::newRow("last cut short") << s + sub(VRD_EXT_TEXT, "hello").left(5) << QStringList { "src" };
    QTest::newRow("stray trailing byte") << s + char(VRD_EXT_TEXT) << QStringList { "src" };
    QTest::newRow("255-byte data") << sub(VRD_EXT_DATA, QByteArray(255, 'x')) << QStringList { "data" };
}

void tst_VardaExtension::typeStrings()
{
    QFETCH(QByteArray, payload);
    QFETCH(QStringList, names);
    const VardaExtension ext = parsed(payload);
    QCOMPARE(ext.getExtensionTypeStrings(), names);
    for (uint8_t type = 0; type < VRD_EXT_TYPES; type++)
        QCOMPARE(ext.hasExtensionType(type), names.contains(EXT_TYPE_STRINGS[type]));
    QVERIFY(!ext.hasExtensionType(16));
}

void tst_VardaExtension::laterSubPacketReplacesEarlier()
{
    const VardaExtension ext = parsed(
        src(DL1ABC_5, 1) + sub(VRD_EXT_TEXT, "first") + src(OE3XYZ, 2) + sub(VRD_EXT_TEXT, "second"));
    QCOMPARE(ext.getSource(), QString("OE3XYZ"));
    QCOMPARE(ext.getExtensionCmdReply(), QString("second"));
    QCOMPARE(ext.getExtensionTypeStrings(), (QStringList { "src", "text" }));
}

void tst_VardaExtension::secondParseAddsToFirst()
{
    VardaExtension ext = parsed(src(DL1ABC_5, 1) + sub(VRD_EXT_DATA, "abc"));
    const QByteArray second = src(OE3XYZ, 2) + sub(VRD_EXT_TEXT, "hi");
    ext.parse(reinterpret_cast<const uint8_t *>(second.constData()), uint16_t(second.size()));
    QCOMPARE(ext.getExtensionTypeStrings(), (QStringList { "data", "src", "text" }));
    QCOMPARE(ext.getSource(), QString("OE3XYZ"));
    QCOMPARE(ext.getData(), QByteArray("abc"));
}

void tst_VardaExtension::invalidSecondParseKeepsFirst()
{
    VardaExtension ext = parsed(src(DL1ABC_5, 1));
    const QByteArray bad = sub(VRD_EXT_TEXT, "x") + sub(20, "y");
    ext.parse(reinterpret_cast<const uint8_t *>(bad.constData()), uint16_t(bad.size()));
    QCOMPARE(ext.getExtensionTypeStrings(), QStringList { "src" });
    QCOMPARE(ext.getExtensionCmdReply(), QString());
    ext.parse(nullptr, 0);
    QCOMPARE(ext.getSource(), QString("DL1ABC-5"));
}

void tst_VardaExtension::getters()
{
    const QByteArray data("\x00\xff\x10", 3);
    const QByteArray reply = QByteArray("Temp \xb0") + 'C';
    const VardaExtension ext = parsed(sub(VRD_EXT_DATA, data) + src(N0CALL_12, 9) + sub(VRD_EXT_TEXT, reply));
    QCOMPARE(ext.getData(), data);
    QCOMPARE(ext.getSource(), QString("N0CALL-12"));
    QCOMPARE(ext.getExtensionCmdReply(), QString::fromUtf8("Temp \xc2\xb0") + 'C');
}

void tst_VardaExtension::emptyGetters()
{
    const VardaExtension ext = parsed(sub(VRD_EXT_DEST, OE3XYZ));
    QCOMPARE(ext.getSource(), QString());
    QCOMPARE(ext.getData(), QByteArray());
    QCOMPARE(ext.getExtensionCmdReply(), QString());
    QStandardItemModel model;
    VardaExtension().getConvertedExtensionData(&model);
    QCOMPARE(model.rowCount(), 0);
}

void tst_VardaExtension::rows_data()
{
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QString>("type");
    QTest::addColumn<QStringList>("rows");
    QTest::newRow("src") << src(DL1ABC_5, 200) << "src" << QStringList { "Callsign=DL1ABC-5", "Seq. nr=200" };
    QTest::newRow("src without ssid")
        << src(OE3XYZ, 0) << "src" << QStringList { "Callsign=OE3XYZ", "Seq. nr=0" };
    QTest::newRow("stat") << stat(TYPICAL_STAT) << "stat"
                          << QStringList { "Hardware version=3/2", "Serial number=1234",
                                 "Software version=1.2.3", "Uptime=1 day(s) 01:01:01", "Voltage (V)=12.30",
                                 "Temperature (C)=-10", "Signal (dBm)=-60", "Noise (dBm)=-105",
                                 "RX count OK=500", "RX count fixed=7", "RX count errors=3",
                                 "TX count=65535" };
    QTest::newRow("stat extremes") << stat({ 0xFFFF, 65535, 0xFFFF, 59, 0, 0x7F, 255, 0, 0, 0, 0, 0 })
                                   << "stat"
                                   << QStringList { "Hardware version=1023/63", "Serial number=65535",
                                          "Software version=15.15.255", "Uptime=00:00:59", "Voltage (V)=0.00",
                                          "Temperature (C)=127", "Signal (dBm)=55", "Noise (dBm)=-200",
                                          "RX count OK=0", "RX count fixed=0", "RX count errors=0",
                                          "TX count=0" };
    QTest::newRow("simplehop") << sub(VRD_EXT_SIMPLEHOP, "\xac") << "simplehop"
                               << QStringList { "Hops remaining=5", "Hops total=3" };
    QTest::newRow("simplehop reserved bits") << sub(VRD_EXT_SIMPLEHOP, "\x03") << "simplehop"
                                             << QStringList { "Hops remaining=0", "Hops total=0" };
    QTest::newRow("toh") << sub(VRD_EXT_TOH, le32(3599999999u) + char(1)) << "toh"
                         << QStringList { "Time of hour (us)=3599999999", "Validity=1" };
    QTest::newRow("dest") << sub(VRD_EXT_DEST, N0CALL_12) << "dest" << QStringList { "Callsign=N0CALL-12" };
    QTest::newRow("text") << sub(VRD_EXT_TEXT, "V1.2 \xe9") << "text"
                          << QStringList { QString::fromUtf8("Reply=V1.2 \xc3\xa9") };
    QTest::newRow("data") << sub(VRD_EXT_DATA, "abc") << "data" << QStringList();
    QTest::newRow("cmd_req") << sub(VRD_EXT_CMD_REQ, "ver") << "cmd_req" << QStringList();
    QTest::newRow("rx_src") << sub(VRD_EXT_RX_SRC, DL1ABC_5 + char(1)) << "rx_src" << QStringList();
    QTest::newRow("ipv6_src") << sub(VRD_EXT_IPV6_SRC, QByteArray(16, 1)) << "ipv6_src" << QStringList();
}

void tst_VardaExtension::rows()
{
    QFETCH(QByteArray, payload);
    QFETCH(QString, type);
    QFETCH(QStringList, rows);
    QStandardItemModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    NewItemLog log;
    parsed(payload).getConvertedExtensionData(&model);
    QCOMPARE(topLevelNames(model), QStringList { type });
    QCOMPARE(rowsOf(model, type), rows);
    QCOMPARE(model.item(0)->columnCount(), rows.isEmpty() ? 0 : 2);
    QStringList expectedLog;
    for (const QString &row : rows)
        expectedLog << "New item " + row.section('=', 0, 0);
    QCOMPARE(log.lines(), expectedLog);
}

void tst_VardaExtension::sameModelUpdatedByLaterPacket()
{
    QStandardItemModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    parsed(src(DL1ABC_5, 1) + stat(TYPICAL_STAT)).getConvertedExtensionData(&model);

    Stat later = TYPICAL_STAT;
    later.voltage = 118;
    later.uptime = 90062;
    NewItemLog log;
    parsed(sub(VRD_EXT_TEXT, "pong") + src(OE3XYZ, 2) + stat(later)).getConvertedExtensionData(&model);

    QCOMPARE(topLevelNames(model), (QStringList { "src", "stat", "text" }));
    QCOMPARE(rowsOf(model, "src"), (QStringList { "Callsign=OE3XYZ", "Seq. nr=2" }));
    const QStringList statRows = rowsOf(model, "stat");
    QCOMPARE(statRows.size(), 12);
    QCOMPARE(statRows.at(3), QString("Uptime=1 day(s) 01:01:02"));
    QCOMPARE(statRows.at(4), QString("Voltage (V)=11.80"));
    QCOMPARE(log.lines(), QStringList { "New item Reply" });

    // A packet lacking a type leaves that type's rows as they were.
    parsed(src(DL1ABC_5, 3)).getConvertedExtensionData(&model);
    QCOMPARE(rowsOf(model, "src"), (QStringList { "Callsign=DL1ABC-5", "Seq. nr=3" }));
    QCOMPARE(rowsOf(model, "text"), QStringList { "Reply=pong" });
}

void tst_VardaExtension::foreignRowsInModel()
{
    QStandardItemModel model;
    auto *srcItem = new QStandardItem("src");
    srcItem->appendRow({ new QStandardItem("Note"), new QStandardItem("kept") });
    srcItem->appendRow(new QStandardItem("Seq. nr")); // no value column yet
    model.appendRow(new QStandardItem("Src")); // names match exactly, not by case
    model.appendRow(srcItem);
    model.appendRow(new QStandardItem("text"));
    model.appendRow(new QStandardItem("text"));

    parsed(src(DL1ABC_5, 7) + sub(VRD_EXT_TEXT, "x")).getConvertedExtensionData(&model);

    QCOMPARE(topLevelNames(model), (QStringList { "Src", "src", "text", "text" }));
    QCOMPARE(rowsOf(model, "src"), (QStringList { "Note=kept", "Seq. nr=7", "Callsign=DL1ABC-5" }));
    QCOMPARE(model.item(0)->rowCount(), 0);
    // Two items of one name: neither is picked.
    QCOMPARE(model.item(2)->rowCount(), 0);
    QCOMPARE(model.item(3)->rowCount(), 0);
}

void tst_VardaExtension::secondsToDhms_data()
{
    QTest::addColumn<uint>("seconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("zero") << 0u << "00:00:00";
    QTest::newRow("59 s") << 59u << "00:00:59";
    QTest::newRow("3725 s") << 3725u << "01:02:05";
    QTest::newRow("last second of a day") << 86399u << "23:59:59";
    QTest::newRow("one day") << 86400u << "1 day(s) 00:00:00";
    QTest::newRow("1 d 1 h 1 min 1 s") << 90061u << "1 day(s) 01:01:01";
    QTest::newRow("100 days") << 8640000u << "100 day(s) 00:00:00";
    QTest::newRow("largest") << 4294967295u << "49710 day(s) 06:28:15";
}

void tst_VardaExtension::secondsToDhms()
{
    QFETCH(uint, seconds);
    QFETCH(QString, text);
    QCOMPARE(VardaExtension::secondsToDhms(seconds), text);
}

void tst_VardaExtension::builders()
{
    VardaExtension ext;
    ext.addData(QByteArray("\x01\x02", 2));
    ext.addSource("dl1abc-5", 42);
    ext.addDestination("N0CALL-12");
    ext.addCommand("ver");
    QCOMPARE(ext.getPacket(),
        sub(VRD_EXT_DATA, QByteArray("\x01\x02", 2)) + src(DL1ABC_5, 42) + sub(VRD_EXT_DEST, N0CALL_12)
            + sub(VRD_EXT_CMD_REQ, "ver"));

    // No limits are enforced: the size byte keeps the low 8 bits.
    VardaExtension big;
    big.addData(QByteArray(300, 'd'));
    big.addCommand(QString(256, 'c'));
    const QByteArray packet = big.getPacket();
    QCOMPARE(packet.size(), 2 + 300 + 2 + 256);
    QCOMPARE(uint8_t(packet.at(1)), uint8_t(300 & 0xFF));
    QCOMPARE(uint8_t(packet.at(302)), uint8_t(VRD_EXT_CMD_REQ));
    QCOMPARE(uint8_t(packet.at(303)), uint8_t(0));

    // A bad SSID still sends the callsign, with SSID 0.
    VardaExtension badSsid;
    badSsid.addDestination("OE3XYZ-x");
    QCOMPARE(badSsid.getPacket(), sub(VRD_EXT_DEST, OE3XYZ));
    QCOMPARE(VardaExtension().getPacket(), QByteArray());
}

void tst_VardaExtension::builtPacketParsesBack()
{
    VardaExtension out;
    out.addSource("OE3XYZ", 5);
    out.addCommand(QString::fromUtf8("grad \xc2\xb0"));
    out.addData("payload");
    const VardaExtension in = parsed(out.getPacket());
    QCOMPARE(in.getSource(), QString("OE3XYZ"));
    QCOMPARE(in.getData(), QByteArray("payload"));
    QCOMPARE(in.getExtensionTypeStrings(), (QStringList { "data", "src", "cmd_req" }));
}

void tst_VardaExtension::packCommand_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("packetSize");
    QTest::newRow("empty command") << 0 << 19;
    QTest::newRow("3 characters") << 3 << 22;
    QTest::newRow("201: fits a transmit frame") << 201 << 220;
    QTest::newRow("202: one byte over") << 202 << 221;
    QTest::newRow("203: the limit") << 203 << 222;
    QTest::newRow("204: refused") << 204 << 0;
    QTest::newRow("400: refused") << 400 << 0;
}

void tst_VardaExtension::packCommand()
{
    QFETCH(int, length);
    QFETCH(int, packetSize);
    QString command;
    for (int i = 0; i < length; i++)
        command += QChar('a' + i % 26);
    const QByteArray packet = VardaExtension::packCommand("N0CALL-12", "DL1ABC-5", command);
    QCOMPARE(packet.size(), packetSize);
    if (packetSize == 0)
        return;
    const QByteArray expected
        = src(DL1ABC_5, 123) + sub(VRD_EXT_DEST, N0CALL_12) + sub(VRD_EXT_CMD_REQ, command.toLatin1());
    QCOMPARE(packet, expected);
    QCOMPARE(vrd_ext_numpkts(reinterpret_cast<const uint8_t *>(packet.constData()), uint16_t(packet.size())),
        uint16_t(3));
}

QTEST_GUILESS_MAIN(tst_VardaExtension)
#include "tst_varda_extension.moc"
