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

// With a layout of the table pending, the base class makes that layout
// first, and the layout asks for the placement again: that request is
// served at once.
void PacketTableView::placeEditors()
{
    m_placement_posted = false;
    const QScopedValueRollback<bool> placing(m_placing, true);
    QTableView::updateEditorGeometries();
}
