#include <QStandardItemModel>
#include <QtTest>

#include "reference_frames.h"
#include "varda_extension.h"
#include "varda_extension_qt.h"

using reference::sub;
using Payloads = QList<QByteArray>;

namespace
{

// Encoded callsigns worked out by hand from the 6-bit packing.
const QByteArray DL1ABC_5 = QByteArray::fromHex("92C4618A3005"), OE3XYZ = QByteArray::fromHex("BE54F8E7A000"),
                 N0CALL_12 = QByteArray::fromHex("B908E1B2C00C");
// hw 1023/63, serial 1234, sw 15.15.255, up 90061 s, 12.3 V, -10 C, -60 and -105 dBm, counters 500 7 3 65535
const QByteArray STAT
    = sub(VRD_EXT_STAT, QByteArray::fromHex("FFFFD204FFFFCD5F01007BF68C5FF40107000300FFFF"));
const QString STAT_ROWS
    = "stat|Hardware version=1023/63|Serial number=1234|Software version=15.15.255|"
      "Uptime=1 day(s) 01:01:01|Voltage (V)=12.30|Temperature (C)=-10|Signal (dBm)=-60|"
      "Noise (dBm)=-105|RX count OK=500|RX count fixed=7|RX count errors=3|TX count=65535";

QByteArray src(const QByteArray &call, uint8_t seq)
{
    return sub(VRD_EXT_SRC, call + char(seq));
}

VardaExtension parsed(const QByteArray &payload, VardaExtension ext = VardaExtension())
{
    ext.parse(reinterpret_cast<const uint8_t *>(payload.constData()), uint16_t(payload.size()));
    return ext;
}

// One entry per top-level item, in model order: "name|label=value|...".
QStringList contents(const QStandardItemModel &model)
{
    QStringList items;
    for (int i = 0; i < model.rowCount(); i++) {
        items << model.item(i)->text();
        for (int row = 0; row < model.item(i)->rowCount(); row++)
            items.last()
                += "|" + model.item(i)->child(row, 0)->text() + "=" + model.item(i)->child(row, 1)->text();
    }
    return items;
}

} // namespace

class tst_VardaExtension : public QObject
{
    Q_OBJECT
private slots:
    // A later sub-packet of a type replaces an earlier one; a second parse adds, unless it is invalid.
    void parsesAccumulate()
    {
        VardaExtension ext
            = parsed(src(DL1ABC_5, 1) + sub(VRD_EXT_DATA, QByteArray("\0\xff", 2)) + src(OE3XYZ, 2));
        QCOMPARE(ext.getSource(), QString("OE3XYZ"));
        ext = parsed(sub(VRD_EXT_TEXT, "x") + sub(20, "y"),
            parsed(src(N0CALL_12, 2) + sub(VRD_EXT_TEXT, "h\xe9"), ext));
        QCOMPARE(ext.getExtensionTypeStrings(), (QStringList { "data", "src", "text" }));
        QVERIFY(ext.hasExtensionType(VRD_EXT_TEXT));
        QVERIFY(!ext.hasExtensionType(VRD_EXT_STAT));
        QVERIFY(!ext.hasExtensionType(20));
        QCOMPARE(ext.getSource(), QString("N0CALL-12"));
        QCOMPARE(ext.getData(), QByteArray("\0\xff", 2));
        QCOMPARE(ext.getExtensionCmdReply(), QString::fromUtf8("h\xc3\xa9"));
    }

    void breakdown_data()
    {
        QTest::addColumn<Payloads>("packets"); // each shown into the same model
        QTest::addColumn<QStringList>("items");
        QTest::newRow("in ascending code")
            << Payloads { sub(VRD_EXT_TEXT, "V1.2 \xe9") + sub(VRD_EXT_DEST, DL1ABC_5)
                   + sub(VRD_EXT_TOH, QByteArray::fromHex("FFA393D601")) + sub(VRD_EXT_SIMPLEHOP, "\xaf")
                   + src(N0CALL_12, 200) } // simplehop: reserved bits set
            << QStringList { "src|Callsign=N0CALL-12|Seq. nr=200", "simplehop|Hops remaining=5|Hops total=3",
                   "toh|Time of hour (us)=3599999999|Validity=1", "dest|Callsign=DL1ABC-5",
                   QString::fromUtf8("text|Reply=V1.2 \xc3\xa9") };
        QTest::newRow("largest data, no rows; last one cut short") << Payloads {
            src(DL1ABC_5, 1) + sub(VRD_EXT_DATA, QByteArray(255, 'x')) + sub(VRD_EXT_TEXT, "hello").left(5)
        } << QStringList { "data", "src|Callsign=DL1ABC-5|Seq. nr=1" };
        // Later packets update the same rows; a type a packet lacks keeps its rows.
        QTest::newRow("three packets") << Payloads {
            src(DL1ABC_5, 1) + STAT, sub(VRD_EXT_TEXT, "pong") + src(OE3XYZ, 2) + STAT, src(DL1ABC_5, 3)
        } << QStringList { "src|Callsign=DL1ABC-5|Seq. nr=3", STAT_ROWS, "text|Reply=pong" };
    }
    // The rows in the model; each new row is logged once, its label as the debug stream prints a string.
    void breakdown()
    {
        QFETCH(Payloads, packets);
        QFETCH(QStringList, items);
        QStandardItemModel model;
        for (const QString &item : items)
            for (const QString &row : item.split('|').mid(1))
                QTest::ignoreMessage(QtDebugMsg, qPrintable("New item \"" + row.section('=', 0, 0) + '"'));
        for (const QByteArray &packet : packets)
            parsed(packet).getConvertedExtensionData(&model);
        QCOMPARE(contents(model), items);
    }

    void secondsToDhms()
    {
        QCOMPARE(VardaExtension::secondsToDhms(86399), QString("23:59:59"));
        QCOMPARE(VardaExtension::secondsToDhms(86400), QString("1 day(s) 00:00:00"));
        QCOMPARE(VardaExtension::secondsToDhms(4294967295u), QString("49710 day(s) 06:28:15"));
    }

    // No size checks in the builders; a command packet always has sequence number 123
    // and up to 203 characters, though over 201 cannot be sent.
    void building()
    {
        VardaExtension out;
        out.addData(QByteArray(300, 'd')); // the size byte keeps the low 8 bits
        out.addSource("dl1abc-5", 42);
        out.addDestination("OE3XYZ-x"); // a bad SSID packs nothing: six zero bytes
        out.addCommand("ver");
        QCOMPARE(out.getPacket(),
            QByteArray("\x00\x2c", 2) + QByteArray(300, 'd') + src(DL1ABC_5, 42)
                + sub(VRD_EXT_DEST, QByteArray(6, '\0')) + sub(VRD_EXT_CMD_REQ, "ver"));
        const QString command(203, 'v');
        QCOMPARE(VardaExtension::packCommand("N0CALL-12", "DL1ABC-5", command),
            src(DL1ABC_5, 123) + sub(VRD_EXT_DEST, N0CALL_12) + sub(VRD_EXT_CMD_REQ, command.toLatin1()));
        QVERIFY(VardaExtension::packCommand("N0CALL-12", "DL1ABC-5", command + 'v').isEmpty());
    }
};

QTEST_GUILESS_MAIN(tst_VardaExtension)
#include "tst_varda_extension.moc"
