#ifndef COCKPIT_H
#define COCKPIT_H

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QTimer>

#include <stdint.h>

#include <memory>

#include "freshnessmonitor.h"

class CommandGuard;
class CommandJournal;
class FreshnessPanel;
class GatewaySettings;
class Glider;
class LinkState;
class MainWindow;
class PlotView;
class QLabel;
class QMenu;
class QTableView;
class QWidget;
class TelemetryStore;
class TrackView;

// The pilot's side of the station around the glider panel: the command
// journal and the guard in front of the links, the telemetry history with
// its plots and track, and the freshness of each record kind. Its files
// live in ~/.toolbox: commands.csv and telemetry.csv.
class Cockpit : public QObject
{
    Q_OBJECT
public:
    Cockpit(MainWindow *radio, GatewaySettings *gateway, Glider *glider, QWidget *window);
    ~Cockpit() override;

    static QString commandsPath();
    static QString telemetryPath();

    CommandJournal *journal() const;
    TelemetryStore *store() const;
    FreshnessMonitor *freshness() const;
    CommandGuard *guard() const;

    // Views for the window to place.
    QTableView *journalView() const;
    PlotView *plotView() const;
    TrackView *trackView() const;
    FreshnessPanel *freshnessPanel() const;
    QLabel *statusLabel() const;
    QMenu *menu() const;

public slots:
    // A vehicle payload that the panel accepted, with its link.
    void takePayload(const QString &link, const QByteArray &payload);
    void fromPell(const QString &callsign, const QByteArray &payload);
    void fromIridium(const QString &imei, const QByteArray &payload);
    // Radio packets that carry vehicle data without extension records.
    void fromRadio(uint8_t type, const uint8_t *data, uint16_t length, const QString &source);
    void tick();
    void say(const QString &text);
    void announce(const QString &kind, FreshnessMonitor::Level level, const QString &text);
    void exportTrackAsked();

private:
    void load();
    void restoreIntervals();
    void wire(MainWindow *radio, GatewaySettings *gateway);

    Glider *m_glider;
    QWidget *m_window;
    CommandJournal *m_journal;
    TelemetryStore *m_store;
    FreshnessMonitor *m_freshness;
    LinkState *m_links;
    CommandGuard *m_guard;
    QTableView *m_journalView;
    PlotView *m_plots;
    TrackView *m_track;
    FreshnessPanel *m_freshnessPanel;
    QLabel *m_status;
    // A menu bar shows the menu but does not own it.
    std::unique_ptr<QMenu> m_menu;
    QTimer m_tick;
};

#endif
