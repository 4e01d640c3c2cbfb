#include <QtTest>

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTcpServer>
#include <QTcpSocket>
#include <QVBoxLayout>

#include "iridiumtcp.h"

// The client always dials port 10020, so the test plays the gateway there.

using Bytes = QByteArray;

static const char IMEI[] = "300234010753370";

// Gateway message with the header spelled out byte by byte.
static Bytes message(const char *typeHex, const Bytes &content)
{
    const quint32 n = quint32(content.size() + 4);
    const char length[4] = { char(n), char(n >> 8), char(n >> 16), char(n >> 24) };
    return Bytes(length, 4) + Bytes::fromHex(typeHex) + content;
}

static const char SBD[] = "a0680600"; // 420000
static const char RAW[] = "a1680600"; // 420001

class TstIridiumTcp : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();
    void sends_data();
    void sends();
    void receives_data();
    void receives();
    void followsConnection();

private:
    void press();

    QTcpServer m_server;
    QWidget *m_window = nullptr;
    QPushButton *m_button = nullptr;
    QLineEdit *m_host = nullptr;
    QCheckBox *m_flush = nullptr;
    IridiumTcp *m_client = nullptr;
    QTcpSocket *m_peer = nullptr;
    QSignalSpy *m_state = nullptr;
};

void TstIridiumTcp::initTestCase()
{
    if (!m_server.listen(QHostAddress::LocalHost, IridiumTcp::GatewayPort))
        QSKIP("port 10020 on 127.0.0.1 is busy: cannot play the gateway");
}

void TstIridiumTcp::init()
{
    m_window = new QWidget;
    auto *layout = new QVBoxLayout(m_window);
    layout->addWidget(m_button = new QPushButton("Connect"));
    layout->addWidget(m_host = new QLineEdit("127.0.0.1"));
    layout->addWidget(m_flush = new QCheckBox("Flush"));
    m_client = new IridiumTcp(m_button, m_host, m_flush);
    m_state = new QSignalSpy(m_client, &IridiumTcp::connectionStateChanged);
    press();
    QTRY_VERIFY(m_server.hasPendingConnections());
    m_peer = m_server.nextPendingConnection();
    QTRY_COMPARE(m_state->count(), 1);
    QCOMPARE(m_state->takeFirst().at(0).toBool(), true);
    QCOMPARE(m_button->text(), QString("Disconnect"));
    QVERIFY(!m_host->isEnabled());
}

void TstIridiumTcp::cleanup()
{
    delete m_state;
    delete m_client;
    delete m_window;
    delete m_peer;
    m_peer = nullptr;
}

void TstIridiumTcp::press()
{
    QTest::mouseClick(m_button, Qt::LeftButton);
}

enum Call { SendSbd, SendPayload, SendEmpty };

void TstIridiumTcp::sends_data()
{
    QTest::addColumn<int>("call");
    QTest::addColumn<QString>("address");
    QTest::addColumn<Bytes>("data");
    QTest::addColumn<bool>("flush");
    QTest::addColumn<QString>("log");
    QTest::addColumn<Bytes>("wire");
    const Bytes padded10 = Bytes("LA1ABC-123") + '\0';
    QTest::newRow("SBD") << int(SendSbd) << IMEI << Bytes("hi") << false << "Sending 2 B over Iridium: \"hi\""
                         << message(SBD, IMEI + Bytes(1, '\0') + "hi");
    QTest::newRow("SBD, flush") << int(SendSbd) << IMEI << Bytes() << true << "Sending 0 B over Iridium: \"\""
                                << message(SBD, IMEI + Bytes("\x01"));
    QTest::newRow("10-character callsign")
        << int(SendPayload) << "LA1ABC-123" << Bytes("\x01\x02") << false
        << "Sending glider payload to relayhub" << message(RAW, padded10 + "\x01\x02");
    QTest::newRow("short callsign") << int(SendPayload) << "LA9X" << Bytes("p") << false
                                    << "Sending glider payload to relayhub"
                                    << message(RAW, "LA9X" + Bytes(7, '\0') + "p");
    // characters are counted, not bytes: 12 UTF-8 bytes go out unpadded
    QTest::newRow("multi-byte callsign")
        << int(SendPayload) << QString::fromUtf8("ÆØÅÆØÅ") << Bytes("p") << false
        << "Sending glider payload to relayhub" << message(RAW, QString::fromUtf8("ÆØÅÆØÅ").toUtf8() + "p");
    QTest::newRow("11-character callsign") << int(SendPayload) << "LA1ABC-1234" << Bytes("p") << false
                                           << "Callsign si too large (11): LA1ABC-1234" << Bytes();
    QTest::newRow("empty message") << int(SendEmpty) << QString() << Bytes() << false << QString()
                                   << Bytes::fromHex("04000000a0680600");
}

void TstIridiumTcp::sends()
{
    QFETCH(int, call);
    QFETCH(QString, address);
    QFETCH(Bytes, data);
    QFETCH(bool, flush);
    QFETCH(QString, log);
    QFETCH(Bytes, wire);
    Bytes received;
    connect(m_peer, &QTcpSocket::readyRead, this, [&] { received += m_peer->readAll(); });
    m_flush->setChecked(flush);
    if (!log.isEmpty())
        QTest::ignoreMessage(wire.isEmpty() ? QtWarningMsg : QtDebugMsg, log.toUtf8().constData());

    int result = -2;
    if (call == SendSbd)
        result = m_client->sendSBD(address, data);
    else if (call == SendPayload)
        result = m_client->sendPayload(address, data);
    else
        result = m_client->send(IridiumTcp::SBDTXRequest, data);
    QCOMPARE(result, wire.size());

    // A message of another type marks the end: nothing more, nothing less.
    const Bytes end = message("07000000", Bytes());
    QCOMPARE(m_client->send(IridiumTcp::PacketType(7), Bytes()), 8);
    QTRY_VERIFY(received.endsWith(end));
    QCOMPARE(received, wire + end);
}

void TstIridiumTcp::receives_data()
{
    QTest::addColumn<QList<Bytes>>("segments");
    QTest::addColumn<QList<int>>("delivered"); // newData count after each segment
    QTest::addColumn<QStringList>("data");
    QTest::addColumn<int>("malformed");
    const Bytes a = message(RAW, IMEI + Bytes("abc"));
    const Bytes b = message(RAW, "300234010000001" + Bytes::fromHex("00ff"));
    const QString dataA = QString(IMEI) + "|616263";
    const QString dataB = "300234010000001|00ff";
    const Bytes tooShort = Bytes::fromHex("02000000a168");

    QTest::newRow("one") << QList<Bytes> { a } << QList<int> { 1 } << QStringList { dataA } << 0;
    QTest::newRow("two in one") << QList<Bytes> { a + b } << QList<int> { 2 } << QStringList { dataA, dataB }
                                << 0;
    QTest::newRow("split in three") << QList<Bytes> { a.left(2), a.mid(2, 10), a.mid(12) }
                                    << QList<int> { 0, 0, 1 } << QStringList { dataA } << 0;
    QTest::newRow("one and a half") << QList<Bytes> { a + b.left(9), b.mid(9) } << QList<int> { 1, 2 }
                                    << QStringList { dataA, dataB } << 0;
    QTest::newRow("IMEI only") << QList<Bytes> { message(RAW, IMEI) } << QList<int> { 1 }
                               << QStringList { QString(IMEI) + "|" } << 0;
    QTest::newRow("too short") << QList<Bytes> { tooShort + a } << QList<int> { 1 } << QStringList { dataA }
                               << 1;
    QTest::newRow("empty") << QList<Bytes> { Bytes(4, '\0') + a } << QList<int> { 1 } << QStringList { dataA }
                           << 1;
    QTest::newRow("SBD request ignored") << QList<Bytes> { message(SBD, IMEI + Bytes("\0x", 2)) + a }
                                         << QList<int> { 1 } << QStringList { dataA } << 0;
}

void TstIridiumTcp::receives()
{
    QFETCH(QList<Bytes>, segments);
    QFETCH(QList<int>, delivered);
    QFETCH(QStringList, data);
    QFETCH(int, malformed);
    for (int i = 0; i < malformed; i++)
        QTest::ignoreMessage(QtWarningMsg, "Packet is malformed (too short)");
    for (const QString &d : qAsConst(data)) {
        const QStringList imeiHex = d.split('|');
        QTest::ignoreMessage(QtDebugMsg,
            qPrintable(QString("Data from IMEI \"%1\" length %2 content: \"%3\"")
                           .arg(imeiHex[0])
                           .arg(imeiHex[1].size() / 2)
                           .arg(imeiHex[1])));
    }
    QStringList seen;
    connect(m_client, &IridiumTcp::newData, this,
        [&](const QString &imei, const QByteArray &bytes) { seen << imei + "|" + bytes.toHex(); });
    QSignalSpy arrived(m_client->findChild<QTcpSocket *>(), &QTcpSocket::readyRead);

    for (int i = 0; i < segments.size(); i++) {
        m_peer->write(segments.at(i));
        if (delivered.at(i) == 0) {
            QVERIFY(arrived.wait(5000));
            QCOMPARE(seen.size(), 0);
        } else {
            QTRY_COMPARE(seen.size(), delivered.at(i));
        }
    }
    QCOMPARE(seen, data);
}

void TstIridiumTcp::followsConnection()
{
    press(); // close
    QTRY_COMPARE(m_state->count(), 1);
    QCOMPARE(m_state->takeFirst().at(0).toBool(), false);
    QCOMPARE(m_button->text(), QString("Connect"));
    QVERIFY(m_host->isEnabled());

    press(); // again, then the gateway hangs up
    QTRY_VERIFY(m_server.hasPendingConnections());
    QTRY_COMPARE(m_button->text(), QString("Disconnect"));
    QScopedPointer<QTcpSocket> peer(m_server.nextPendingConnection());
    peer->close();
    QTRY_COMPARE(m_button->text(), QString("Connect"));
    QVERIFY(m_host->isEnabled());
    QCOMPARE(m_state->count(), 2);
    QCOMPARE(m_state->at(1).at(0).toBool(), false);

    // Nobody listening: the attempt fails quietly, writes fail.
    m_server.close();
    QSignalSpy failed(m_client->findChild<QTcpSocket *>(), &QTcpSocket::errorOccurred);
    press();
    QVERIFY(failed.wait(5000));
    QCOMPARE(m_button->text(), QString("Connect"));
    QCOMPARE(m_state->count(), 2);
    QCOMPARE(m_client->send(IridiumTcp::RawPayload, "x"), -1);
    QVERIFY(m_server.listen(QHostAddress::LocalHost, IridiumTcp::GatewayPort));
}

QTEST_MAIN(TstIridiumTcp)
#include "tst_iridium_tcp.moc"
