#include <QAbstractItemModelTester>
#include <QStandardItemModel>
#include <QtTest>

#include "varda_extension.h"
#include "varda_extension_qt.h"

using Tester = QAbstractItemModelTester;

namespace
{

// Encoded callsigns worked out by hand from the 6-bit packing.
const QByteArray DL1ABC_5 = QByteArray::fromHex("92C4618A3005");
const QByteArray OE3XYZ = QByteArray::fromHex("BE54F8E7A000");
const QByteArray N0CALL_12 = QByteArray::fromHex("B908E1B2C00C");

QByteArray sub(uint8_t type, const QByteArray &data)
{
    return char(type) + QByteArray(1, char(data.size())) + data;
}

QByteArray src(const QByteArray &call, uint8_t seq)
{
    return sub(VRD_EXT_SRC, call + char(seq));
}

// hw 1023/63, serial 1234, sw 15.15.255, up 90061 s, 12.3 V, -10 C, -60 and -105 dBm, counters 500 7 3 65535
QByteArray stat()
{
    return sub(VRD_EXT_STAT, QByteArray::fromHex("FFFFD204FFFFCD5F01007BF68C5FF40107000300FFFF"));
}

VardaExtension parsed(const QByteArray &payload)
{
    VardaExtension ext;
    ext.parse(reinterpret_cast<const uint8_t *>(payload.constData()), uint16_t(payload.size()));
    return ext;
}

// One entry per top-level item, in model order: "name|label=value|...".
QStringList contents(const QStandardItemModel &model)
{
    QStringList items;
    for (int i = 0; i < model.rowCount(); i++) {
        const QStandardItem *item = model.item(i);
        items << item->text();
        for (int row = 0; row < item->rowCount(); row++)
            items.last() += "|" + item->child(row, 0)->text() + "=" + item->child(row, 1)->text();
    }
    return items;
}

} // namespace

class tst_VardaExtension : public QObject
{
    Q_OBJECT
private slots:
    // A later sub-packet of a type replaces an earlier one; a valid second parse adds.
    void parsesAccumulate()
    {
        VardaExtension ext
            = parsed(src(DL1ABC_5, 1) + sub(VRD_EXT_DATA, QByteArray("\0\xff", 2)) + src(OE3XYZ, 2));
        QCOMPARE(ext.getSource(), QString("OE3XYZ"));
        for (const QByteArray &more :
            { src(N0CALL_12, 2) + sub(VRD_EXT_TEXT, "h\xe9"), sub(VRD_EXT_TEXT, "x") + sub(20, "y") })
            ext.parse(reinterpret_cast<const uint8_t *>(more.constData()), uint16_t(more.size()));
        QCOMPARE(ext.getExtensionTypeStrings(), (QStringList { "data", "src", "text" }));
        QCOMPARE(ext.getSource(), QString("N0CALL-12"));
        QCOMPARE(ext.getData(), QByteArray("\0\xff", 2));
        QCOMPARE(ext.getExtensionCmdReply(), QString::fromUtf8("h\xc3\xa9"));
    }

    void breakdown_data()
    {
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<QStringList>("items");
        QTest::newRow("text src: ascending code") << sub(VRD_EXT_TEXT, "V1.2 \xe9") + src(N0CALL_12, 200)
                                                  << QStringList { "src|Callsign=N0CALL-12|Seq. nr=200",
                                                         QString::fromUtf8("text|Reply=V1.2 \xc3\xa9") };
        QTest::newRow("stat")
            << stat()
            << QStringList { "stat|Hardware version=1023/63|Serial number=1234|Software version=15.15.255|"
                             "Uptime=1 day(s) 01:01:01|Voltage (V)=12.30|Temperature (C)=-10|"
                             "Signal (dBm)=-60|Noise (dBm)=-105|RX count OK=500|RX count fixed=7|"
                             "RX count errors=3|TX count=65535" };
        QTest::newRow("simplehop, reserved bits set")
            << sub(VRD_EXT_SIMPLEHOP, "\xaf") << QStringList { "simplehop|Hops remaining=5|Hops total=3" };
        QTest::newRow("toh") << sub(VRD_EXT_TOH, QByteArray::fromHex("FFA393D601"))
                             << QStringList { "toh|Time of hour (us)=3599999999|Validity=1" };
        QTest::newRow("dest") << sub(VRD_EXT_DEST, DL1ABC_5) << QStringList { "dest|Callsign=DL1ABC-5" };
        QTest::newRow("255-byte data: no rows")
            << sub(VRD_EXT_DATA, QByteArray(255, 'x')) << QStringList { "data" };
        QTest::newRow("last one cut short") << src(DL1ABC_5, 1) + sub(VRD_EXT_DATA, "hello").left(5)
                                            << QStringList { "src|Callsign=DL1ABC-5|Seq. nr=1" };
    }
    // The types held and their rows in the model; each new row is logged.
    void breakdown()
    {
        QFETCH(QByteArray, payload);
        QFETCH(QStringList, items);
        QStandardItemModel model;
        Tester tester(&model, Tester::FailureReportingMode::QtTest);
        QStringList names;
        for (const QString &item : items) {
            names << item.section('|', 0, 0);
            for (const QString &row : item.split('|').mid(1))
                QTest::ignoreMessage(QtDebugMsg, qPrintable("New item " + row.section('=', 0, 0)));
        }
        const VardaExtension ext = parsed(payload);
        QCOMPARE(ext.getExtensionTypeStrings(), names);
        QCOMPARE(ext.getSource().isEmpty(), !names.contains("src"));
        for (uint8_t type = 0; type <= VRD_EXT_TYPES; type++)
            QCOMPARE(
                ext.hasExtensionType(type), type < VRD_EXT_TYPES && names.contains(EXT_TYPE_STRINGS[type]));
        ext.getConvertedExtensionData(&model);
        QCOMPARE(contents(model), items);
    }

    void sameModelUpdatedByLaterPacket()
    {
        QStandardItemModel model;
        Tester tester(&model, Tester::FailureReportingMode::QtTest);
        parsed(src(DL1ABC_5, 1) + stat()).getConvertedExtensionData(&model);
        const QString statItem = contents(model).value(1);
        QTest::ignoreMessage(QtDebugMsg, "New item Reply");
        parsed(sub(VRD_EXT_TEXT, "pong") + src(OE3XYZ, 2) + stat()).getConvertedExtensionData(&model);
        QCOMPARE(
            contents(model), (QStringList { "src|Callsign=OE3XYZ|Seq. nr=2", statItem, "text|Reply=pong" }));
        // A packet lacking a type leaves that type's rows as they were.
        parsed(src(DL1ABC_5, 3)).getConvertedExtensionData(&model);
        QCOMPARE(contents(model),
            (QStringList { "src|Callsign=DL1ABC-5|Seq. nr=3", statItem, "text|Reply=pong" }));
    }

    void secondsToDhms_data()
    {
        QTest::addColumn<uint>("seconds");
        QTest::addColumn<QString>("text");
        QTest::newRow("last second of a day") << 86399u << "23:59:59";
        QTest::newRow("one day") << 86400u << "1 day(s) 00:00:00";
        QTest::newRow("largest") << 4294967295u << "49710 day(s) 06:28:15";
    }
    void secondsToDhms()
    {
        QFETCH(uint, seconds);
        QFETCH(QString, text);
        QCOMPARE(VardaExtension::secondsToDhms(seconds), text);
    }

    void builders()
    {
        VardaExtension out;
        out.addData(QByteArray(300, 'd')); // no limits: the size byte keeps the low 8 bits
        out.addSource("dl1abc-5", 42);
        out.addDestination("OE3XYZ-x"); // a bad SSID still sends the callsign, with SSID 0
        out.addCommand("ver");
        QCOMPARE(out.getPacket(),
            QByteArray("\x00\x2c", 2) + QByteArray(300, 'd') + src(DL1ABC_5, 42) + sub(VRD_EXT_DEST, OE3XYZ)
                + sub(VRD_EXT_CMD_REQ, "ver"));
    }

    // Always sequence number 123; up to 203 characters, though over 201 cannot be sent.
    void packCommand()
    {
        for (const int length : { 3, 203, 204 }) {
            const QString command(length, 'v');
            QCOMPARE(VardaExtension::packCommand("N0CALL-12", "DL1ABC-5", command),
                length > 203 ? QByteArray()
                             : src(DL1ABC_5, 123) + sub(VRD_EXT_DEST, N0CALL_12)
                        + sub(VRD_EXT_CMD_REQ, command.toLatin1()));
        }
    }
};

QTEST_GUILESS_MAIN(tst_VardaExtension)
#include "tst_varda_extension.moc"
