#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest>

#include "iridiumtcp.h"

// The client always dials port 10020, so the test plays the gateway there.
using Bytes = QByteArray;
static const char IMEI[] = "300234010753370";
static const char SBD[] = "a0680600"; // 420000
static const char RAW[] = "a1680600"; // 420001

// Gateway message with the header spelled out byte by byte.
static Bytes message(const char *typeHex, const Bytes &content)
{
    const quint32 n = quint32(content.size() + 4);
    const char length[4] = { char(n), char(n >> 8), char(n >> 16), char(n >> 24) };
    return Bytes(length, 4) + Bytes::fromHex(typeHex) + content;
}

class TstIridiumTcp : public QObject
{
    Q_OBJECT
    QTcpServer m_server;
    QWidget *m_window = nullptr;
    QPushButton *m_button = nullptr;
    QLineEdit *m_host = nullptr;
    QCheckBox *m_flush = nullptr;
    IridiumTcp *m_client = nullptr;
    QTcpSocket *m_peer = nullptr;
    QSignalSpy *m_state = nullptr;

    void press()
    {
        QTest::mouseClick(m_button, Qt::LeftButton);
    }
    // Button text, host field and the last connectionStateChanged.
    QString state() const
    {
        return QString("%1 %2 %3")
            .arg(m_button->text())
            .arg(m_host->isEnabled())
            .arg(m_state->last().at(0).toBool());
    }

private slots:
    void initTestCase()
    {
        if (!m_server.listen(QHostAddress::LocalHost, IridiumTcp::GatewayPort))
            QSKIP("port 10020 on 127.0.0.1 is busy: cannot play the gateway");
    }
    void init()
    {
        m_window = new QWidget;
        m_button = new QPushButton("Connect", m_window);
        m_host = new QLineEdit("127.0.0.1", m_window);
        m_flush = new QCheckBox(m_window);
        m_client = new IridiumTcp(m_button, m_host, m_flush);
        m_state = new QSignalSpy(m_client, &IridiumTcp::connectionStateChanged);
        press();
        QTRY_VERIFY(m_server.hasPendingConnections());
        m_peer = m_server.nextPendingConnection();
        QTRY_COMPARE(m_state->count(), 1);
        QCOMPARE(state(), QString("Disconnect 0 1"));
    }
    void cleanup()
    {
        delete m_state;
        delete m_client;
        delete m_window;
        delete m_peer;
    }

    // Each call's result and log line, then everything the gateway got, in order.
    void sends()
    {
        Bytes received;
        connect(m_peer, &QTcpSocket::readyRead, this, [&] { received += m_peer->readAll(); });
        QTest::ignoreMessage(QtDebugMsg, "Sending 2 B over Iridium: \"hi\"");
        QCOMPARE(m_client->sendSBD(IMEI, "hi"), 4 + 4 + 15 + 1 + 2);
        m_flush->setChecked(true);
        QTest::ignoreMessage(QtDebugMsg, "Sending 0 B over Iridium: \"\"");
        QCOMPARE(m_client->sendSBD(IMEI, Bytes()), 4 + 4 + 15 + 1);
        QTest::ignoreMessage(QtDebugMsg, "Sending glider payload to relayhub");
        QCOMPARE(m_client->sendPayload("LA1ABC-123", "\x01\x02"), 4 + 4 + 11 + 2);
        // characters are counted, not bytes: 12 UTF-8 bytes go out unpadded
        QTest::ignoreMessage(QtDebugMsg, "Sending glider payload to relayhub");
        QCOMPARE(m_client->sendPayload(QString::fromUtf8("ÆØÅÆØÅ"), "p"), 4 + 4 + 12 + 1);
        QTest::ignoreMessage(QtWarningMsg, "Callsign si too large (11): LA1ABC-1234");
        QCOMPARE(m_client->sendPayload("LA1ABC-1234", "p"), 0);
        QCOMPARE(m_client->send(IridiumTcp::SBDTXRequest, Bytes()), 8);
        const Bytes wire = message(SBD, IMEI + Bytes(1, '\0') + "hi") + message(SBD, IMEI + Bytes("\x01"))
            + message(RAW, Bytes("LA1ABC-123\0\x01\x02", 13)) + message(RAW, Bytes("ÆØÅÆØÅp"))
            + Bytes::fromHex("04000000a0680600");
        QTRY_COMPARE(received, wire);
    }

    void receives_data()
    {
        QTest::addColumn<QList<Bytes>>("segments");
        QTest::addColumn<QStringList>("data"); // "IMEI|hex" of each newData
        const Bytes a = message(RAW, IMEI + Bytes("abc")),
                    b = message(RAW, "300234010000001" + Bytes::fromHex("00ff"));
        const QString dataA = QString(IMEI) + "|616263";
        QTest::newRow("two in one") << QList<Bytes> { a + b }
                                    << QStringList { dataA, "300234010000001|00ff" };
        QTest::newRow("split in three")
            << QList<Bytes> { a.left(2), a.mid(2, 10), a.mid(12) } << QStringList { dataA };
        QTest::newRow("IMEI only") << QList<Bytes> { message(RAW, IMEI) }
                                   << QStringList { QString(IMEI) + "|" };
        QTest::newRow("type only") << QList<Bytes> { message(RAW, "") } << QStringList { "|" };
        QTest::newRow("too short") << QList<Bytes> { Bytes::fromHex("03000000a16806") + a }
                                   << QStringList { dataA };
        QTest::newRow("SBD request ignored")
            << QList<Bytes> { message(SBD, IMEI + Bytes("\0x", 2)) + a } << QStringList { dataA };
    }
    void receives()
    {
        QFETCH(QList<Bytes>, segments);
        QFETCH(QStringList, data);
        if (QByteArray(QTest::currentDataTag()) == "too short")
            QTest::ignoreMessage(QtWarningMsg, "Packet is malformed (too short)");
        for (const QString &d : qAsConst(data))
            QTest::ignoreMessage(QtDebugMsg,
                qPrintable(QString("Data from IMEI \"%1\" length %2 content: \"%3\"")
                               .arg(d.section('|', 0, 0))
                               .arg(d.section('|', 1).size() / 2)
                               .arg(d.section('|', 1))));
        QStringList seen;
        connect(m_client, &IridiumTcp::newData, this,
            [&](const QString &imei, const QByteArray &bytes) { seen << imei + "|" + bytes.toHex(); });
        QSignalSpy arrived(m_client->findChild<QTcpSocket *>(), &QTcpSocket::readyRead);
        for (int i = 0; i < segments.size(); i++) {
            m_peer->write(segments.at(i));
            if (i + 1 < segments.size()) { // an incomplete message is held back
                QVERIFY(arrived.wait(5000));
                QVERIFY(seen.isEmpty());
            }
        }
        QTRY_COMPARE(seen, data);
    }

    void followsConnection()
    {
        press(); // close
        QTRY_COMPARE(m_state->count(), 2);
        QCOMPARE(state(), QString("Connect 1 0"));
        press(); // again, then the gateway hangs up
        QTRY_VERIFY(m_server.hasPendingConnections());
        QTRY_COMPARE(state(), QString("Disconnect 0 1"));
        delete m_server.nextPendingConnection();
        QTRY_COMPARE(state(), QString("Connect 1 0"));
        m_server.close(); // nobody listening: the attempt fails quietly, writes fail
        press();
        QVERIFY(QSignalSpy(m_client->findChild<QTcpSocket *>(), &QTcpSocket::errorOccurred).wait(5000));
        QCOMPARE(state(), QString("Connect 1 0"));
        QCOMPARE(m_client->send(IridiumTcp::RawPayload, "x"), -1);
        QVERIFY(m_server.listen(QHostAddress::LocalHost, IridiumTcp::GatewayPort));
    }
};

QTEST_MAIN(TstIridiumTcp)
#include "tst_iridium_tcp.moc"
