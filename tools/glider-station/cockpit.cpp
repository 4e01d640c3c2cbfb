#include "cockpit.h"

#include <QAction>
#include <QDateTime>
#include <QDir>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QTableView>

#include <cmath>

#include "commandguard.h"
#include "commandjournal.h"
#include "commandsummary.h"
#include "freshnessmonitor.h"
#include "freshnesspanel.h"
#include "gatewaysettings.h"
#include "glider.h"
#include "linkstate.h"
#include "mainwindow.h"
#include "plotview.h"
#include "spp_host_qt.h"
#include "telemetryrecord.h"
#include "telemetrystore.h"
#include "trackexporter.h"
#include "trackview.h"
#include "varda_spp_payload.h"
#include "vehicle_payload.h"

namespace
{
const int TickMs = 1000;

QString toolboxFile(const char *name)
{
    const QString dir = QDir::homePath() + "/.toolbox";
    QDir().mkpath(dir);
    return dir + '/' + name;
}
}

Cockpit::Cockpit(MainWindow *radio, GatewaySettings *gateway, Glider *glider, QWidget *window)
    : QObject(window)
    , m_glider(glider)
    , m_window(window)
    , m_journal(new CommandJournal(commandsPath(), this))
    , m_store(new TelemetryStore(telemetryPath(), this))
    , m_freshness(new FreshnessMonitor(this))
    , m_links(new LinkState(radio, gateway, this))
    , m_guard(new CommandGuard(m_journal, m_links, glider, window))
    , m_journalView(new QTableView)
    , m_status(new QLabel)
    , m_menu(new QMenu(tr("&Track")))
{
    load();
    m_plots = new PlotView(m_store);
    m_track = new TrackView(m_store);
    m_freshnessPanel = new FreshnessPanel(m_freshness);

    m_journalView->setObjectName("commandJournalView");
    m_journalView->setModel(m_journal);
    m_journalView->setToolTip(tr("Every command block sent to the vehicle, newest first, with its fate."));
    m_journalView->horizontalHeader()->setStretchLastSection(true);
    m_journalView->horizontalHeader()->setSectionResizeMode(
        CommandJournal::CommandColumn, QHeaderView::Interactive);
    m_journalView->setColumnWidth(CommandJournal::TimeColumn, 150);
    m_journalView->setColumnWidth(CommandJournal::SeqColumn, 60);
    m_journalView->setColumnWidth(CommandJournal::CommandColumn, 280);
    m_journalView->setColumnWidth(CommandJournal::LinkColumn, 70);
    m_journalView->setColumnWidth(CommandJournal::BytesColumn, 220);
    m_journalView->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_journalView->verticalHeader()->hide();
    m_status->setObjectName("cockpitStatus");
    QAction *exportTrack = m_menu->addAction(tr("Export track as GPX or KML..."));
    exportTrack->setObjectName("exportTrackAction");
    exportTrack->setToolTip(tr("Write the positions received so far to a GPX 1.1 or KML file."));

    wire(radio, gateway);
    connect(exportTrack, &QAction::triggered, this, &Cockpit::exportTrackAsked);
    m_tick.setInterval(TickMs);
    connect(&m_tick, &QTimer::timeout, this, &Cockpit::tick);
    m_tick.start();
    tick();
}

QString Cockpit::commandsPath()
{
    return toolboxFile("commands.csv");
}

QString Cockpit::telemetryPath()
{
    return toolboxFile("telemetry.csv");
}

void Cockpit::load()
{
    if (m_journal->load() < 0)
        say(tr("Could not read %1").arg(m_journal->path()));
    if (m_store->load() < 0)
        say(tr("Could not read %1").arg(m_store->path()));
    for (const QString &kind : TelemetryRecord::kinds()) {
        if (m_store->count(kind) > 0)
            m_freshness->seen(kind, m_store->lastLink(kind), m_store->lastReceived(kind));
    }
    restoreIntervals();
}

// The telemetry rates the operator set before the restart, oldest first so
// that the last one counts.
void Cockpit::restoreIntervals()
{
    for (int row = m_journal->count() - 1; row >= 0; row--) {
        const CommandJournal::Entry &entry = m_journal->entryAt(row);
        if (entry.state != CommandJournal::Sent && entry.state != CommandJournal::Confirmed
            && entry.state != CommandJournal::NotConfirmed)
            continue;
        const CommandSummary summary(entry.block);
        for (const QString link : { "Pell", "Iridium" }) {
            if (summary.telemetryInterval(link) > 0)
                m_freshness->setInterval(link, summary.telemetryInterval(link));
        }
    }
}

void Cockpit::wire(MainWindow *radio, GatewaySettings *gateway)
{
    connect(m_glider, &Glider::outgoingPell, m_guard, &CommandGuard::fromPell);
    connect(m_glider, &Glider::outgoingSbd, m_guard, &CommandGuard::fromSbd);
    connect(m_guard, &CommandGuard::toRadio, radio, &MainWindow::sendData);
    connect(m_guard, &CommandGuard::toGateway, gateway, &GatewaySettings::sendSBD);
    connect(m_guard, &CommandGuard::message, this, &Cockpit::say);
    connect(m_guard, &CommandGuard::telemetryIntervalSet, m_freshness, &FreshnessMonitor::setInterval);
    connect(m_glider, &Glider::gliderPayloadReceived, this, &Cockpit::fromPell);
    connect(radio->sppHost(), &SppHost::newPacket, this, &Cockpit::fromRadio);
    connect(gateway, &GatewaySettings::newData, this, &Cockpit::fromIridium);
    connect(m_store, &TelemetryStore::recordAdded, m_plots, &PlotView::scheduleRedraw);
    connect(m_store, &TelemetryStore::recordAdded, m_track, &TrackView::scheduleRedraw);
    connect(m_freshness, &FreshnessMonitor::levelRaised, this, &Cockpit::announce);
}

void Cockpit::fromPell(const QString &callsign, const QByteArray &payload)
{
    Q_UNUSED(callsign);
    takePayload("Pell", payload);
}

// The panel takes only payloads from the IMEI in its form; so does this.
void Cockpit::fromIridium(const QString &imei, const QByteArray &payload)
{
    const auto *field = m_glider->findChild<const QLineEdit *>("iridiumImei");
    if (field != nullptr && imei == field->text())
        takePayload("Iridium", payload);
}

// The panel takes a received radio packet without extension records as
// vehicle data from anyone; extension packets reach fromPell once the panel
// has checked their sender.
void Cockpit::fromRadio(uint8_t type, const uint8_t *data, uint16_t length, const QString &source)
{
    Q_UNUSED(source);
    varda_spp_payload_t frame;
    if (type != SPP_TYPE_RX || varda_spp_split_payload(type, data, length, &frame) != VARDA_SPP_PAYLOAD_OK)
        return;
    if (frame.extension)
        return;
    takePayload("Pell", QByteArray(reinterpret_cast<const char *>(frame.payload), int(frame.payload_len)));
}

void Cockpit::takePayload(const QString &link, const QByteArray &payload)
{
    // The panel drops a payload of a hundred sub-packets or more; so does this.
    vehicle_subpacket_t subs[Glider::MAX_SUBPACKETS - 1];
    const int count = vehicle_payload_split(reinterpret_cast<const uint8_t *>(payload.constData()),
        size_t(payload.size()), subs, Glider::MAX_SUBPACKETS - 1);
    const QDateTime now = QDateTime::currentDateTimeUtc();
    for (int i = 0; i < count; i++) {
        TelemetryRecord record;
        if (!TelemetryRecord::decode(subs[i].type, subs[i].record, &record))
            continue;
        record.received = now;
        record.link = link;
        if (!m_store->append(record))
            say(tr("Could not write %1").arg(m_store->path()));
        m_freshness->seen(record.kind, link, now);
        const double seq = record.value("last_command_seq");
        if (!std::isnan(seq)) // housekeeping of either kind
            m_journal->confirm(uint8_t(seq), now, link);
    }
}

void Cockpit::tick()
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    if (m_journal->expire(now) > 0)
        say(tr("A command was not confirmed by its deadline: see the Journal"));
    m_freshness->check(now);
}

void Cockpit::announce(const QString &kind, FreshnessMonitor::Level level, const QString &text)
{
    Q_UNUSED(kind);
    Q_UNUSED(level);
    say(text);
}

void Cockpit::say(const QString &text)
{
    m_status->setText(QDateTime::currentDateTime().toString("HH:mm:ss ") + text);
}

void Cockpit::exportTrackAsked()
{
    const QString name = QFileDialog::getSaveFileName(
        m_window, tr("Export track"), "track.gpx", tr("GPX 1.1 (*.gpx);;KML (*.kml)"));
    if (name.isEmpty())
        return;
    QString error;
    if (TrackExporter::write(m_store->track(), name, &error))
        say(tr("Track written to %1").arg(name));
    else
        QMessageBox::warning(m_window, tr("Export track"), error);
}

CommandJournal *Cockpit::journal() const
{
    return m_journal;
}

TelemetryStore *Cockpit::store() const
{
    return m_store;
}

FreshnessMonitor *Cockpit::freshness() const
{
    return m_freshness;
}

CommandGuard *Cockpit::guard() const
{
    return m_guard;
}

QTableView *Cockpit::journalView() const
{
    return m_journalView;
}

PlotView *Cockpit::plotView() const
{
    return m_plots;
}

TrackView *Cockpit::trackView() const
{
    return m_track;
}

FreshnessPanel *Cockpit::freshnessPanel() const
{
    return m_freshnessPanel;
}

QLabel *Cockpit::statusLabel() const
{
    return m_status;
}

Cockpit::~Cockpit() = default;

QMenu *Cockpit::menu() const
{
    return m_menu.get();
}
