#include "freshnesspanel.h"

#include <QDateTime>
#include <QLabel>
#include <QVBoxLayout>

#include "freshnessmonitor.h"

FreshnessPanel::FreshnessPanel(const FreshnessMonitor *monitor, QWidget *parent)
    : QGroupBox(tr("Freshness"), parent)
    , m_monitor(monitor)
    , m_layout(new QVBoxLayout(this))
    , m_empty(new QLabel(tr("no telemetry yet")))
{
    setObjectName("freshnessPanel");
    setToolTip(tr("Age of the latest record of each kind. Amber: older than twice the expected interval "
                  "(the telemetry rate last set for its link, else 10 min). Red: older than four times."));
    m_layout->setContentsMargins(6, 6, 6, 6);
    m_layout->setSpacing(2);
    m_layout->addWidget(m_empty);
    connect(monitor, &FreshnessMonitor::changed, this, &FreshnessPanel::refresh);
}

QLabel *FreshnessPanel::label(const QString &kind) const
{
    return m_labels.value(kind);
}

void FreshnessPanel::refresh()
{
    static const char *const styles[]
        = { "", "color: #a05a00; font-weight: bold;", "color: #c00000; font-weight: bold;" };
    const QDateTime now = QDateTime::currentDateTimeUtc();
    for (const QString &kind : m_monitor->kinds()) {
        QLabel *&label = m_labels[kind];
        if (label == nullptr) {
            label = new QLabel;
            label->setObjectName("freshness_" + kind);
            m_layout->addWidget(label);
        }
        label->setText(m_monitor->text(kind, now));
        label->setStyleSheet(styles[m_monitor->level(kind, now)]);
    }
    m_empty->setVisible(m_labels.isEmpty());
}
