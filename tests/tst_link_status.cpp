#include "mainwindow_harness.h"

#include "linkaddress.h"
#include "linkstatus.h"
#include "spp_host_qt.h"

using namespace harness;

// The window's link status label, --link and --reconnect, and a flood
// taken in bounded reads, against real sockets and socat's pseudo-terminals.

namespace
{

QString labelText(const WindowDriver &driver)
{
    return driver.find<QLabel>("linkStatusLabel")->text();
}

LinkAddress addressFor(const Modem &modem)
{
    LinkAddress address;
    const QString text
        = modem.link == Modem::Serial ? "serial:" + modem.address : "tcp:127.0.0.1:" + modem.address;
    LinkAddress::parse(text, &address, nullptr);
    return address;
}

// A port with nothing listening on it, right now.
quint16 closedPort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost, 0);
    return server.serverPort();
}

} // namespace

class tst_LinkStatus : public QObject
{
    Q_OBJECT

private slots:
    void labelBesideTheIcon()
    {
        WindowDriver driver;
        auto *label = driver.find<QLabel>("linkStatusLabel");
        auto *icon = driver.find<QLabel>("m_packet_inducator");
        QVERIFY(label);
        QVERIFY(label->pixmap(Qt::ReturnByValue).isNull());
        QVERIFY(label->mapTo(&driver.window, QPoint()).x() < icon->mapTo(&driver.window, QPoint()).x());
        QCOMPARE(label->text(), "No link");
        QCOMPARE(driver.window.statusBar()->currentMessage(), "Ready");
    }

    void failuresInWords_data()
    {
        QTest::addColumn<QString>("link");
        QTest::addColumn<QString>("shown");
        const quint16 port = closedPort();
        QTest::newRow("refused") << QString("tcp:127.0.0.1:%1").arg(port)
                                 << QString("tcp 127.0.0.1:%1: down: connection refused").arg(port);
        QTest::newRow("unknown host") << "tcp:no-such-host.invalid:10004"
                                      << "tcp no-such-host.invalid:10004: down: host not found";
        QTest::newRow("no such port") << "serial:/nonexistent/ttyX0"
                                      << "serial /nonexistent/ttyX0 @38400: down: port cannot be opened: ";
    }
    // Nothing opened: the button still offers "Connect", the label says why.
    void failuresInWords()
    {
        QFETCH(QString, link);
        QFETCH(QString, shown);
        WindowDriver driver;
        LinkAddress address;
        QVERIFY(LinkAddress::parse(link, &address, nullptr));
        driver.window.openLink(address);
        QTRY_VERIFY_WITH_TIMEOUT(labelText(driver).startsWith(shown), LINK_WAIT_MS);
        QCOMPARE(driver.connectText(), "Connect");
    }

    void comesBack_data()
    {
        QTest::addColumn<int>("link");
        QTest::newRow("tcp") << int(Modem::Tcp);
        QTest::newRow("serial, the port vanishes and returns") << int(Modem::Serial);
    }
    // With --reconnect the link returns by itself once the modem is back,
    // the stale loss message goes, and frames flow again.
    void comesBack()
    {
        QFETCH(int, link);
        Modem modem { Modem::Link(link) };
        WindowDriver driver;
        QVERIFY(modem.open());
        driver.window.setReconnect(true);
        driver.window.openLink(addressFor(modem));
        QVERIFY(modem.accept());
        QTRY_VERIFY(labelText(driver).contains(": up"));

        modem.drop();
        modem.server.close();
        QTRY_VERIFY_WITH_TIMEOUT(labelText(driver).contains("; reconnecting in "), LINK_WAIT_MS);
        QCOMPARE(driver.connectText(), "Disconnect"); // stops the retries
        const QString loss = link == Modem::Tcp ? "TCP disconnected!" : "Serial port lost!";
        QCOMPARE(driver.window.statusBar()->currentMessage(), loss);

        QVERIFY(modem.open());
        QVERIFY(modem.accept());
        QTRY_VERIFY_WITH_TIMEOUT(labelText(driver).contains(": up"), LINK_WAIT_MS);
        QCOMPARE(driver.window.statusBar()->currentMessage(), QString());
        QVERIFY(driver.window.linkStatus()->toolTip().contains("Reconnects: 1"));
        modem.send(rxFrame(120, 1, src("BACK-1", 1)));
        QTRY_COMPARE(driver.rows("packetTable"), 1);
        QVERIFY(labelText(driver).contains(": up"));
    }

    // The operator's Disconnect ends the retries for good.
    void disconnectStopsRetries()
    {
        WindowDriver driver;
        driver.window.setReconnect(true);
        LinkAddress address;
        QVERIFY(LinkAddress::parse(QString("tcp:127.0.0.1:%1").arg(closedPort()), &address, nullptr));
        driver.window.openLink(address);
        QTRY_VERIFY_WITH_TIMEOUT(labelText(driver).contains("(attempt 1)"), LINK_WAIT_MS);
        driver.pressConnect();
        QVERIFY(labelText(driver).endsWith(": closed"));
        QCOMPARE(driver.connectText(), "Connect");
        QTest::qWait(1500); // past the first retry
        QVERIFY(labelText(driver).endsWith(": closed"));
    }

    // Far more than one read takes, in one write: every frame handed over,
    // in order, bad frames and stray bytes counted.
    void floodInOrder()
    {
        const int frames = 20000;
        Modem modem;
        WindowDriver driver;
        QVERIFY(modem.open());
        QVERIFY(driver.connectTo(&modem));
        QStringList sent, logged;
        QByteArray flood;
        for (int n = 0; n < frames; n++) {
            sent << QString("F%1").arg(n % 1000, 3, 10, QChar('0'));
            flood += rxFrame(120, 1, src(sent.last(), uint8_t(n)));
        }
        flood += "junk" + rxFrame(120, 1, src("BAD", 1)).replace(1, 1, "~");
        const QAbstractItemModel *log = driver.find<QTableView>("packetTable")->model();
        connect(log, &QAbstractItemModel::rowsInserted, this,
            [&logged, log] { logged << log->index(0, 0).data().toString(); });
        modem.send(flood);
        QTRY_COMPARE_WITH_TIMEOUT(logged.size(), frames, 60000);
        QCOMPARE(logged, sent);
        QTRY_COMPARE(driver.window.sppHost()->badCrcFrames(), quint64(1));
        QCOMPARE(driver.window.sppHost()->droppedBytes(), quint64(4));
    }

    void badLinkRefused_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("unknown kind") << QStringList { "--link", "modem:1" };
        QTest::newRow("bad port") << QStringList { "--link", "tcp:127.0.0.1:99999" };
        QTest::newRow("no device") << QStringList { "--link=serial:" };
    }
    // A bad --link never opens a window: one line, exit code 2.
    void badLinkRefused()
    {
        QFETCH(QStringList, arguments);
        QProcess program;
        QTemporaryDir runtime; // keeps the platform's own complaint off the error stream
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("XDG_RUNTIME_DIR", runtime.path());
        program.setProcessEnvironment(environment);
        program.start(VARDA_TOOLBOX_PATH, arguments);
        QVERIFY(program.waitForFinished(30000));
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 2);
        const QByteArray error = program.readAllStandardError();
        QVERIFY(error.startsWith("varda-toolbox: "));
        QCOMPARE(error.count('\n'), 1);
    }
};

QTEST_MAIN(tst_LinkStatus)
#include "tst_link_status.moc"
