#include <QtTest>

#include "nmea.h"
#include "telemetry.h"

// Sentences are as GPS receivers print them, checksums and expected values
// worked out by hand: 4717.11437 N = 47 * 60 + 17.11437 arc min = 283711437.
using Bytes = QByteArray;
static const Bytes GGA = "$GPGGA,092725.00,4717.11399,N,00833.91590,E,1,08,1.01,499.6,M,48.0,M,,*5B\r\n";
static const Bytes TXT = "$GPTXT,01,01,02,ANTSTATUS=OK*3B\r\n";
static const int NOPOS = NMEA_POS_MISSING;

template <typename... T> static QString joined(T... values)
{
    return QStringList { QString::number(values)... }.join(' ');
}

// Each sentence read: its fields joined by "|", or with UNPACK its RMC or GGA record ("2": wrong
// field count) and the position record of a located RMC, or the GGA record packed again.
static const int UNPACK = 0x200;
static QStringList s_out;

static void collect(uint8_t count, char **fields, void *unpack)
{
    nmea_rmc r;
    nmea_gga g;
    pos_time_t p;
    char packed[NMEA_SENTENCE_SIZE];
    if (!unpack) {
        s_out << QStringList(fields, fields + count).join('|');
    } else if (qstrcmp(fields[0] + 2, "RMC") == 0 && nmea_rmc_unpack(count, fields, &r) == NMEA_OK) {
        telemetry_nmea_to_postime(&p, &r);
        s_out << joined(r.utc, r.valid, r.latitude, r.longitude, r.sog, r.cog, r.day, r.month, r.year, r.var)
                + (r.latitude == NOPOS ? "" : " | " + joined(p.lat, p.lon, p.time));
    } else if (qstrcmp(fields[0] + 2, "GGA") == 0 && nmea_gga_unpack(count, fields, &g) == NMEA_OK) {
        nmea_gga_pack(&g, packed);
        s_out << joined(g.utc, g.latitude, g.longitude, g.fix, g.sats, g.hdop, g.altitude, g.geoid_sep,
                     g.dgps_age, g.dgps_id)
                + " > " + packed;
    } else {
        s_out << "2";
    }
}

// Feeds the bytes to a fresh reader, chunk bytes at a time.
static QStringList parse(const Bytes &bytes, int flags, int chunk = 1000)
{
    s_out.clear();
    nmeaprs ctx;
    nmea_init(&ctx, collect, flags & UNPACK ? &s_out : nullptr);
    nmea_set_flag(&ctx, flags | 0x100); // only the low 8 bits count
    for (int i = 0; i < bytes.size(); i += chunk)
        nmea_parse(
            &ctx, reinterpret_cast<const uint8_t *>(bytes.constData()) + i, qMin(chunk, bytes.size() - i));
    return s_out;
}

static void row(const char *name, const Bytes &sentence, const QString &record)
{
    QTest::newRow(name) << sentence + "\n" << UNPACK << QStringList { record };
}

class tst_Nmea : public QObject
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
        QTest::newRow("checked") << GGA << 1 << QStringList { gga };
        QTest::newRow("no checksum") << Bytes("$GPTXT,01\r\n$GPTXT,01*\r\n") << 1 << QStringList();
        QTest::newRow("lower-case hex fails")
            << Bytes(GGA).replace("*5B", "*5b") + TXT << 1 << QStringList { txt };
        QTest::newRow("LF and CR alone")
            << Bytes(TXT).replace("\r\n", "\n") + Bytes(GGA).replace("\r\n", "\r") << 1
            << QStringList { txt, gga };
        QTest::newRow("noise, then ! restarts")
            << Bytes("\0\xff$GPGGA,0927!", 14) + TXT.mid(1) << 1 << QStringList { txt };
        QTest::newRow("29 fields, 30") << "GPX" + Bytes(28, ',') + "\nGPX" + Bytes(29, ',') + "\n"
                                       << 0 << QStringList { "GPX" + QString(28, '|') };
        QTest::newRow("overlong: cut at 256") << "$GPTXT," + Bytes(300, 'X') + "\n" + TXT << 0
                                              << QStringList { "GPTXT|" + QString(250, 'X'), txt };
        const Bytes midnight = "$GPRMC,000000,A,0000.0000,N,00000.00000,E,,,";
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
        row("RMC century leap year", midnight + "010300,,,A*00",
            "0 1 0 0 65535 65535 1 3 0 32767 | 0 0 951868800");
        row("RMC of NMEA 2.0", "$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W*6A", "2");
        // 17.11399' packs as 17.1140, hdop 1.01 as 1.0
        row("GGA north-east", GGA,
            joined(34045000, 283711399, 51391590, 1, 8, 101, 49960, 4800, 65535, 65535)
                + " > $GPGGA,092725,4717.1140,N,00833.9159,E,1,08,1.0,499.6,M,48.0,M,,*43\r\n");
        // 23:59:59.5, 33 deg 51.863' S, 151 deg 12.526' E, below the ellipsoid, DGPS; second 60, no carry
        row("GGA south, DGPS",
            "$GNGGA,235959.50,3351.86300,S,15112.52600,E,2,12,0.78,-12.3,M,-34.5,M,1.5,0131*41",
            joined(86399500, -203186300, 907252600, 2, 12, 78, -1230, -3450, 15, 131)
                + " > $GPGGA,235960,3351.8630,S,15112.5260,E,2,12,0.8,-12.3,M,-34.5,M,1.5,0131*49\r\n");
        // 12:34 and 113 deg 1' W, shorter fields than RMC takes; a minus sign counts only before decimals
        row("GGA short fields", "$GPGGA,1234,481,N,1131,W,12,,,-5,M,-5.0,,,*00",
            joined(45240000, NOPOS, -678100000, 255, 255, 65535, 500, -500, 65535, 65535)
                + " > $GPGGA,123400,,,11301.0000,W,,,,5.0,M,-5.0,M,,*34\r\n");
    }
    void reader()
    {
        QFETCH(Bytes, stream);
        QFETCH(int, flags);
        QFETCH(QStringList, sentences);
        for (int chunk : { 1000, 1, 7 })
            QCOMPARE(parse(stream, flags, chunk), sentences);
    }

    void parametricPack()
    {
        const Bytes longest(70, 'A');
        const char *fields[] = { "GPTXT", longest.constData(), "" };
        char out[NMEA_SENTENCE_SIZE];
        QCOMPARE(nmea_parametric_pack(2, fields, out), NMEA_OK); // 77 characters before the "*"
        QCOMPARE(Bytes(out), "$GPTXT," + longest + "*63\r\n");
        QCOMPARE(nmea_parametric_pack(3, fields, out), NMEA_ERR_TOO_LONG);
        QCOMPARE(Bytes(out), "$GPTXT," + longest);
    }
};

QTEST_APPLESS_MAIN(tst_Nmea)
#include "tst_nmea.moc"
