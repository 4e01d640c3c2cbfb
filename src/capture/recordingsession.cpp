#include "recordingsession.h"

#include <QDir>
#include <QLabel>
#include <QStatusBar>

#include "iridiumtcp.h"
#include "mainwindow.h"
#include "recorder.h"
#include "recordingoptions.h"

RecordingSession::RecordingSession(const RecordingOptions &options, MainWindow *window, QObject *parent)
    : QObject(parent)
    , m_window(window)
    , m_recorder(new Recorder(this))
    , m_label(new QLabel(window))
{
    m_label->setObjectName(QStringLiteral("recordingLabel"));
    window->statusBar()->addPermanentWidget(m_label);
    m_label->setText(tr("Not recording"));
    if (!options.enabled())
        return;
    if (!m_recorder->start(options.folder(), options.capBytes())) {
        showStopped(m_recorder->error());
        return;
    }
    const QString path = QDir::toNativeSeparators(m_recorder->filePath());
    m_label->setText(tr("Recording to %1").arg(path));
    m_label->setToolTip(path);
    connect(window, &MainWindow::linkBytesReceived, m_recorder, &Recorder::recordLinkReceived);
    connect(window, &MainWindow::linkBytesSent, m_recorder, &Recorder::recordLinkSent);
    connect(m_recorder, &Recorder::stopped, this, &RecordingSession::showStopped);
}

void RecordingSession::watchGateway(IridiumTcp *client)
{
    connect(client, &IridiumTcp::messageReceived, m_recorder, &Recorder::recordGatewayReceived);
    connect(client, &IridiumTcp::messageSent, m_recorder, &Recorder::recordGatewaySent);
}

Recorder *RecordingSession::recorder() const
{
    return m_recorder;
}

void RecordingSession::showStopped(const QString &reason)
{
    m_label->setText(tr("Not recording"));
    m_label->setToolTip(reason);
    m_window->statusBar()->showMessage(tr("Recording off: %1").arg(reason));
}
