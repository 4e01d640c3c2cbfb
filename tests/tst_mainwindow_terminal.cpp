#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTabWidget>
#include <QTableView>
#include <QTest>
#include <QTextBlock>
#include <QTextDocument>
#include <QTreeView>

#include "mainwindow_harness.h"
#include "varda_extension_qt.h"

using namespace harness;

namespace
{

const char SPP_CMD[] = "SPP cmd (local)";
const char EXT_CMD[] = "Ext. cmd (select below)";
const char DUMB[] = "Dumb terminal (local)";

const int CMD_FRAME = 3;
const int TRANSMIT_FRAME = 1;

// The payload of the transmit frame that carries an extension command:
// the flags byte, then src (when known), dest and cmd_req.
QByteArray extCommandPayload(
    const QString &source, uint8_t seq, const QString &destination, const QString &command)
{
    VardaExtension packet;
    if (!source.isEmpty())
        packet.addSource(source, seq);
    packet.addDestination(destination);
    packet.addCommand(command);
    return '\x01' + packet.getPacket();
}

} // namespace

// Commands typed in the terminal, as the modem on the far end of a TCP link
// receives them, and the choice of the destination station.
class TestMainWindowTerminal : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void sppCommand_data();
    void sppCommand();
    void inertModesSendNothing();
    void extCommandSequenceNumbers();
    void extCommandWithoutLocalCallsign();
    void extCommandWithoutDestination();
    void typedDestination();
    void pickedDestination();
    void stationTree();
    void repliesKeepTheLastThousandLines();

private:
    // Lets the window learn its own callsign from a local echo.
    void learnLocalCallsign(const QString &callsign);
    void hearStations(const QStringList &callsigns);

    std::unique_ptr<TcpModem> m_modem;
    std::unique_ptr<WindowDriver> m_driver;
};

void TestMainWindowTerminal::initTestCase()
{
    MessageLog::install();
}

void TestMainWindowTerminal::init()
{
    m_modem.reset(new TcpModem);
    m_driver.reset(new WindowDriver);
    QVERIFY(m_driver->connectTcp(m_modem.get()));
    MessageLog::clear();
}

void TestMainWindowTerminal::cleanup()
{
    m_driver.reset();
    m_modem.reset();
}

void TestMainWindowTerminal::learnLocalCallsign(const QString &callsign)
{
    m_driver->find<QCheckBox>("localCallAutoSetBox")->setChecked(true);
    m_modem->send(localFrame(1, src(callsign, 1)));
    QTRY_COMPARE(m_driver->find<QLineEdit>("localCallEdit")->text(), callsign);
}

void TestMainWindowTerminal::hearStations(const QStringList &callsigns)
{
    for (const QString &callsign : callsigns)
        m_modem->send(rxFrame(113, 1, src(callsign, 1)));
    QTRY_COMPARE(m_driver->stationRows(), callsigns.size());
}

void TestMainWindowTerminal::sppCommand_data()
{
    QTest::addColumn<QString>("mode");
    QTest::addColumn<bool>("newline");
    QTest::addColumn<QByteArray>("payload");

    // Right after start the box shows "Dumb terminal (local)" but commands
    // go out as SPP commands.
    QTest::newRow("at start") << QString() << false << QByteArray("status");
    QTest::newRow("at start, newline") << QString() << true << QByteArray("status\r\n");
    QTest::newRow("spp cmd") << SPP_CMD << false << QByteArray("status");
    QTest::newRow("spp cmd, newline") << SPP_CMD << true << QByteArray("status\r\n");
}

void TestMainWindowTerminal::sppCommand()
{
    QFETCH(QString, mode);
    QFETCH(bool, newline);
    QFETCH(QByteArray, payload);

    if (!mode.isEmpty())
        m_driver->chooseTerminalMode(mode);
    m_driver->find<QCheckBox>("terminalAddNewline")->setChecked(newline);
    m_driver->typeCommand("status");
    QVERIFY(m_driver->find<QLineEdit>("commandLineEdit")->text().isEmpty());

    const QList<SentFrame> sent = m_modem->waitForFrames(1);
    QCOMPARE(sent.size(), 1);
    QCOMPARE(sent.at(0).type, CMD_FRAME);
    QCOMPARE(sent.at(0).payload, payload);
}

// "Dumb terminal" sends nothing and an empty line is not sent at all: the
// first frame the modem sees is the command typed after switching back.
void TestMainWindowTerminal::inertModesSendNothing()
{
    m_driver->chooseTerminalMode(SPP_CMD);
    m_driver->chooseTerminalMode(DUMB);
    m_driver->typeCommand("ignored");
    QVERIFY(m_driver->find<QLineEdit>("commandLineEdit")->text().isEmpty());
    QVERIFY(MessageLog::contains("Sending length 0"));

    m_driver->chooseTerminalMode(SPP_CMD);
    MessageLog::clear();
    m_driver->typeCommand(QString());
    QVERIFY(!MessageLog::startsWith("Sending length"));

    m_driver->typeCommand("ver");
    const QList<SentFrame> sent = m_modem->waitForFrames(1);
    QCOMPARE(sent.size(), 1);
    QCOMPARE(sent.at(0).payload, QByteArray("ver"));
}

// Each command carries the next sequence number, starting at 1 and
// wrapping from 255 to 0.
void TestMainWindowTerminal::extCommandSequenceNumbers()
{
    learnLocalCallsign("ALPHA-1");
    m_driver->chooseTerminalMode(EXT_CMD);
    m_driver->typeDestination("BRAVO-2");

    const int commands = 258;
    for (int i = 0; i < commands; i++)
        m_driver->typeCommand("ping");
    const QList<SentFrame> sent = m_modem->waitForFrames(commands);
    QCOMPARE(sent.size(), commands);
    for (int i = 0; i < commands; i++) {
        QCOMPARE(sent.at(i).type, TRANSMIT_FRAME);
        QCOMPARE(sent.at(i).payload, extCommandPayload("ALPHA-1", uint8_t(i + 1), "BRAVO-2", "ping"));
    }
    QCOMPARE(uint8_t(sent.at(255).payload.at(9)), uint8_t(0));
}

void TestMainWindowTerminal::extCommandWithoutLocalCallsign()
{
    m_driver->chooseTerminalMode(EXT_CMD);
    m_driver->typeDestination("BRAVO-2");
    m_driver->find<QCheckBox>("terminalAddNewline")->setChecked(true);
    m_driver->typeCommand("uptime");
    const QList<SentFrame> sent = m_modem->waitForFrames(1);
    QCOMPARE(sent.size(), 1);
    QCOMPARE(sent.at(0).payload, extCommandPayload(QString(), 0, "BRAVO-2", "uptime\r\n"));
}

void TestMainWindowTerminal::extCommandWithoutDestination()
{
    learnLocalCallsign("ALPHA-1");
    m_driver->chooseTerminalMode(EXT_CMD);
    m_driver->typeCommand("ping");
    QVERIFY(MessageLog::contains("No destination!"));
    QVERIFY(MessageLog::contains("Sending length 0"));

    // The sequence number was not used up.
    m_driver->typeDestination("BRAVO-2");
    m_driver->typeCommand("ping");
    const QList<SentFrame> sent = m_modem->waitForFrames(1);
    QCOMPARE(sent.size(), 1);
    QCOMPARE(sent.at(0).payload, extCommandPayload("ALPHA-1", 1, "BRAVO-2", "ping"));
}

// A typed destination is upper-cased and wipes the terminal; typing the same
// one again changes nothing.
void TestMainWindowTerminal::typedDestination()
{
    auto *output = m_driver->find<QPlainTextEdit>("commandOutputTextEdit");
    auto *destination = m_driver->find<QComboBox>("terminalSelectActive");
    m_modem->send(replyFrame("old output"));
    QTRY_VERIFY(!output->toPlainText().isEmpty());

    m_driver->typeDestination("bravo-2");
    QCOMPARE(destination->currentText(), QStringLiteral("BRAVO-2"));
    QVERIFY(output->toPlainText().isEmpty());
    QCOMPARE(MessageLog::count("Edit finished. Active station BRAVO-2"), 1);

    m_modem->send(replyFrame("kept"));
    QTRY_COMPARE(output->toPlainText(), QStringLiteral("kept"));
    m_driver->typeDestination("Bravo-2");
    QCOMPARE(output->toPlainText(), QStringLiteral("kept"));
    QCOMPARE(MessageLog::count("Edit finished. Active station BRAVO-2"), 1);
    QCOMPARE(destination->count(), 0);
}

// Picking from the list takes the callsign as listed; picking the active
// station again neither logs nor clears.
void TestMainWindowTerminal::pickedDestination()
{
    hearStations({ "ALPHA-1", "BRAVO-2" });
    auto *destination = m_driver->find<QComboBox>("terminalSelectActive");
    auto *output = m_driver->find<QPlainTextEdit>("commandOutputTextEdit");
    destination->setFocus();
    QTest::keyClick(destination, Qt::Key_Down);
    QTest::keyClick(destination, Qt::Key_Down);
    QCOMPARE(destination->currentText(), QStringLiteral("BRAVO-2"));
    QCOMPARE(MessageLog::count("Select finished. Active station BRAVO-2"), 1);

    m_modem->send(replyFrame("kept"));
    QTRY_COMPARE(output->toPlainText(), QStringLiteral("kept"));
    // As the list popup does when the current item is chosen again.
    emit destination->activated(1);
    QCOMPARE(MessageLog::count("Select finished. Active station BRAVO-2"), 1);
    QCOMPARE(output->toPlainText(), QStringLiteral("kept"));
    QTest::keyClick(destination, Qt::Key_Up);
    QVERIFY(output->toPlainText().isEmpty());

    m_driver->chooseTerminalMode(EXT_CMD);
    m_driver->typeCommand("ping");
    const QList<SentFrame> sent = m_modem->waitForFrames(1);
    QCOMPARE(sent.size(), 1);
    QCOMPARE(sent.at(0).payload, extCommandPayload(QString(), 0, "ALPHA-1", "ping"));
}

// A click in the stations table shows that station's properties, expanded.
void TestMainWindowTerminal::stationTree()
{
    hearStations({ "ALPHA-1" });
    m_modem->send(rxFrame(113, 1, src("BRAVO-2", 7) + stat()));
    QTRY_COMPARE(m_driver->stationRows(), 2);

    m_driver->find<QTabWidget>("tabWidget")->setCurrentWidget(m_driver->find<QWidget>("tabStations"));
    auto *table = m_driver->find<QTableView>("stationsTable");
    const QRect cell = table->visualRect(table->model()->index(1, 0));
    QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::NoModifier, cell.center());

    auto *tree = m_driver->find<QTreeView>("stationTreeView");
    const auto *properties = qobject_cast<const QStandardItemModel *>(tree->model());
    QVERIFY(properties);
    const QList<QStandardItem *> source = properties->findItems("src");
    QCOMPARE(source.size(), 1);
    QVERIFY(tree->isExpanded(source.at(0)->index()));
    QCOMPARE(tree->columnWidth(0), 250);
    QCOMPARE(properties->findItems("stat").size(), 1);
}

// A modem that never stops talking fills the terminal only up to its
// scrollback; the oldest lines go first.
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
