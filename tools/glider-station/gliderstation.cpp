#include "gliderstation.h"

#include <QTabWidget>
#include <QVBoxLayout>

#include "gatewaysettings.h"
#include "glider.h"
#include "iridiumtcp.h"
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

void GliderStation::wire()
{
    IridiumTcp *iridium = m_gateway->client();
    connect(m_radio->sppHost(), &SppHost::newPacket, m_glider, &Glider::incomingPell);
    connect(m_glider, &Glider::outgoingPell, m_radio, &MainWindow::sendData);
    connect(iridium, &IridiumTcp::newData, m_glider, &Glider::incomingSbd);
    // The radio tool lists the sending modem and logs the message as well.
    connect(iridium, &IridiumTcp::newData, m_radio, &MainWindow::incomingSbd);
    connect(m_glider, &Glider::outgoingSbd, iridium, &IridiumTcp::sendSBD);
    connect(m_glider, &Glider::gliderPayloadReceived, this, &GliderStation::forwardPayload);
}

void GliderStation::forwardPayload(const QString &callsign, const QByteArray &payload)
{
    if (m_gateway->forwardsVardaData())
        m_gateway->client()->sendPayload(callsign, payload);
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
