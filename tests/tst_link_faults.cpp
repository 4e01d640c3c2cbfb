#include "mainwindow_harness.h"

using namespace harness;

// Links that fail under the window. It must keep running, come back when the user
// connects again and deliver every complete frame, except those the framing host
// swallows after a cut frame: keeping its state across links, it takes the first
// bytes of the new link to complete the cut frame, which then fails its CRC.

namespace
{

const QStringList TAGS { "tcp", "udp", "serial" }; // the links' names in the packet log

// Received packets from F<first>, F<first + 1>, ...: 22 bytes each, none with a start byte inside.
QByteArray numbered(int first, int count = 1)
{
    QByteArray frames;
    for (int n = first; n < first + count; n++)
        frames += rxFrame(120, 1, src(QString::asprintf("F%02d", n), uint8_t(n)));
    return frames;
}

} // namespace

class tst_LinkFaults : public QObject
{
    Q_OBJECT

private slots:
    void cutFrame_data()
    {
        QTest::addColumn<int>("link");
        QTest::addColumn<int>("cut"); // bytes of F02 sent before the fault
        QTest::addColumn<int>("lost"); // frames of the new link swallowed with it
        for (const int link : { Modem::Tcp, Modem::Udp, Modem::Serial }) {
            const QByteArray name = TAGS.at(link).toLatin1();
            QTest::addRow("%s, between frames", name.data()) << link << 0 << 0;
            QTest::addRow("%s, in the payload", name.data()) << link << 12 << 1; // takes 10 bytes
            QTest::addRow("%s, after the length byte", name.data()) << link << 5 << 1; // takes 17 bytes
            // The length comes from the new bytes: F03's CRC low byte, 52, so it takes 54 bytes.
            QTest::addRow("%s, in the header", name.data()) << link << 3 << 3;
        }
    }

    // F00 and F01 arrive in two writes (datagrams) and F02 is cut by the fault; then F03 to F16.
    void cutFrame()
    {
        QFETCH(int, link);
        QFETCH(int, cut);
        QFETCH(int, lost);
        Modem modem { Modem::Link(link) };
        WindowDriver driver;
        QVERIFY(modem.open());
        QVERIFY(driver.connectTo(&modem));
        const QByteArray before = numbered(0, 2) + numbered(2).left(cut);
        modem.send(before.left(30)); // F01 split
        modem.send(before.mid(30));
        QTRY_COMPARE(driver.rows("packetTable"), 2);
        QCOMPARE(driver.cell("packetTable", 0, 1), "rx(-80), " + TAGS.at(link));
        driver.typeCommand("ver");
        QCOMPARE(modem.waitForFrames(1).value(0).payload, QByteArray("ver"));

        if (link == Modem::Serial)
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^Serial port lost: \""));
        modem.drop();
        if (link == Modem::Udp) {
            driver.typeCommand("ver"); // UDP knows no connection: this goes into the void
            QCOMPARE(driver.connectText(), QStringLiteral("Disconnect"));
        } else {
            QTRY_COMPARE_WITH_TIMEOUT(driver.connectText(), QStringLiteral("Connect"), LINK_WAIT_MS);
            QCOMPARE(driver.window.statusBar()->currentMessage(),
                QString(link == Modem::Tcp ? "TCP disconnected!" : "Serial port lost!"));
            QVERIFY(link == Modem::Tcp || !driver.window.findChild<QSerialPort *>()->isOpen());
        }

        QVERIFY(modem.open());
        QVERIFY(driver.connectTo(&modem));
        modem.send(numbered(3, 14));
        QTRY_COMPARE_WITH_TIMEOUT(driver.cell("packetTable", 0, 0), QStringLiteral("F16"), LINK_WAIT_MS);
        QStringList logged, expected;
        for (int row = driver.rows("packetTable") - 1; row >= 0; row--)
            logged << driver.cell("packetTable", row, 0);
        for (int n = 0; n < 17; n++)
            if (n < 2 || n > 2 + lost)
                expected << QString::asprintf("F%02d", n);
        QCOMPARE(logged, expected);

        // A disconnect the user asks for shows no message.
        driver.window.statusBar()->clearMessage();
        driver.pressConnect();
        QTRY_VERIFY(!modem.tcp || modem.tcp->state() == QAbstractSocket::UnconnectedState);
        QCOMPARE(driver.window.statusBar()->currentMessage(), QString());
    }
};

QTEST_MAIN(tst_LinkFaults)
#include "tst_link_faults.moc"
