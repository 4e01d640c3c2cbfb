#include <QtTest>

#include "crc_ccitt.h"
#include "reference_frames.h"

// Table entry computed bit by bit from the reflected polynomial.
static uint16_t bitwiseEntry(uint8_t index)
{
    uint16_t crc = index;
    for (int bit = 0; bit < 8; bit++)
        crc = (crc & 1) ? uint16_t((crc >> 1) ^ 0x8408) : uint16_t(crc >> 1);
    return crc;
}

static uint16_t crcOf(const QByteArray &bytes)
{
    return crc_ccitt(reinterpret_cast<const uint8_t *>(bytes.constData()), uint16_t(bytes.size()));
}

class tst_CrcCcitt : public QObject
{
    Q_OBJECT
private slots:
    void crc_data();
    void crc();
    void tableEntries_data();
    void tableEntries();
    void wholeTableIsReflected1021();
};

void tst_CrcCcitt::crc_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<quint16>("expected");
    // Catalogue check value of this parameter set.
    QTest::newRow("check value") << QByteArray("123456789") << quint16(0x906E);
    QTest::newRow("empty") << QByteArray() << quint16(0x0000);
    const QByteArray others[] = { QByteArray(1, '\0'), QByteArray(1, '\xFF'),
        QByteArray("LA1ABC-5 says hello"), reference::pattern(257, 3), reference::pattern(65533, 11) };
    for (const QByteArray &input : others)
        QTest::newRow(
            qPrintable(QString("%1 bytes from 0x%2").arg(input.size()).arg(uint8_t(input.at(0)), 0, 16)))
            << input << qChecksum(input.constData(), uint(input.size()), Qt::ChecksumIso3309);
}

// The whole form, the chained form, and the residue: the CRC run over the
// data and its stored little-endian CRC is the constant 0x0F47.
void tst_CrcCcitt::crc()
{
    QFETCH(QByteArray, input);
    QFETCH(quint16, expected);
    QCOMPARE(crcOf(input), expected);

    uint16_t chained = 0xFFFF;
    for (char c : input)
        chained = crc_ccitt_byte(uint8_t(c), chained);
    QCOMPARE(uint16_t(chained ^ 0xFFFF), expected);

    const QByteArray sealed = input + char(expected & 0xFF) + char(expected >> 8);
    QCOMPARE(crcOf(sealed), uint16_t(0x0F47));
}

void tst_CrcCcitt::tableEntries_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<quint16>("expected");
    QTest::newRow("0") << 0 << quint16(0x0000);
    QTest::newRow("1") << 1 << quint16(0x1189);
    QTest::newRow("2") << 2 << quint16(0x2312);
    QTest::newRow("3") << 3 << quint16(0x329B);
    QTest::newRow("128") << 128 << quint16(0x8408);
}

void tst_CrcCcitt::tableEntries()
{
    QFETCH(int, index);
    QFETCH(quint16, expected);
    QCOMPARE(crc_ccitt_table[index], expected);
}

void tst_CrcCcitt::wholeTableIsReflected1021()
{
    for (int i = 0; i < 256; i++)
        QVERIFY2(crc_ccitt_table[i] == bitwiseEntry(uint8_t(i)), qPrintable(QString("entry %1").arg(i)));
}

QTEST_APPLESS_MAIN(tst_CrcCcitt)
#include "tst_crc_ccitt.moc"
