#include "packetmodel.h"

#include <QAbstractItemView>
#include <QProgressBar>
#include <QStandardItem>

#include "varda_packets.h"

namespace
{

const int MAX_ROWS = 200;
const int RSSI_MIN_DBM = -140;
const int RSSI_MAX_DBM = -20;

enum Column { STATION, PATH, RSSI, SIZE, CONTENT, COLUMNS };

// A value outside the range is refused by the bar, which then stays empty
// and shows no text.
QProgressBar *rssiBar(int rssi)
{
    auto *bar = new QProgressBar;
    bar->setRange(RSSI_MIN_DBM, RSSI_MAX_DBM);
    bar->setValue(rssi);
    bar->setFormat("%v dBm");
    return bar;
}

// Taken out of the view first, a bar leaves no trace there when it is
// deleted. A view that drops a bar along with its row hands it to
// deleteLater and keeps a note of its address for good; over days of
// packets those notes add up.
void dropBar(QAbstractItemView *view, const QModelIndex &index)
{
    QWidget *bar = view->indexWidget(index);
    if (!bar)
        return;
    view->setIndexWidget(index, nullptr);
    delete bar;
}

} // namespace

packetModel::packetModel(QObject *parent)
    : QStandardItemModel(0, COLUMNS, parent)
{
    const QStringList headers { "Station", "Path", "RSSI", "Size [B]", "Content" };
    for (int column = 0; column < COLUMNS; column++)
        setHorizontalHeaderItem(column, new QStandardItem(headers.at(column)));
}

void packetModel::addPacket(QAbstractItemView *view, const QString &callsign, const QString &path, int rssi,
    int size, const QString &ext_content)
{
    // The row comes with its items: each item set into a row already shown
    // would make the views lay out their headers again.
    QList<QStandardItem *> row { nullptr, new QStandardItem(path), nullptr,
        new QStandardItem(QString::number(size)), new QStandardItem(ext_content) };
    if (!callsign.isEmpty())
        row[STATION] = new QStandardItem(callsign);
    insertRow(0, row);
    // The view keeps its index widgets on persistent indexes: the bar moves
    // down with its row and goes when the row is removed.
    const bool shown = view && view->model() == this;
    if (rssi != VRD_RSSI_UNKNOWN && shown)
        view->setIndexWidget(index(0, RSSI), rssiBar(rssi));
    while (rowCount() > MAX_ROWS) {
        if (shown)
            dropBar(view, index(rowCount() - 1, RSSI));
        removeRow(rowCount() - 1);
    }
}
