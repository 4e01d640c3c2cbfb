#include "gatewaysettings.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "iridiumtcp.h"

namespace
{
// The gateway runs beside the station unless the operator types another host.
const char *const DefaultHost = "127.0.0.1";

template <typename Widget> Widget *named(Widget *widget, const char *name)
{
    widget->setObjectName(name);
    return widget;
}
}

GatewaySettings::GatewaySettings(QWidget *parent)
    : QGroupBox(tr("relayhub connection"), parent)
    , m_host(named(new QLineEdit(DefaultHost), "iridiumHost"))
    , m_connect(named(new QPushButton(tr("Connect")), "iridiumConnect"))
    , m_flush(named(new QCheckBox(tr("Flush queue")), "iridiumFlush"))
    , m_forward(named(new QCheckBox(tr("Send Varda data to relayhub")), "relayhubForwardVarda"))
    , m_client(new IridiumTcp(m_connect, m_host, m_flush, this))
{
    setObjectName("iridiumGroup");
    m_forward->setChecked(true);
    m_host->setToolTip(tr("Host of the Iridium gateway (relayhub), port 10020."));
    m_connect->setToolTip(
        tr("Connect to the gateway: satellite telemetry comes in and Iridium commands go out."));
    m_flush->setToolTip(
        tr("Sent with each Iridium message: the gateway drops what it still holds for the vehicle first."));
    m_forward->setToolTip(tr("Pass vehicle data heard on the radio on to relayhub while connected."));
    connect(m_client, &IridiumTcp::connectionStateChanged, this, [this](bool up) { m_connected = up; });

    auto *layout = new QGridLayout(this);
    layout->setContentsMargins(10, 15, 10, 10);
    layout->addWidget(new QLabel(tr("Host:")), 0, 0);
    layout->addWidget(m_host, 0, 1);
    layout->addWidget(m_connect, 0, 2);
    layout->addWidget(m_flush, 0, 3);
    layout->addWidget(m_forward, 0, 4);
    layout->setColumnStretch(1, 1);
}

IridiumTcp *GatewaySettings::client() const
{
    return m_client;
}

bool GatewaySettings::isConnected() const
{
    return m_connected;
}

bool GatewaySettings::forwardsVardaData() const
{
    return m_connected && m_forward->isChecked();
}
