#include <QtTest>

#include <string.h>

#include "crc_ccitt.h"
#include "reference_frames.h"
#include "varda_packets.h"

class tst_CrcCcitt : public QObject
{
    Q_OBJECT
private slots:
    void crc_data()
    {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<quint16>("expected");
        // Catalogue check value of this parameter set.
        QTest::newRow("check value") << QByteArray("123456789") << quint16(0x906E);
        QTest::newRow("empty") << QByteArray() << quint16(0x0000);
        // Reaches every entry of the table; near the largest 16-bit length.
        const QByteArray large = reference::pattern(65533, 11);
        QTest::newRow("65533 bytes") << large
                                     << qChecksum(large.constData(), uint(large.size()), Qt::ChecksumIso3309);
    }
    void crc()
    {
        QFETCH(QByteArray, input);
        QFETCH(quint16, expected);
        QCOMPARE(crc_ccitt(reinterpret_cast<const uint8_t *>(input.constData()), uint16_t(input.size())),
            expected);
        uint16_t chained = 0xFFFF;
        for (char c : input)
            chained = crc_ccitt_byte(uint8_t(c), chained);
        QCOMPARE(uint16_t(chained ^ 0xFFFF), expected);
    }

    // Only the fields with an unknown-value marker are set; see the packed records for the order.
    void packetInits()
    {
        rx_pkt_t rx;
        memset(&rx, 0xAA, sizeof rx);
        rx_pkt_init(&rx);
        QCOMPARE(QByteArray(reinterpret_cast<const char *>(&rx), 16),
            QByteArray::fromHex("0000 AA AAAAAAAA FFFFFFFF FF FF 00 00 AA"));
        tx_pkt_t tx;
        memset(&tx, 0xAA, sizeof tx);
        tx_pkt_init(&tx);
        QCOMPARE(QByteArray(reinterpret_cast<const char *>(&tx), 5), QByteArray::fromHex("0000 00 00 AA"));
    }
};

QTEST_APPLESS_MAIN(tst_CrcCcitt)
#include "tst_crc_ccitt.moc"
