#ifndef PLOTVIEW_H
#define PLOTVIEW_H

#include <QString>
#include <QStringList>
#include <QTimer>
#include <QWidget>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QListWidget;
class QPushButton;
class TelemetryStore;
namespace QtCharts
{
class QChart;
class QChartView;
}

// The "Plots" tab: any numeric telemetry field against receive time,
// several at once, one value axis per unit, over the last hour, day or
// everything, with axes that follow the data or a chosen range.
class PlotView : public QWidget
{
    Q_OBJECT
public:
    // Points drawn per series at most; a week of records is thinned to this.
    static constexpr int MaxPoints = 2000;

    explicit PlotView(const TelemetryStore *store, QWidget *parent = nullptr);

    // Series keys, "kind.field".
    QStringList selected() const;
    void setSelected(const QStringList &keys);
    // Writes what is shown: one line per point, time, series, value.
    bool exportCsv(const QString &fileName, QString *error) const;
    int pointsShown() const;

public slots:
    void redraw();
    void scheduleRedraw();
    void exportCsvAsked();

private:
    void buildFieldList();
    void windowRange(qint64 *from, qint64 *to) const;

    const TelemetryStore *m_store;
    QListWidget *m_fields;
    QComboBox *m_window;
    QCheckBox *m_follow;
    QDoubleSpinBox *m_min;
    QDoubleSpinBox *m_max;
    QPushButton *m_export;
    QtCharts::QChart *m_chart;
    QtCharts::QChartView *m_view;
    QTimer m_redrawTimer;
};

#endif
