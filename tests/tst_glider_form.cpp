#include <QCheckBox>
#include <QComboBox>
#include <QHeaderView>
#include <QLayout>
#include <QTableView>
#include <QtTest>

#include "glider.h"

// The panel's form: the texts, items, ranges and defaults that the command
// code and the operator rely on.
class TestGliderForm : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase();
    void properties_data();
    void properties();
    void combos_data();
    void combos();
    void layout();

private:
    Glider *m_glider = nullptr;
};

void TestGliderForm::initTestCase()
{
    m_glider = new Glider;
}

void TestGliderForm::cleanupTestCase()
{
    delete m_glider;
}

void TestGliderForm::properties_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("property");
    QTest::addColumn<QVariant>("value");
    auto row = [](const char *name, const char *property, const QVariant &value) {
        QTest::addRow("%s.%s", name, property) << name << QByteArray(property) << value;
    };
    const char *texts[][2] = {
        { "label_4", "Pell callsign:" },
        { "pellDestinationEntry", "RLHB-1" },
        { "label_7", "Iridium IMEI:" },
        { "iridiumImei", "300100000000000" },
        { "label_5", "Active link:" },
        { "label_12", "Last cmd:" },
        { "ackLabel", "" },
        { "label_13", "Select link:" },
        { "telemetryRequestButton", "Request now" },
        { "label_8", "Rate:" },
        { "telemetryRateDisplay", "" },
        { "telemetryRateSet", "Set rate" },
        { "label_9", "Messages enabled:" },
        { "setTelemetryMessages", "Set messages" },
        { "powerState", "On (Off)" },
        { "powerSet", "Set" },
        { "sonarSet", "Set" },
        { "sonarSleep", "Set sleep" },
        { "label", "Max. watercol. samples over SBD" },
        { "sonarWcolMaxSet", "Set" },
        { "label_3", "Sonar script" },
        { "sonarScriptSet", "Set" },
        { "label_6", "Automatic/repeating sonar command" },
        { "sonarAutoCmdSet", "Set PING/RUN" },
        { "sonarAutoCmdRateSet", "Set rate" },
        { "cardOpen", "Open" },
        { "cardFlush", "Flush" },
        { "cardClearErrorFlag", "Clr. flag" },
        { "cardClose", "Close" },
        { "label_2", "Queue length:" },
        { "queueItemsLabel", "0" },
        { "queueEnabled", "Queue commands" },
        { "queueSendNow", "Send" },
        { "queueFlush", "Flush queue" },
        { "ignoreHousekeepingCheck", "Ignore housekeeping and samples" },
        { "telemetryTableClear", "Clear table" },
    };
    for (const auto &t : texts)
        row(t[0], "text", QString(t[1]));
    const char *titles[][2] = { { "communication", "Link" }, { "setTelemetryRate", "Link messages" },
        { "ctdSettings", "Set power" }, { "sonarSettings", "Sonar settings" },
        { "cardSettings", "SD card settings" }, { "cmdQueueGroup", "Command queue" } };
    for (const auto &t : titles)
        row(t[0], "title", QString(t[1]));
    const char *checks[][2] = { { "checkMsgHousekeeping", "Housekeep" }, { "checkMsgHk2", "Housekeep 2" },
        { "checkMsgCtd", "CTD sample" }, { "checkMsgSonarReport", "Sonar report" },
        { "checkMsgSonarWcol", "Sonar W. Col." }, { "checkMsgO2", "O2" }, { "checkMsgPco2", "pCO2" },
        { "checkMsgLight", "Light" }, { "checkMsgPth", "PTH" }, { "checkMsgPostime", "Pos/time" } };
    for (const auto &c : checks) {
        const QString name = c[0];
        row(c[0], "text", QString(c[1]));
        row(c[0], "checked", name == "checkMsgHk2" || name == "checkMsgPostime");
    }
    row("powerState", "checked", false);
    row("queueEnabled", "checked", false);
    row("ignoreHousekeepingCheck", "checked", true);
    row("telemetryRateDisplay", "readOnly", true);
    row("ackLabel", "font", QVariant()); // checked below by point size
    row("telemetryRateSlider", "minimum", 1);
    row("telemetryRateSlider", "maximum", 200);
    row("telemetryRateSlider", "pageStep", 25);
    row("telemetryRateSlider", "value", 60);
    row("sonarAutoCmdRate", "minimum", 0);
    row("sonarAutoCmdRate", "maximum", 200);
    row("sonarAutoCmdRate", "value", 0);
    row("sonarProgram", "minimum", 0);
    row("sonarProgram", "maximum", 15);
    row("sonarProgram", "value", 0);
    row("sonarWcolMaxNumber", "minimum", 0);
    row("sonarWcolMaxNumber", "maximum", 20);
    row("sonarWcolMaxNumber", "value", 10);
    row("telemetryTableClear", "maximumWidth", 150);
    row("telemetryTableView", "minimumWidth", 200);
    row("logView", "minimumHeight", 200);
    row("logView", "maximumHeight", 200);
    row("GliderForm", "windowTitle", QString("Form"));
    row("GliderForm", "minimumWidth", 700);
}

void TestGliderForm::properties()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, property);
    QFETCH(QVariant, value);
    QObject *object = name == "GliderForm" ? m_glider : m_glider->findChild<QObject *>(name);
    QVERIFY2(object, qPrintable(name));
    if (property == "font")
        QCOMPARE(object->property("font").value<QFont>().pointSize(), 12);
    else
        QCOMPARE(object->property(property), value);
}

void TestGliderForm::combos_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("items");
    QTest::newRow("activeLinkCombo") << "activeLinkCombo" << QStringList { "Pell", "Iridium" };
    QTest::newRow("linkConfigSelect") << "linkConfigSelect" << QStringList { "Pell", "Iridium" };
    QTest::newRow("powerChannel") << "powerChannel" << QStringList { "CTD", "Sonar", "Pell", "Iridium" };
    QTest::newRow("sonarPing") << "sonarPing" << QStringList { "PING", "RUN" };
    QTest::newRow("sonarStep") << "sonarStep" << QStringList { "STEP", "SEQUENCE", "ENSEMBLE" };
    QTest::newRow("sonarScriptSelect")
        << "sonarScriptSelect"
        << QStringList { "OFF", "START=1 RANGE=60", "START=5 RANGE=100", "START=30 RANGE=200" };
}

void TestGliderForm::combos()
{
    QFETCH(QString, name);
    QFETCH(QStringList, items);
    QComboBox *combo = m_glider->findChild<QComboBox *>(name);
    QVERIFY(combo);
    QStringList texts;
    for (int i = 0; i < combo->count(); i++)
        texts << combo->itemText(i);
    QCOMPARE(texts, items);
    QCOMPARE(combo->currentIndex(), 0);
    QVERIFY(!combo->isEditable());
}

void TestGliderForm::layout()
{
    for (const char *name : { "leftRow", "centerRow" }) {
        QLayout *column = m_glider->findChild<QLayout *>(name);
        QVERIFY2(column, name);
        QCOMPARE(column->contentsMargins(), QMargins());
    }
    QVERIFY(m_glider->findChild<QGridLayout *>("gridLayout_6"));
    for (const char *name : { "line", "line_2", "line_3", "line_4", "line_5" })
        QVERIFY2(m_glider->findChild<QFrame *>(name), name);
    for (QCheckBox *check : m_glider->findChild<QWidget *>("setTelemetryRate")->findChildren<QCheckBox *>())
        QVERIFY(check->maximumHeight() <= 20);
    QTableView *table = m_glider->findChild<QTableView *>("telemetryTableView");
    QVERIFY(table->horizontalHeader()->stretchLastSection());
    QCOMPARE(table->verticalHeader()->defaultSectionSize(), 25);
    QCOMPARE(table->verticalHeader()->minimumSectionSize(), 25);
}

QTEST_MAIN(TestGliderForm)
#include "tst_glider_form.moc"
