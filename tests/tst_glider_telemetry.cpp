#include <QAbstractItemModelTester>
#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <QTextBrowser>
#include <QtTest>

#include <time.h>

#include "glider_harness.h"

// Payloads as the vehicle sends them reach the table, the log files and the
// log view of the panel. Times are checked in a fixed zone, UTC+3.
namespace
{

// lat 60.1234567, lon -24.9876543, 2023-11-14 22:13:20 UTC
const char POSTIME[] = "87 1C D6 23 C1 2F 1B F1 00 F1 53 65";
const char POS_LINE[] = "60.1234567;-24.9876543;1700000000";
// ctd 2748, sonar 291, csq 5, state 85, PENDING, (3), ON, OFF, rssi 150,
// uptime 86400, last command 7
const char HK_STATUS[] = "BC 3A 12 AD 7A 96 80 51 01 00 07";
const char PTH[] = "0E 94 27 F5 FD C6 11";

QByteArray repeated(const char *hex, int count)
{
    return bytes(hex).repeated(count);
}

} // namespace

class TestGliderTelemetry : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();

    void records_data();
    void records();
    void housekeepingRows();
    void logFilter_data();
    void logFilter();
    void dispatchLimits_data();
    void dispatchLimits();
    void maxSubpackets_data();
    void maxSubpackets();
    void unwritableLogDir();
    void clearButton();

private:
    void feed(const QByteArray &payload);
    QString value(const QString &property) const;
    QStringList column(int col) const;
    QStringList fileLines(const QString &name) const;
    QStringList viewLines() const;

    GliderInTempHome *m_panel = nullptr;
    Glider *m_glider = nullptr;
    QAbstractItemModelTester *m_tester = nullptr;
};

void TestGliderTelemetry::initTestCase()
{
    qputenv("TZ", "XST-3");
    tzset();
    captureDebugLines();
}

void TestGliderTelemetry::init()
{
    m_panel = new GliderInTempHome;
    m_glider = m_panel->glider();
    QAbstractItemModel *model = m_glider->findChild<QTableView *>("telemetryTableView")->model();
    m_tester = new QAbstractItemModelTester(model, QAbstractItemModelTester::FailureReportingMode::QtTest);
}

void TestGliderTelemetry::cleanup()
{
    delete m_tester;
    delete m_panel;
}

void TestGliderTelemetry::feed(const QByteArray &payload)
{
    // An exact-size copy, so that a read past the end shows under a sanitizer.
    QVector<uint8_t> copy(payload.begin(), payload.end());
    m_glider->handleData(copy.constData(), uint16_t(copy.size()));
}

QStringList TestGliderTelemetry::column(int col) const
{
    const QAbstractItemModel *model = m_glider->findChild<QTableView *>("telemetryTableView")->model();
    QStringList texts;
    for (int row = 0; row < model->rowCount(); row++)
        texts << model->index(row, col).data().toString();
    return texts;
}

QString TestGliderTelemetry::value(const QString &property) const
{
    const int row = column(0).indexOf(property);
    return row < 0 ? QString("<missing>") : column(1).at(row);
}

QStringList TestGliderTelemetry::fileLines(const QString &name) const
{
    QFile file(m_panel->logDir() + "/" + name);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList lines = QString::fromUtf8(file.readAll()).split("\r\n");
    if (lines.last().isEmpty())
        lines.removeLast();
    return lines;
}

QStringList TestGliderTelemetry::viewLines() const
{
    const QString text = m_glider->findChild<QTextBrowser *>("logView")->toPlainText();
    return text.isEmpty() ? QStringList() : text.split('\n');
}

void TestGliderTelemetry::records_data()
{
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QStringList>("rows"); // "Property=Value", a subset
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("line"); // empty: no line at all

    QTest::newRow("housekeeping")
        << bytes("03") + bytes(POSTIME) + bytes(HK_STATUS)
        << QStringList { "Sonar power=", "Time=01:13:20 15.11.2023" } << "telemetry.txt"
        << QString("housekeeping;2748;291;5;85;PENDING;;ON;OFF;-50;86400;%1;7").arg(POS_LINE);
    QTest::newRow("housekeeping2") << bytes("09 4C 64 65 20 F1 00 96 80 51 01 00 07")
                                   << QStringList { "Iridium CSQ=4", "Iridium state=9", "CTD power=ON",
                                          "Sonar power=PENDING", "Pell power=ON", "Iridium power=OFF",
                                          "CTD log OK=1", "Sonar log OK=0", "O2 log OK=1", "pCO2 log OK=0",
                                          "Licor log OK=0", "PTH log OK=1", "Logging OK=1",
                                          "Log size (KiB)=123456", "Pell RSSI=-50", "Uptime=86400",
                                          "Last cmd. seq.=7" }
                                   << "telemetry.txt"
                                   << "housekeeping2;4;9;ON;PENDING;ON;OFF;1;0;1;0;0;1;1;123456;-50;86400;7";
    QTest::newRow("housekeeping2 extremes")
        << bytes("09 FF FF FF FF FF FF FF FF FF FF FF FF")
        << QStringList { "Log size (KiB)=33554431", "Pell RSSI=55" } << "telemetry.txt"
        << "housekeeping2;7;127;;;ON;ON;1;1;1;1;1;1;1;33554431;55;4294967295;255";
    QTest::newRow("ctd") << bytes("04 02 01 B8 0D 33 89 10 27 00 D2 04 05 00 20 4E")
                         << QStringList { "CTD sample #=258", "CTD salinity=35.12", "CTD temperature=15.123",
                                "CTD pressure=100.00", "CTD turbidity=12.34", "CTD fluorescence=0.05",
                                "CTD sound velocity=1500" }
                         << "telemetry.txt"
                         << "ctd;258;35.12;15.123;100.00;12.34;0.05;1500.00";
    QTest::newRow("postime") << bytes("0F") + bytes(POSTIME)
                             << QStringList { "Lat=60.1234567", "Lon=-24.9876543",
                                    "Time=22:13:20 14.11.2023" }
                             << "telemetry.txt" << QString("postime;%1").arg(POS_LINE);
    QTest::newRow("o2") << bytes("0B B4 61 94 26 F4 01")
                        << QStringList { "O2 concentration=250.12", "O2 air saturation=98.76",
                               "O2 temperature=-5.00" }
                        << "telemetry.txt"
                        << "o2;250.12;98.76;-5.00";
    QTest::newRow("pco2") << bytes("11 90 01 00 39 30 00 B8 0B 39 30 D2 04 38 00")
                          << QStringList { "CO2 pressure (uatm)=400", "CO2 (mg/l)=123.45",
                                 "CO2 temperature=20.00", "CO2 CalPhase (deg)=12.345", "CO2 C1Amp (mV)=123.4",
                                 "CO2 C2Amp (mV)=5.6" }
                          << "telemetry.txt"
                          << "pco2;400;123.45;20.00";
    QTest::newRow("pco2 large") << bytes("11 FF FF FF 00 00 00 E8 03 00 00 00 00 00 00")
                                << QStringList { "CO2 pressure (uatm)=1.67772e+07", "CO2 (mg/l)=0.00" }
                                << "telemetry.txt"
                                << "pco2;16777215;0.00;0.00";
    QTest::newRow("light") << bytes("10 00 00 08") << QStringList { "Light (µV)=1000.0" } << "telemetry.txt"
                           << "light;131072.0";
    QTest::newRow("light negative") << bytes("10 00 00 80") << QStringList { "Light (µV)=-16000.0" }
                                    << "telemetry.txt"
                                    << "light;-2097152.0";
    QTest::newRow("pth") << bytes(
        PTH) << QStringList { "PTH pressure=1013.2", "PTH temperature=-5.23", "PTH humidity=45.50" }
                         << "telemetry.txt"
                         << "pth;1013.2;-5.23;45.50";
    QTest::newRow("sonar report") << bytes("06") + bytes(POSTIME) + bytes("D3 01") << QStringList()
                                  << "event.txt"
                                  << QString("sonar_report;RUN SEQUENCE 3;COMPLETE;%1").arg(POS_LINE);
    QTest::newRow("sonar report, no command")
        << bytes("06") + bytes(POSTIME) + bytes("05 00") << QStringList() << "event.txt"
        << QString("sonar_report;;STARTED;%1").arg(POS_LINE);
    QTest::newRow("sonar report, bad state")
        << bytes("06") + bytes(POSTIME) + bytes("D3 02") << QStringList() << "event.txt" << QString();
    QTest::newRow("water column") << bytes("07 00 7F 80 FF 01 FE 10 F0") << QStringList() << "event.txt"
                                  << "sonar_wcol8;0;127;-128;-1;1;-2;16;-16";
    QTest::newRow("column describer") << bytes("08 01 05 3C 9A") << QStringList() << "event.txt"
                                      << "sonar_desc;1;5;60;10;9";
}

void TestGliderTelemetry::records()
{
    QFETCH(QByteArray, payload);
    QFETCH(QStringList, rows);
    QFETCH(QString, file);
    QFETCH(QString, line);

    feed(payload);
    for (const QString &row : rows) {
        const QString property = row.section('=', 0, 0);
        QCOMPARE(property + "=" + value(property), row);
    }
    QCOMPARE(fileLines(file), line.isEmpty() ? QStringList() : QStringList { line });
    const QString other = file == "event.txt" ? "telemetry.txt" : "event.txt";
    QVERIFY(!QFile::exists(m_panel->logDir() + "/" + other));
}

void TestGliderTelemetry::housekeepingRows()
{
    const QStringList names { "CTD samples", "Sonar samples", "Iridium CSQ", "Iridium state", "CTD power",
        "Sonar power", "Pell power", "Iridium power", "Pell RSSI", "Uptime", "Lat", "Lon", "Time",
        "Last cmd. seq." };
    const QByteArray hk = bytes("03") + bytes(POSTIME) + bytes(HK_STATUS);
    feed(hk);
    QCOMPARE(column(0), names);
    QCOMPARE(debugLines().filter("New item").size(), names.size());
    QCOMPARE(debugLines().filter("New item").first(), QString("New item \"CTD samples\""));

    debugLines().clear();
    QByteArray second = hk;
    second[13] = char(0x01); // ctd_samples 1, sonar_samples kept
    second[14] = char(0x30);
    feed(second);
    QCOMPARE(column(0), names);
    QVERIFY(debugLines().filter("New item").isEmpty());
    QCOMPARE(value("CTD samples"), QString("1"));

    feed(bytes("0F") + bytes(POSTIME));
    QCOMPARE(column(0), names);
    QCOMPARE(value("Time"), QString("22:13:20 14.11.2023"));
    QCOMPARE(fileLines("telemetry.txt").size(), 3);
}

void TestGliderTelemetry::logFilter_data()
{
    QTest::addColumn<bool>("filter");
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QString>("file");
    QTest::addColumn<bool>("shown");
    const QByteArray sonar = bytes("06") + bytes(POSTIME) + bytes("D3 01");
    QTest::newRow("telemetry, filtered") << true << bytes(PTH) << "telemetry.txt" << false;
    QTest::newRow("telemetry, shown") << false << bytes(PTH) << "telemetry.txt" << true;
    QTest::newRow("event, filter on") << true << sonar << "event.txt" << true;
    QTest::newRow("event, filter off") << false << sonar << "event.txt" << true;
}

void TestGliderTelemetry::logFilter()
{
    QFETCH(bool, filter);
    QFETCH(QByteArray, payload);
    QFETCH(QString, file);
    QFETCH(bool, shown);

    QCheckBox *check = m_glider->findChild<QCheckBox *>("ignoreHousekeepingCheck");
    QVERIFY(check->isChecked());
    check->setChecked(filter);
    feed(payload);
    QCOMPARE(fileLines(file).size(), 1);
    QCOMPARE(viewLines(), shown ? fileLines(file) : QStringList());
    QVERIFY(!column(0).isEmpty() || file == "event.txt");
}

void TestGliderTelemetry::dispatchLimits_data()
{
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QStringList>("debug"); // without the "New item" lines
    QTest::addColumn<int>("rows");

    QTest::newRow("empty") << QByteArray() << QStringList { "Got 0 packets" } << 0;
    QTest::newRow("record cut short")
        << bytes("03") + bytes(POSTIME) + bytes(HK_STATUS).left(10)
        << QStringList { "In packet 1 of type HOUSEKEEPING size is 23 but buffer space in only 23" } << 0;
    QTest::newRow("nameless type cut short")
        << bytes("01 00") << QStringList { "In packet 1 of type  size is 255 but buffer space in only 2" }
        << 0;
    QTest::newRow("invalid third type")
        << bytes(PTH) + bytes(PTH) + bytes("20 01")
        << QStringList { "Subpacket 1 type PTH using 6 (+1) of 16 bytes",
               "Subpacket 2 type PTH using 6 (+1) of 9 bytes", "32", "Invalid type, not parsing" }
        << 0;
    QTest::newRow("data skipped") << bytes("00") + QByteArray(255, '\x55')
                                  << QStringList { "Subpacket 1 type DATA using 255 (+1) of 256 bytes",
                                         "Got 1 packets" }
                                  << 0;
    QTest::newRow("unknown types") << bytes("02 01 02 03 0C 00 00 00 00 00 00 00 00 0D 00 00") + bytes(PTH)
                                   << QStringList { "Subpacket 1 type COMMAND using 3 (+1) of 23 bytes",
                                          "Subpacket 2 type PCO2 using 8 (+1) of 19 bytes",
                                          "Subpacket 3 type LICOR using 2 (+1) of 10 bytes",
                                          "Subpacket 4 type PTH using 6 (+1) of 7 bytes", "Got 4 packets",
                                          "Unknown type", "Unknown type", "Unknown type" }
                                   << 3;
}

void TestGliderTelemetry::dispatchLimits()
{
    QFETCH(QByteArray, payload);
    QFETCH(QStringList, debug);
    QFETCH(int, rows);

    feed(payload);
    QStringList lines = debugLines();
    lines.erase(
        std::remove_if(lines.begin(), lines.end(), [](const QString &l) { return l.startsWith("New item"); }),
        lines.end());
    QCOMPARE(lines, debug);
    QCOMPARE(column(0).size(), rows);
    QCOMPARE(fileLines("telemetry.txt").size(), rows ? 1 : 0);
}

void TestGliderTelemetry::maxSubpackets_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("last");
    QTest::addColumn<int>("logged");
    QTest::newRow("99") << 99 << "New item \"PTH humidity\"" << 99;
    QTest::newRow("100") << 100 << "Reached max packets with remaining 0 bytes" << 0;
    QTest::newRow("101") << 101 << "Reached max packets with remaining 7 bytes" << 0;
}

void TestGliderTelemetry::maxSubpackets()
{
    QFETCH(int, count);
    QFETCH(QString, last);
    QFETCH(int, logged);
    feed(repeated(PTH, count));
    QCOMPARE(debugLines().last(), last);
    QCOMPARE(fileLines("telemetry.txt").size(), logged);
}

void TestGliderTelemetry::unwritableLogDir()
{
    const QString dir = m_panel->logDir();
    QFile::setPermissions(dir, QFile::ReadOwner | QFile::ExeOwner);
    const bool privileged = QFile(dir + "/probe").open(QIODevice::WriteOnly);
    if (privileged) { // permissions do not bind us: block the file itself
        QFile::remove(dir + "/probe");
        QVERIFY(QDir(dir).mkdir("telemetry.txt"));
    }
    m_glider->findChild<QCheckBox *>("ignoreHousekeepingCheck")->setChecked(false);

    feed(bytes(PTH));
    QVERIFY(debugLines().contains("Failed to open log"));
    QCOMPARE(value("PTH pressure"), QString("1013.2"));
    QCOMPARE(viewLines(), QStringList { "pth;1013.2;-5.23;45.50" });

    QFile::setPermissions(dir, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QDir(dir).rmdir("telemetry.txt");
    feed(bytes(PTH));
    QCOMPARE(fileLines("telemetry.txt"), QStringList { "pth;1013.2;-5.23;45.50" });
}

void TestGliderTelemetry::clearButton()
{
    feed(bytes(PTH));
    QCOMPARE(column(0).size(), 3);
    QTest::mouseClick(m_glider->findChild<QPushButton *>("telemetryTableClear"), Qt::LeftButton);
    QCOMPARE(column(0).size(), 0);
    const QAbstractItemModel *model = m_glider->findChild<QTableView *>("telemetryTableView")->model();
    QCOMPARE(model->headerData(0, Qt::Horizontal).toString(), QString("Property"));
    QCOMPARE(model->headerData(1, Qt::Horizontal).toString(), QString("Value"));
    feed(bytes(PTH));
    QCOMPARE(column(0).size(), 3);
}

QTEST_MAIN(TestGliderTelemetry)
#include "tst_glider_telemetry.moc"
