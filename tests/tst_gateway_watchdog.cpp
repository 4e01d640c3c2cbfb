#include <QtNetwork>
#include <QtTest>
#include <QtWidgets>

#include "gatewayframer.h"
#include "gatewaysettings.h"
#include "gatewaywatchdog.h"
#include "gliderstation.h"
#include "iridiumtcp.h"
#include "linkstatus.h"

// The vehicle station's watch on its gateway client: a corrupt length
// wedges the client for good, so the station drops it and connects a
// fresh one, which a real gateway socket on 127.0.0.1 then feeds.

namespace
{

QByteArray message(uint32_t type, const QByteArray &content)
{
    const std::vector<uint8_t> bytes = GatewayFramer::frame(
        type, reinterpret_cast<const uint8_t *>(content.constData()), size_t(content.size()));
    return QByteArray(reinterpret_cast<const char *>(bytes.data()), int(bytes.size()));
}

} // namespace

class tst_GatewayWatchdog : public QObject
{
    Q_OBJECT

private slots:
    void verdicts_data()
    {
        QTest::addColumn<QVector<qint64>>("pending"); // one check a second
        QTest::addColumn<QVector<int>>("announced");
        QTest::addColumn<int>("stalledAt"); // check index, -1 never
        const int lot = int(GatewayWatchdog::MaxWaitMs / 1000) + 2; // checks past the wait
        QTest::newRow("nothing waits") << QVector<qint64>(lot, 0) << QVector<int>(lot, 0) << -1;
        QTest::newRow("absurd length, at once")
            << QVector<qint64> { 0, 12 } << QVector<int> { 0, 0x7FFFFFF0 } << 1;
        QTest::newRow("message trickling in, taken")
            << QVector<qint64> { 8, 108, 508, 1008, 0 } << QVector<int> { 2000, 2000, 2000, 2000, 0 } << -1;
        QTest::newRow("plausible length, never completed")
            << QVector<qint64>(lot, 100) << QVector<int>(lot, 2000) << lot - 1;
        QVector<qint64> taken;
        QVector<int> heads;
        for (int i = 0; i < lot; i++) {
            taken << 300 - 10 * (i % 2); // a message taken every other second, the rest waits
            heads << 100 + i % 2;
        }
        QTest::newRow("busy, messages taken") << taken << heads << -1;
    }
    void verdicts()
    {
        QFETCH(QVector<qint64>, pending);
        QFETCH(QVector<int>, announced);
        QFETCH(int, stalledAt);
        GatewayWatchdog watchdog;
        int stalled = -1;
        for (int i = 0; i < pending.size() && stalled < 0; i++)
            if (watchdog.stalled(pending.at(i), quint32(announced.at(i)), i * 1000))
                stalled = i;
        QCOMPARE(stalled, stalledAt);
        if (stalled >= 0)
            QVERIFY(!watchdog.reason().isEmpty());
    }

    // The station reaches the gateway only through its settings group:
    // data from the fresh client reaches the panel and the radio's log.
    void wedgedClientReplaced()
    {
        QTcpServer gateway;
        QVERIFY(gateway.listen(QHostAddress::LocalHost, IridiumTcp::GatewayPort));
        GliderStation station;
        GatewaySettings *settings = station.gateway();
        QSignalSpy stalled(settings, &GatewaySettings::stalled);
        QSignalSpy data(settings, &GatewaySettings::newData);
        QPointer<IridiumTcp> first = settings->client();
        settings->connectTo("127.0.0.1");
        QVERIFY(gateway.waitForNewConnection(10000));
        QPointer<QTcpSocket> wedged = gateway.nextPendingConnection();
        QTRY_COMPARE(settings->linkStatus()->state(), LinkStatus::Up);

        QByteArray absurd = message(IridiumTcp::RawPayload, QByteArray(15, '3') + "lost");
        absurd[3] = char(0x7F);
        wedged->write(absurd);
        QVERIFY(stalled.wait(5000));
        QVERIFY(stalled.first().first().toString().contains("announced"));
        QVERIFY(station.statusBar()->currentMessage().startsWith("Gateway stalled"));
        QVERIFY(first.isNull()); // gone with its buffer

        QTRY_VERIFY(gateway.hasPendingConnections());
        QTcpSocket *fresh = gateway.nextPendingConnection();
        QTRY_VERIFY(wedged->state() == QAbstractSocket::UnconnectedState); // the old client closed
        QTRY_COMPARE(settings->linkStatus()->state(), LinkStatus::Up);
        fresh->write(message(IridiumTcp::RawPayload, "300234010753370" + QByteArray("\x01\x02")));
        QVERIFY(data.wait(5000));
        QCOMPARE(data.first().at(0).toString(), "300234010753370");
        QCOMPARE(data.first().at(1).toByteArray(), QByteArray("\x01\x02"));
        QCOMPARE(settings->client()->pendingBytes(), qint64(0));
    }
};

QTEST_MAIN(tst_GatewayWatchdog)
#include "tst_gateway_watchdog.moc"
