#ifndef PROPERTYROW_H
#define PROPERTYROW_H

#include <QString>

class QStandardItem;

// Rows of (label, value) under parent, as the station details and the
// vehicle telemetry table show them: the first row whose first column reads
// label gets value in its second column; without one, a row is appended and
// the debug line "New item" with the label is written. For a model's
// top-level rows pass its invisibleRootItem().
void setPropertyRow(QStandardItem *parent, const QString &label, const QString &value);

#endif
