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

template <typename... T> static QString joined(T... values)
{
    return QStringList { QString::number(values)... }.join(' ');
}

// Feeds bytes to a fresh reader, chunk bytes at a time. Each sentence gives its
// fields joined by "|" or, with unpack, its RMC or GGA record ("2" for the wrong
// number of fields); a located RMC record is also turned into a position record.
static QStringList parse(const Bytes &bytes, int flags, int chunk = 1000, bool unpack = false)
{
    QStringList out;
    Handler handler = [&](uint8_t count, char **fields) {
        nmea_rmc r;
        nmea_gga g;
        pos_time_t p;
        if (!unpack) {
            QStringList f;
            for (int i = 0; i < count; i++)
                f << fields[i];
            out << f.join('|');
        } else if (qstrcmp(fields[0] + 2, "RMC") == 0 && nmea_rmc_unpack(count, fields, &r) == NMEA_OK) {
            telemetry_nmea_to_postime(&p, &r);
            out << joined(
                       r.utc, r.valid, r.latitude, r.longitude, r.sog, r.cog, r.day, r.month, r.year, r.var)
                    + (r.latitude == NMEA_POS_MISSING ? "" : " | " + joined(p.lat, p.lon, p.time));
        } else if (qstrcmp(fields[0] + 2, "GGA") == 0 && nmea_gga_unpack(count, fields, &g) == NMEA_OK) {
            out << joined(g.utc, g.latitude, g.longitude, g.fix, g.sats, g.hdop, g.altitude, g.geoid_sep,
                g.dgps_age, g.dgps_id);
        } else {
            out << "2";
        }
    };
    nmeaprs ctx;
    nmea_init(&ctx, dispatch, &handler);
    nmea_set_flag(&ctx, flags | 0x100); // only the low 8 bits count
    for (int i = 0; i < bytes.size(); i += chunk)
        nmea_parse(
            &ctx, reinterpret_cast<const uint8_t *>(bytes.constData()) + i, qMin(chunk, bytes.size() - i));
    return out;
}

static void row(const char *name, const Bytes &sentence, const QString &record)
{
    QTest::newRow(name) << sentence << record;
}

static const Bytes GGA = "$GPGGA,092725.00,4717.11399,N,00833.91590,E,1,08,1.01,499.6,M,48.0,M,,*5B\r\n";
static const Bytes TXT = "$GPTXT,01,01,02,ANTSTATUS=OK*3B\r\n";
static const int NOPOS = NMEA_POS_MISSING;
static const nmea_gga NO_GGA
    = { NMEA_UTC_MISSING, NOPOS, NOPOS, 255, 255, 65535, NOPOS, 32767, 65535, 65535 };
Q_DECLARE_METATYPE(nmea_gga)

static void pack(const char *name, const nmea_gga &record, const char *sentence, const QString &reread)
{
    QTest::newRow(name) << record << Bytes(sentence) << reread;
}

class TstNmea : public QObject
{
    Q_OBJECT
private slots:
    void reader_data()
    {
        QTest::addColumn<Bytes>("stream");
        QTest::addColumn<int>("flags");
        QTest::addColumn<QStringList>("sentences");
        const QString gga = "GPGGA|092725.00|4717.11399|N|00833.91590|E|1|08|1.01|499.6|M|48.0|M|||5B";
        const QString txt = "GPTXT|01|01|02|ANTSTATUS=OK|3B";
        const Bytes overlong = "$GPTXT," + Bytes(300, 'X');
        QTest::newRow("checked") << GGA << 1 << QStringList { gga };
        QTest::newRow("lower-case hex fails") << Bytes(GGA).replace("*5B", "*5b") << 1 << QStringList();
        QTest::newRow("no checksum") << Bytes("$GPTXT,01\r\n$GPTXT,01*\r\n") << 1 << QStringList();
        QTest::newRow("bad, then good") << Bytes(GGA).replace("*5B", "*5C") + TXT << 1 << QStringList { txt };
        QTest::newRow("LF and CR alone")
            << Bytes(TXT).replace("\r\n", "\n") + Bytes(GGA).replace("\r\n", "\r") << 1
            << QStringList { txt, gga };
        QTest::newRow("noise, then ! restarts")
            << Bytes("\0\xff$GPGGA,0927!", 14) + TXT.mid(1) << 1 << QStringList { txt };
        QTest::newRow("29 fields") << "GPX" + Bytes(28, ',') + "\n"
                                   << 0 << QStringList { "GPX" + QString(28, '|') };
        QTest::newRow("30 fields") << "GPX" + Bytes(29, ',') + "\n" << 0 << QStringList();
        QTest::newRow("overlong: cut at 256")
            << overlong + "\n" + TXT << 0 << QStringList { "GPTXT|" + QString(250, 'X'), txt };
    }
    void reader()
    {
        QFETCH(Bytes, stream);
        QFETCH(int, flags);
        QFETCH(QStringList, sentences);
        for (int chunk : { 1000, 1, 7 })
            QCOMPARE(parse(stream, flags, chunk), sentences);
    }

    // Kept as the callers rely on it: their negative values always carry decimals.
    void signNeedsDecimals()
    {
        QCOMPARE(_atofpd("-5.0", 99, 2), -500);
        QCOMPARE(_atofpd("-5", 99, 2), 500);
    }

    void unpack_data()
    {
        QTest::addColumn<Bytes>("sentence");
        QTest::addColumn<QString>("record");
        row("RMC north-east", "$GPRMC,083559.00,A,4717.11437,N,00833.91522,E,0.004,77.52,091202,,,A*57",
            "30959000 1 283711437 51391522 0 7752 9 12 2 32767 | 472852395 85652536 1039422959");
        // 15:30:12.250 on a leap day, 22 deg 54.56789' S, 43 deg 12.34567' W, 21.7 deg W
        row("RMC south-west",
            "$GPRMC,153012.250,A,2254.56789,S,04312.34567,W,12.345,270.05,290224,21.7,W,D*27",
            "55812250 1 -137456789 -259234567 1234 27005 29 2 24 -2170 | -229094648 -432057611 1709220612");
        row("RMC short fields", "$GPRMC,12351,AV,481,N,1131,W,5,,23039,3,E,A*00",
            joined(NMEA_UTC_MISSING, 255, NOPOS, NOPOS, 500, 65535, 255, 255, 255, 32767));
        row("RMC 180 E, 2000", "$GPRMC,000000,V,0000.0000,N,18000.00000,E,,,010100,,,N*00",
            "0 0 0 1080000000 65535 65535 1 1 0 32767 | 0 1800000000 946684800");
        row("RMC century leap year", "$GPRMC,000000,A,0000.0000,N,00000.00000,E,,,010300,,,A*00",
            "0 1 0 0 65535 65535 1 3 0 32767 | 0 0 951868800");
        row("RMC after a leap day", "$GPRMC,000000,A,0000.0000,N,00000.00000,E,,,010324,,,A*00",
            "0 1 0 0 65535 65535 1 3 24 32767 | 0 0 1709251200");
        row("RMC of NMEA 2.0", "$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W*6A", "2");
        row("GGA north-east", GGA,
            joined(34045000, 283711399, 51391590, 1, 8, 101, 49960, 4800, 65535, 65535));
        // 00:10:43, 33 deg 51.863' S, 151 deg 12.526' E, below the ellipsoid, DGPS
        row("GGA south, DGPS",
            "$GNGGA,001043.00,3351.86300,S,15112.52600,E,2,12,0.78,-12.3,M,-34.5,M,1.5,0131*43",
            joined(643000, -203186300, 907252600, 2, 12, 78, -1230, -3450, 15, 131));
        // 12:34 and 113 deg 1' W: shorter fields than RMC takes
        row("GGA short fields", "$GPGGA,1234,481,N,1131,W,12,,,,,,,,*00",
            joined(45240000, NOPOS, -678100000, 255, 255, 65535, NOPOS, 32767, 65535, 65535));
        row("GGA without checksum", "$GPGGA,,,,,,0,00,99.99,,,,,,", "2");
    }
    void unpack()
    {
        QFETCH(Bytes, sentence);
        QFETCH(QString, record);
        QCOMPARE(parse(sentence + "\n", 0, 1000, true), QStringList { record });
    }

    void parametricPack()
    {
        const Bytes longest(70, 'A');
        const char *text[] = { "GPTXT", "01", "01", "02", "ANTSTATUS=OK" };
        const char *fields[] = { "GPTXT", longest.constData(), "" };
        char out[NMEA_SENTENCE_SIZE];
        QCOMPARE(nmea_parametric_pack(5, text, out), NMEA_OK);
        QCOMPARE(Bytes(out), TXT);
        QCOMPARE(nmea_parametric_pack(2, fields, out), NMEA_OK); // 77 characters before "*"
        QCOMPARE(Bytes(out), "$GPTXT," + longest + "*63\r\n");
        QCOMPARE(nmea_parametric_pack(3, fields, out), NMEA_ERR_TOO_LONG);
        QCOMPARE(Bytes(out), "$GPTXT," + longest);
    }

    // Packed, checked and unpacked again.
    void ggaPack_data()
    {
        QTest::addColumn<nmea_gga>("record");
        QTest::addColumn<Bytes>("sentence");
        QTest::addColumn<QString>("reread"); // empty: too long
        // 17.11399' rounds to 17.1140, hdop 1.01 to 1.0
        pack("north-east", { 34045000, 283711399, 51391590, 1, 8, 101, 49960, 4800, 65535, 65535 },
            "$GPGGA,092725,4717.1140,N,00833.9159,E,1,08,1.0,499.6,M,48.0,M,,*43\r\n",
            joined(34045000, 283711400, 51391590, 1, 8, 100, 49960, 4800, 65535, 65535));
        // 23:59:59.5 becomes second 60 (no carry), read back as 24:00:00; hdop 0.78 rounds to 0.8
        pack("south-west", { 86399500, -203186300, -444036120, 2, 12, 78, -1230, -3450, 15, 131 },
            "$GPGGA,235960,3351.8630,S,07400.3612,W,2,12,0.8,-12.3,M,-34.5,M,1.5,0131*59\r\n",
            joined(86400000, -203186300, -444036120, 2, 12, 80, -1230, -3450, 15, 131));
        pack("all missing", NO_GGA, "$GPGGA,,,,,,,,,,,,,,*56\r\n",
            joined(NMEA_UTC_MISSING, NOPOS, NOPOS, 255, 255, 65535, NOPOS, 32767, 65535, 65535));
        pack("too long", { 0xFFFFFFFE, 0x7FFFFFFE, -0x7FFFFFFF, 9, 99, 65534, INT32_MIN, INT16_MIN, 1, 1 },
            "$GPGGA,11930247,35754.8365,N,35754.8365,W,9,99,655.3,-21474836.5,M,-327.7,M,0", QString());
    }
    void ggaPack()
    {
        QFETCH(nmea_gga, record);
        QFETCH(Bytes, sentence);
        QFETCH(QString, reread);
        char out[NMEA_SENTENCE_SIZE];
        QCOMPARE(nmea_gga_pack(&record, out), reread.isEmpty() ? NMEA_ERR_TOO_LONG : NMEA_OK);
        QCOMPARE(Bytes(out), sentence);
        QCOMPARE(parse(out, NMEA_FLAG_CHECKSUM, 1000, true),
            reread.isEmpty() ? QStringList() : QStringList { reread });
    }
};

QTEST_APPLESS_MAIN(TstNmea)
#include "tst_nmea.moc"
