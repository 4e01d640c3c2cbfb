#include "gatewaysettings.h"

#include <QCheckBox>
#include <QDebug>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "iridiumtcp.h"
#include "linkstatus.h"
#include "reconnector.h"

namespace
{
// The gateway runs beside the station unless the operator types another host.
const char *const DefaultHost = "127.0.0.1";
const int WatchMs = 1000;

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
    , m_status_label(named(new QLabel, "gatewayStatusLabel"))
    , m_status(new LinkStatus(this))
    , m_reconnector(new Reconnector(this))
{
    setObjectName("iridiumGroup");
    m_forward->setChecked(true);
    m_host->setToolTip(tr("Host of the Iridium gateway (relayhub), port 10020."));
    m_connect->setToolTip(
        tr("Connect to the gateway: satellite telemetry comes in and Iridium commands go out."));
    m_flush->setToolTip(
        tr("Sent with each Iridium message: the gateway drops what it still holds for the vehicle first."));
    m_forward->setToolTip(tr("Pass vehicle data heard on the radio on to relayhub while connected."));
    m_status_label->setText(m_status->text());
    connect(m_status, &LinkStatus::textChanged, m_status_label, &QLabel::setText);
    connect(m_status, &LinkStatus::toolTipChanged, m_status_label, &QLabel::setToolTip);
    connect(m_reconnector, &Reconnector::scheduled, m_status, &LinkStatus::retrying);
    connect(m_reconnector, &Reconnector::retry, this, &GatewaySettings::retry);
    // Before the client's own handler: the press is read in the state it
    // found.
    connect(m_connect, &QPushButton::pressed, this, &GatewaySettings::buttonPressed);
    m_clock.start();
    m_watch.setInterval(WatchMs);
    connect(&m_watch, &QTimer::timeout, this, &GatewaySettings::watch);
    m_watch.start();
    newClient();

    auto *layout = new QGridLayout(this);
    layout->setContentsMargins(10, 15, 10, 10);
    layout->addWidget(new QLabel(tr("Host:")), 0, 0);
    layout->addWidget(m_host, 0, 1);
    layout->addWidget(m_connect, 0, 2);
    layout->addWidget(m_flush, 0, 3);
    layout->addWidget(m_forward, 0, 4);
    layout->addWidget(m_status_label, 1, 0, 1, 5);
    layout->setColumnStretch(1, 1);
}

void GatewaySettings::newClient()
{
    m_client = new IridiumTcp(m_connect, m_host, m_flush, this);
    connect(m_client, &IridiumTcp::connectionStateChanged, this, &GatewaySettings::connectionChanged);
    connect(m_client, &IridiumTcp::connectionError, this, &GatewaySettings::connectionFailed);
    connect(m_client, &IridiumTcp::newData, this, &GatewaySettings::newData);
    connect(m_client, &IridiumTcp::newData, m_status, &LinkStatus::frameReceived);
    m_watchdog.reset();
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

LinkStatus *GatewaySettings::linkStatus() const
{
    return m_status;
}

void GatewaySettings::setReconnect(bool enabled)
{
    m_reconnector->setEnabled(enabled);
}

void GatewaySettings::connectTo(const QString &host)
{
    m_host->setText(host);
    m_reconnector->stop();
    connectClient();
}

int GatewaySettings::sendSBD(const QString &imei, const QByteArray &pl)
{
    return m_client->sendSBD(imei, pl);
}

int GatewaySettings::sendPayload(const QString &callsign, const QByteArray &payload)
{
    return m_client->sendPayload(callsign, payload);
}

QString GatewaySettings::endpoint() const
{
    return tr("gateway %1:%2").arg(m_host->text()).arg(IridiumTcp::GatewayPort);
}

void GatewaySettings::connectClient()
{
    m_status->connecting(endpoint());
    m_client->connectPressed();
}

// Runs before the client's own handler: up or connecting means the press
// closes the link, anything else opens it.
void GatewaySettings::buttonPressed()
{
    m_reconnector->stop();
    const LinkStatus::State state = m_status->state();
    m_closing = state == LinkStatus::Up || state == LinkStatus::Connecting;
    if (m_closing)
        m_status->closed();
    else
        m_status->connecting(endpoint());
}

void GatewaySettings::connectionChanged(bool up)
{
    m_connected = up;
    if (up) {
        m_closing = false; // a close of a pending attempt reports no loss
        m_status->up();
        m_reconnector->connected();
        return;
    }
    if (m_closing) {
        m_closing = false;
        return;
    }
    m_status->down(tr("lost"));
    m_reconnector->failed();
}

// A loss of an established link is reported by connectionChanged.
void GatewaySettings::connectionFailed(const QString &reason)
{
    if (m_status->state() != LinkStatus::Connecting || m_closing)
        return;
    m_status->down(reason);
    m_reconnector->failed();
}

void GatewaySettings::retry()
{
    if (!m_connected)
        connectClient();
}

// The wedged client goes with its buffer; the fresh one connects at once,
// whether or not reconnection was asked for.
void GatewaySettings::watch()
{
    if (!m_watchdog.stalled(m_client->pendingBytes(), m_client->pendingLength(), m_clock.elapsed()))
        return;
    const QString reason = m_watchdog.reason();
    qWarning().noquote() << "Gateway client stalled:" << reason;
    delete m_client;
    m_connected = false;
    m_connect->setText(tr("Connect"));
    m_host->setEnabled(true);
    newClient();
    emit stalled(reason);
    m_status->down(tr("stalled: %1").arg(reason));
    connectClient();
}
