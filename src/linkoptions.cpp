#include "linkoptions.h"

#include <QCommandLineParser>

#include "mainwindow.h"

LinkOptions::LinkOptions(Gateway gateway)
    : m_gateway(gateway)
    , m_link_option(QStringLiteral("link"),
          QStringLiteral(
              "Connects to the modem at start: tcp:HOST:PORT, udp:HOST:PORT or "
              "serial:DEVICE[@BAUD] (38400 baud unless given). By default nothing is connected at start."),
          QStringLiteral("link"))
    , m_reconnect_option(QStringLiteral("reconnect"),
          gateway == WithGateway
              ? QStringLiteral("Tries a lost or failed link, the gateway's too, again after 1 s, "
                               "doubling to 30 s, until Disconnect is pressed.")
              : QStringLiteral("Tries a lost or failed link again after 1 s, doubling to 30 s, "
                               "until Disconnect is pressed."))
    , m_gateway_option(QStringLiteral("gateway"),
          QStringLiteral(
              "Connects to the Iridium gateway on HOST at start (by default it waits for Connect)."),
          QStringLiteral("host"))
{
}

void LinkOptions::addTo(QCommandLineParser *parser) const
{
    parser->addOption(m_link_option);
    parser->addOption(m_reconnect_option);
    if (m_gateway == WithGateway)
        parser->addOption(m_gateway_option);
}

bool LinkOptions::read(const QCommandLineParser &parser, QString *error)
{
    m_reconnect = parser.isSet(m_reconnect_option);
    m_has_link = parser.isSet(m_link_option);
    if (m_has_link && !LinkAddress::parse(parser.value(m_link_option), &m_link, error))
        return false;
    if (m_gateway == WithGateway && parser.isSet(m_gateway_option)) {
        m_gateway_host = parser.value(m_gateway_option).trimmed();
        if (m_gateway_host.isEmpty()) {
            *error = QStringLiteral("--gateway needs a host name or address");
            return false;
        }
    }
    return true;
}

void LinkOptions::applyTo(MainWindow *window) const
{
    window->setReconnect(m_reconnect);
    if (m_has_link)
        window->openLink(m_link);
}

bool LinkOptions::reconnect() const
{
    return m_reconnect;
}

QString LinkOptions::gatewayHost() const
{
    return m_gateway_host;
}
