#include "mainwindow_harness.h"

using namespace harness;

namespace
{

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
class tst_MainWindowTerminal : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_modem.reset(new Modem);
        m_driver.reset(new WindowDriver);
        QVERIFY(m_modem->open());
        QVERIFY(m_driver->connectTo(m_modem.get()));
    }

    void commands()
    {
        // Right after start the box shows "Dumb terminal (local)" but commands go out as SPP commands.
        auto *newline = m_driver->find<QCheckBox>("terminalAddNewline");
        newline->setChecked(true);
        m_driver->typeCommand("status");
        QVERIFY(m_driver->find<QLineEdit>("commandLineEdit")->text().isEmpty());
        QCOMPARE(sent(3), QByteArray("status\r\n"));
        // Once picked, the dumb terminal sends nothing, nor does an empty line.
        newline->setChecked(false);
        for (const char *mode : { "SPP cmd (local)", "Dumb terminal (local)", "SPP cmd (local)" }) {
            m_driver->choose("configModeBox", mode);
            m_driver->typeCommand(mode[0] == 'D' ? "ignored" : "");
        }
        m_driver->typeCommand("status");
        QCOMPARE(sent(3), QByteArray("status"));

        // An extension command needs a destination, and carries a source once the local callsign is known.
        m_driver->choose("configModeBox", "Ext. cmd (select below)");
        QTest::ignoreMessage(QtDebugMsg, "No destination!");
        QTest::ignoreMessage(QtDebugMsg, "Sending length 0");
        m_driver->typeCommand("ping");
        m_driver->setField("terminalSelectActive", "BRAVO-2");
        m_driver->typeCommand("uptime");
        QCOMPARE(sent(1), extCommand(QString(), 0, "BRAVO-2", "uptime"));
        m_driver->find<QCheckBox>("localCallAutoSetBox")->setChecked(true);
        m_modem->send(localFrame(1, src("ALPHA-1", 1)));
        QTRY_COMPARE(m_driver->find<QLineEdit>("localCallEdit")->text(), QStringLiteral("ALPHA-1"));
        // Sequence numbers start at 1, as none went out before, and wrap from 255 to 0.
        const int commands = 258;
        for (int i = 0; i < commands; i++)
            m_driver->typeCommand("ping");
        const QList<SentFrame> frames = m_modem->waitForFrames(commands);
        QCOMPARE(frames.size(), commands);
        for (int i = 0; i < commands; i++)
            QCOMPARE(frames.at(i).payload, extCommand("ALPHA-1", uint8_t(i + 1), "BRAVO-2", "ping"));
    }

    // A typed destination is upper-cased, need not be listed and wipes the terminal; one picked is taken
    // as listed. Choosing the active one again neither logs nor wipes.
    void destination()
    {
        auto *destination = m_driver->find<QComboBox>("terminalSelectActive");
        m_modem->send(replyFrame("old"));
        QTRY_COMPARE(m_driver->terminalOutput(), QStringLiteral("old"));
        QTest::ignoreMessage(QtDebugMsg, "Edit finished. Active station \"BRAVO-2\"");
        m_driver->setField("terminalSelectActive", "bravo-2");
        QCOMPARE(destination->currentText(), QStringLiteral("BRAVO-2"));
        QVERIFY(m_driver->terminalOutput().isEmpty());
        m_modem->send(
            rxFrame(113, 1, src("ALPHA-1", 1)) + rxFrame(113, 1, src("BRAVO-2", 1)) + replyFrame("kept"));
        QTRY_COMPARE(m_driver->terminalOutput(), QStringLiteral("kept"));
        m_driver->setField("terminalSelectActive", "Bravo-2");
        emit destination->activated(1); // as the popup does when the active station is chosen again
        QCOMPARE(m_driver->terminalOutput(), QStringLiteral("kept"));
        QCOMPARE(destination->count(), 2);
        destination->setFocus();
        QTest::ignoreMessage(QtDebugMsg, "Select finished. Active station \"ALPHA-1\"");
        QTest::keyClick(destination, Qt::Key_Up);
        QCOMPARE(destination->currentText(), QStringLiteral("ALPHA-1"));
        QVERIFY(m_driver->terminalOutput().isEmpty());
    }

    // A click in the stations table shows that station's properties, expanded.
    void stationTree()
    {
        m_modem->send(rxFrame(113, 1, src("ALPHA-1", 1)) + rxFrame(113, 1, src("BRAVO-2", 7) + stat()));
        QTRY_COMPARE(m_driver->rows("stationsTable"), 2);
        m_driver->find<QTabWidget>("tabWidget")->setCurrentWidget(m_driver->find<QWidget>("tabStations"));
        auto *table = m_driver->find<QTableView>("stationsTable");
        const QPoint cell = table->visualRect(table->model()->index(1, 0)).center();
        QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::NoModifier, cell);
        auto *tree = m_driver->find<QTreeView>("stationTreeView");
        const auto *properties = qobject_cast<const QStandardItemModel *>(tree->model());
        QVERIFY(properties);
        QCOMPARE(properties->findItems("stat").size(), 1);
        const QList<QStandardItem *> source = properties->findItems("src");
        QCOMPARE(source.size(), 1);
        QVERIFY(tree->isExpanded(source.at(0)->index()));
    }

    // The terminal keeps its last 1,000 lines; the oldest go first.
    void repliesKeepTheLastThousandLines()
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

private:
    // The single frame the modem receives next.
    QByteArray sent(int type)
    {
        const QList<SentFrame> frames = m_modem->waitForFrames(1);
        return frames.size() == 1 && frames.at(0).type == type ? frames.at(0).payload : "bad frames";
    }

    std::unique_ptr<Modem> m_modem;
    std::unique_ptr<WindowDriver> m_driver;
};

QTEST_MAIN(tst_MainWindowTerminal)
#include "tst_mainwindow_terminal.moc"
