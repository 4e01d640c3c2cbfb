#include "plotview.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateTime>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QMap>
#include <QMessageBox>
#include <QPushButton>
#include <QSaveFile>
#include <QTextStream>
#include <QVBoxLayout>
#include <QtCharts/QChart>
#include <QtCharts/QChartView>
#include <QtCharts/QDateTimeAxis>
#include <QtCharts/QLineSeries>
#include <QtCharts/QValueAxis>

#include "telemetryrecord.h"
#include "telemetrystore.h"

using namespace QtCharts;

namespace
{
const qint64 HourMs = 3600 * 1000;
const int RedrawDelayMs = 1000;
// Fields a pilot watches first.
const QStringList DefaultSeries { "ctd.pressure", "ctd.temperature" };

QString seriesName(const QString &key)
{
    const QString kind = key.section('.', 0, 0);
    const QString field = key.section('.', 1);
    const QString unit = TelemetryRecord::unit(kind, field);
    return unit.isEmpty() ? key : QString("%1 (%2)").arg(key, unit);
}
}

PlotView::PlotView(const TelemetryStore *store, QWidget *parent)
    : QWidget(parent)
    , m_store(store)
    , m_fields(new QListWidget)
    , m_window(new QComboBox)
    , m_follow(new QCheckBox(tr("Axes follow the data")))
    , m_min(new QDoubleSpinBox)
    , m_max(new QDoubleSpinBox)
    , m_export(new QPushButton(tr("Export CSV")))
    , m_chart(new QChart)
    , m_view(new QChartView(m_chart))
{
    setObjectName("plotView");
    m_fields->setObjectName("plotFields");
    m_fields->setToolTip(tr("Tick the fields to plot; each unit gets its own value axis."));
    m_window->setObjectName("plotWindow");
    m_window->addItems({ tr("Last hour"), tr("Last day"), tr("All") });
    m_window->setCurrentIndex(2);
    m_window->setToolTip(tr("Time span shown, back from the latest record."));
    m_follow->setObjectName("plotFollow");
    m_follow->setChecked(true);
    m_follow->setToolTip(tr("Untick to keep the value axes at the range below."));
    for (QDoubleSpinBox *box : { m_min, m_max }) {
        box->setRange(-1e9, 1e9);
        box->setDecimals(3);
        box->setEnabled(false);
        box->setToolTip(tr("Value range when the axes do not follow the data."));
    }
    m_min->setObjectName("plotMin");
    m_max->setObjectName("plotMax");
    m_max->setValue(100);
    m_export->setObjectName("plotExportCsv");
    m_export->setToolTip(tr("Save the points shown as CSV (time, series, value)."));
    m_view->setObjectName("plotChart");
    m_view->setRenderHint(QPainter::Antialiasing);
    m_chart->legend()->setAlignment(Qt::AlignBottom);
    buildFieldList();

    auto *controls = new QFormLayout;
    controls->addRow(tr("Span:"), m_window);
    controls->addRow(m_follow);
    controls->addRow(tr("Min:"), m_min);
    controls->addRow(tr("Max:"), m_max);
    auto *side = new QVBoxLayout;
    side->addWidget(new QLabel(tr("Fields:")));
    side->addWidget(m_fields, 1);
    side->addLayout(controls);
    side->addWidget(m_export);
    auto *layout = new QHBoxLayout(this);
    layout->addLayout(side);
    layout->addWidget(m_view, 1);

    m_redrawTimer.setSingleShot(true);
    m_redrawTimer.setInterval(RedrawDelayMs);
    connect(&m_redrawTimer, &QTimer::timeout, this, &PlotView::redraw);
    connect(m_fields, &QListWidget::itemChanged, this, &PlotView::redraw);
    connect(m_window, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &PlotView::redraw);
    connect(m_follow, &QCheckBox::toggled, m_min, &QWidget::setDisabled);
    connect(m_follow, &QCheckBox::toggled, m_max, &QWidget::setDisabled);
    connect(m_follow, &QCheckBox::toggled, this, &PlotView::redraw);
    connect(m_min, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, &PlotView::scheduleRedraw);
    connect(m_max, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, &PlotView::scheduleRedraw);
    connect(m_export, &QPushButton::clicked, this, &PlotView::exportCsvAsked);
    redraw();
}

void PlotView::buildFieldList()
{
    const QSignalBlocker blocker(m_fields);
    for (const QString &kind : TelemetryRecord::kinds()) {
        for (const QString &field : TelemetryRecord::fieldNames(kind)) {
            const QString key = kind + '.' + field;
            auto *item = new QListWidgetItem(seriesName(key), m_fields);
            item->setData(Qt::UserRole, key);
            item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
            item->setCheckState(DefaultSeries.contains(key) ? Qt::Checked : Qt::Unchecked);
        }
    }
}

QStringList PlotView::selected() const
{
    QStringList keys;
    for (int i = 0; i < m_fields->count(); i++) {
        if (m_fields->item(i)->checkState() == Qt::Checked)
            keys << m_fields->item(i)->data(Qt::UserRole).toString();
    }
    return keys;
}

void PlotView::setSelected(const QStringList &keys)
{
    {
        const QSignalBlocker blocker(m_fields);
        for (int i = 0; i < m_fields->count(); i++) {
            QListWidgetItem *item = m_fields->item(i);
            item->setCheckState(
                keys.contains(item->data(Qt::UserRole).toString()) ? Qt::Checked : Qt::Unchecked);
        }
    }
    redraw();
}

void PlotView::windowRange(qint64 *from, qint64 *to) const
{
    *to = m_store->lastMsecs();
    const qint64 spans[] = { HourMs, 24 * HourMs };
    const int index = m_window->currentIndex();
    *from = index >= 0 && index < 2 ? *to - spans[index] : m_store->firstMsecs();
}

void PlotView::scheduleRedraw()
{
    if (!m_redrawTimer.isActive())
        m_redrawTimer.start();
}

void PlotView::redraw()
{
    m_chart->removeAllSeries();
    for (QAbstractAxis *axis : m_chart->axes()) {
        m_chart->removeAxis(axis);
        delete axis;
    }
    qint64 from = 0, to = 0;
    windowRange(&from, &to);
    auto *time = new QDateTimeAxis;
    time->setFormat(to - from > 24 * HourMs ? "dd.MM HH:mm" : to - from > HourMs ? "HH:mm" : "HH:mm:ss");
    time->setTitleText(tr("Received (local time)"));
    time->setRange(
        QDateTime::fromMSecsSinceEpoch(from), QDateTime::fromMSecsSinceEpoch(std::max(to, from + 1000)));
    m_chart->addAxis(time, Qt::AlignBottom);
    QMap<QString, QValueAxis *> axes;
    for (const QString &key : selected()) {
        const QString kind = key.section('.', 0, 0);
        const QString field = key.section('.', 1);
        auto *series = new QLineSeries;
        series->setName(seriesName(key));
        series->replace(m_store->series(kind, field, from, to, MaxPoints));
        m_chart->addSeries(series);
        series->attachAxis(time);
        const QString unit = TelemetryRecord::unit(kind, field);
        QValueAxis *&axis = axes[unit];
        if (axis == nullptr) {
            axis = new QValueAxis;
            axis->setTitleText(unit.isEmpty() ? tr("value") : unit);
            m_chart->addAxis(axis, axes.size() % 2 ? Qt::AlignLeft : Qt::AlignRight);
        }
        series->attachAxis(axis);
    }
    // Follow the data: each axis spans its series, with a little air.
    QMap<QValueAxis *, QPair<double, double>> ranges;
    for (QAbstractSeries *s : m_chart->series()) {
        auto *axis = static_cast<QValueAxis *>(s->attachedAxes().value(1));
        for (const QPointF &p : static_cast<QLineSeries *>(s)->pointsVector()) {
            auto it = ranges.find(axis);
            if (it == ranges.end())
                it = ranges.insert(axis, { p.y(), p.y() });
            it->first = std::min(it->first, p.y());
            it->second = std::max(it->second, p.y());
        }
    }
    for (QValueAxis *axis : qAsConst(axes)) {
        if (!m_follow->isChecked()) {
            axis->setRange(m_min->value(), m_max->value());
        } else if (ranges.contains(axis)) {
            const QPair<double, double> r = ranges.value(axis);
            const double pad = std::max((r.second - r.first) * 0.05, 1e-6);
            axis->setRange(r.first - pad, r.second + pad);
        }
    }
}

int PlotView::pointsShown() const
{
    int n = 0;
    for (QAbstractSeries *s : m_chart->series())
        n += static_cast<QLineSeries *>(s)->count();
    return n;
}

bool PlotView::exportCsv(const QString &fileName, QString *error) const
{
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text)) {
        *error = file.errorString();
        return false;
    }
    QTextStream out(&file);
    out.setCodec("UTF-8");
    out << "time_utc,series,value\n";
    for (QAbstractSeries *s : m_chart->series()) {
        auto *series = static_cast<QLineSeries *>(s);
        for (const QPointF &p : series->pointsVector()) {
            out << QDateTime::fromMSecsSinceEpoch(qint64(p.x()), Qt::UTC).toString(Qt::ISODateWithMs) << ','
                << '"' << series->name() << '"' << ',' << QString::number(p.y(), 'g', 10) << '\n';
        }
    }
    out.flush();
    if (!file.commit()) {
        *error = file.errorString();
        return false;
    }
    return true;
}

void PlotView::exportCsvAsked()
{
    const QString name
        = QFileDialog::getSaveFileName(this, tr("Export plotted data"), "plot.csv", tr("CSV (*.csv)"));
    QString error;
    if (!name.isEmpty() && !exportCsv(name, &error))
        QMessageBox::warning(this, tr("Export CSV"), tr("Could not write %1: %2").arg(name, error));
}
