#include <QtTest>

#include "linkaddress.h"
#include "linkstatus.h"
#include "reconnector.h"
#include "spp_host_qt.h"

// The pieces behind the link status label and --link/--reconnect: the
// command-line link, the state in words, the retry delays.
class tst_Links : public QObject
{
    Q_OBJECT

private slots:
    void linkAddress_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("described"); // empty: refused
        QTest::addColumn<QString>("type");
        QTest::newRow("tcp") << "tcp:127.0.0.1:10004"
                             << "tcp 127.0.0.1:10004"
                             << "TCP";
        QTest::newRow("udp, name") << "udp:modem.local:5000"
                                   << "udp modem.local:5000"
                                   << "UDP";
        QTest::newRow("kind in capitals") << "TCP:host:1"
                                          << "tcp host:1"
                                          << "TCP";
        QTest::newRow("ipv6 in brackets") << "tcp:[::1]:10004"
                                          << "tcp [::1]:10004"
                                          << "TCP";
        QTest::newRow("serial") << "serial:/dev/ttyUSB0"
                                << "serial /dev/ttyUSB0 @38400"
                                << "Serial";
        QTest::newRow("serial with baud") << "serial:/dev/pts/3@115200"
                                          << "serial /dev/pts/3 @115200"
                                          << "Serial";
        QTest::newRow("empty") << ""
                               << ""
                               << "";
        QTest::newRow("unknown kind") << "ftp:host:21"
                                      << ""
                                      << "";
        QTest::newRow("no port") << "tcp:host"
                                 << ""
                                 << "";
        QTest::newRow("no host") << "udp::10004"
                                 << ""
                                 << "";
        QTest::newRow("port 0") << "tcp:host:0"
                                << ""
                                << "";
        QTest::newRow("port too big") << "tcp:host:65536"
                                      << ""
                                      << "";
        QTest::newRow("port not a number") << "tcp:host:http"
                                           << ""
                                           << "";
        QTest::newRow("no device") << "serial:"
                                   << ""
                                   << "";
        QTest::newRow("baud not a number") << "serial:/dev/ttyS0@fast"
                                           << ""
                                           << "";
        QTest::newRow("baud 0") << "serial:/dev/ttyS0@0"
                                << ""
                                << "";
    }
    void linkAddress()
    {
        QFETCH(QString, text);
        QFETCH(QString, described);
        QFETCH(QString, type);
        LinkAddress address;
        QString error;
        const bool ok = LinkAddress::parse(text, &address, &error);
        QCOMPARE(ok, !described.isEmpty());
        if (!ok) {
            QVERIFY(!error.isEmpty());
            QVERIFY(!error.contains('\n'));
            return;
        }
        QCOMPARE(address.describe(), described);
        QCOMPARE(address.typeName(), type);
    }

    // Every state the label can show, in the order a flaky link goes
    // through them; the tooltip counts what the receiver threw away.
    void statusTexts()
    {
        SppHost receiver;
        LinkStatus status;
        status.setReceiver(&receiver);
        status.setSilentAfter(300);
        QCOMPARE(status.text(), "No link");

        status.connecting("tcp 127.0.0.1:10004");
        QCOMPARE(status.text(), "tcp 127.0.0.1:10004: connecting");
        status.down("connection refused");
        QCOMPARE(status.text(), "tcp 127.0.0.1:10004: down: connection refused");
        status.retrying(2000, 2);
        QCOMPARE(
            status.text(), "tcp 127.0.0.1:10004: down: connection refused; reconnecting in 2 s (attempt 2)");

        status.up();
        QCOMPARE(status.state(), LinkStatus::Up);
        QCOMPARE(status.text(), "tcp 127.0.0.1:10004: up, no frames yet");
        status.frameReceived();
        QTRY_VERIFY(status.text().startsWith("tcp 127.0.0.1:10004: up, "));
        QTRY_VERIFY(status.text().contains(" frames/s, last "));
        QTRY_COMPARE(status.text(), "tcp 127.0.0.1:10004: silent for 0 s");
        QVERIFY(status.isSilent());

        for (const char byte : QByteArray("xyz$\x01\x02\x03\x01z"))
            receiver.parse(uint8_t(byte));
        status.closed();
        QCOMPARE(status.text(), "tcp 127.0.0.1:10004: closed");
        QCOMPARE(status.toolTip(),
            "Good frames: 1\nFrames with a bad CRC: 1\nBytes outside frames: 3\nReconnects: 1");
    }

    // The first connection is not a reconnect; one after a retry is.
    void reconnectsCounted()
    {
        LinkStatus status;
        status.connecting("udp h:1");
        status.up();
        status.down("lost");
        status.up();
        QCOMPARE(status.reconnects(), 0);
        status.retrying(1000, 1);
        status.up();
        QCOMPARE(status.reconnects(), 1);
    }

    // Delays double from the first to the cap; a connection that held
    // starts them over, one that did not continues them.
    void reconnectDelays()
    {
        Reconnector reconnector(nullptr, 1, 12, 50);
        QSignalSpy scheduled(&reconnector, &Reconnector::scheduled);
        QSignalSpy retries(&reconnector, &Reconnector::retry);
        reconnector.failed();
        QCOMPARE(scheduled.count(), 0); // off unless asked for

        reconnector.setEnabled(true);
        QList<int> delays;
        for (int attempt = 1; attempt <= 6; attempt++) {
            reconnector.failed();
            reconnector.failed(); // one retry at a time
            QVERIFY(retries.wait(1000));
            delays << scheduled.last().at(0).toInt();
            QCOMPARE(scheduled.last().at(1).toInt(), attempt);
        }
        QCOMPARE(delays, (QList<int> { 1, 2, 4, 8, 12, 12 }));

        reconnector.connected();
        reconnector.failed(); // lost before it held
        QCOMPARE(scheduled.last().at(0).toInt(), 12);
        QVERIFY(retries.wait(1000));
        reconnector.connected();
        QTRY_COMPARE(reconnector.failures(), 0);
        reconnector.failed();
        QCOMPARE(scheduled.last().at(0).toInt(), 1);

        reconnector.stop(); // the operator's Disconnect
        QVERIFY(!reconnector.isPending());
    }
};

QTEST_GUILESS_MAIN(tst_Links)
#include "tst_links.moc"
