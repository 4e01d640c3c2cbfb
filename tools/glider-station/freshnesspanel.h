#ifndef FRESHNESSPANEL_H
#define FRESHNESSPANEL_H

#include <QGroupBox>
#include <QHash>

class FreshnessMonitor;
class QLabel;
class QVBoxLayout;

// One line per record kind: its age in words, coloured when late (amber)
// or missing (red).
class FreshnessPanel : public QGroupBox
{
    Q_OBJECT
public:
    explicit FreshnessPanel(const FreshnessMonitor *monitor, QWidget *parent = nullptr);

    QLabel *label(const QString &kind) const;

public slots:
    void refresh();

private:
    const FreshnessMonitor *m_monitor;
    QVBoxLayout *m_layout;
    QLabel *m_empty;
    QHash<QString, QLabel *> m_labels;
};

#endif
