#ifndef MODEL_TEXT_H
#define MODEL_TEXT_H

#include <QAbstractItemModel>
#include <QStringList>

// The display texts of a row joined with '|'; row -1 gives the horizontal headers.
inline QString rowText(const QAbstractItemModel *model, int row)
{
    QStringList out;
    for (int c = 0; c < model->columnCount(); c++)
        out << (row < 0 ? model->headerData(c, Qt::Horizontal) : model->index(row, c).data()).toString();
    return out.join('|');
}

#endif
