#include <QtTest>

#include "varda_spp_payload.h"

// The header fields and radio bytes of delivered SPP payloads, as every receiver of the modem link sees them.
class tst_SppPayload : public QObject
{
    Q_OBJECT

private slots:
    void split_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("result");
        // header length, toh, rssi dBm, noise dBm, errors, flags, extension
        QTest::addColumn<QList<qint64>>("fields");
        QTest::addColumn<QByteArray>("payload");
        const QList<qint64> none { 0, 0xFFFFFFFF, 255, 255, 0, 0, 0 };
        // toh 0x01020304 little-endian, noise 82 = -118 dBm, rssi 113 = -87 dBm, 3 errors, flags 0x81
        const QByteArray rx = QByteArray::fromHex("04030201527103 81");
        QTest::newRow("received, extension flag")
            << 0 << rx + "abc" << int(VARDA_SPP_PAYLOAD_OK)
            << QList<qint64> { 8, 0x01020304, -87, -118, 3, 0x81, 1 } << QByteArray("abc");
        QTest::newRow("received, no flag, levels not reported")
            << 0 << QByteArray::fromHex("ffffffffffff0000") + "x" << int(VARDA_SPP_PAYLOAD_OK)
            << QList<qint64> { 8, 0xFFFFFFFF, 55, 55, 0, 0, 0 } << QByteArray("x");
        QTest::newRow("received, header only")
            << 0 << rx << int(VARDA_SPP_PAYLOAD_OK) << QList<qint64> { 8, 0x01020304, -87, -118, 3, 0x81, 1 }
            << QByteArray();
        QTest::newRow("received, 6 bytes: rssi there, flags missing")
            << 0 << rx.left(6) << int(VARDA_SPP_PAYLOAD_SHORT)
            << QList<qint64> { 8, 0x01020304, -87, -118, 0, 0, 0 } << QByteArray();
        QTest::newRow("received, empty") << 0 << QByteArray() << int(VARDA_SPP_PAYLOAD_SHORT)
                                         << QList<qint64> { 8, 0, -200, -200, 0, 0, 0 } << QByteArray();
        QTest::newRow("transmit request")
            << 1 << QByteArray("\x01pkt") << int(VARDA_SPP_PAYLOAD_OK)
            << QList<qint64> { 1, 0xFFFFFFFF, 255, 255, 0, 1, 1 } << QByteArray("pkt");
        QTest::newRow("local packet, flag clear")
            << 2 << QByteArray("\x02pkt") << int(VARDA_SPP_PAYLOAD_OK)
            << QList<qint64> { 1, 0xFFFFFFFF, 255, 255, 0, 2, 0 } << QByteArray("pkt");
        QTest::newRow("local packet, empty")
            << 2 << QByteArray() << int(VARDA_SPP_PAYLOAD_SHORT)
            << QList<qint64> { 1, 0xFFFFFFFF, 255, 255, 0, 0, 0 } << QByteArray();
        QTest::newRow("command reply")
            << 3 << QByteArray("\x01ok") << int(VARDA_SPP_PAYLOAD_OK) << none << QByteArray("\x01ok");
        QTest::newRow("unknown type") << 4 << QByteArray("\x01ok") << int(VARDA_SPP_PAYLOAD_UNKNOWN_TYPE)
                                      << none << QByteArray("\x01ok");
    }

    void split()
    {
        QFETCH(int, type);
        QFETCH(QByteArray, bytes);
        QFETCH(int, result);
        QFETCH(QList<qint64>, fields);
        QFETCH(QByteArray, payload);
        // A copy of its own on the heap, so that a read past its end is caught by ASan.
        std::unique_ptr<uint8_t[]> d(new uint8_t[size_t(qMax(1, bytes.size()))]);
        memcpy(d.get(), bytes.constData(), size_t(bytes.size()));
        varda_spp_payload_t out;
        QCOMPARE(int(varda_spp_split_payload(uint8_t(type), d.get(), uint16_t(bytes.size()), &out)), result);
        QCOMPARE(int(out.type), type);
        const QList<qint64> got { out.header_len, out.toh_us, out.rssi_dbm, out.noise_dbm, out.errors,
            out.varda_flags, out.extension };
        QCOMPARE(got, fields);
        QVERIFY(out.payload != nullptr);
        QCOMPARE(QByteArray(reinterpret_cast<const char *>(out.payload), out.payload_len), payload);
    }

    // A null pointer with a length reads nothing.
    void noData()
    {
        varda_spp_payload_t out;
        QCOMPARE(varda_spp_split_payload(SPP_TYPE_RX, nullptr, 20, &out), VARDA_SPP_PAYLOAD_NO_DATA);
        QCOMPARE(out.payload_len, quint16(0));
        QVERIFY(out.payload != nullptr);
        QVERIFY(!out.extension);
        QCOMPARE(varda_spp_split_payload(SPP_TYPE_CMD, nullptr, 0, &out), VARDA_SPP_PAYLOAD_OK);
    }

    void levels_data()
    {
        QTest::addColumn<int>("dbm");
        QTest::addColumn<int>("value");
        QTest::newRow("typical") << -87 << 113;
        QTest::newRow("zero") << -200 << 0;
        QTest::newRow("below the byte") << -250 << 0;
        QTest::newRow("above the byte") << 80 << 255;
    }

    // dBm to the byte on the wire and back, clamped to what a byte holds.
    void levels()
    {
        QFETCH(int, dbm);
        QFETCH(int, value);
        QCOMPARE(int(vrd_dbm_to_value(dbm)), value);
        QCOMPARE(vrd_dbm(uint8_t(value)), qBound(-200, dbm, 55));
    }
};

QTEST_APPLESS_MAIN(tst_SppPayload)
#include "tst_spp_payload.moc"
