#include "mainwindow_harness.h"

using namespace harness;

// Each payload goes in as a copy of its own on the heap, so that a read past its end is caught by ASan.
static void send(WindowDriver &driver, const QByteArrayList &frames)
{
    QByteArray stream = frames.join();
    for (const SentFrame &frame : takeFrames(&stream)) {
        std::unique_ptr<uint8_t[]> bytes(new uint8_t[qMax(1, frame.payload.size())]);
        memcpy(bytes.get(), frame.payload.constData(), size_t(frame.payload.size()));
        driver.window.handleSppPacket(
            uint8_t(frame.type), bytes.get(), uint16_t(frame.payload.size()), "tcp");
    }
}

// Packets from the framing host, as the log, the station list, the local callsign and the terminal show them.
class tst_MainWindowDispatch : public QObject
{
    Q_OBJECT

private slots:
    void packetLog_data()
    {
        QTest::addColumn<QByteArray>("frame"); // none: a satellite message
        QTest::addColumn<QString>("row");
        const QByteArray alpha = src("ALPHA-1", 5) + stat(), all = rxFrame(180, 1, text("hi") + alpha);
        QTest::newRow("rx, names in type order")
            << all << QString("ALPHA-1 | rx(-20), tcp | -20 | 37 | spp(rx), ext(src, stat, text)");
        QTest::newRow("rx, no extension flag")
            << rxFrame(150, 0, "plain") << QString(" | rx(-50), tcp | -50 | 5 | spp(rx)");
        QTest::newRow("rx, invalid extension data") << rxFrame(150, 1, QByteArray("\x20\x01\x00", 3))
                                                    << QString(" | rx(-50), tcp | -50 | 3 | spp(rx), ext()");
        QTest::newRow("local echo") << localFrame(1, alpha)
                                    << QString("ALPHA-1 | local, tcp | - | 33 | spp(local), ext(src, stat)");
        QTest::newRow("command reply") << replyFrame("ok") << QString(" | local, tcp | - | 2 | spp(cmd)");
        QTest::newRow("other type") << reference::sppFrame(1, "\x01xyz") << QString(" | tcp | - | 4 | spp(");
        QTest::newRow("satellite") << QByteArray() << QString("300234010753370 | iridium | - | 3 | ");
        // Too short for their header: rssi is byte 5 of the receive header, the flags
        // byte 7; what is missing reads as zero. The bar stops at -141.
        QTest::newRow("rx, 1 byte") << reference::sppFrame(0, "\x01")
                                    << QString(" | rx(-200), tcp | -141 | 0 | spp(rx)");
        QTest::newRow("rx, header only") << reference::sppFrame(0, QByteArray("\0\0\0\0\0\xA0\0\x01", 8))
                                         << QString(" | rx(-40), tcp | -40 | 0 | spp(rx), ext()");
        QTest::newRow("local, empty")
            << reference::sppFrame(2, "") << QString(" | local, tcp | - | 0 | spp(local)");
    }

    // Newest first; a station row for each packet with a source.
    void packetLog()
    {
        WindowDriver driver;
        QFETCH(QByteArray, frame);
        QFETCH(QString, row);
        send(driver, { replyFrame("earlier"), frame });
        if (frame.isEmpty()) // nothing delivers satellite messages yet
            driver.window.incomingSbd("300234010753370", QByteArray("\x01\x02\x03", 3));
        QCOMPARE(driver.rows("packetTable"), 2);
        const auto *table = driver.find<QTableView>("packetTable");
        const auto *bar = qobject_cast<QProgressBar *>(table->indexWidget(table->model()->index(0, 2)));
        QStringList cells;
        for (int column : { 0, 1, 3, 4 })
            cells << driver.cell("packetTable", 0, column);
        cells.insert(2, bar ? QString::number(bar->value()) : "-");
        QCOMPARE(cells.join(" | "), row);
        QCOMPARE(driver.rows("stationsTable"), row.startsWith(' ') ? 0 : 1);
    }

    // A station row per source with its latest path; local echoes set the local callsign while the box is
    // checked.
    void stationsAndLocalCallsign()
    {
        WindowDriver driver;
        auto *autoSet = driver.find<QCheckBox>("localCallAutoSetBox");
        const auto *local = driver.find<QLineEdit>("localCallEdit");
        autoSet->setChecked(true);
        send(driver,
            { rxFrame(113, 0, src("ZULU", 1)), rxFrame(113, 1, stat()), rxFrame(113, 1, src("ALPHA-1", 1)),
                rxFrame(140, 1, src("BRAVO-2", 1)), localFrame(1, stat()) });
        QCOMPARE(local->text(), QString());
        send(driver, { localFrame(1, src("ALPHA-1", 2) + stat()) });
        QCOMPARE(driver.rows("stationsTable"), 2);
        QCOMPARE(driver.cell("stationsTable", 0, 0) + "/" + driver.cell("stationsTable", 0, 2) + " "
                + driver.cell("stationsTable", 1, 0) + "/" + driver.cell("stationsTable", 1, 2),
            QStringLiteral("ALPHA-1/local, tcp BRAVO-2/rx(-60), tcp"));
        QCOMPARE(local->text(), QStringLiteral("ALPHA-1"));
        send(driver, { localFrame(1, src("ALPHA-2", 3)) });
        QCOMPARE(local->text(), QStringLiteral("ALPHA-2"));
        autoSet->setChecked(false);
        send(driver, { localFrame(1, src("ALPHA-1", 4)) });
        QCOMPARE(local->text(), QStringLiteral("ALPHA-2"));
    }

    // Only local echoes stay out of the log, and they leave the icon grey; their stations still count.
    void ignoreLocalPackets()
    {
        WindowDriver driver;
        driver.find<QCheckBox>("ignoreLocalBox")->setChecked(true);
        const auto *indicator = driver.find<QLabel>("m_packet_inducator");
        const qint64 idle = indicator->pixmap(Qt::ReturnByValue).cacheKey();
        send(driver, { localFrame(1, src("ALPHA-1", 1)) });
        QCOMPARE(driver.rows("packetTable"), 0);
        QCOMPARE(driver.rows("stationsTable"), 1);
        QCOMPARE(indicator->pixmap(Qt::ReturnByValue).cacheKey(), idle);
        send(driver, { rxFrame(113, 1, src("BRAVO-2", 1)), replyFrame("ok") });
        QCOMPARE(driver.rows("packetTable"), 2);
    }

    // Written as they come: SPP replies only in "SPP cmd" mode (the mode at start, whatever the box shows),
    // text replies only from the active station and only in "Ext. cmd" mode.
    void repliesInTerminal()
    {
        WindowDriver driver;
        const QByteArray reply = rxFrame(113, 1, src("ALPHA-1", 1) + text("uptime 42"));
        send(driver, { replyFrame("OK"), replyFrame("\tv1.2"), reply });
        QCOMPARE(driver.terminalOutput(), QStringLiteral("OK\tv1.2"));
        driver.setField("terminalSelectActive", "ALPHA-1");
        driver.choose("configModeBox", "Ext. cmd (select below)");
        send(driver, { replyFrame("OK"), rxFrame(113, 0, src("ALPHA-1", 1) + text("x")), reply });
        QCOMPARE(driver.terminalOutput(), QStringLiteral("uptime 42"));
        driver.setField("terminalSelectActive", "BRAVO-2");
        send(driver, { reply });
        QCOMPARE(driver.terminalOutput(), QString());
        driver.setField("terminalSelectActive", "ALPHA-1");
        driver.choose("configModeBox", "SPP cmd (local)");
        send(driver, { reply });
        QCOMPARE(driver.terminalOutput(), QString());
    }
};

QTEST_MAIN(tst_MainWindowDispatch)
#include "tst_mainwindow_dispatch.moc"
