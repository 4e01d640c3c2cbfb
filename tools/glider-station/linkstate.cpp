#include "linkstate.h"

#include <QPushButton>

#include "gatewaysettings.h"
#include "mainwindow.h"

LinkState::LinkState(const MainWindow *radio, const GatewaySettings *gateway, QObject *parent)
    : QObject(parent)
    , m_radio(radio)
    , m_gateway(gateway)
{
}

// The radio tool says "Disconnect" on its button exactly while a link is open.
bool LinkState::isUp(const QString &link) const
{
    if (link == "Iridium")
        return m_gateway->isConnected();
    if (link != "Pell")
        return false;
    const auto *button = m_radio->findChild<const QPushButton *>("connectButton");
    return button != nullptr && button->text() == MainWindow::tr("Disconnect");
}

QString LinkState::other(const QString &link)
{
    return link == "Pell" ? QStringLiteral("Iridium") : QStringLiteral("Pell");
}
