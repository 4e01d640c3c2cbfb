#include "simprocess.h"

#include <QTcpServer>
#include <QTest>
#include <QUdpSocket>

SimProcess::~SimProcess()
{
    process.kill();
    process.waitForFinished(5000);
}

quint16 SimProcess::freePort()
{
    QTcpServer tcp;
    QUdpSocket udp;
    const bool both
        = tcp.listen(QHostAddress::LocalHost, 0) && udp.bind(QHostAddress::LocalHost, tcp.serverPort());
    return both ? tcp.serverPort() : freePort();
}

bool SimProcess::start(QStringList args)
{
    const auto port = [&args](const QString &name) {
        if (!args.contains(name))
            args << name << QString::number(freePort());
        return quint16(args.value(args.indexOf(name) + 1).toUInt());
    };
    modemPort = port("--modem-port");
    gatewayPort = port("--gateway-port");
    process.start(program, args);
    const auto ready = [this] { return log().contains("varda-sim: ready"); };
    (void)QTest::qWaitFor([&] { return ready() || process.state() == QProcess::NotRunning; }, 15000);
    return ready();
}

QString SimProcess::log()
{
    logged += QString::fromLocal8Bit(process.readAllStandardError());
    return logged;
}
