#include <QtTest>
#include <QtWidgets>
#include <time.h>
#include <unistd.h>

#include "glider.h"
#include "telemetry.h"
#include "varda_spp_host.h" // SPP_TYPE_*

// The vehicle panel in a fresh temporary home, times in a fixed zone (UTC+3): payloads reach the table,
// the log files and the log view; commands built with the widgets leave for the modem or the gateway.
const auto bytes = &QByteArray::fromHex; // blanks skipped
// lat 60.1234567, lon -24.9876543, 2023-11-14 22:13:20 UTC
const QByteArray POSTIME = bytes("87 1C D6 23 C1 2F 1B F1 00 F1 53 65");
const QString POS_LINE = "60.1234567;-24.9876543;1700000000";
// ctd 2748, sonar 291, csq 5, state 85, PENDING, (3), ON, OFF, rssi 150, uptime 86400, last command 7
const QByteArray HOUSEKEEPING = bytes("03") + POSTIME + bytes("BC 3A 12 AD 7A 96 80 51 01 00 07");
const QByteArray HK2 = bytes("09 4C 64 65 20 F1 00 96 80 51 01 00"); // without its last_command_seq, 7 here
const QString HK2_LINE = "housekeeping2;4;9;ON;PENDING;ON;OFF;1;0;1;0;0;1;1;123456;-50;86400;7";
const QByteArray PTH = bytes("0E 94 27 F5 FD C6 11");
const QString PTH_LINE = "pth;1013.2;-5.23;45.50";
const QByteArray RLHB1 = bytes("CA CA 22 00 00 01"); // "RLHB-1" encoded

// A received radio packet: receive header, then raw vehicle data (flags 0) or extension records (1).
const auto rx = [](char flags, const QByteArray &p) { return bytes("10 20 30 40 05 96 00") + flags + p; };
const auto fromRlhb1 = [](const QByteArray &payload) {
    return rx(1, bytes("01 07") + RLHB1 + char(0x2A) + bytes("00") + char(payload.size()) + payload);
};

class tst_Glider : public QObject
{
    Q_OBJECT
    inline static QStringList s_debug;
    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<Glider> m_glider;
    std::unique_ptr<QSignalSpy> m_sbd;
    QAbstractItemModel *m_model = nullptr;

    template <typename T = QWidget> T *w(const char *name) const
    {
        return m_glider->findChild<T *>(name);
    }
    void press(const char *button)
    {
        QTest::mouseClick(w<QPushButton>(button), Qt::LeftButton);
    }
    void set(const QString &settings) // "name=value;...": checked, text, current text or value
    {
        for (const QString &setting : settings.split(';', Qt::SkipEmptyParts)) {
            QWidget *widget = w(qPrintable(setting.section('=', 0, 0)));
            widget->metaObject()->userProperty().write(widget, setting.section('=', 1));
        }
    }
    void feed(const QByteArray &bytes, int sppType = -1) // a payload, or a radio packet of that type
    {
        QVector<uint8_t> copy(bytes.begin(), bytes.end()); // exact size, for the sanitizers
        if (sppType < 0)
            m_glider->handleData(copy.constData(), uint16_t(copy.size()));
        else
            m_glider->incomingPell(uint8_t(sppType), copy.constData(), uint16_t(copy.size()), "serial");
    }
    QStringList fileLines(const QString &name) const
    {
        QFile file(m_home->path() + "/.toolbox/" + name);
        return file.open(QFile::ReadOnly) ? QString(file.readAll()).split("\r\n", Qt::SkipEmptyParts)
                                          : QStringList();
    }

private slots:
    void init()
    {
        qputenv("TZ", "XST-3");
        tzset();
        qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &, const QString &msg) {
            if (type == QtDebugMsg && s_debug.size() < 10000) // the long run writes 300,000
                s_debug << msg;
        });
        m_home.reset(new QTemporaryDir);
        qputenv("HOME", m_home->path().toLocal8Bit()); // the panel logs to HOME/.toolbox
        m_glider.reset(new Glider);
        m_model = w<QTableView>("telemetryTableView")->model();
        m_sbd.reset(new QSignalSpy(m_glider.get(), &Glider::outgoingSbd));
        s_debug.clear();
    }

    void payloads_data()
    {
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<QString>("rows"); // consecutive rows of the table; empty: no rows at all
        QTest::addColumn<QStringList>("lines"); // of both log files
        QTest::addColumn<QStringList>("debug"); // the last debug lines, without "New item"
        const auto row = [](const char *name, const QByteArray &payload, const QString &rows,
                             const QStringList &lines, const QStringList &debug = {}) {
            QTest::newRow(name) << payload << rows << lines << debug;
        };
        const QByteArray sonar = bytes("06") + POSTIME;
        row("housekeeping", HOUSEKEEPING, "Lon=-24.9876543;Time=01:13:20 15.11.2023;Last cmd. seq.=7",
            { "housekeeping;2748;291;5;85;PENDING;;ON;OFF;-50;86400;" + POS_LINE + ";7" });
        // Rows keep the order of first appearance; a position record overwrites in place, in UTC.
        row("housekeeping and position", HOUSEKEEPING + bytes("0F") + POSTIME,
            "CTD samples=2748;Sonar samples=291;Iridium CSQ=5;Iridium state=85;CTD power=PENDING;"
            "Sonar power=;Pell power=ON;Iridium power=OFF;Pell RSSI=-50;Uptime=86400;Lat=60.1234567;"
            "Lon=-24.9876543;Time=22:13:20 14.11.2023;Last cmd. seq.=7",
            { "housekeeping;2748;291;5;85;PENDING;;ON;OFF;-50;86400;" + POS_LINE + ";7",
                "postime;" + POS_LINE });
        row("housekeeping2", HK2 + bytes("07"), "PTH log OK=1;Logging OK=1;Log size (KiB)=123456",
            { HK2_LINE });
        row("ctd", bytes("04 02 01 B8 0D 33 89 10 27 00 D2 04 05 00 20 4E"),
            "CTD temperature=15.123;CTD pressure=100.00;CTD turbidity=12.34;CTD fluorescence=0.05;"
            "CTD sound velocity=1500",
            { "ctd;258;35.12;15.123;100.00;12.34;0.05;1500.00" });
        row("o2 and pth", bytes("0B B4 61 94 26 F4 01") + PTH, "O2 temperature=-5.00;PTH pressure=1013.2",
            { "o2;250.12;98.76;-5.00", PTH_LINE });
        row("pco2", bytes("11 FF FF FF 39 30 00 B8 0B 39 30 D2 04 38 00"),
            "CO2 pressure (uatm)=1.67772e+07;CO2 (mg/l)=123.45;CO2 temperature=20.00;"
            "CO2 CalPhase (deg)=12.345;CO2 C1Amp (mV)=123.4;CO2 C2Amp (mV)=5.6",
            { "pco2;16777215;123.45;20.00" });
        // 524288 and its negative: the table and the log divide differently
        row("light", bytes("10 00 00 08 10 00 00 F8"), "Light (µV)=-1000.0",
            { "light;131072.0", "light;-131072.0" });
        row("sonar: run, sleep, no command text, a state out of range (ignored)",
            sonar + bytes("D3 01") + sonar + bytes("00 00") + sonar + bytes("05 00") + sonar + bytes("D3 02"),
            "",
            { "sonar_report;RUN SEQUENCE 3;COMPLETE;" + POS_LINE, "sonar_report;SLEEP;STARTED;" + POS_LINE,
                "sonar_report;;STARTED;" + POS_LINE });
        row("water column", bytes("07 00 7F 80 FF 01 FE 10 F0 08 01 05 3C 9A"), "",
            { "sonar_wcol8;0;127;-128;-1;1;-2;16;-16", "sonar_desc;1;5;60;10;9" });
        // A payload is split whole before any record is shown: a fault anywhere drops all of it.
        row("empty", QByteArray(), "", {}, { "Got 0 packets" });
        row("record cut short", HOUSEKEEPING.chopped(1), "", {},
            { "In packet 1 of type HOUSEKEEPING size is 23 but buffer space in only 23" });
        row("nameless type cut short", bytes("01 00"), "", {},
            { "In packet 1 of type  size is 255 but buffer space in only 2" });
        row("invalid third type", PTH + PTH + bytes("20 01"), "", {},
            { "Subpacket 2 type PTH using 6 (+1) of 9 bytes", "32", "Invalid type, not parsing" });
        row("unknown types", bytes("02 01 02 03 0C 00 00 00 00 00 00 00 00 0D 00 00") + PTH,
            "PTH pressure=1013.2", { PTH_LINE },
            { "Got 4 packets", "Unknown type", "Unknown type", "Unknown type" });
        row("99 records", PTH.repeated(99), "PTH humidity=45.50", QVector<QString>(99, PTH_LINE).toList(),
            { "Got 99 packets" });
        row("100 records", PTH.repeated(100), "", {}, { "Reached max packets with remaining 0 bytes" });
    }
    // The view hides telemetry lines by default, never event lines.
    void payloads()
    {
        QFETCH(QByteArray, payload);
        QFETCH(QString, rows);
        QFETCH(QStringList, lines);
        QFETCH(QStringList, debug);
        feed(payload);
        QStringList table;
        for (int row = 0; row < m_model->rowCount(); row++)
            table << m_model->index(row, 0).data().toString() + "="
                    + m_model->index(row, 1).data().toString();
        QVERIFY2(
            rows.isEmpty() ? table.isEmpty() : table.join(';').contains(rows), qPrintable(table.join(';')));
        QCOMPARE(fileLines("telemetry.txt") + fileLines("event.txt"), lines);
        QCOMPARE(w<QTextBrowser>("logView")->toPlainText(), fileLines("event.txt").join('\n'));
        const QStringList all = s_debug.filter(QRegularExpression("^(?!New item)"));
        QCOMPARE(all.mid(all.size() - debug.size()), debug);
    }

    void commands_data()
    {
        QTest::addColumn<QString>("settings");
        QTest::addColumn<QString>("button");
        QTest::addColumn<QByteArray>("entry"); // message type, then the record without cmd_seq
        const auto cmd = [](const char *name, const char *settings, const char *button, const char *entry) {
            QTest::newRow(name) << QString(settings) << button << bytes(entry);
        };
        cmd("power Pell on", "powerChannel=Pell;powerState=1", "powerSet", "02 10 61");
        cmd("request Iridium", "linkConfigSelect=Iridium", "telemetryRequestButton", "02 00 01");
        cmd("rate Pell", "", "telemetryRateSet", "02 09 3C");
        cmd("rate Iridium", "linkConfigSelect=Iridium;telemetryRateSlider=200", "telemetryRateSet",
            "02 0A C8");
        cmd("messages Pell", "", "setTelemetryMessages", "0A 12 10 04 00 00");
        cmd("messages Iridium",
            "linkConfigSelect=Iridium;checkMsgHousekeeping=1;checkMsgHk2=0;checkMsgCtd=1;"
            "checkMsgSonarReport=1;checkMsgO2=1;checkMsgPth=1;checkMsgSonarWcol=1;checkMsgPostime=0",
            "setTelemetryMessages", "0A 13 2B 03 00 00");
        cmd("sonar", "sonarPing=RUN;sonarStep=ENSEMBLE;sonarProgram=5", "sonarSet", "02 11 E5");
        cmd("sonar auto", "sonarPing=RUN;sonarStep=SEQUENCE;sonarProgram=3", "sonarAutoCmdSet", "02 17 D3");
        cmd("sonar auto rate", "sonarAutoCmdRate=130", "sonarAutoCmdRateSet", "02 18 82");
        cmd("sonar script", "sonarScriptSelect=START=5 RANGE=100", "sonarScriptSet", "02 14 02");
        cmd("water columns", "", "sonarWcolMaxSet", "02 16 0A");
        cmd("card clear flag", "", "cardClearErrorFlag", "0A 15 03 00 00 00");
    }
    void commands()
    {
        QFETCH(QString, settings);
        QFETCH(QString, button);
        QFETCH(QByteArray, entry);
        set("activeLinkCombo=Iridium;" + settings);
        press(qPrintable(button));
        const char seq = char(w<QLabel>("ackLabel")->text().toInt());
        QCOMPARE(*m_sbd, QList<QVariantList>({ { "300100000000000", entry.left(1) + seq + entry.mid(1) } }));
    }

    // Queued commands leave over Iridium in one block; the vehicle's housekeeping confirms the last.
    void queueAndConfirmation()
    {
        set("activeLinkCombo=Iridium;queueEnabled=1;powerChannel=Pell");
        for (const char *button : { "powerSet", "cardOpen", "sonarSleep" })
            press(button);
        QVERIFY(m_sbd->isEmpty());
        QCOMPARE(w<QLabel>("queueItemsLabel")->text(), QString("3"));
        press("queueSendNow");
        const uint8_t first = uint8_t(w<QLabel>("ackLabel")->text().toInt() - 2);
        const QByteArray block = bytes("02") + char(first) + bytes("10 60 0A") + char(first + 1)
            + bytes("15 00 00 00 00 02") + char(first + 2) + bytes("11 00");
        QCOMPARE(m_sbd->takeFirst(), QVariantList({ "300100000000000", block }));
        QVERIFY(s_debug.contains("Sent \"" + block.toHex() + "\""));
        m_glider->incomingSbd("300100000000001", HK2 + char(first + 2)); // another modem
        feed(fromRlhb1(HK2 + char(first + 1)), SPP_TYPE_RX); // an older command
        QCOMPARE(w<QLabel>("ackLabel")->palette().color(QPalette::WindowText), QColor(Qt::red));
        m_glider->incomingSbd("300100000000000", HK2 + char(first + 2));
        QCOMPARE(w<QLabel>("ackLabel")->palette().color(QPalette::WindowText), QColor(Qt::darkGreen));
        for (int i = 0; i < 258; i++) // flushed commands keep their numbers, 255 is followed by 0
            press("powerSet");
        press("queueFlush");
        QCOMPARE(w<QLabel>("queueItemsLabel")->text(), QString("0"));
        press("queueSendNow"); // an empty queue sends an empty block
        set("queueEnabled=0");
        press("sonarSleep");
        QCOMPARE(m_sbd->takeFirst().at(1), QVariant(QByteArray()));
        QCOMPARE(m_sbd->takeFirst().at(1), QVariant(bytes("02") + char(first + 5) + bytes("11 00")));
        QCOMPARE(w<QLabel>("ackLabel")->palette().color(QPalette::WindowText), QColor(Qt::red));
        QCOMPARE(s_debug.filter("[Glider]"), QStringList { "[Glider] Got valid Iridium IMEI" });
    }

    void pellSizeLimit()
    {
        const QByteArray block(209, '\x5A');
        QSignalSpy pell(m_glider.get(), &Glider::outgoingPell);
        m_glider->sendData(reinterpret_cast<const uint8_t *>(block.constData()), 208);
        QCOMPARE(pell.takeFirst().at(0).toByteArray().mid(5), // behind the SPP header
            bytes("01 06 06") + RLHB1 + bytes("00 D0") + block.left(208)); // flags 1, destination, data
        int out[2], saved = dup(STDOUT_FILENO); // standard output goes into a pipe while the block is sent
        QVERIFY(fflush(stdout) == 0);
        QVERIFY(pipe(out) == 0);
        QVERIFY(dup2(out[1], STDOUT_FILENO) >= 0);
        m_glider->sendData(reinterpret_cast<const uint8_t *>(block.constData()), 209);
        fflush(stdout);
        dup2(saved, STDOUT_FILENO);
        char text[32] = {};
        QCOMPARE(read(out[0], text, sizeof text - 1), ssize_t(23));
        QCOMPARE(QByteArray(text), "Pell packet oversized\r\n");
        QVERIFY(pell.isEmpty());
        for (int fd : { out[0], out[1], saved })
            close(fd);
    }

    // Whole seconds are shown even for hour codes.
    void intervals()
    {
        for (auto [code, seconds] :
            { std::pair { 60, 60u }, { 61, 60u }, { 120, 3600u }, { 121, 3600u }, { 255, 486000u } })
            QCOMPARE(cmd_interval_to_msec(uint8_t(code)), seconds * 1000);
        for (const char *name : { "telemetryRateSlider", "sonarAutoCmdRate" }) {
            w<QSlider>(name)->setSliderDown(true); // dragged by the operator
            w<QSlider>(name)->setSliderPosition(121);
        }
        QCOMPARE(w<QLineEdit>("telemetryRateDisplay")->text(), QString("3600 s"));
        QCOMPARE(w<QPushButton>("sonarAutoCmdRateSet")->text(), QString("Set rate (3600 s)"));
    }

    // Raw data from any sender is decoded; an extension only from the callsign in the field,
    // decoded before it is passed on.
    void radioPackets()
    {
        QSignalSpy forwarded(m_glider.get(), &Glider::gliderPayloadReceived);
        feed(QByteArray(7, '\xff'), SPP_TYPE_RX); // no room for the header (more: fuzz_glider_payload)
        feed(rx(0, HK2 + char(7)), SPP_TYPE_CMD); // a modem reply
        feed(rx(1, bytes("01 07") + RLHB1 + char(0x2A)), SPP_TYPE_RX); // no data record
        set("pellDestinationEntry=rlhb-1");
        feed(fromRlhb1(HK2 + char(7)), SPP_TYPE_RX);
        feed(rx(0, QByteArray()), SPP_TYPE_RX);
        QCOMPARE(s_debug, QStringList { "Got 0 packets" });
        set("ignoreHousekeepingCheck=0"); // the view shows telemetry lines too
        feed(rx(0, HK2 + char(7)), SPP_TYPE_RX);
        QVERIFY(s_debug.contains("New item \"Iridium CSQ\""));
        QCOMPARE(w<QTextBrowser>("logView")->toPlainText(), HK2_LINE);
        press("telemetryTableClear");
        QCOMPARE(m_model->headerData(1, Qt::Horizontal).toString(), QString("Value"));
        set("pellDestinationEntry=RLHB-1");
        connect(m_glider.get(), &Glider::gliderPayloadReceived, this,
            [this] { QCOMPARE(m_model->rowCount(), 17); });
        feed(fromRlhb1(HK2 + char(7)), SPP_TYPE_RX);
        QCOMPARE(QList<QVariantList>(forwarded), QList<QVariantList>({ { "RLHB-1", HK2 + char(7) } }));
    }

    // A log that cannot be opened costs its line, not the view's; the next line tries again.
    void unwritableLog()
    {
        const QString events = m_home->path() + "/.toolbox/event.txt";
        const QByteArray describer = bytes("08 01 05 3C 9A"); // a sonar column describer: an event line
        QVERIFY(QDir().mkpath(events)); // a directory in the file's place fails even for root
        feed(describer);
        QVERIFY(s_debug.contains("Failed to open log"));
        QVERIFY(QDir(events).removeRecursively());
        feed(describer);
        QCOMPARE(w<QTextBrowser>("logView")->toPlainText(), "sonar_desc;1;5;60;10;9\nsonar_desc;1;5;60;10;9");
        QCOMPARE(fileLines("event.txt"), QStringList { "sonar_desc;1;5;60;10;9" });
    }

    // Alone as tst_glider_stress: the table keeps its rows, each log file gains one line per record.
    void hundredThousandPayloads()
    {
        if (!QCoreApplication::arguments().contains(QTest::currentTestFunction()))
            QSKIP("long: run on its own as tst_glider_stress");
        for (int i = 0; i < 100000; i++) // a status record and a sonar column describer
            feed(HK2 + bytes("07 08 01 05 3C 9A"));
        QCOMPARE(m_model->rowCount(), 17);
        QCOMPARE(fileLines("telemetry.txt"), QVector<QString>(100000, HK2_LINE).toList());
        QCOMPARE(fileLines("event.txt"), QVector<QString>(100000, "sonar_desc;1;5;60;10;9").toList());
        QCOMPARE(w<QTextBrowser>("logView")->document()->blockCount(), 5000); // the files keep it all
    }
};

QTEST_MAIN(tst_Glider)
#include "tst_glider.moc"
