#ifndef TRACKVIEW_H
#define TRACKVIEW_H

#include <QTimer>
#include <QWidget>

class QLabel;
class TelemetryStore;
namespace QtCharts
{
class QChart;
class QLineSeries;
class QScatterSeries;
class QValueAxis;
}

// The "Track" tab: the positions of the telemetry history as a line,
// latitude against longitude, the latest position marked.
class TrackView : public QWidget
{
    Q_OBJECT
public:
    explicit TrackView(const TelemetryStore *store, QWidget *parent = nullptr);

    int pointCount() const;

public slots:
    void redraw();
    void scheduleRedraw();

private:
    const TelemetryStore *m_store;
    QLabel *m_summary;
    QtCharts::QChart *m_chart;
    QtCharts::QLineSeries *m_line;
    QtCharts::QScatterSeries *m_latest;
    QtCharts::QValueAxis *m_lon;
    QtCharts::QValueAxis *m_lat;
    QTimer m_redrawTimer;
};

#endif
