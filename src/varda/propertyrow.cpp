#include "propertyrow.h"

#include <QDebug>
#include <QStandardItem>

void setPropertyRow(QStandardItem *parent, const QString &label, const QString &value)
{
    for (int i = 0; i < parent->rowCount(); i++) {
        const QStandardItem *first = parent->child(i, 0);
        if (!first || first->text() != label)
            continue;
        if (QStandardItem *second = parent->child(i, 1))
            second->setText(value);
        else
            parent->setChild(i, 1, new QStandardItem(value));
        return;
    }
    parent->appendRow({ new QStandardItem(label), new QStandardItem(value) });
    qDebug() << "New item" << label;
}
