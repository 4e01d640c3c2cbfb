#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QTableView>
#include <QTemporaryFile>
#include <QtTest>

#include <stdio.h>
#include <unistd.h>

#include "glider_harness.h"
#include "spp_host_qt.h"
#include "varda_spp_host.h"

// The panel driven as an operator drives it: widgets set, buttons pressed,
// and the bytes that leave for the radio modem or the satellite gateway read
// back with the SPP parser. Payloads come in as SPP frames of the modem.
namespace
{

// "RLHB-1" encoded, and the extension records around a command block
const char RLHB1[] = "CA CA 22 00 00 01";
// housekeeping2 with last_command_seq left for the caller to append
const char HK2_HEAD[] = "09 4C 64 65 20 F1 00 96 80 51 01 00";

// A received radio packet as the modem frames it: SPP type 0, receive
// header with the given flags, then the packet.
QByteArray modemFrame(uint8_t type, uint8_t flags, const QByteArray &packet)
{
    const QByteArray payload = bytes("10 20 30 40 05 96 00") + char(flags) + packet;
    vrd_spphdr_t header;
    varda_spp_fill_header(
        &header, type, reinterpret_cast<const uint8_t *>(payload.constData()), uint8_t(payload.size()));
    return QByteArray(reinterpret_cast<const char *>(&header), sizeof(header)) + payload;
}

QByteArray extensionFrom(const char *callsign, const QByteArray &vehicle)
{
    return bytes("01 07") + bytes(callsign) + char(0x2A) + bytes("00") + char(vehicle.size()) + vehicle;
}

} // namespace

class TestGliderCommands : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();

    void commands_data();
    void commands();
    void sequenceWraps();
    void queue();
    void emptySend();
    void iridiumLink();
    void pellSizeLimit_data();
    void pellSizeLimit();
    void sliderFeedback_data();
    void sliderFeedback();
    void incomingPell_data();
    void incomingPell();
    void shortRadioPacket();
    void confirmation();
    void incomingSbd();

private:
    template <typename T> T *widget(const char *name) const
    {
        T *w = m_glider->findChild<T *>(name);
        [&] { QVERIFY2(w, name); }();
        return w;
    }
    void press(const char *button);
    void set(const QVariantMap &settings);
    QByteArray pellBlock(const QByteArray &frame);
    QByteArray lastBlock();
    int ack() const;
    int rows() const;
    void receive(const QByteArray &frame);

    GliderInTempHome *m_panel = nullptr;
    Glider *m_glider = nullptr;
    QSignalSpy *m_pell = nullptr;
    QSignalSpy *m_sbd = nullptr;
};

void TestGliderCommands::initTestCase()
{
    captureDebugLines();
}

void TestGliderCommands::init()
{
    m_panel = new GliderInTempHome;
    m_glider = m_panel->glider();
    m_pell = new QSignalSpy(m_glider, &Glider::outgoingPell);
    m_sbd = new QSignalSpy(m_glider, &Glider::outgoingSbd);
}

void TestGliderCommands::cleanup()
{
    delete m_sbd;
    delete m_pell;
    delete m_panel;
}

void TestGliderCommands::press(const char *button)
{
    QTest::mouseClick(widget<QPushButton>(button), Qt::LeftButton);
}

void TestGliderCommands::set(const QVariantMap &settings)
{
    for (auto it = settings.begin(); it != settings.end(); ++it) {
        QWidget *w = widget<QWidget>(qPrintable(it.key()));
        if (auto combo = qobject_cast<QComboBox *>(w))
            combo->setCurrentText(it.value().toString());
        else if (auto check = qobject_cast<QCheckBox *>(w))
            check->setCheckState(Qt::CheckState(it.value().toInt()));
        else if (auto spin = qobject_cast<QSpinBox *>(w))
            spin->setValue(it.value().toInt());
        else if (auto slider = qobject_cast<QSlider *>(w))
            slider->setValue(it.value().toInt());
        else if (auto edit = qobject_cast<QLineEdit *>(w))
            edit->setText(it.value().toString());
    }
}

// Reads an outgoing frame as the modem would and returns the command block
// after checking the transmit flags and the destination record.
QByteArray TestGliderCommands::pellBlock(const QByteArray &frame)
{
    SppHost modem;
    QByteArray packet;
    int type = -1;
    connect(&modem, &SppHost::newPacket, this, [&](uint8_t t, uint8_t *data, uint16_t len, const QString &) {
        type = t;
        packet = QByteArray(reinterpret_cast<const char *>(data), len);
    });
    for (char c : frame)
        modem.parse(uint8_t(c));
    [&] {
        QCOMPARE(type, int(SPP_TYPE_TX));
        QCOMPARE(packet.left(9), bytes("01 06 06") + bytes(RLHB1)); // flags 1, destination
        QCOMPARE(packet.mid(9, 1), bytes("00")); // data record
        QCOMPARE(uint8_t(packet.at(10)), uint8_t(packet.size() - 11));
    }();
    return packet.mid(11);
}

QByteArray TestGliderCommands::lastBlock()
{
    if (m_pell->isEmpty())
        return QByteArray();
    return pellBlock(m_pell->takeLast().at(0).toByteArray());
}

int TestGliderCommands::ack() const
{
    return m_glider->findChild<QLabel *>("ackLabel")->text().toInt();
}

int TestGliderCommands::rows() const
{
    return m_glider->findChild<QTableView *>("telemetryTableView")->model()->rowCount();
}

void TestGliderCommands::receive(const QByteArray &frame)
{
    SppHost modem;
    connect(&modem, &SppHost::newPacket, m_glider, &Glider::incomingPell);
    for (char c : frame)
        modem.parse(uint8_t(c));
}

void TestGliderCommands::commands_data()
{
    QTest::addColumn<QVariantMap>("settings");
    QTest::addColumn<QString>("button");
    QTest::addColumn<QByteArray>("entry"); // message type, then the record without cmd_seq

    QTest::newRow("power Pell on") << QVariantMap { { "powerChannel", "Pell" },
        { "powerState", Qt::Checked } }
                                   << "powerSet" << bytes("02 10 61");
    QTest::newRow("power CTD off") << QVariantMap() << "powerSet" << bytes("02 10 40");
    QTest::newRow("power Sonar on") << QVariantMap { { "powerChannel", "Sonar" },
        { "powerState", Qt::Checked } }
                                    << "powerSet" << bytes("02 10 51");
    QTest::newRow("power Iridium off")
        << QVariantMap { { "powerChannel", "Iridium" } } << "powerSet" << bytes("02 10 70");
    QTest::newRow("request Pell") << QVariantMap() << "telemetryRequestButton" << bytes("02 00 00");
    QTest::newRow("request Iridium") << QVariantMap { { "linkConfigSelect", "Iridium" } }
                                     << "telemetryRequestButton" << bytes("02 00 01");
    QTest::newRow("rate Pell") << QVariantMap() << "telemetryRateSet" << bytes("02 09 3C");
    QTest::newRow("rate Iridium") << QVariantMap { { "linkConfigSelect", "Iridium" },
        { "telemetryRateSlider", 200 } }
                                  << "telemetryRateSet" << bytes("02 0A C8");
    QTest::newRow("messages Pell") << QVariantMap() << "setTelemetryMessages" << bytes("0A 12 10 04 00 00");
    QTest::newRow("messages Iridium") << QVariantMap { { "linkConfigSelect", "Iridium" },
        { "checkMsgHousekeeping", Qt::Checked }, { "checkMsgHk2", Qt::Unchecked },
        { "checkMsgCtd", Qt::Checked }, { "checkMsgSonarReport", Qt::Checked },
        { "checkMsgO2", Qt::PartiallyChecked }, { "checkMsgPth", Qt::Checked },
        { "checkMsgSonarWcol", Qt::Checked }, { "checkMsgPostime", Qt::Unchecked } }
                                      << "setTelemetryMessages" << bytes("0A 13 2B 03 00 00");
    QTest::newRow("sonar run ensemble 5")
        << QVariantMap { { "sonarPing", "RUN" }, { "sonarStep", "ENSEMBLE" }, { "sonarProgram", 5 } }
        << "sonarSet" << bytes("02 11 E5");
    QTest::newRow("sonar ping sequence 15")
        << QVariantMap { { "sonarStep", "SEQUENCE" }, { "sonarProgram", 15 } } << "sonarSet"
        << bytes("02 11 9F");
    QTest::newRow("sonar sleep") << QVariantMap { { "sonarProgram", 5 } } << "sonarSleep"
                                 << bytes("02 11 00");
    QTest::newRow("sonar auto") << QVariantMap { { "sonarPing", "RUN" }, { "sonarStep", "SEQUENCE" },
        { "sonarProgram", 3 } } << "sonarAutoCmdSet"
                                << bytes("02 17 D3");
    QTest::newRow("sonar auto rate") << QVariantMap { { "sonarAutoCmdRate", 130 } } << "sonarAutoCmdRateSet"
                                     << bytes("02 18 82");
    QTest::newRow("sonar script") << QVariantMap { { "sonarScriptSelect", "START=5 RANGE=100" } }
                                  << "sonarScriptSet" << bytes("02 14 02");
    QTest::newRow("water columns") << QVariantMap() << "sonarWcolMaxSet" << bytes("02 16 0A");
    QTest::newRow("card open") << QVariantMap() << "cardOpen" << bytes("0A 15 00 00 00 00");
    QTest::newRow("card flush") << QVariantMap() << "cardFlush" << bytes("0A 15 01 00 00 00");
    QTest::newRow("card close") << QVariantMap() << "cardClose" << bytes("0A 15 02 00 00 00");
    QTest::newRow("card clear flag") << QVariantMap() << "cardClearErrorFlag" << bytes("0A 15 03 00 00 00");
}

void TestGliderCommands::commands()
{
    QFETCH(QVariantMap, settings);
    QFETCH(QString, button);
    QFETCH(QByteArray, entry);

    set(settings);
    press(qPrintable(button));
    QCOMPARE(m_pell->size(), 1);
    const QByteArray block = lastBlock();
    QCOMPARE(block.size(), entry.size() + 1);
    QCOMPARE(block.at(0), entry.at(0));
    QCOMPARE(uint8_t(block.at(1)), uint8_t(ack()));
    QCOMPARE(block.mid(2), entry.mid(1));
    QVERIFY(m_sbd->isEmpty());
}

void TestGliderCommands::sequenceWraps()
{
    press("powerSet");
    int previous = uint8_t(lastBlock().at(1));
    QVERIFY(previous >= 1); // one past a start below 255
    for (int i = 0; i < 256; i++) {
        press("powerSet");
        const int seq = uint8_t(lastBlock().at(1));
        QCOMPARE(seq, (previous + 1) % 256);
        QCOMPARE(ack(), seq);
        previous = seq;
    }
}

void TestGliderCommands::queue()
{
    set({ { "queueEnabled", Qt::Checked }, { "powerChannel", "Pell" } });
    press("powerSet");
    press("cardClearErrorFlag");
    press("sonarSleep");
    QCOMPARE(widget<QLabel>("queueItemsLabel")->text(), QString("3"));
    QVERIFY(m_pell->isEmpty());

    press("queueSendNow");
    QCOMPARE(widget<QLabel>("queueItemsLabel")->text(), QString("0"));
    const QByteArray block = lastBlock();
    const uint8_t first = uint8_t(ack() - 2);
    QCOMPARE(block,
        bytes("02") + char(first) + bytes("10 60 0A") + char(first + 1) + bytes("15 03 00 00 00 02")
            + char(first + 2) + bytes("11 00"));
    QLabel *label = widget<QLabel>("ackLabel");
    QCOMPARE(label->palette().color(label->foregroundRole()), QColor(Qt::red));
    QVERIFY(debugLines().contains("Sent \"" + block.toHex() + "\""));

    // Flushed commands keep their numbers: the next one follows them.
    press("powerSet");
    press("powerSet");
    press("queueFlush");
    QCOMPARE(widget<QLabel>("queueItemsLabel")->text(), QString("0"));
    QVERIFY(m_pell->isEmpty());
    set({ { "queueEnabled", Qt::Unchecked } });
    press("sonarSleep");
    QCOMPARE(m_pell->size(), 1);
    QCOMPARE(uint8_t(lastBlock().at(1)), uint8_t(first + 5));
}

void TestGliderCommands::emptySend()
{
    QCOMPARE(widget<QLabel>("queueItemsLabel")->text(), QString("0"));
    press("queueSendNow");
    QCOMPARE(m_pell->size(), 1);
    QCOMPARE(lastBlock(), QByteArray());
}

void TestGliderCommands::iridiumLink()
{
    set({ { "activeLinkCombo", "Iridium" }, { "queueEnabled", Qt::Checked } });
    press("cardOpen");
    press("powerSet");
    press("queueSendNow");
    QVERIFY(m_pell->isEmpty());
    QCOMPARE(m_sbd->size(), 1);
    const QList<QVariant> args = m_sbd->takeFirst();
    QCOMPARE(args.at(0).toString(), QString("300100000000000"));
    const uint8_t last = uint8_t(ack());
    QCOMPARE(args.at(1).toByteArray(),
        bytes("0A") + char(last - 1) + bytes("15 00 00 00 00 02") + char(last) + bytes("10 40"));
}

void TestGliderCommands::pellSizeLimit_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("sent");
    QTest::newRow("208") << 208 << true;
    QTest::newRow("209") << 209 << false;
}

void TestGliderCommands::pellSizeLimit()
{
    QFETCH(int, size);
    QFETCH(bool, sent);
    const QByteArray block(size, '\x5A');

    // Standard output goes to a file while the block is sent.
    QTemporaryFile out;
    QVERIFY(out.open());
    fflush(stdout);
    const int saved = dup(STDOUT_FILENO);
    dup2(out.handle(), STDOUT_FILENO);
    m_glider->sendData(reinterpret_cast<const uint8_t *>(block.constData()), uint16_t(block.size()));
    fflush(stdout);
    dup2(saved, STDOUT_FILENO);
    close(saved);

    QCOMPARE(m_pell->size(), sent ? 1 : 0);
    if (sent)
        QCOMPARE(lastBlock(), block);
    out.seek(0);
    QCOMPARE(out.readAll(), sent ? QByteArray() : QByteArray("Pell packet oversized\r\n"));
}

void TestGliderCommands::sliderFeedback_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("seconds");
    QTest::newRow("1 s") << 1 << "1";
    QTest::newRow("60 s") << 60 << "60";
    QTest::newRow("1 min") << 61 << "60";
    QTest::newRow("60 min") << 120 << "3600";
    QTest::newRow("10 h") << 130 << "36000";
    QTest::newRow("80 h") << 200 << "288000";
}

void TestGliderCommands::sliderFeedback()
{
    QFETCH(int, code);
    QFETCH(QString, seconds);
    QCOMPARE(widget<QLineEdit>("telemetryRateDisplay")->text(), QString());
    for (const char *name : { "telemetryRateSlider", "sonarAutoCmdRate" }) {
        QSlider *slider = widget<QSlider>(name);
        slider->setValue(slider->maximum() - code); // start somewhere else
        slider->setSliderDown(true); // dragged by the operator
        slider->setSliderPosition(code);
        slider->setSliderDown(false);
    }
    QCOMPARE(widget<QLineEdit>("telemetryRateDisplay")->text(), seconds + " s");
    QCOMPARE(widget<QPushButton>("sonarAutoCmdRateSet")->text(), "Set rate (" + seconds + " s)");
    QVERIFY(m_pell->isEmpty());
}

void TestGliderCommands::incomingPell_data()
{
    QTest::addColumn<QString>("callsignField");
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<bool>("forwarded");
    const QByteArray hk2 = bytes(HK2_HEAD) + bytes("07");
    QTest::newRow("raw data, any sender") << "RLHB-1" << modemFrame(0, 0x00, hk2) << true << false;
    QTest::newRow("extension from the vehicle")
        << "RLHB-1" << modemFrame(0, 0x01, extensionFrom(RLHB1, hk2)) << true << true;
    QTest::newRow("extension from another station")
        << "RLHB-1" << modemFrame(0, 0x01, extensionFrom("CA CA 22 00 00 02", hk2)) << false << false;
    QTest::newRow("field edited") << "RLHB-2" << modemFrame(0, 0x01, extensionFrom(RLHB1, hk2)) << false
                                  << false;
    QTest::newRow("field in other case")
        << "rlhb-1" << modemFrame(0, 0x01, extensionFrom(RLHB1, hk2)) << false << false;
    QTest::newRow("no data record") << "RLHB-1"
                                    << modemFrame(0, 0x01, bytes("01 07") + bytes(RLHB1) + bytes("2A"))
                                    << false << false;
    QTest::newRow("modem reply") << "RLHB-1" << modemFrame(3, 0x00, hk2) << false << false;
}

void TestGliderCommands::incomingPell()
{
    QFETCH(QString, callsignField);
    QFETCH(QByteArray, frame);
    QFETCH(bool, accepted);
    QFETCH(bool, forwarded);

    set({ { "pellDestinationEntry", callsignField } });
    int rowsAtEmit = -1;
    QSignalSpy spy(m_glider, &Glider::gliderPayloadReceived);
    connect(m_glider, &Glider::gliderPayloadReceived, this, [&] { rowsAtEmit = rows(); });
    receive(frame);
    QCOMPARE(rows() > 0, accepted);
    QCOMPARE(spy.size(), forwarded ? 1 : 0);
    if (forwarded) {
        QCOMPARE(spy.at(0).at(0).toString(), QString("RLHB-1"));
        QCOMPARE(spy.at(0).at(1).toByteArray(), bytes(HK2_HEAD) + bytes("07"));
        QCOMPARE(rowsAtEmit, rows()); // decoded before it is passed on
    }
}

void TestGliderCommands::shortRadioPacket()
{
    for (int len = 0; len < 8; len++) {
        QVector<uint8_t> packet(len, 0xFF); // exact size: no room for a header
        m_glider->incomingPell(SPP_TYPE_RX, packet.data(), uint16_t(len), "serial");
    }
    receive(modemFrame(0, 0x00, QByteArray()));
    QCOMPARE(rows(), 0);
    QCOMPARE(debugLines(), QStringList { "Got 0 packets" });
}

void TestGliderCommands::confirmation()
{
    press("powerSet");
    QLabel *label = widget<QLabel>("ackLabel");
    QCOMPARE(label->palette().color(label->foregroundRole()), QColor(Qt::red));
    receive(modemFrame(0, 0x01, extensionFrom(RLHB1, bytes(HK2_HEAD) + char(ack() - 1))));
    QCOMPARE(label->palette().color(label->foregroundRole()), QColor(Qt::red));
    receive(modemFrame(0, 0x01, extensionFrom(RLHB1, bytes(HK2_HEAD) + char(ack()))));
    QCOMPARE(label->palette().color(label->foregroundRole()), QColor(Qt::darkGreen));
    press("powerSet");
    QCOMPARE(label->palette().color(label->foregroundRole()), QColor(Qt::red));
}

void TestGliderCommands::incomingSbd()
{
    const QByteArray hk2 = bytes(HK2_HEAD) + bytes("07");
    m_glider->incomingSbd("300100000000001", hk2);
    QCOMPARE(rows(), 0);
    QVERIFY(debugLines().isEmpty());
    set({ { "iridiumImei", "300234010753370" } });
    m_glider->incomingSbd("300234010753370", hk2);
    QCOMPARE(rows(), 17);
    QCOMPARE(debugLines().first(), QString("[Glider] Got valid Iridium IMEI"));
}

QTEST_MAIN(TestGliderCommands)
#include "tst_glider_commands.moc"
