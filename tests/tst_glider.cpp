#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QTableView>
#include <QTemporaryFile>
#include <QTextBrowser>
#include <QtTest>

#include <time.h>
#include <unistd.h>

#include "glider_harness.h"
#include "spp_host_qt.h"
#include "telemetry.h"
#include "varda_spp_host.h"

// The vehicle panel as the operator has it: payloads reach the table, the log
// files and the log view; commands are built by setting widgets and pressing
// buttons, and leave as exact frames for the radio modem or the satellite
// gateway. Times are checked in a fixed zone, UTC+3.
namespace
{
// lat 60.1234567, lon -24.9876543, 2023-11-14 22:13:20 UTC
const char POSTIME[] = "87 1C D6 23 C1 2F 1B F1 00 F1 53 65";
const QString POS_LINE = "60.1234567;-24.9876543;1700000000";
// ctd 2748, sonar 291, csq 5, state 85, PENDING, (3), ON, OFF, rssi 150, uptime 86400, last command 7
const char HK_STATUS[] = "BC 3A 12 AD 7A 96 80 51 01 00 07";
const char PTH[] = "0E 94 27 F5 FD C6 11";
const char RLHB1[] = "CA CA 22 00 00 01"; // "RLHB-1" encoded
// housekeeping2 without its last_command_seq
const char HK2_HEAD[] = "09 4C 64 65 20 F1 00 96 80 51 01 00";

QByteArray frame(uint8_t type, const QByteArray &payload)
{
    vrd_spphdr_t header;
    varda_spp_fill_header(
        &header, type, reinterpret_cast<const uint8_t *>(payload.constData()), uint8_t(payload.size()));
    return QByteArray(reinterpret_cast<const char *>(&header), sizeof(header)) + payload;
}

// A command block for the modem to send: flags 1, destination record, data record.
QByteArray toVehicle(const QByteArray &block)
{
    return frame(SPP_TYPE_TX, bytes("01 06 06") + bytes(RLHB1) + bytes("00") + char(block.size()) + block);
}

// A received radio packet: receive header with the given flags, then the packet.
QByteArray received(uint8_t flags, const QByteArray &packet, uint8_t type = SPP_TYPE_RX)
{
    return frame(type, bytes("10 20 30 40 05 96 00") + char(flags) + packet);
}

// Source and data records of an extension packet.
QByteArray extension(const char *callsign, const QByteArray &vehicle)
{
    return bytes("01 07") + bytes(callsign) + char(0x2A) + bytes("00") + char(vehicle.size()) + vehicle;
}

void row(const char *name, const QByteArray &payload, const QString &rows, const QStringList &lines,
    const QStringList &debug = {})
{
    QTest::newRow(name) << payload << rows << lines << debug;
}

void cmd(const char *name, const char *settings, const char *button, const char *entry)
{
    QTest::newRow(name) << QString(settings) << button << bytes(entry);
}
} // namespace

class TestGlider : public QObject
{
    Q_OBJECT
    std::unique_ptr<GliderInTempHome> m_panel;
    std::unique_ptr<QSignalSpy> m_pell, m_sbd;
    Glider *m_glider = nullptr;
    QAbstractItemModel *m_model = nullptr;

    template <typename T = QWidget> T *w(const char *name) const
    {
        return m_glider->findChild<T *>(name);
    }
    void press(const char *button)
    {
        QTest::mouseClick(w<QPushButton>(button), Qt::LeftButton);
    }
    // "name=value;...": check state, combo or line edit text, or the value of a spin box or slider
    void set(const QString &settings)
    {
        for (const QString &setting : settings.split(';', Qt::SkipEmptyParts)) {
            QWidget *widget = w(qPrintable(setting.section('=', 0, 0)));
            const QString v = setting.section('=', 1);
            if (auto check = qobject_cast<QCheckBox *>(widget))
                check->setCheckState(Qt::CheckState(v.toInt()));
            else if (qobject_cast<QComboBox *>(widget) || qobject_cast<QLineEdit *>(widget))
                widget->setProperty(qobject_cast<QComboBox *>(widget) ? "currentText" : "text", v);
            else
                widget->setProperty("value", v.toInt());
        }
    }
    QByteArray sent() const
    {
        return m_pell->isEmpty() ? "nothing" : m_pell->takeLast().at(0).toByteArray();
    }
    uint8_t ack() const
    {
        return uint8_t(w<QLabel>("ackLabel")->text().toInt());
    }
    QColor ackColour() const
    {
        return w<QLabel>("ackLabel")->palette().color(QPalette::WindowText);
    }
    void feed(const QByteArray &payload)
    {
        QVector<uint8_t> copy(payload.begin(), payload.end()); // exact size, for the sanitizers
        m_glider->handleData(copy.constData(), uint16_t(copy.size()));
    }
    void receive(const QByteArray &bytes)
    {
        SppHost modem;
        connect(&modem, &SppHost::newPacket, m_glider, &Glider::incomingPell);
        for (char c : bytes)
            modem.parse(uint8_t(c));
    }
    QStringList names() const
    {
        QStringList texts;
        for (int row = 0; row < m_model->rowCount(); row++)
            texts << m_model->index(row, 0).data().toString();
        return texts;
    }
    QString value(const QString &property) const
    {
        const int row = names().indexOf(property);
        return row < 0 ? QString("<missing>") : m_model->index(row, 1).data().toString();
    }
    QStringList fileLines(const QString &name) const
    {
        QFile file(m_panel->logDir() + "/" + name);
        if (!file.open(QIODevice::ReadOnly))
            return {};
        QStringList lines = QString::fromUtf8(file.readAll()).split("\r\n");
        lines.removeLast(); // after the last CRLF
        return lines;
    }
    QStringList viewLines() const
    {
        const QString text = w<QTextBrowser>("logView")->toPlainText();
        return text.isEmpty() ? QStringList() : text.split('\n');
    }

private slots:
    void initTestCase()
    {
        qputenv("TZ", "XST-3");
        tzset();
        captureDebugLines();
    }
    void init()
    {
        m_panel.reset(new GliderInTempHome);
        m_glider = m_panel->glider();
        m_model = w<QTableView>("telemetryTableView")->model();
        m_pell.reset(new QSignalSpy(m_glider, &Glider::outgoingPell));
        m_sbd.reset(new QSignalSpy(m_glider, &Glider::outgoingSbd));
    }

    void payloads_data()
    {
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<QString>("rows"); // "Property=Value;...", a subset; empty: no rows at all
        QTest::addColumn<QStringList>("lines"); // of the log file the first record writes to
        QTest::addColumn<QStringList>("debug"); // the last debug lines, without "New item"
        const QByteArray sonar = bytes("06") + bytes(POSTIME);
        row("housekeeping", bytes("03") + bytes(POSTIME) + bytes(HK_STATUS),
            "Sonar power=;Time=01:13:20 15.11.2023",
            { "housekeeping;2748;291;5;85;PENDING;;ON;OFF;-50;86400;" + POS_LINE + ";7" });
        row("housekeeping2", bytes("09 4C 64 65 20 F1 00 96 80 51 01 00 07"), "Pell power=ON;pCO2 log OK=0",
            { "housekeeping2;4;9;ON;PENDING;ON;OFF;1;0;1;0;0;1;1;123456;-50;86400;7" });
        row("housekeeping2 all ones", bytes("09") + QByteArray(12, '\xff'), "Log size (KiB)=33554431",
            { "housekeeping2;7;127;;;ON;ON;1;1;1;1;1;1;1;33554431;55;4294967295;255" });
        row("ctd", bytes("04 02 01 B8 0D 33 89 10 27 00 D2 04 05 00 20 4E"),
            "CTD temperature=15.123;CTD pressure=100.00;CTD fluorescence=0.05;CTD sound velocity=1500",
            { "ctd;258;35.12;15.123;100.00;12.34;0.05;1500.00" });
        row("postime", bytes("0F") + bytes(POSTIME),
            "Lat=60.1234567;Lon=-24.9876543;Time=22:13:20 14.11.2023", { "postime;" + POS_LINE });
        row("o2", bytes("0B B4 61 94 26 F4 01"), "O2 temperature=-5.00", { "o2;250.12;98.76;-5.00" });
        row("pco2", bytes("11 FF FF FF 39 30 00 B8 0B 39 30 D2 04 38 00"),
            "CO2 pressure (uatm)=1.67772e+07;CO2 CalPhase (deg)=12.345;CO2 C1Amp (mV)=123.4;CO2 C2Amp "
            "(mV)=5.6",
            { "pco2;16777215;123.45;20.00" });
        row("light", bytes("10 00 00 08"), "Light (µV)=1000.0", { "light;131072.0" });
        row("light negative", bytes("10 00 00 80"), "Light (µV)=-16000.0", { "light;-2097152.0" });
        row("pth", bytes(PTH), "PTH temperature=-5.23", { "pth;1013.2;-5.23;45.50" });
        row("sonar report", sonar + bytes("D3 01"), "",
            { "sonar_report;RUN SEQUENCE 3;COMPLETE;" + POS_LINE });
        row("sonar, unused kind", sonar + bytes("B0 00"), "", { "sonar_report;PING  0;STARTED;" + POS_LINE });
        row("sonar sleep", sonar + bytes("00 00"), "", { "sonar_report;SLEEP;STARTED;" + POS_LINE });
        row("sonar, no command", sonar + bytes("05 00"), "", { "sonar_report;;STARTED;" + POS_LINE });
        row("sonar, bad state", sonar + bytes("D3 02"), "", {});
        row("water column", bytes("07 00 7F 80 FF 01 FE 10 F0"), "",
            { "sonar_wcol8;0;127;-128;-1;1;-2;16;-16" });
        row("column describer", bytes("08 01 05 3C 9A"), "", { "sonar_desc;1;5;60;10;9" });
        // A payload is split whole before any record is shown: a fault anywhere drops all of it.
        row("empty", QByteArray(), "", {}, { "Got 0 packets" });
        row("record cut short", bytes("03") + bytes(POSTIME) + bytes(HK_STATUS).left(10), "", {},
            { "In packet 1 of type HOUSEKEEPING size is 23 but buffer space in only 23" });
        row("nameless type cut short", bytes("01 00"), "", {},
            { "In packet 1 of type  size is 255 but buffer space in only 2" });
        row("invalid third type", bytes(PTH) + bytes(PTH) + bytes("20 01"), "", {},
            { "Subpacket 1 type PTH using 6 (+1) of 16 bytes", "Subpacket 2 type PTH using 6 (+1) of 9 bytes",
                "32", "Invalid type, not parsing" });
        row("data skipped", bytes("00") + QByteArray(255, '\x55'), "", {},
            { "Subpacket 1 type DATA using 255 (+1) of 256 bytes", "Got 1 packets" });
        row("unknown types", bytes("02 01 02 03 0C 00 00 00 00 00 00 00 00 0D 00 00") + bytes(PTH),
            "PTH pressure=1013.2", { "pth;1013.2;-5.23;45.50" },
            { "Subpacket 1 type COMMAND using 3 (+1) of 23 bytes",
                "Subpacket 2 type PCO2 using 8 (+1) of 19 bytes",
                "Subpacket 3 type LICOR using 2 (+1) of 10 bytes",
                "Subpacket 4 type PTH using 6 (+1) of 7 bytes", "Got 4 packets", "Unknown type",
                "Unknown type", "Unknown type" });
        row("99 records", bytes(PTH).repeated(99), "PTH humidity=45.50",
            QVector<QString>(99, "pth;1013.2;-5.23;45.50").toList(), { "Got 99 packets" });
        row("100 records", bytes(PTH).repeated(100), "", {},
            { "Reached max packets with remaining 0 bytes" });
    }
    // The view hides telemetry lines by default, never event lines.
    void payloads()
    {
        QFETCH(QByteArray, payload);
        QFETCH(QString, rows);
        QFETCH(QStringList, lines);
        QFETCH(QStringList, debug);
        feed(payload);
        for (const QString &row : rows.split(';', Qt::SkipEmptyParts))
            QCOMPARE(row.section('=', 0, 0) + "=" + value(row.section('=', 0, 0)), row);
        if (rows.isEmpty())
            QCOMPARE(m_model->rowCount(), 0);
        const bool event = payload.size() && payload.at(0) >= 6 && payload.at(0) <= 8;
        QCOMPARE(fileLines(event ? "event.txt" : "telemetry.txt"), lines);
        QCOMPARE(fileLines(event ? "telemetry.txt" : "event.txt"), QStringList());
        QCOMPARE(viewLines(), event ? lines : QStringList());
        const QStringList all = debugLines().filter(QRegularExpression("^(?!New item)"));
        QCOMPARE(all.mid(all.size() - debug.size()), debug);
    }

    // Rows keep the order of first appearance; a position record overwrites in place, in UTC.
    void housekeepingRows()
    {
        const QStringList rows { "CTD samples", "Sonar samples", "Iridium CSQ", "Iridium state", "CTD power",
            "Sonar power", "Pell power", "Iridium power", "Pell RSSI", "Uptime", "Lat", "Lon", "Time",
            "Last cmd. seq." };
        feed(bytes("03") + bytes(POSTIME) + bytes(HK_STATUS));
        QCOMPARE(debugLines().filter("New item").size(), rows.size());
        QCOMPARE(debugLines().filter("New item").first(), QString("New item \"CTD samples\""));
        feed(bytes("0F") + bytes(POSTIME));
        QCOMPARE(names(), rows);
        QCOMPARE(value("Time"), QString("22:13:20 14.11.2023"));
        press("telemetryTableClear");
        QCOMPARE(m_model->rowCount(), 0);
        QCOMPARE(m_model->headerData(1, Qt::Horizontal).toString(), QString("Value"));
    }

    // The line is lost from the file but still shown; the next line tries again.
    void unwritableLogDir()
    {
        const QString dir = m_panel->logDir();
        QFile::setPermissions(dir, QFile::ReadOwner | QFile::ExeOwner);
        if (QFile(dir + "/probe").open(QIODevice::WriteOnly)) { // privileged: block the file itself
            QFile::remove(dir + "/probe");
            QVERIFY(QDir(dir).mkdir("telemetry.txt"));
        }
        set("ignoreHousekeepingCheck=0");
        feed(bytes(PTH));
        QVERIFY(debugLines().contains("Failed to open log"));
        QCOMPARE(value("PTH pressure"), QString("1013.2"));
        QCOMPARE(viewLines(), QStringList { "pth;1013.2;-5.23;45.50" });
        QFile::setPermissions(dir, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QDir(dir).rmdir("telemetry.txt");
        feed(bytes(PTH));
        QCOMPARE(fileLines("telemetry.txt"), QStringList { "pth;1013.2;-5.23;45.50" });
    }

    void commands_data()
    {
        QTest::addColumn<QString>("settings");
        QTest::addColumn<QString>("button");
        QTest::addColumn<QByteArray>("entry"); // message type, then the record without cmd_seq
        cmd("power Pell on", "powerChannel=Pell;powerState=2", "powerSet", "02 10 61");
        cmd("power CTD off", "", "powerSet", "02 10 40");
        cmd("request Iridium", "linkConfigSelect=Iridium", "telemetryRequestButton", "02 00 01");
        cmd("rate Pell", "", "telemetryRateSet", "02 09 3C");
        cmd("rate Iridium", "linkConfigSelect=Iridium;telemetryRateSlider=200", "telemetryRateSet",
            "02 0A C8");
        cmd("messages Pell", "", "setTelemetryMessages", "0A 12 10 04 00 00");
        // a partly checked box counts as set
        cmd("messages Iridium",
            "linkConfigSelect=Iridium;checkMsgHousekeeping=2;checkMsgHk2=0;checkMsgCtd=2;"
            "checkMsgSonarReport=2;checkMsgO2=1;checkMsgPth=2;checkMsgSonarWcol=2;checkMsgPostime=0",
            "setTelemetryMessages", "0A 13 2B 03 00 00");
        cmd("sonar run ensemble 5", "sonarPing=RUN;sonarStep=ENSEMBLE;sonarProgram=5", "sonarSet",
            "02 11 E5");
        cmd("sonar auto", "sonarPing=RUN;sonarStep=SEQUENCE;sonarProgram=3", "sonarAutoCmdSet", "02 17 D3");
        cmd("sonar auto rate", "sonarAutoCmdRate=130", "sonarAutoCmdRateSet", "02 18 82");
        cmd("sonar script", "sonarScriptSelect=START=5 RANGE=100", "sonarScriptSet", "02 14 02");
        cmd("water columns", "", "sonarWcolMaxSet", "02 16 0A");
        cmd("card flush", "", "cardFlush", "0A 15 01 00 00 00");
        cmd("card close", "", "cardClose", "0A 15 02 00 00 00");
        cmd("card clear flag", "", "cardClearErrorFlag", "0A 15 03 00 00 00");
    }
    void commands()
    {
        QFETCH(QString, settings);
        QFETCH(QString, button);
        QFETCH(QByteArray, entry);
        set(settings);
        press(qPrintable(button));
        QCOMPARE(sent(), toVehicle(entry.left(1) + char(ack()) + entry.mid(1)));
        QVERIFY(m_pell->isEmpty() && m_sbd->isEmpty());
    }

    void sequenceWraps()
    {
        press("powerSet");
        const uint8_t first = ack();
        for (int i = 0; i < 256; i++)
            press("powerSet");
        QCOMPARE(sent(), toVehicle(bytes("02") + char(first) + bytes("10 40"))); // 255 is followed by 0
    }

    // Three commands go out in one block; flushed ones keep their numbers.
    void queue()
    {
        set("activeLinkCombo=Iridium;queueEnabled=2;powerChannel=Pell");
        press("powerSet");
        press("cardOpen");
        press("sonarSleep");
        QCOMPARE(w<QLabel>("queueItemsLabel")->text(), QString("3"));
        QVERIFY(m_sbd->isEmpty());
        press("queueSendNow");
        QCOMPARE(w<QLabel>("queueItemsLabel")->text(), QString("0"));
        const uint8_t first = ack() - 2;
        const QByteArray block = bytes("02") + char(first) + bytes("10 60 0A") + char(first + 1)
            + bytes("15 00 00 00 00 02") + char(first + 2) + bytes("11 00");
        QCOMPARE(m_sbd->takeFirst(), QVariantList({ "300100000000000", block }));
        QCOMPARE(ackColour(), QColor(Qt::red));
        QVERIFY(debugLines().contains("Sent \"" + block.toHex() + "\""));
        press("powerSet");
        press("powerSet");
        press("queueFlush");
        QCOMPARE(w<QLabel>("queueItemsLabel")->text(), QString("0"));
        press("queueSendNow"); // an empty queue sends an empty block
        set("queueEnabled=0");
        press("sonarSleep");
        QCOMPARE(m_sbd->takeFirst().at(1), QVariant(QByteArray()));
        QCOMPARE(m_sbd->takeFirst().at(1), QVariant(bytes("02") + char(first + 5) + bytes("11 00")));
        QVERIFY(m_pell->isEmpty());
    }

    void pellSizeLimit()
    {
        const QByteArray block(209, '\x5A');
        m_glider->sendData(reinterpret_cast<const uint8_t *>(block.constData()), 208);
        QCOMPARE(sent(), toVehicle(block.left(208)));
        QTemporaryFile out; // standard output goes here while the block is sent
        QVERIFY(out.open());
        fflush(stdout);
        const int saved = dup(STDOUT_FILENO);
        dup2(out.handle(), STDOUT_FILENO);
        m_glider->sendData(reinterpret_cast<const uint8_t *>(block.constData()), 209);
        fflush(stdout);
        dup2(saved, STDOUT_FILENO);
        close(saved);
        out.seek(0);
        QCOMPARE(out.readAll(), QByteArray("Pell packet oversized\r\n"));
        QVERIFY(m_pell->isEmpty());
    }

    // Whole seconds are shown even for minute and hour codes.
    void intervals()
    {
        QCOMPARE(w<QLineEdit>("telemetryRateDisplay")->text(), QString()); // until the slider moves
        for (auto [code, seconds] :
            { std::pair { 1, 1 }, { 60, 60 }, { 61, 60 }, { 120, 3600 }, { 121, 3600 }, { 200, 288000 } }) {
            QCOMPARE(cmd_interval_to_msec(uint8_t(code)), uint32_t(seconds * 1000));
            for (const char *name : { "telemetryRateSlider", "sonarAutoCmdRate" }) {
                w<QSlider>(name)->setSliderDown(true); // dragged by the operator
                w<QSlider>(name)->setSliderPosition(code);
            }
            QCOMPARE(w<QLineEdit>("telemetryRateDisplay")->text(), QString("%1 s").arg(seconds));
            QCOMPARE(w<QPushButton>("sonarAutoCmdRateSet")->text(), QString("Set rate (%1 s)").arg(seconds));
        }
        QVERIFY(m_pell->isEmpty());
    }

    void incomingPell_data()
    {
        QTest::addColumn<QString>("callsignField");
        QTest::addColumn<QByteArray>("frame");
        QTest::addColumn<QString>("outcome"); // rows decoded, and what is forwarded
        const QByteArray hk2 = bytes(HK2_HEAD) + bytes("07");
        QTest::newRow("raw data, any sender") << "RLHB-1" << received(0, hk2) << "17";
        QTest::newRow("from the vehicle")
            << "RLHB-1" << received(1, extension(RLHB1, hk2)) << QString("17 RLHB-1 " + hk2.toHex());
        QTest::newRow("field in other case") << "rlhb-1" << received(1, extension(RLHB1, hk2)) << "0";
        QTest::newRow("no data record")
            << "RLHB-1" << received(1, bytes("01 07") + bytes(RLHB1) + bytes("2A")) << "0";
        QTest::newRow("modem reply") << "RLHB-1" << received(0, hk2, 3) << "0";
    }
    void incomingPell()
    {
        QFETCH(QString, callsignField);
        QFETCH(QByteArray, frame);
        QFETCH(QString, outcome);
        set("pellDestinationEntry=" + callsignField);
        QString seen; // the rows are there when the payload is passed on
        connect(
            m_glider, &Glider::gliderPayloadReceived, this, [&](const QString &call, const QByteArray &pl) {
                seen = QString("%1 %2 ").arg(m_model->rowCount()).arg(call) + pl.toHex();
            });
        receive(frame);
        QCOMPARE(seen.isEmpty() ? QString::number(m_model->rowCount()) : seen, outcome);
    }

    void shortRadioPacket()
    {
        for (int len = 0; len < 8; len++) {
            QVector<uint8_t> packet(len, 0xFF); // exact size: no room for a header
            m_glider->incomingPell(SPP_TYPE_RX, packet.data(), uint16_t(len), "serial");
        }
        receive(received(0, QByteArray()));
        QCOMPARE(debugLines(), QStringList { "Got 0 packets" });
    }

    // The vehicle reports the last command sent as executed: the number turns dark green.
    void confirmation()
    {
        const auto hk2 = [](int seq) { return bytes(HK2_HEAD) + char(seq); };
        press("powerSet");
        m_glider->incomingSbd("300100000000001", hk2(ack())); // another modem
        receive(received(1, extension(RLHB1, hk2(ack() - 1))));
        QCOMPARE(ackColour(), QColor(Qt::red));
        receive(received(1, extension(RLHB1, hk2(ack()))));
        QCOMPARE(ackColour(), QColor(Qt::darkGreen));
        press("powerSet");
        QCOMPARE(ackColour(), QColor(Qt::red));
        m_glider->incomingSbd("300100000000000", hk2(ack()));
        QCOMPARE(ackColour(), QColor(Qt::darkGreen));
        QCOMPARE(debugLines().filter("[Glider]"), QStringList { "[Glider] Got valid Iridium IMEI" });
    }
};

QTEST_MAIN(TestGlider)
#include "tst_glider.moc"
