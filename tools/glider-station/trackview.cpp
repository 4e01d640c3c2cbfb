#include "trackview.h"

#include <QLabel>
#include <QVBoxLayout>
#include <QtCharts/QChart>
#include <QtCharts/QChartView>
#include <QtCharts/QLineSeries>
#include <QtCharts/QScatterSeries>
#include <QtCharts/QValueAxis>

#include "telemetrystore.h"

using namespace QtCharts;

namespace
{
const int RedrawDelayMs = 1000;
}

TrackView::TrackView(const TelemetryStore *store, QWidget *parent)
    : QWidget(parent)
    , m_store(store)
    , m_summary(new QLabel)
    , m_chart(new QChart)
    , m_line(new QLineSeries)
    , m_latest(new QScatterSeries)
    , m_lon(new QValueAxis)
    , m_lat(new QValueAxis)
{
    setObjectName("trackView");
    m_summary->setObjectName("trackSummary");
    m_line->setName(tr("Track"));
    m_latest->setName(tr("Latest position"));
    m_latest->setMarkerSize(12);
    m_latest->setColor(Qt::red);
    m_lon->setTitleText(tr("Longitude (deg)"));
    m_lat->setTitleText(tr("Latitude (deg)"));
    m_lon->setLabelFormat("%.4f");
    m_lat->setLabelFormat("%.4f");
    m_chart->addSeries(m_line);
    m_chart->addSeries(m_latest);
    m_chart->addAxis(m_lon, Qt::AlignBottom);
    m_chart->addAxis(m_lat, Qt::AlignLeft);
    for (QAbstractSeries *series : m_chart->series()) {
        series->attachAxis(m_lon);
        series->attachAxis(m_lat);
    }
    m_chart->legend()->setAlignment(Qt::AlignBottom);
    auto *view = new QChartView(m_chart);
    view->setObjectName("trackChart");
    view->setRenderHint(QPainter::Antialiasing);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_summary);
    layout->addWidget(view, 1);
    m_redrawTimer.setSingleShot(true);
    m_redrawTimer.setInterval(RedrawDelayMs);
    connect(&m_redrawTimer, &QTimer::timeout, this, &TrackView::redraw);
    redraw();
}

int TrackView::pointCount() const
{
    return m_line->count();
}

void TrackView::scheduleRedraw()
{
    if (!m_redrawTimer.isActive())
        m_redrawTimer.start();
}

void TrackView::redraw()
{
    const QVector<TelemetryStore::TrackPoint> track = m_store->track();
    QVector<QPointF> points;
    points.reserve(track.size());
    for (const TelemetryStore::TrackPoint &p : track)
        points << QPointF(p.lon, p.lat);
    m_line->replace(points);
    m_latest->clear();
    if (points.isEmpty()) {
        m_summary->setText(tr("No position received yet."));
        return;
    }
    m_latest->append(points.last());
    double west = points.first().x(), east = west, south = points.first().y(), north = south;
    for (const QPointF &p : qAsConst(points)) {
        west = std::min(west, p.x());
        east = std::max(east, p.x());
        south = std::min(south, p.y());
        north = std::max(north, p.y());
    }
    const double pad = std::max({ (east - west) * 0.05, (north - south) * 0.05, 0.00005 });
    m_lon->setRange(west - pad, east + pad);
    m_lat->setRange(south - pad, north + pad);
    const TelemetryStore::TrackPoint &last = track.last();
    m_summary->setText(tr("%1 positions. Latest: %2, %3 at %4 UTC")
                           .arg(track.size())
                           .arg(last.lat, 0, 'f', 5)
                           .arg(last.lon, 0, 'f', 5)
                           .arg(last.fix.toUTC().toString("yyyy-MM-dd HH:mm:ss")));
}
