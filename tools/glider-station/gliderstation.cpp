#include "gliderstation.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMenuBar>
#include <QStatusBar>
#include <QTabWidget>
#include <QTableView>
#include <QVBoxLayout>

#include "cockpit.h"
#include "freshnesspanel.h"
#include "plotview.h"
#include "trackview.h"

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
    , m_cockpit(nullptr)
{
    m_tabs->setObjectName("stationTabs");
    m_radio->setObjectName("radio");
    m_glider->setObjectName("glider");
    // The radio tool is a main window of its own; here it is one tab.
    m_radio->setWindowFlags(Qt::Widget);

    auto *vehicle = new QWidget;
    m_tabs->addTab(m_radio, tr("Radio"));
    m_tabs->addTab(vehicle, tr("Glider"));
    setCentralWidget(m_tabs);
    setWindowTitle(tr("Glider station - %1").arg(m_radio->windowTitle()));
    resize(1200, 800);
    wire();
    addCockpit(vehicle);
}

// The journal, plots and track get tabs of their own; the freshness of the
// telemetry stands beside the panel, where the values are.
void GliderStation::addCockpit(QWidget *vehicle)
{
    m_cockpit = new Cockpit(m_radio, m_gateway, m_glider, this);
    auto *row = new QHBoxLayout;
    row->addWidget(m_glider, 1);
    row->addWidget(m_cockpit->freshnessPanel(), 0, Qt::AlignTop);
    auto *layout = new QVBoxLayout(vehicle);
    layout->addWidget(m_gateway);
    layout->addLayout(row, 1);
    const int journal = m_tabs->addTab(m_cockpit->journalView(), tr("Journal"));
    const int plots = m_tabs->addTab(m_cockpit->plotView(), tr("Plots"));
    const int track = m_tabs->addTab(m_cockpit->trackView(), tr("Track"));
    m_tabs->setTabToolTip(
        journal, tr("Every command sent to the vehicle and its fate; kept in ~/.toolbox/commands.csv"));
    m_tabs->setTabToolTip(plots, tr("Telemetry fields against time; kept in ~/.toolbox/telemetry.csv"));
    m_tabs->setTabToolTip(track, tr("The vehicle's positions; export from the Track menu"));
    menuBar()->addMenu(m_cockpit->menu());
    statusBar()->addWidget(m_cockpit->statusLabel(), 1);
}

// The gateway is reached through its settings group only: the client
// behind it may be replaced at any time.
void GliderStation::wire()
{
    connect(m_radio->sppHost(), &SppHost::newPacket, m_glider, &Glider::incomingPell);
    connect(m_gateway, &GatewaySettings::newData, m_glider, &Glider::incomingSbd);
    // The radio tool lists the sending modem and logs the message as well.
    connect(m_gateway, &GatewaySettings::newData, m_radio, &MainWindow::incomingSbd);
    connect(m_glider, &Glider::gliderPayloadReceived, this, &GliderStation::forwardPayload);
    connect(m_gateway, &GatewaySettings::stalled, this, &GliderStation::gatewayStalled);
    // The panel's commands reach the links through the cockpit's guard.
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

Cockpit *GliderStation::cockpit() const
{
    return m_cockpit;
}

GatewaySettings *GliderStation::gateway() const
{
    return m_gateway;
}
