#include <QCheckBox>
#include <QStandardItemModel>
#include <QTabWidget>
#include <QTextBlock>
#include <QTreeView>

#include "mainwindow_harness.h"
#include "varda_extension_qt.h"

using namespace harness;

namespace
{

const char SPP_CMD[] = "SPP cmd (local)";
const char EXT_CMD[] = "Ext. cmd (select below)";
const char DUMB[] = "Dumb terminal (local)";

// The transmit frame's payload for an extension command: flags, src (when known), dest, cmd_req.
QByteArray extCommand(const QString &source, uint8_t seq, const QString &destination, const QString &command)
{
    VardaExtension packet;
    if (!source.isEmpty())
        packet.addSource(source, seq);
    packet.addDestination(destination);
    packet.addCommand(command);
    return '\x01' + packet.getPacket();
}

} // namespace

// Commands typed in the terminal as a modem on TCP receives them, and the destination station.
class TestMainWindowTerminal : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        MessageLog::install();
    }
    void init()
    {
        m_modem.reset(new TcpModem);
        m_driver.reset(new WindowDriver);
        QVERIFY(m_driver->connectTcp(m_modem.get()));
        MessageLog::clear();
    }
    void sppCommand_data();
    void sppCommand();
    void extCommandSequenceNumbers();
    void extCommandWithoutDestination();
    void typedDestination();
    void pickedDestination();
    void stationTree();
    void repliesKeepTheLastThousandLines();

private:
    void learnLocalCallsign(const QString &callsign)
    {
        m_driver->find<QCheckBox>("localCallAutoSetBox")->setChecked(true);
        m_modem->send(localFrame(1, src(callsign, 1)));
        QTRY_COMPARE(m_driver->find<QLineEdit>("localCallEdit")->text(), callsign);
    }
    // The single frame the modem receives next.
    QByteArray sent(int type)
    {
        const QList<SentFrame> frames = m_modem->waitForFrames(1);
        return frames.size() == 1 && frames.at(0).type == type ? frames.at(0).payload : "bad frames";
    }
    std::unique_ptr<TcpModem> m_modem;
    std::unique_ptr<WindowDriver> m_driver;
};

void TestMainWindowTerminal::sppCommand_data()
{
    QTest::addColumn<QStringList>("modes");
    QTest::addColumn<bool>("newline");
    QTest::addColumn<QByteArray>("payload");
    // Right after start the box shows "Dumb terminal (local)" but commands go out as SPP commands.
    QTest::newRow("at start") << QStringList() << false << QByteArray("status");
    QTest::newRow("at start, newline") << QStringList() << true << QByteArray("status\r\n");
    QTest::newRow("dumb and empty lines send nothing")
        << QStringList { SPP_CMD, DUMB, SPP_CMD } << false << QByteArray("status");
}

void TestMainWindowTerminal::sppCommand()
{
    QFETCH(QStringList, modes);
    QFETCH(bool, newline);
    QFETCH(QByteArray, payload);
    m_driver->find<QCheckBox>("terminalAddNewline")->setChecked(newline);
    for (const QString &mode : modes) {
        m_driver->chooseTerminalMode(mode);
        m_driver->typeCommand(mode == DUMB ? "ignored" : "");
    }
    m_driver->typeCommand("status");
    QVERIFY(m_driver->find<QLineEdit>("commandLineEdit")->text().isEmpty());
    QCOMPARE(sent(3), payload);
}

// Each command carries the next sequence number, starting at 1 and wrapping from 255 to 0.
void TestMainWindowTerminal::extCommandSequenceNumbers()
{
    learnLocalCallsign("ALPHA-1");
    m_driver->chooseTerminalMode(EXT_CMD);
    m_driver->typeDestination("BRAVO-2");
    const int commands = 258;
    for (int i = 0; i < commands; i++)
        m_driver->typeCommand("ping");
    const QList<SentFrame> frames = m_modem->waitForFrames(commands);
    QCOMPARE(frames.size(), commands);
    for (int i = 0; i < commands; i++) {
        QCOMPARE(frames.at(i).type, 1);
        QCOMPARE(frames.at(i).payload, extCommand("ALPHA-1", uint8_t(i + 1), "BRAVO-2", "ping"));
    }
}

void TestMainWindowTerminal::extCommandWithoutDestination()
{
    learnLocalCallsign("ALPHA-1");
    m_driver->chooseTerminalMode(EXT_CMD);
    m_driver->typeCommand("ping");
    QVERIFY(MessageLog::count("No destination!") == 1 && MessageLog::count("Sending length 0") == 1);
    m_driver->typeDestination("BRAVO-2");
    m_driver->typeCommand("ping");
    QCOMPARE(sent(1), extCommand("ALPHA-1", 1, "BRAVO-2", "ping")); // the number was not used up
}

// A typed destination is upper-cased and wipes the terminal; the same one again changes nothing.
void TestMainWindowTerminal::typedDestination()
{
    auto *destination = m_driver->find<QComboBox>("terminalSelectActive");
    m_modem->send(replyFrame("old output"));
    QTRY_VERIFY(!m_driver->terminalOutput().isEmpty());
    m_driver->typeDestination("bravo-2");
    QCOMPARE(destination->currentText(), QStringLiteral("BRAVO-2"));
    QVERIFY(m_driver->terminalOutput().isEmpty());
    m_modem->send(replyFrame("kept"));
    QTRY_COMPARE(m_driver->terminalOutput(), QStringLiteral("kept"));
    m_driver->typeDestination("Bravo-2");
    QCOMPARE(m_driver->terminalOutput(), QStringLiteral("kept"));
    QCOMPARE(MessageLog::count("Edit finished. Active station BRAVO-2"), 1);
    QCOMPARE(destination->count(), 0);
}

// Picked from the list as listed; picking the active station again neither logs nor clears.
void TestMainWindowTerminal::pickedDestination()
{
    for (const char *callsign : { "ALPHA-1", "BRAVO-2" })
        m_modem->send(rxFrame(113, 1, src(callsign, 1)));
    QTRY_COMPARE(m_driver->stationRows(), 2);
    auto *destination = m_driver->find<QComboBox>("terminalSelectActive");
    destination->setFocus();
    QTest::keyClick(destination, Qt::Key_Down);
    QTest::keyClick(destination, Qt::Key_Down);
    QCOMPARE(destination->currentText(), QStringLiteral("BRAVO-2"));
    m_modem->send(replyFrame("kept"));
    QTRY_COMPARE(m_driver->terminalOutput(), QStringLiteral("kept"));
    emit destination->activated(1); // as the popup does when the current item is chosen again
    QCOMPARE(MessageLog::count("Select finished. Active station BRAVO-2"), 1);
    QCOMPARE(m_driver->terminalOutput(), QStringLiteral("kept"));
    QTest::keyClick(destination, Qt::Key_Up);
    QVERIFY(m_driver->terminalOutput().isEmpty());

    m_driver->chooseTerminalMode(EXT_CMD);
    m_driver->find<QCheckBox>("terminalAddNewline")->setChecked(true);
    m_driver->typeCommand("uptime");
    QCOMPARE(sent(1), extCommand(QString(), 0, "ALPHA-1", "uptime\r\n"));
}

// A click in the stations table shows that station's properties, expanded.
void TestMainWindowTerminal::stationTree()
{
    m_modem->send(rxFrame(113, 1, src("ALPHA-1", 1)) + rxFrame(113, 1, src("BRAVO-2", 7) + stat()));
    QTRY_COMPARE(m_driver->stationRows(), 2);
    m_driver->find<QTabWidget>("tabWidget")->setCurrentWidget(m_driver->find<QWidget>("tabStations"));
    auto *table = m_driver->find<QTableView>("stationsTable");
    const QRect cell = table->visualRect(table->model()->index(1, 0));
    QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::NoModifier, cell.center());
    auto *tree = m_driver->find<QTreeView>("stationTreeView");
    const auto *properties = qobject_cast<const QStandardItemModel *>(tree->model());
    QVERIFY(properties && properties->findItems("stat").size() == 1);
    const QList<QStandardItem *> source = properties->findItems("src");
    QVERIFY(source.size() == 1 && tree->isExpanded(source.at(0)->index()));
}

// The terminal keeps its last 1,000 lines; the oldest go first.
void TestMainWindowTerminal::repliesKeepTheLastThousandLines()
{
    QByteArray replies;
    for (int n = 0; n < 1050; n++)
        replies += replyFrame("reply " + QByteArray::number(n) + '\n');
    m_modem->send(replies);
    const QTextDocument *terminal = m_driver->find<QPlainTextEdit>("commandOutputTextEdit")->document();
    QTRY_VERIFY(terminal->toPlainText().endsWith("reply 1049\n"));
    QCOMPARE(terminal->blockCount(), 1000);
    QCOMPARE(terminal->firstBlock().text(), QStringLiteral("reply 51"));
}

QTEST_MAIN(TestMainWindowTerminal)
#include "tst_mainwindow_terminal.moc"
