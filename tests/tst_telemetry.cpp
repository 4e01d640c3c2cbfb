#include <QtTest>

#include <string.h>

#include "sonar.h"
#include "telemetry.h"

// Sonar command text and interval codes.
class TestTelemetry : public QObject
{
    Q_OBJECT
private slots:
    void sonarText_data();
    void sonarText();
    void interval_data();
    void interval();
};

void TestTelemetry::sonarText_data()
{
    QTest::addColumn<int>("command");
    QTest::addColumn<int>("size");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("length");
    QTest::newRow("run sequence 3") << 0xD3 << 32 << QByteArray("RUN SEQUENCE 3") << 14;
    QTest::newRow("run ensemble 5") << 0xE5 << 32 << QByteArray("RUN ENSEMBLE 5") << 14;
    QTest::newRow("ping step 15") << 0x8F << 32 << QByteArray("PING STEP 15") << 12;
    QTest::newRow("unused kind") << 0xB0 << 32 << QByteArray("PING  0") << 7;
    QTest::newRow("sleep") << 0x00 << 32 << QByteArray("SLEEP") << 5;
    QTest::newRow("no command") << 0x05 << 32 << QByteArray("") << 0;
    QTest::newRow("cut short") << 0xD3 << 4 << QByteArray("RUN") << 14;
}

void TestTelemetry::sonarText()
{
    QFETCH(int, command);
    QFETCH(int, size);
    QFETCH(QByteArray, text);
    QFETCH(int, length);
    char buffer[40];
    memset(buffer, 0, sizeof(buffer));
    QCOMPARE(int(sonar_print_command(buffer, uint16_t(size), uint8_t(command))), length);
    QCOMPARE(QByteArray(buffer), text);
    QCOMPARE(buffer[size], '\0'); // nothing written past the buffer given
}

void TestTelemetry::interval_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<uint>("msec");
    QTest::newRow("0") << 0 << 0u;
    QTest::newRow("1 s") << 1 << 1000u;
    QTest::newRow("60 s") << 60 << 60000u;
    QTest::newRow("1 min") << 61 << 60000u;
    QTest::newRow("60 min") << 120 << 3600000u;
    QTest::newRow("1 h") << 121 << 3600000u;
    QTest::newRow("80 h") << 200 << 288000000u;
    QTest::newRow("135 h") << 255 << 486000000u;
}

void TestTelemetry::interval()
{
    QFETCH(int, code);
    QFETCH(uint, msec);
    QCOMPARE(cmd_interval_to_msec(uint8_t(code)), msec);
}

QTEST_APPLESS_MAIN(TestTelemetry)
#include "tst_telemetry.moc"
