// The simulator as a separate process, talked to over real sockets and its
// pseudo-terminal the way the tool and the gateway client do.

#include <QtNetwork>
#include <QtSerialPort>
#include <QtTest>

#include "reference_frames.h"
#include "simprocess.h"

class tst_VardaSim : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY2(m_sim.start({ "--rate", "10", "--seed", "7", "--pty" }), qPrintable(m_sim.log()));
    }

    void gatewayInput_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("logged");
        const QByteArray sbd = QByteArray::fromHex("a0680600") + "300100000000000"; // SBDTXRequest, IMEI
        QTest::newRow("huge length") << QByteArray::fromHex("ffffffff") + sbd << "malformed";
        QTest::newRow("length below type") << QByteArray::fromHex("03000000 a0680600") << "malformed";
        QTest::newRow("no flush byte") << QByteArray::fromHex("13000000") + sbd << "SBD request too short";
    }

    // Run before modemLink, which shows that the simulator survived.
    void gatewayInput()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, logged);
        const int before = m_sim.log().count(logged);
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, m_sim.gatewayPort);
        QVERIFY(socket.waitForConnected(5000));
        socket.write(bytes);
        QTRY_VERIFY_WITH_TIMEOUT(m_sim.log().count(logged) > before, 15000);
    }

    void modemLink_data()
    {
        QTest::addColumn<QString>("link");
        QTest::newRow("tcp") << "tcp";
        QTest::newRow("udp") << "udp";
        QTest::newRow("pty") << QRegularExpression("serial link on (\\S+)").match(m_sim.log()).captured(1);
    }

    // Garbage first, an empty frame (which swallows what follows) and a transmit request
    // without a packet, then a command; over UDP the first datagram makes the modem answer here.
    void modemLink()
    {
        QFETCH(QString, link);
        QTcpSocket tcp;
        QUdpSocket udp;
        QSerialPort serial(link);
        QAbstractSocket *socket = link == "tcp" ? static_cast<QAbstractSocket *>(&tcp) : &udp;
        QIODevice *io = link == "tcp" || link == "udp" ? static_cast<QIODevice *>(socket) : &serial;
        if (io == socket)
            socket->connectToHost(QHostAddress::LocalHost, m_sim.modemPort);
        if (io == socket) {
            QVERIFY(socket->waitForConnected(5000));
        } else {
            QVERIFY(serial.open(QIODevice::ReadWrite));
            QVERIFY(serial.clear()); // drops what piled up unread
        }
        const QByteArray bytes = reference::pattern(3000, 17) + QByteArray::fromHex("2400000300")
            + QByteArray(300, '\0') + reference::sppFrame(1, "\1") + reference::sppFrame(3, "call");
        QCOMPARE(io->write(bytes), qint64(bytes.size()));

        // Each frame must follow the one before directly, with a good CRC checked by Qt's own
        // CRC-16; only bytes before the first are skipped, as a serial reader may join mid-frame.
        QByteArray stream;
        QList<QByteArray> frames; // type byte and payload
        int badFrames = 0;
        const auto received = [&](const QByteArray &frame) {
            stream += io->readAll();
            for (int length; stream.size() >= 5 && stream.size() >= (length = 5 + quint8(stream.at(4)));) {
                const QByteArray typed = stream.mid(3, 1) + stream.mid(5, length - 5);
                const bool good
                    = stream.left(length) == reference::sppFrame(quint8(typed.at(0)), typed.mid(1));
                if (good)
                    frames.append(typed);
                badFrames += !good && !frames.isEmpty();
                stream.remove(0, good ? length : 1);
            }
            return std::count_if(
                frames.cbegin(), frames.cend(), [&](const QByteArray &f) { return f.startsWith(frame); });
        };
        QTRY_VERIFY_WITH_TIMEOUT(received("\3callsign BASE-1\r\n") == 1, 15000);
        QTRY_VERIFY_WITH_TIMEOUT(received(QByteArray(1, '\0')) >= 10, 15000); // received packets
        QCOMPARE(badFrames, 0);
    }

    void optionsChecked_data()
    {
        QTest::addColumn<QString>("args");
        QTest::addColumn<int>("exitCode"); // 0: starts
        QTest::addColumn<QString>("message");
        const auto row = [](const char *name, const QString &args, int exitCode, const QString &message) {
            QTest::newRow(name) << args << exitCode << message;
        };
        const QString ports = "ports are numbers from 1 to 65535",
                      rate = "the rate is a number from 0.1 to 100";
        const QString busy = QString::number(m_sim.modemPort);
        row("port 0", "--modem-port 0", 2, ports);
        row("port too high", "--gateway-port 65536", 2, ports);
        row("rate too low", "--rate 0.09", 2, rate);
        row("rate too high", "--rate 100.5", 2, rate);
        row("slowest rate, most stations", "--rate 0.1 --stations 8", 0, "");
        row("fastest rate, no stations", "--rate 100 --stations 0", 0, "");
        row("too many stations", "--stations 9", 2, "the number of stations is 0 to 8");
        row("unknown role", "--roles modem,radio", 2, "roles are modem, glider and gateway");
        row("glider alone", "--roles glider", 2, "at least modem or gateway");
        row("bad address", "--bind nowhere", 2, "not an address: nowhere");
        row("bad seed", "--seed -3", 2, "the seed is an unsigned number");
        row("busy port",
            "--modem-port " + busy + " --gateway-port " + QString::number(SimProcess::freePort()), 1,
            "TCP port " + busy);
    }

    void optionsChecked()
    {
        QFETCH(QString, args);
        QFETCH(int, exitCode);
        QFETCH(QString, message);
        SimProcess sim;
        QCOMPARE(sim.start(args.split(' ')), exitCode == 0);
        QCOMPARE(sim.process.exitCode(), exitCode);
        QVERIFY(sim.log().contains(message));
    }

private:
    SimProcess m_sim;
};

QTEST_GUILESS_MAIN(tst_VardaSim)
#include "tst_varda_sim.moc"
