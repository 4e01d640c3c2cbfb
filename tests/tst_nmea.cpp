#include <QtTest>

#include <functional>

#include "nmea.h"
#include "telemetry.h"

// Sentences are as GPS receivers print them, checksums and expected values
// worked out by hand: 4717.11437 N = 47 * 60 + 17.11437 arc min = 283711437.

using Handler = std::function<void(uint8_t count, char **fields)>;
using Bytes = QByteArray;

static void dispatch(uint8_t count, char **fields, void *arg)
{
    (*static_cast<Handler *>(arg))(count, fields);
}

// Feeds bytes to a fresh reader, chunk bytes at a time (0: all at once).
static void feed(const Bytes &bytes, uint8_t flags, int chunk, Handler handler)
{
    nmeaprs ctx;
    nmea_init(&ctx, dispatch, &handler);
    nmea_set_flag(&ctx, flags);
    const int step = chunk > 0 ? chunk : qMax(1, bytes.size());
    for (int i = 0; i < bytes.size(); i += step) {
        const Bytes part = bytes.mid(i, step);
        nmea_parse(&ctx, reinterpret_cast<const uint8_t *>(part.constData()), part.size());
    }
}

static QStringList sentencesIn(const Bytes &bytes, uint8_t flags, int chunk)
{
    QStringList sentences;
    feed(bytes, flags, chunk, [&](uint8_t count, char **fields) {
        QStringList f;
        for (int i = 0; i < count; i++)
            f << fields[i];
        sentences << f.join('|');
    });
    return sentences;
}

template <typename... T> static QString joined(T... values)
{
    return QStringList { QString::number(values)... }.join(' ');
}

static QString describe(const nmea_rmc &r)
{
    return joined(r.utc, r.valid, r.latitude, r.longitude, r.sog, r.cog, r.day, r.month, r.year, r.var);
}

static QString describe(const nmea_gga &g)
{
    return joined(g.utc, g.latitude, g.longitude, g.fix, g.sats, g.hdop, g.altitude, g.geoid_sep, g.dgps_age,
        g.dgps_id);
}

static Bytes raw(const nmea_gga &g)
{
    return Bytes(reinterpret_cast<const char *>(&g), sizeof(g));
}

static const uint32_t UTC_NONE = NMEA_UTC_MISSING;
static const int32_t NOPOS = NMEA_POS_MISSING;
static const int32_t ALT_NONE = NMEA_S32_MISSING;

static const Bytes GGA = "$GPGGA,092725.00,4717.11399,N,00833.91590,E,1,08,1.01,499.6,M,48.0,M,,*5B\r\n";
static const Bytes TXT = "$GPTXT,01,01,02,ANTSTATUS=OK*3B\r\n";

static Bytes fieldsOf(int count)
{
    return "GPXXX" + Bytes(count - 1, ',');
}

class TstNmea : public QObject
{
    Q_OBJECT
private slots:
    void reader_data();
    void reader();
    void handleBuffer_data();
    void handleBuffer();
    void atofpd_data();
    void atofpd();
    void fpdtoa_data();
    void fpdtoa();
    void unpack_data();
    void unpack();
    void parametricPack();
    void ggaPack_data();
    void ggaPack();
    void timestamps_data();
    void timestamps();
};

void TstNmea::reader_data()
{
    QTest::addColumn<Bytes>("stream");
    QTest::addColumn<int>("flags");
    QTest::addColumn<QStringList>("sentences");
    const QString gga = "GPGGA|092725.00|4717.11399|N|00833.91590|E|1|08|1.01|499.6|M|48.0|M|||5B";
    const QString txt = "GPTXT|01|01|02|ANTSTATUS=OK|3B";
    const Bytes lower = Bytes(GGA).replace("*5B", "*5b");
    const Bytes overlong = "$GPTXT," + Bytes(300, 'X');

    QTest::newRow("checked") << GGA << 1 << QStringList { gga };
    QTest::newRow("lower-case hex fails") << lower << 1 << QStringList();
    QTest::newRow("no checksum") << Bytes("$GPTXT,01\r\n") << 1 << QStringList();
    QTest::newRow("bad, then good") << Bytes(GGA).replace("*5B", "*5C") + TXT << 1 << QStringList { txt };
    QTest::newRow("LF and CR alone") << Bytes(TXT).replace("\r\n", "\n") + Bytes(GGA).replace("\r\n", "\r")
                                     << 1 << QStringList { txt, gga };
    QTest::newRow("noise, then ! restarts")
        << Bytes("\0\xff$GPGGA,0927!", 14) + TXT.mid(1) << 1 << QStringList { txt };
    QTest::newRow("29 fields") << fieldsOf(29) + "\n" << 0 << QStringList { "GPXXX" + QString(28, '|') };
    QTest::newRow("30 fields") << fieldsOf(30) + "\n" << 0 << QStringList();
    QTest::newRow("overlong: cut at 256")
        << overlong + "\n" + TXT << 0 << QStringList { "GPTXT|" + QString(250, 'X'), txt };
    QTest::newRow("overlong: checksum cut off") << overlong + "*00\n" << 1 << QStringList();
}

void TstNmea::reader()
{
    QFETCH(Bytes, stream);
    QFETCH(int, flags);
    QFETCH(QStringList, sentences);
    for (int chunk : { 0, 1, 7 })
        QCOMPARE(sentencesIn(stream, uint8_t(flags), chunk), sentences);
}

void TstNmea::handleBuffer_data()
{
    QTest::addColumn<Bytes>("buffer");
    QTest::addColumn<int>("result");
    QTest::newRow("good") << Bytes("GPRMC,,V,,,,,,,,,,N*53") << NMEA_OK;
    QTest::newRow("lower case") << Bytes("GPGGA,,,,,,,,,,,,,,*5b") << NMEA_ERR_CHECKSUM;
    QTest::newRow("star last") << Bytes("GPRMC,,V,,,,,,,,,,N*") << NMEA_ERR_CHECKSUM;
    QTest::newRow("30 fields") << fieldsOf(29) + "*4F" << NMEA_ERR_TOO_MANY;
}

void TstNmea::handleBuffer()
{
    QFETCH(Bytes, buffer);
    QFETCH(int, result);
    int calls = 0;
    Handler handler = [&](uint8_t, char **) { calls++; };
    nmeaprs ctx;
    nmea_init(&ctx, dispatch, &handler);
    nmea_set_flag(&ctx, 0x101); // only the low 8 bits count
    QCOMPARE(int(ctx.flags), NMEA_FLAG_CHECKSUM);
    qstrcpy(ctx.buffer, buffer.constData());
    ctx.count = buffer.size();
    QCOMPARE(nmea_handle_buffer(&ctx), result);
    QCOMPARE(calls, result == NMEA_OK ? 1 : 0);
}

void TstNmea::atofpd_data()
{
    QTest::addColumn<Bytes>("text");
    QTest::addColumn<int>("budget");
    QTest::addColumn<int>("decimals");
    QTest::addColumn<int>("value");
    QTest::newRow("truncates") << Bytes("12.3456") << 99 << 2 << 1234;
    QTest::newRow("pads") << Bytes("0.5") << 99 << 3 << 500;
    QTest::newRow("negative") << Bytes("-5.0") << 99 << 2 << -500;
    QTest::newRow("sign needs a point") << Bytes("-5") << 99 << 2 << 500;
    QTest::newRow("no integer digits") << Bytes("-.5") << 99 << 1 << -5;
    QTest::newRow("stops at a point") << Bytes("12.7") << 99 << 0 << 12;
    QTest::newRow("hours of a time") << Bytes("123519.00") << 2 << 3 << 12000;
    QTest::newRow("point spends the budget") << Bytes("12.5") << 3 << 1 << 120;
}

void TstNmea::atofpd()
{
    QFETCH(Bytes, text);
    QFETCH(int, budget);
    QFETCH(int, decimals);
    QFETCH(int, value);
    QCOMPARE(_atofpd(text.constData(), uint8_t(budget), uint8_t(decimals)), int32_t(value));
    if (decimals == 0)
        QCOMPARE(_atou(text.constData(), uint8_t(budget)), uint32_t(value));
}

void TstNmea::fpdtoa_data()
{
    QTest::addColumn<uint>("value");
    QTest::addColumn<int>("decIn");
    QTest::addColumn<int>("decOut");
    QTest::addColumn<int>("digits");
    QTest::addColumn<Bytes>("text");
    QTest::newRow("fewer decimals") << 12345u << 3 << 1 << 2 << Bytes("12.3");
    QTest::newRow("zero padded") << 5u << 0 << 0 << 2 << Bytes("05");
    QTest::newRow("half up") << 12355u << 3 << 2 << 1 << Bytes("12.36");
    QTest::newRow("59.5 s, no carry") << 59500u << 3 << 0 << 2 << Bytes("60");
    QTest::newRow("largest") << 4294967295u << 0 << 0 << 1 << Bytes("4294967295");
    QTest::newRow("huge divisor") << 4294967295u << 30 << 0 << 1 << Bytes("0");
}

void TstNmea::fpdtoa()
{
    QFETCH(uint, value);
    QFETCH(int, decIn);
    QFETCH(int, decOut);
    QFETCH(int, digits);
    QFETCH(Bytes, text);
    char out[32];
    memset(out, '#', sizeof(out));
    const int len = _fpdtoa(value, uint8_t(decIn), uint8_t(decOut), uint8_t(digits), out);
    QCOMPARE(Bytes(out, len + 1), text + "#"); // no terminator
}

static QString rmc(uint32_t utc, uint8_t valid, int32_t lat, int32_t lon, uint16_t sog, uint16_t cog,
    uint8_t d, uint8_t m, uint8_t y, int16_t var)
{
    return describe(nmea_rmc { utc, valid, lat, lon, sog, cog, d, m, y, var });
}

static QString gga(uint32_t utc, int32_t lat, int32_t lon, uint8_t fix, uint8_t sats, uint16_t hdop,
    int32_t alt, int16_t sep, uint16_t age, uint16_t id)
{
    return describe(nmea_gga { utc, lat, lon, fix, sats, hdop, alt, sep, age, id });
}

// Unpacks the sentences in text by their name, checksums unchecked; "2" for
// a sentence of the wrong length.
static QStringList unpacked(const Bytes &text)
{
    QStringList records;
    feed(text, 0, 0, [&](uint8_t count, char **fields) {
        nmea_rmc r;
        nmea_gga g;
        if (qstrcmp(fields[0] + 2, "RMC") == 0)
            records << (nmea_rmc_unpack(count, fields, &r) == NMEA_OK ? describe(r) : "2");
        else
            records << (nmea_gga_unpack(count, fields, &g) == NMEA_OK ? describe(g) : "2");
    });
    return records;
}

void TstNmea::unpack_data()
{
    QTest::addColumn<Bytes>("sentence");
    QTest::addColumn<QString>("record");
    QTest::newRow("RMC north-east") << Bytes(
        "$GPRMC,083559.00,A,4717.11437,N,00833.91522,E,0.004,77.52,091202,,,A*57")
                                    << rmc(30959000, 1, 283711437, 51391522, 0, 7752, 9, 12, 2, 32767);
    // 15:30:12.250, 22 deg 54.56789' S, 43 deg 12.34567' W, 21.7 deg W
    QTest::newRow("RMC south-west") << Bytes(
        "$GPRMC,153012.250,A,2254.56789,S,04312.34567,W,12.345,270.05,290224,21.7,W,D*27")
                                    << rmc(55812250, 1, -137456789, -259234567, 1234, 27005, 29, 2, 24,
                                           -2170);
    QTest::newRow("RMC no fix") << Bytes("$GPRMC,,V,,,,,,,,,,N*53")
                                << rmc(UTC_NONE, 0, NOPOS, NOPOS, 65535, 65535, 255, 255, 255, 32767);
    QTest::newRow("RMC short fields") << Bytes("$GPRMC,12351,AV,481,N,1131,W,5,,23039,3,E,A*00")
                                      << rmc(UTC_NONE, 255, NOPOS, NOPOS, 500, 65535, 255, 255, 255, 32767);
    QTest::newRow("RMC of NMEA 2.0") << Bytes(
        "$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W*6A")
                                     << "2";
    QTest::newRow("GGA north-east") << GGA
                                    << gga(34045000, 283711399, 51391590, 1, 8, 101, 49960, 4800, 65535,
                                           65535);
    // 00:10:43, 33 deg 51.863' S, 151 deg 12.526' E, below the ellipsoid, DGPS
    QTest::newRow("GGA south, DGPS") << Bytes(
        "$GNGGA,001043.00,3351.86300,S,15112.52600,E,2,12,0.78,-12.3,M,-34.5,M,1.5,0131*43")
                                     << gga(643000, -203186300, 907252600, 2, 12, 78, -1230, -3450, 15, 131);
    QTest::newRow("GGA no fix") << Bytes("$GPGGA,,,,,,0,00,99.99,,,,,,*48")
                                << gga(UTC_NONE, NOPOS, NOPOS, 0, 0, 9999, ALT_NONE, 32767, 65535, 65535);
    // 12:34 and 113 deg 1' W: shorter fields than RMC takes
    QTest::newRow("GGA short fields")
        << Bytes("$GPGGA,1234,481,N,1131,W,12,,,,,,,,*00")
        << gga(45240000, NOPOS, -678100000, 255, 255, 65535, ALT_NONE, 32767, 65535, 65535);
    QTest::newRow("GGA without checksum") << Bytes("$GPGGA,,,,,,0,00,99.99,,,,,,") << "2";
}

void TstNmea::unpack()
{
    QFETCH(Bytes, sentence);
    QFETCH(QString, record);
    QCOMPARE(unpacked(sentence + "\n"), QStringList { record });
}

void TstNmea::parametricPack()
{
    const Bytes longest(70, 'A');
    const char *text[] = { "GPTXT", "01", "01", "02", "ANTSTATUS=OK" };
    const char *fits[] = { "GPTXT", longest.constData() };
    const char *over[] = { "GPTXT", longest.constData(), "" };
    char out[NMEA_SENTENCE_SIZE];
    QCOMPARE(nmea_parametric_pack(5, text, out), NMEA_OK);
    QCOMPARE(Bytes(out), TXT);
    QCOMPARE(nmea_parametric_pack(2, fits, out), NMEA_OK); // 77 characters before "*"
    QCOMPARE(Bytes(out), "$GPTXT," + longest + "*63\r\n");
    QCOMPARE(nmea_parametric_pack(3, over, out), NMEA_ERR_TOO_LONG);
    QCOMPARE(Bytes(out), "$GPTXT," + longest);
}

void TstNmea::ggaPack_data()
{
    QTest::addColumn<Bytes>("record");
    QTest::addColumn<int>("result");
    QTest::addColumn<Bytes>("sentence");
    QTest::addColumn<QString>("reread");
    // 17.11399' rounds to 17.1140, hdop 1.01 to 1.0
    QTest::newRow("north-east") << raw({ 34045000, 283711399, 51391590, 1, 8, 101, 49960, 4800, 65535,
        65535 }) << 0 << Bytes("$GPGGA,092725,4717.1140,N,00833.9159,E,1,08,1.0,499.6,M,48.0,M,,*43\r\n")
                                << gga(34045000, 283711400, 51391590, 1, 8, 100, 49960, 4800, 65535, 65535);
    // 23:59:59.5 becomes second 60, read back as 24:00:00; hdop 0.78 rounds to 0.8
    QTest::newRow("south-west")
        << raw({ 86399500, -203186300, -444036120, 2, 12, 78, -1230, -3450, 15, 131 }) << 0
        << Bytes("$GPGGA,235960,3351.8630,S,07400.3612,W,2,12,0.8,-12.3,M,-34.5,M,1.5,0131*59\r\n")
        << gga(86400000, -203186300, -444036120, 2, 12, 80, -1230, -3450, 15, 131);
    const nmea_gga none = { UTC_NONE, NOPOS, NOPOS, 255, 255, 65535, ALT_NONE, 32767, 65535, 65535 };
    QTest::newRow("all missing") << raw(none) << 0 << Bytes("$GPGGA,,,,,,,,,,,,,,*56\r\n") << describe(none);
    QTest::newRow("too long") << raw({ 0xFFFFFFFE, 0x7FFFFFFE, -0x7FFFFFFF, 9, 99, 65534, INT32_MIN,
        INT16_MIN, 1,
        1 }) << 5 << Bytes("$GPGGA,11930247,35754.8365,N,35754.8365,W,9,99,655.3,-21474836.5,M,-327.7,M,0")
                              << QString();
}

void TstNmea::ggaPack()
{
    QFETCH(Bytes, record);
    QFETCH(int, result);
    QFETCH(Bytes, sentence);
    QFETCH(QString, reread);
    char out[NMEA_SENTENCE_SIZE];
    QCOMPARE(nmea_gga_pack(reinterpret_cast<const nmea_gga *>(record.constData()), out), result);
    QCOMPARE(Bytes(out), sentence);
    QCOMPARE(sentencesIn(out, NMEA_FLAG_CHECKSUM, 0).size(), result == NMEA_OK ? 1 : 0);
    if (result == NMEA_OK)
        QCOMPARE(unpacked(out), QStringList { reread });
}

void TstNmea::timestamps_data()
{
    QTest::addColumn<QDate>("date");
    QTest::addColumn<uint>("utc");
    QTest::addColumn<qint64>("seconds");
    QTest::newRow("2000-01-01") << QDate(2000, 1, 1) << 0u << Q_INT64_C(946684800);
    QTest::newRow("century leap year") << QDate(2000, 3, 1) << 0u << Q_INT64_C(951868800);
    QTest::newRow("leap day") << QDate(2024, 2, 29) << 55812250u << Q_INT64_C(1709220612);
    QTest::newRow("after a leap day") << QDate(2024, 3, 1) << 0u << Q_INT64_C(1709251200);
}

// Also the position record: 1/100000 arc min to 1e-7 deg, toward zero.
void TstNmea::timestamps()
{
    QFETCH(QDate, date);
    QFETCH(uint, utc);
    QFETCH(qint64, seconds);
    QCOMPARE(QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC).date(), date);
    const nmea_rmc in = { utc, 1, -137456789, 1080000000, 0, 0, uint8_t(date.day()), uint8_t(date.month()),
        uint8_t(date.year() - 2000), 0 };
    QCOMPARE(nmea_rmc_to_unixtimestamp(&in), int64_t(seconds));
    pos_time_t pos;
    telemetry_nmea_to_postime(&pos, &in);
    QCOMPARE(pos.lat, -229094648); // -22.90946483 deg
    QCOMPARE(pos.lon, 1800000000); // 180 deg, 1.08e11 on the way
    QCOMPARE(pos.time, uint32_t(seconds));
}

QTEST_APPLESS_MAIN(TstNmea)
#include "tst_nmea.moc"
