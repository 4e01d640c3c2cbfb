#include <QtTest>

#include <functional>

#include "nmea.h"
#include "telemetry.h"

// Sentences below are as GPS receivers print them; their checksums were
// worked out independently of this code, and so were the expected values:
// 4717.11437 N is 47 * 60 + 17.11437 = 2837.11437 arc minutes = 283711437.

using SentenceHandler = std::function<void(uint8_t count, char **fields)>;

static void dispatch(uint8_t count, char **fields, void *arg)
{
    (*static_cast<SentenceHandler *>(arg))(count, fields);
}

// Feeds bytes to a fresh reader, chunk bytes at a time (all at once for 0).
static void feed(const QByteArray &bytes, uint8_t flags, SentenceHandler handler, int chunk = 0)
{
    nmeaprs ctx;
    nmea_init(&ctx, dispatch, &handler);
    nmea_set_flag(&ctx, flags);
    const int step = chunk > 0 ? chunk : qMax(1, bytes.size());
    for (int i = 0; i < bytes.size(); i += step) {
        const QByteArray part = bytes.mid(i, step);
        nmea_parse(&ctx, reinterpret_cast<const uint8_t *>(part.constData()), part.size());
    }
}

static QStringList sentencesIn(const QByteArray &bytes, uint8_t flags, int chunk = 0)
{
    QStringList sentences;
    feed(
        bytes, flags,
        [&](uint8_t count, char **fields) {
            QStringList f;
            for (int i = 0; i < count; i++)
                f << QString::fromLatin1(fields[i]);
            sentences << f.join('|');
        },
        chunk);
    return sentences;
}

static QString describe(const nmea_rmc &r)
{
    return QString("utc %1 valid %2 lat %3 lon %4 sog %5 cog %6 date %7.%8.%9 var %10")
        .arg(r.utc)
        .arg(r.valid)
        .arg(r.latitude)
        .arg(r.longitude)
        .arg(r.sog)
        .arg(r.cog)
        .arg(r.day)
        .arg(r.month)
        .arg(r.year)
        .arg(r.var);
}

static QString describe(const nmea_gga &g)
{
    return QString("utc %1 lat %2 lon %3 fix %4 sats %5 hdop %6 alt %7 sep %8 age %9 id %10")
        .arg(g.utc)
        .arg(g.latitude)
        .arg(g.longitude)
        .arg(g.fix)
        .arg(g.sats)
        .arg(g.hdop)
        .arg(g.altitude)
        .arg(g.geoid_sep)
        .arg(g.dgps_age)
        .arg(g.dgps_id);
}

static nmea_rmc rmc(uint32_t utc, uint8_t valid, int32_t lat, int32_t lon, uint16_t sog, uint16_t cog,
    uint8_t day, uint8_t month, uint8_t year, int16_t var)
{
    return nmea_rmc { utc, valid, lat, lon, sog, cog, day, month, year, var };
}

static nmea_gga gga(uint32_t utc, int32_t lat, int32_t lon, uint8_t fix, uint8_t sats, uint16_t hdop,
    int32_t alt, int16_t sep, uint16_t age, uint16_t id)
{
    return nmea_gga { utc, lat, lon, fix, sats, hdop, alt, sep, age, id };
}

static const nmea_gga GGA_MISSING = gga(NMEA_UTC_MISSING, NMEA_POS_MISSING, NMEA_POS_MISSING, 255, 255, 65535,
    NMEA_S32_MISSING, NMEA_S16_MISSING, 65535, 65535);

// Unpacks the one sentence in text with the reader's checksum check off.
template <typename Record>
static int unpack(
    const QByteArray &text, int (*unpacker)(uint8_t, const char *const *, Record *), Record *out)
{
    int code = -1;
    feed(text + "\r\n", 0, [&](uint8_t count, char **fields) { code = unpacker(count, fields, out); });
    return code;
}

static QByteArray fieldsOf(int count)
{
    return "GPXXX" + QByteArray(count - 1, ',');
}

class TstNmea : public QObject
{
    Q_OBJECT
private slots:
    void checksum_data();
    void checksum();
    void reader_data();
    void reader();
    void handleBuffer_data();
    void handleBuffer();
    void atou_data();
    void atou();
    void atofpd_data();
    void atofpd();
    void fpdtoa_data();
    void fpdtoa();
    void rmcUnpack_data();
    void rmcUnpack();
    void ggaUnpack_data();
    void ggaUnpack();
    void parametricPack_data();
    void parametricPack();
    void ggaPack_data();
    void ggaPack();
    void ggaRoundTrip_data();
    void ggaRoundTrip();
    void unixTimestamp_data();
    void unixTimestamp();
    void postime_data();
    void postime();
};

void TstNmea::checksum_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("sum");
    QTest::newRow("with $") << QByteArray(
        "$GPGGA,092725.00,4717.11399,N,00833.91590,E,1,08,1.01,499.6,M,48.0,M,,*5B")
                            << 0x5B;
    QTest::newRow("without $") << QByteArray("GPRMC,,V,,,,,,,,,,N*53") << 0x53;
    QTest::newRow("with !") << QByteArray("!GPRMC,,V,,,,,,,,,,N") << 0x53;
    QTest::newRow("only one start skipped") << QByteArray("$$A") << ('$' ^ 'A');
    QTest::newRow("empty") << QByteArray("") << 0;
}

void TstNmea::checksum()
{
    QFETCH(QByteArray, text);
    QFETCH(int, sum);
    QCOMPARE(int(nmea_checksum(text.constData())), sum);
}

void TstNmea::reader_data()
{
    QTest::addColumn<QByteArray>("stream");
    QTest::addColumn<int>("flags");
    QTest::addColumn<QStringList>("sentences");

    const QByteArray gga = "$GPGGA,092725.00,4717.11399,N,00833.91590,E,1,08,1.01,499.6,M,48.0,M,,*5B\r\n";
    const QString ggaFields = "GPGGA|092725.00|4717.11399|N|00833.91590|E|1|08|1.01|499.6|M|48.0|M|||5B";
    const QByteArray txt = "$GPTXT,01,01,02,ANTSTATUS=OK*3B\r\n";
    const QString txtFields = "GPTXT|01|01|02|ANTSTATUS=OK|3B";

    QTest::newRow("checked") << gga << 1 << QStringList { ggaFields };
    QTest::newRow("lower-case checksum fails") << QByteArray(gga).replace("*5B", "*5b") << 1 << QStringList();
    QTest::newRow("lower-case checksum unchecked") << QByteArray(gga).replace("*5B", "*5b") << 0
                                                   << QStringList { QString(ggaFields).replace("5B", "5b") };
    QTest::newRow("wrong checksum") << QByteArray(gga).replace("*5B", "*5C") << 1 << QStringList();
    QTest::newRow("no checksum, checked")
        << QByteArray("$GPTXT,01,01,02,ANTSTATUS=OK\r\n") << 1 << QStringList();
    QTest::newRow("no checksum, unchecked") << QByteArray("$GPTXT,01,01,02,ANTSTATUS=OK\r\n") << 0
                                            << QStringList { "GPTXT|01|01|02|ANTSTATUS=OK" };
    QTest::newRow("bad then good") << QByteArray(gga).replace("*5B", "*00") + txt << 1
                                   << QStringList { txtFields };
    QTest::newRow("LF only and CR only")
        << QByteArray(txt).replace("\r", "") + QByteArray(gga).replace("\n", "") << 1
        << QStringList { txtFields, ggaFields };
    QTest::newRow("AIS start character")
        << QByteArray("!GPTXT,01,01,02,ANTSTATUS=OK*3B\n") << 1 << QStringList { txtFields };
    QTest::newRow("noise before the start")
        << QByteArray("\x00\xff garbage") + txt << 1 << QStringList { txtFields };
    QTest::newRow("start restarts a sentence")
        << QByteArray("$GPGGA,0927") + txt << 1 << QStringList { txtFields };
    QTest::newRow("no line end yet") << QByteArray(txt).left(txt.size() - 2) << 1 << QStringList();
    QTest::newRow("empty lines") << QByteArray("\r\n\r\n$\r\n") << 0 << QStringList();
    QTest::newRow("29 fields") << fieldsOf(29) + "\n" << 0 << QStringList { "GPXXX" + QString(28, '|') };
    QTest::newRow("30 fields") << fieldsOf(30) + "\n" << 0 << QStringList();
    QTest::newRow("overlong, unchecked: cut at 256") << "$GPTXT," + QByteArray(300, 'X') + "\r\n"
                                                     << 0 << QStringList { "GPTXT|" + QString(250, 'X') };
    QTest::newRow("overlong, checked: checksum cut off") << "$GPTXT," + QByteArray(300, 'X') + "*00\r\n"
                                                         << 1 << QStringList();
    QTest::newRow("reader recovers after overlong")
        << "$GPTXT," + QByteArray(300, 'X') + "\r\n" + txt << 1 << QStringList { txtFields };
}

void TstNmea::reader()
{
    QFETCH(QByteArray, stream);
    QFETCH(int, flags);
    QFETCH(QStringList, sentences);
    QCOMPARE(sentencesIn(stream, uint8_t(flags)), sentences);
    QCOMPARE(sentencesIn(stream, uint8_t(flags), 1), sentences);
    QCOMPARE(sentencesIn(stream, uint8_t(flags), 7), sentences);
}

void TstNmea::handleBuffer_data()
{
    QTest::addColumn<QByteArray>("buffer");
    QTest::addColumn<int>("flags");
    QTest::addColumn<int>("result");
    QTest::addColumn<int>("fields");
    QTest::newRow("checked") << QByteArray("GPRMC,,V,,,,,,,,,,N*53") << 1 << NMEA_OK << 14;
    QTest::newRow("lower case") << QByteArray("GPGGA,,,,,,,,,,,,,,*5b") << 1 << NMEA_ERR_CHECKSUM << 0;
    QTest::newRow("no star") << QByteArray("GPRMC,,V,,,,,,,,,,N") << 1 << NMEA_ERR_CHECKSUM << 0;
    QTest::newRow("star last") << QByteArray("GPRMC,,V,,,,,,,,,,N*") << 1 << NMEA_ERR_CHECKSUM << 0;
    QTest::newRow("one digit") << QByteArray("GPRMC,,V,,,,,,,,,,N*5") << 1 << NMEA_ERR_CHECKSUM << 0;
    QTest::newRow("unchecked") << QByteArray("GPRMC,,V,,,,,,,,,,N*00") << 0 << NMEA_OK << 14;
    QTest::newRow("29 fields") << fieldsOf(29) << 0 << NMEA_OK << 29;
    QTest::newRow("30 fields") << fieldsOf(30) << 0 << NMEA_ERR_TOO_MANY << 0;
    QTest::newRow("30 fields, checked") << fieldsOf(29) + "*4F" << 1 << NMEA_ERR_TOO_MANY << 0;
}

void TstNmea::handleBuffer()
{
    QFETCH(QByteArray, buffer);
    QFETCH(int, flags);
    QFETCH(int, result);
    QFETCH(int, fields);
    int seen = 0;
    SentenceHandler handler = [&](uint8_t count, char **) { seen = count; };
    nmeaprs ctx;
    nmea_init(&ctx, dispatch, &handler);
    nmea_set_flag(&ctx, 0x100 | flags); // only the low 8 bits count
    QCOMPARE(int(ctx.flags), flags);
    qstrcpy(ctx.buffer, buffer.constData());
    ctx.count = buffer.size();
    QCOMPARE(nmea_handle_buffer(&ctx), result);
    QCOMPARE(seen, fields);
    nmea_clear_flag(&ctx, NMEA_FLAG_CHECKSUM);
    QCOMPARE(int(ctx.flags), 0);
}

void TstNmea::atou_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("budget");
    QTest::addColumn<uint>("value");
    QTest::newRow("plain") << QByteArray("123") << 99 << 123u;
    QTest::newRow("budget") << QByteArray("123519") << 2 << 12u;
    QTest::newRow("leading zero") << QByteArray("08") << 99 << 8u;
    QTest::newRow("stops at non-digit") << QByteArray("12.7") << 99 << 12u;
    QTest::newRow("empty") << QByteArray("") << 99 << 0u;
    QTest::newRow("no digit") << QByteArray("x1") << 99 << 0u;
    QTest::newRow("zero budget") << QByteArray("7") << 0 << 0u;
    QTest::newRow("largest") << QByteArray("4294967295") << 99 << 4294967295u;
}

void TstNmea::atou()
{
    QFETCH(QByteArray, text);
    QFETCH(int, budget);
    QFETCH(uint, value);
    QCOMPARE(_atou(text.constData(), uint8_t(budget)), uint32_t(value));
}

void TstNmea::atofpd_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("budget");
    QTest::addColumn<int>("decimals");
    QTest::addColumn<int>("value");
    QTest::newRow("truncates") << QByteArray("12.3456") << 99 << 2 << 1234;
    QTest::newRow("pads") << QByteArray("0.5") << 99 << 3 << 500;
    QTest::newRow("negative with point") << QByteArray("-5.0") << 99 << 2 << -500;
    QTest::newRow("negative without point") << QByteArray("-5") << 99 << 2 << 500;
    QTest::newRow("plus") << QByteArray("+7.25") << 99 << 1 << 72;
    QTest::newRow("point only") << QByteArray("1.") << 99 << 2 << 100;
    QTest::newRow("no integer digits") << QByteArray("-.5") << 99 << 1 << -5;
    QTest::newRow("hours of a time") << QByteArray("123519.00") << 2 << 3 << 12000;
    QTest::newRow("seconds of a time") << QByteArray("19.25") << 99 << 3 << 19250;
    QTest::newRow("degrees of a latitude") << QByteArray("4717.11437") << 2 << 5 << 4700000;
    QTest::newRow("point spends the budget") << QByteArray("12.5") << 3 << 1 << 120;
    QTest::newRow("no decimals") << QByteArray("091202") << 2 << 0 << 9;
    QTest::newRow("empty") << QByteArray("") << 99 << 2 << 0;
    QTest::newRow("text") << QByteArray("abc") << 99 << 2 << 0;
}

void TstNmea::atofpd()
{
    QFETCH(QByteArray, text);
    QFETCH(int, budget);
    QFETCH(int, decimals);
    QFETCH(int, value);
    QCOMPARE(_atofpd(text.constData(), uint8_t(budget), uint8_t(decimals)), int32_t(value));
}

void TstNmea::fpdtoa_data()
{
    QTest::addColumn<uint>("value");
    QTest::addColumn<int>("decIn");
    QTest::addColumn<int>("decOut");
    QTest::addColumn<int>("minDigits");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("fewer decimals") << 12345u << 3 << 1 << 2 << QByteArray("12.3");
    QTest::newRow("zero padded") << 5u << 0 << 0 << 2 << QByteArray("05");
    QTest::newRow("zero") << 0u << 0 << 0 << 1 << QByteArray("0");
    QTest::newRow("rounds half up") << 12355u << 3 << 2 << 1 << QByteArray("12.36");
    QTest::newRow("rounds down") << 12354u << 3 << 2 << 1 << QByteArray("12.35");
    QTest::newRow("59.5 s without carry") << 59500u << 3 << 0 << 2 << QByteArray("60");
    QTest::newRow("59.499 s") << 59499u << 3 << 0 << 2 << QByteArray("59");
    QTest::newRow("rounds into the integer") << 999999u << 6 << 0 << 1 << QByteArray("1");
    QTest::newRow("more decimals") << 7u << 1 << 3 << 1 << QByteArray("0.700");
    QTest::newRow("integer with decimals") << 123u << 0 << 2 << 1 << QByteArray("123.00");
    QTest::newRow("padded fraction") << 1u << 2 << 2 << 3 << QByteArray("000.01");
    QTest::newRow("largest") << 4294967295u << 0 << 0 << 1 << QByteArray("4294967295");
    QTest::newRow("huge divisor") << 4294967295u << 30 << 0 << 1 << QByteArray("0");
}

void TstNmea::fpdtoa()
{
    QFETCH(uint, value);
    QFETCH(int, decIn);
    QFETCH(int, decOut);
    QFETCH(int, minDigits);
    QFETCH(QByteArray, text);
    char out[64];
    memset(out, '#', sizeof(out));
    const int len = _fpdtoa(value, uint8_t(decIn), uint8_t(decOut), uint8_t(minDigits), out);
    QCOMPARE(QByteArray(out, len), text);
    QCOMPARE(out[len], '#'); // no terminator
}

void TstNmea::rmcUnpack_data()
{
    QTest::addColumn<QByteArray>("sentence");
    QTest::addColumn<int>("result");
    QTest::addColumn<QString>("record");

    QTest::newRow("north-east, no variation")
        << QByteArray("$GPRMC,083559.00,A,4717.11437,N,00833.91522,E,0.004,77.52,091202,,,A*57") << 0
        << describe(rmc(30959000, 1, 283711437, 51391522, 0, 7752, 9, 12, 2, NMEA_S16_MISSING));
    // 15:30:12.250; 22 deg 54.56789' S; 43 deg 12.34567' W; variation 21.7 W
    QTest::newRow("south-west")
        << QByteArray("$GPRMC,153012.250,A,2254.56789,S,04312.34567,W,12.345,270.05,290224,21.7,W,D*27") << 0
        << describe(rmc(55812250, 1, -137456789, -259234567, 1234, 27005, 29, 2, 24, -2170));
    QTest::newRow("no fix") << QByteArray("$GPRMC,,V,,,,,,,,,,N*53") << 0
                            << describe(rmc(NMEA_UTC_MISSING, 0, NMEA_POS_MISSING, NMEA_POS_MISSING, 65535,
                                   65535, 255, 255, 255, NMEA_S16_MISSING));
    QTest::newRow("short fields") << QByteArray("$GPRMC,12351,AV,481,N,1131,W,5,,23039,3,E,A*00") << 0
                                  << describe(rmc(NMEA_UTC_MISSING, 255, NMEA_POS_MISSING, NMEA_POS_MISSING,
                                         500, 65535, 255, 255, 255, NMEA_S16_MISSING));
    QTest::newRow("variation east, status V")
        << QByteArray("$GPRMC,000000,V,0000.00000,N,00000.00000,E,,,010100,03.1,E,N*00") << 0
        << describe(rmc(0, 0, 0, 0, 65535, 65535, 1, 1, 0, 310));
    QTest::newRow("NMEA 2.0, no mode field")
        << QByteArray("$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W*6A") << 2
        << QString();
    QTest::newRow("a GGA sentence") << QByteArray(
        "$GPGGA,092725.00,4717.11399,N,00833.91590,E,1,08,1.01,499.6,M,48.0,M,,*5B")
                                    << 2 << QString();
}

void TstNmea::rmcUnpack()
{
    QFETCH(QByteArray, sentence);
    QFETCH(int, result);
    QFETCH(QString, record);
    nmea_rmc out;
    QCOMPARE(unpack(sentence, nmea_rmc_unpack, &out), result);
    if (result == NMEA_OK)
        QCOMPARE(describe(out), record);
}

void TstNmea::ggaUnpack_data()
{
    QTest::addColumn<QByteArray>("sentence");
    QTest::addColumn<int>("result");
    QTest::addColumn<QString>("record");

    QTest::newRow("north-east")
        << QByteArray("$GPGGA,092725.00,4717.11399,N,00833.91590,E,1,08,1.01,499.6,M,48.0,M,,*5B") << 0
        << describe(gga(34045000, 283711399, 51391590, 1, 8, 101, 49960, 4800, 65535, 65535));
    // 00:10:43; 33 deg 51.863' S; 151 deg 12.526' E; below the ellipsoid; DGPS
    QTest::newRow("south, negative heights, DGPS")
        << QByteArray("$GNGGA,001043.00,3351.86300,S,15112.52600,E,2,12,0.78,-12.3,M,-34.5,M,1.5,0131*43")
        << 0 << describe(gga(643000, -203186300, 907252600, 2, 12, 78, -1230, -3450, 15, 131));
    QTest::newRow("west") << QByteArray(
        "$GPGGA,181908.00,4042.76880,N,07400.36120,W,1,05,2.10,10.0,M,-32.8,M,,*52")
                          << 0
                          << describe(
                                 gga(65948000, 244276880, -444036120, 1, 5, 210, 1000, -3280, 65535, 65535));
    QTest::newRow("no fix") << QByteArray("$GPGGA,,,,,,0,00,99.99,,,,,,*48") << 0
                            << describe(gga(NMEA_UTC_MISSING, NMEA_POS_MISSING, NMEA_POS_MISSING, 0, 0, 9999,
                                   NMEA_S32_MISSING, NMEA_S16_MISSING, 65535, 65535));
    QTest::newRow("four-character longitude counts here")
        << QByteArray("$GPGGA,000000,481,N,1131,W,12,,,,,,,,*00") << 0
        << describe(gga(0, NMEA_POS_MISSING, -(113 * 60 * 100000 + 1 * 100000), 255, 255, 65535,
               NMEA_S32_MISSING, NMEA_S16_MISSING, 65535, 65535));
    QTest::newRow("no checksum field") << QByteArray("$GPGGA,,,,,,0,00,99.99,,,,,,") << 2 << QString();
}

void TstNmea::ggaUnpack()
{
    QFETCH(QByteArray, sentence);
    QFETCH(int, result);
    QFETCH(QString, record);
    nmea_gga out;
    QCOMPARE(unpack(sentence, nmea_gga_unpack, &out), result);
    if (result == NMEA_OK)
        QCOMPARE(describe(out), record);
}

void TstNmea::parametricPack_data()
{
    QTest::addColumn<QList<QByteArray>>("fields");
    QTest::addColumn<int>("result");
    QTest::addColumn<QByteArray>("sentence");
    QTest::newRow("text") << QList<QByteArray> { "GPTXT", "01", "01", "02", "ANTSTATUS=OK" } << 0
                          << QByteArray("$GPTXT,01,01,02,ANTSTATUS=OK*3B\r\n");
    QTest::newRow("empty fields") << QList<QByteArray> { "GPRMC", "", "V", "", "", "", "", "", "", "", "", "",
        "N" } << 0 << QByteArray("$GPRMC,,V,,,,,,,,,,N*53\r\n");
    const QByteArray longest = QByteArray(70, 'A');
    QTest::newRow("77 characters") << QList<QByteArray> { "GPTXT", longest } << 0
                                   << "$GPTXT," + longest + "*63\r\n";
    QTest::newRow("78 characters") << QList<QByteArray> { "GPTXT", longest + "B" } << 5
                                   << "$GPTXT," + longest;
    QTest::newRow("comma past the limit")
        << QList<QByteArray> { "GPTXT", longest, "B" } << 5 << "$GPTXT," + longest;
}

void TstNmea::parametricPack()
{
    QFETCH(QList<QByteArray>, fields);
    QFETCH(int, result);
    QFETCH(QByteArray, sentence);
    QVector<const char *> pointers;
    for (const QByteArray &f : qAsConst(fields))
        pointers << f.constData();
    char out[NMEA_SENTENCE_SIZE + 8];
    memset(out, '#', sizeof(out));
    QCOMPARE(nmea_parametric_pack(pointers.size(), pointers.constData(), out), result);
    QCOMPARE(QByteArray(out), sentence);
    QVERIFY(qstrlen(out) < NMEA_SENTENCE_SIZE);
}

void TstNmea::ggaPack_data()
{
    QTest::addColumn<QByteArray>("record"); // nmea_gga
    QTest::addColumn<int>("result");
    QTest::addColumn<QByteArray>("sentence");
    auto raw = [](const nmea_gga &g) { return QByteArray(reinterpret_cast<const char *>(&g), sizeof(g)); };
    // 4717.11399' -> 4717.1140 rounded; hdop 1.01 -> 1.0
    QTest::newRow("north-east") << raw(gga(34045000, 283711399, 51391590, 1, 8, 101, 49960, 4800, 65535,
        65535)) << 0 << QByteArray("$GPGGA,092725,4717.1140,N,00833.9159,E,1,08,1.0,499.6,M,48.0,M,,*43\r\n");
    // 23:59:59.5 is written as second 60; hdop 0.78 -> 0.8
    QTest::newRow("south-west, negative heights")
        << raw(gga(86399500, -203186300, -444036120, 2, 12, 78, -1230, -3450, 15, 131)) << 0
        << QByteArray("$GPGGA,235960,3351.8630,S,07400.3612,W,2,12,0.8,-12.3,M,-34.5,M,1.5,0131*59\r\n");
    QTest::newRow("all missing") << raw(GGA_MISSING) << 0 << QByteArray("$GPGGA,,,,,,,,,,,,,,*56\r\n");
    QTest::newRow("too long")
        << raw(gga(0xFFFFFFFE, 0x7FFFFFFE, -0x7FFFFFFF, 9, 99, 65534, INT32_MIN, INT16_MIN, 65534, 65534))
        << 5 << QByteArray("$GPGGA,11930247,35754.8365,N,35754.8365,W,9,99,655.3,-21474836.5,M,-327.7,M,6");
}

void TstNmea::ggaPack()
{
    QFETCH(QByteArray, record);
    QFETCH(int, result);
    QFETCH(QByteArray, sentence);
    char out[NMEA_SENTENCE_SIZE];
    QCOMPARE(nmea_gga_pack(reinterpret_cast<const nmea_gga *>(record.constData()), out), result);
    QCOMPARE(QByteArray(out), sentence);
}

void TstNmea::ggaRoundTrip_data()
{
    QTest::addColumn<QByteArray>("record");
    auto raw = [](const nmea_gga &g) { return QByteArray(reinterpret_cast<const char *>(&g), sizeof(g)); };
    // Values at the precision the packer writes.
    QTest::newRow("north-east") << raw(
        gga(34045000, 283711390, 51391590, 1, 8, 100, 49960, 4800, 65535, 65535));
    QTest::newRow("south-west") << raw(gga(643000, -203186300, -907252600, 2, 12, 70, -1230, -3450, 15, 131));
    QTest::newRow("equator, midnight") << raw(gga(0, 0, 0, 0, 0, 0, 0, 0, 0, 0));
    QTest::newRow("all missing") << raw(GGA_MISSING);
}

void TstNmea::ggaRoundTrip()
{
    QFETCH(QByteArray, record);
    const nmea_gga *in = reinterpret_cast<const nmea_gga *>(record.constData());
    char text[NMEA_SENTENCE_SIZE];
    QCOMPARE(nmea_gga_pack(in, text), NMEA_OK);
    int code = -1;
    nmea_gga out;
    feed(QByteArray(text), NMEA_FLAG_CHECKSUM,
        [&](uint8_t count, char **fields) { code = nmea_gga_unpack(count, fields, &out); });
    QCOMPARE(code, NMEA_OK);
    QCOMPARE(describe(out), describe(*in));
}

void TstNmea::unixTimestamp_data()
{
    QTest::addColumn<int>("day");
    QTest::addColumn<int>("month");
    QTest::addColumn<int>("year");
    QTest::addColumn<uint>("utc");
    QTest::addColumn<qint64>("seconds");
    QTest::newRow("2000-01-01") << 1 << 1 << 0 << 0u << Q_INT64_C(946684800);
    QTest::newRow("2000-03-01, century leap year") << 1 << 3 << 0 << 0u << Q_INT64_C(951868800);
    QTest::newRow("2001-03-01") << 1 << 3 << 1 << 0u << Q_INT64_C(983404800);
    QTest::newRow("2002-12-09 08:35:59") << 9 << 12 << 2 << 30959000u << Q_INT64_C(1039422959);
    QTest::newRow("2024-02-29 15:30:12.250") << 29 << 2 << 24 << 55812250u << Q_INT64_C(1709220612);
    QTest::newRow("2024-03-01") << 1 << 3 << 24 << 0u << Q_INT64_C(1709251200);
    QTest::newRow("2099-12-31 23:59:59") << 31 << 12 << 99 << 86399999u << Q_INT64_C(4102444799);
}

void TstNmea::unixTimestamp()
{
    QFETCH(int, day);
    QFETCH(int, month);
    QFETCH(int, year);
    QFETCH(uint, utc);
    QFETCH(qint64, seconds);
    const nmea_rmc in = rmc(utc, 1, 0, 0, 0, 0, uint8_t(day), uint8_t(month), uint8_t(year), 0);
    QCOMPARE(nmea_rmc_to_unixtimestamp(&in), int64_t(seconds));
    QCOMPARE(QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC).date(), QDate(2000 + year, month, day));
}

void TstNmea::postime_data()
{
    QTest::addColumn<int>("latitude");
    QTest::addColumn<int>("longitude");
    QTest::addColumn<int>("lat");
    QTest::addColumn<int>("lon");
    // 2837.11437' = 47.2852395 deg exactly
    QTest::newRow("exact") << 283711437 << 51391522 << 472852395 << 85652536;
    // -1374.56789' = -22.9094648(3) deg: toward zero, not down
    QTest::newRow("truncates toward zero") << -137456789 << -259234567 << -229094648 << -432057611;
    // 180 deg: 1.08e11 does not fit 32 bits on the way
    QTest::newRow("date line") << 0 << 1080000000 << 0 << 1800000000;
}

void TstNmea::postime()
{
    QFETCH(int, latitude);
    QFETCH(int, longitude);
    QFETCH(int, lat);
    QFETCH(int, lon);
    const nmea_rmc in = rmc(30959000, 1, latitude, longitude, 0, 0, 9, 12, 2, 0);
    pos_time_t out;
    telemetry_nmea_to_postime(&out, &in);
    QCOMPARE(out.lat, int32_t(lat));
    QCOMPARE(out.lon, int32_t(lon));
    QCOMPARE(out.time, uint32_t(1039422959));
}

QTEST_APPLESS_MAIN(TstNmea)
#include "tst_nmea.moc"
