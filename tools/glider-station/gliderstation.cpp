#include "gliderstation.h"

#include <QStatusBar>
#include <QTabWidget>
#include <QVBoxLayout>

#include "gatewaysettings.h"
#include "glider.h"
#include "mainwindow.h"
#include "spp_host_qt.h"

GliderStation::GliderStation(QWidget *parent)
    : QMainWindow(parent)
    , m_tabs(new QTabWidget(this))
    , m_radio(new MainWindow(m_tabs))
    , m_gateway(new GatewaySettings)
    , m_glider(new Glider)
{
    m_tabs->setObjectName("stationTabs");
    m_radio->setObjectName("radio");
    m_glider->setObjectName("glider");
    // The radio tool is a main window of its own; here it is one tab.
    m_radio->setWindowFlags(Qt::Widget);

    auto *vehicle = new QWidget;
    auto *layout = new QVBoxLayout(vehicle);
    layout->addWidget(m_gateway);
    layout->addWidget(m_glider, 1);

    m_tabs->addTab(m_radio, tr("Radio"));
    m_tabs->addTab(vehicle, tr("Glider"));
    setCentralWidget(m_tabs);
    setWindowTitle(tr("Glider station - %1").arg(m_radio->windowTitle()));
    resize(1200, 800);
    wire();
}

// The gateway is reached through its settings group only: the client
// behind it may be replaced at any time.
void GliderStation::wire()
{
    connect(m_radio->sppHost(), &SppHost::newPacket, m_glider, &Glider::incomingPell);
    connect(m_glider, &Glider::outgoingPell, m_radio, &MainWindow::sendData);
    connect(m_gateway, &GatewaySettings::newData, m_glider, &Glider::incomingSbd);
    // The radio tool lists the sending modem and logs the message as well.
    connect(m_gateway, &GatewaySettings::newData, m_radio, &MainWindow::incomingSbd);
    connect(m_glider, &Glider::outgoingSbd, m_gateway, &GatewaySettings::sendSBD);
    connect(m_glider, &Glider::gliderPayloadReceived, this, &GliderStation::forwardPayload);
    connect(m_gateway, &GatewaySettings::stalled, this, &GliderStation::gatewayStalled);
}

void GliderStation::forwardPayload(const QString &callsign, const QByteArray &payload)
{
    if (m_gateway->forwardsVardaData())
        m_gateway->sendPayload(callsign, payload);
}

void GliderStation::gatewayStalled(const QString &reason)
{
    statusBar()->showMessage(
        tr("Gateway stalled (%1): dropped that connection and connected afresh").arg(reason));
}

MainWindow *GliderStation::radio() const
{
    return m_radio;
}

Glider *GliderStation::glider() const
{
    return m_glider;
}

GatewaySettings *GliderStation::gateway() const
{
    return m_gateway;
}
