#include "packettableview.h"

#include <QScopedValueRollback>

PacketTableView::PacketTableView(QWidget *parent)
    : QTableView(parent)
{
}

// A posted call rather than a timer: the window's repaint request is posted
// with low priority, so the bars are in place when the rows are painted.
void PacketTableView::updateEditorGeometries()
{
    if (m_placing) {
        QTableView::updateEditorGeometries();
        return;
    }
    if (m_placement_posted)
        return;
    m_placement_posted = true;
    QMetaObject::invokeMethod(this, &PacketTableView::placeEditors, Qt::QueuedConnection);
}

// A pending layout of the table is made first and places the bars itself.
void PacketTableView::placeEditors()
{
    m_placement_posted = false;
    const QScopedValueRollback<bool> placing(m_placing, true);
    QTableView::updateEditorGeometries();
}
