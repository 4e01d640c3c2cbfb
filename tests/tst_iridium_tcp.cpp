#include <QtNetwork>
#include <QtTest>
#include <QtWidgets>

#include "iridiumtcp.h"

// The client always dials port 10020, so the test plays the gateway there.
using Bytes = QByteArray;
static const char IMEI[] = "300234010753370";
static const char SBD[] = "a0680600"; // 420000
static const char RAW[] = "a1680600"; // 420001
static QStringList s_log; // debug lines and warnings

// Gateway message: its length (below 256 here) as 4 bytes little-endian, the type, the content.
static Bytes message(const char *typeHex, const Bytes &content)
{
    return char(content.size() + 4) + Bytes(3, '\0') + Bytes::fromHex(typeHex) + content;
}

class tst_IridiumTcp : public QObject
{
    Q_OBJECT
private slots:
    // One connection: what each call sends and logs, what the gateway sends back, the widgets following.
    void gatewaySession()
    {
        QTcpServer server;
        if (!server.listen(QHostAddress::LocalHost, IridiumTcp::GatewayPort))
            QSKIP("port 10020 on 127.0.0.1 is busy: cannot play the gateway");
        qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext &, const QString &msg) { s_log << msg; });
        QWidget window;
        auto button = new QPushButton("Connect", &window);
        auto host = new QLineEdit("127.0.0.1", &window);
        auto flush = new QCheckBox(&window);
        IridiumTcp client(button, host, flush);
        QSignalSpy state(&client, &IridiumTcp::connectionStateChanged);
        const auto shown = [&] { // button text, host field enabled, the last connectionStateChanged
            return button->text() + QString(" %1 %2").arg(host->isEnabled()).arg(state.last().at(0).toBool());
        };
        QTest::mouseClick(button, Qt::LeftButton);
        QTRY_VERIFY(server.hasPendingConnections());
        QTRY_COMPARE(state.count(), 1);
        const std::unique_ptr<QTcpSocket> peer(server.nextPendingConnection());
        QCOMPARE(shown(), QString("Disconnect 0 1"));

        Bytes received;
        connect(peer.get(), &QTcpSocket::readyRead, this, [&] { received += peer->readAll(); });
        QCOMPARE(client.sendSBD(IMEI, "hi"), 4 + 4 + 15 + 1 + 2);
        flush->setChecked(true);
        QCOMPARE(client.sendSBD(IMEI, Bytes()), 4 + 4 + 15 + 1);
        QCOMPARE(client.sendPayload("LA1ABC-123", "\x01\x02"), 4 + 4 + 11 + 2);
        // characters are counted, not bytes: 12 UTF-8 bytes go out unpadded
        QCOMPARE(client.sendPayload(QString::fromUtf8("ÆØÅÆØÅ"), "p"), 4 + 4 + 12 + 1);
        QCOMPARE(client.sendPayload("LA1ABC-1234", "p"), 0);
        QCOMPARE(client.send(IridiumTcp::SBDTXRequest, Bytes()), 8);
        QVERIFY(s_log.contains("Sending 2 B over Iridium: \"hi\""));
        QVERIFY(s_log.contains("Callsign si too large (11): LA1ABC-1234"));
        QTRY_COMPARE(received,
            message(SBD, IMEI + Bytes(1, '\0') + "hi") + message(SBD, IMEI + Bytes("\x01"))
                + message(RAW, Bytes("LA1ABC-123\0\x01\x02", 13)) + message(RAW, Bytes("ÆØÅÆØÅp"))
                + Bytes::fromHex("04000000a0680600"));

        // several in one read; a short one reported, an SBD request ignored (splits: fuzz_iridium_framing)
        s_log.clear();
        QStringList seen;
        connect(&client, &IridiumTcp::newData, this,
            [&](const QString &imei, const QByteArray &bytes) { seen << imei + "|" + bytes.toHex(); });
        peer->write(message(RAW, IMEI + Bytes("abc"))
            + message(RAW, "300234010000001" + Bytes::fromHex("00ff")) + Bytes::fromHex("03000000a16806")
            + message(SBD, IMEI + Bytes("\0x", 2)) + message(RAW, IMEI));
        QTRY_COMPARE(
            seen, QStringList({ QString(IMEI) + "|616263", "300234010000001|00ff", QString(IMEI) + "|" }));
        QCOMPARE(s_log,
            QStringList({ "Data from IMEI \"300234010753370\" length 3 content: \"616263\"",
                "Data from IMEI \"300234010000001\" length 2 content: \"00ff\"",
                "Packet is malformed (too short)",
                "Data from IMEI \"300234010753370\" length 0 content: \"\"" }));

        QTest::mouseClick(button, Qt::LeftButton); // close
        QTRY_COMPARE(state.count(), 2);
        QCOMPARE(shown(), QString("Connect 1 0"));
        QTest::mouseClick(button, Qt::LeftButton); // again, then the gateway hangs up
        QTRY_VERIFY(server.hasPendingConnections());
        QTRY_COMPARE(shown(), QString("Disconnect 0 1"));
        delete server.nextPendingConnection();
        QTRY_COMPARE(shown(), QString("Connect 1 0"));
        QCOMPARE(client.send(IridiumTcp::RawPayload, "x"), -1); // not connected: the write fails
    }
};

QTEST_MAIN(tst_IridiumTcp)
#include "tst_iridium_tcp.moc"
