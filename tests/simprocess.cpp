#include "simprocess.h"

#include <QRegularExpression>
#include <QTcpServer>
#include <QTest>
#include <QUdpSocket>

SimProcess::SimProcess()
{
    m_process.setProgram(program());
    m_process.setProcessChannelMode(QProcess::SeparateChannels);
}

SimProcess::~SimProcess()
{
    stop();
}

QString SimProcess::program()
{
    return QStringLiteral(VARDA_SIM_PATH);
}

quint16 SimProcess::freePort()
{
    for (int attempt = 0; attempt < 20; attempt++) {
        QTcpServer tcp;
        if (!tcp.listen(QHostAddress::LocalHost, 0))
            continue;
        QUdpSocket udp;
        if (udp.bind(QHostAddress::LocalHost, tcp.serverPort()))
            return tcp.serverPort();
    }
    return 0;
}

static quint16 portArgument(const QStringList &args, const QString &name)
{
    const int i = args.indexOf(name);
    return i >= 0 && i + 1 < args.size() ? quint16(args.at(i + 1).toUInt()) : 0;
}

bool SimProcess::start(const QStringList &args)
{
    QStringList all = args;
    m_modemPort = portArgument(args, "--modem-port");
    if (!m_modemPort) {
        m_modemPort = freePort();
        all << "--modem-port" << QString::number(m_modemPort);
    }
    m_gatewayPort = portArgument(args, "--gateway-port");
    if (!m_gatewayPort) {
        m_gatewayPort = freePort();
        all << "--gateway-port" << QString::number(m_gatewayPort);
    }
    m_log.clear();
    m_process.setArguments(all);
    m_process.start();
    if (!m_process.waitForStarted(10000))
        return false;
    return waitForLog("varda-sim: ready");
}

void SimProcess::stop()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.terminate();
    if (!m_process.waitForFinished(5000))
        m_process.kill();
    m_process.waitForFinished(5000);
}

quint16 SimProcess::modemPort() const
{
    return m_modemPort;
}

quint16 SimProcess::gatewayPort() const
{
    return m_gatewayPort;
}

QString SimProcess::log()
{
    m_log += QString::fromLocal8Bit(m_process.readAllStandardError());
    return m_log;
}

QString SimProcess::ptyName() const
{
    const QRegularExpressionMatch m = QRegularExpression("serial link on (\\S+)").match(m_log);
    return m.hasMatch() ? m.captured(1) : QString();
}

bool SimProcess::waitForLog(const QString &text, int timeoutMs)
{
    return QTest::qWaitFor(
               [this, &text] { return log().contains(text) || m_process.state() == QProcess::NotRunning; },
               timeoutMs)
        && log().contains(text);
}

QProcess *SimProcess::process()
{
    return &m_process;
}
