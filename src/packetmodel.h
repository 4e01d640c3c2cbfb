#ifndef PACKETMODEL_H
#define PACKETMODEL_H

#include <QStandardItemModel>

class QAbstractItemView;

// The packet log: newest packet first, at most 200 rows, five columns
// ("Station", "Path", "RSSI", "Size [B]", "Content"). The RSSI is drawn as a
// level bar placed into the view, so addPacket takes the view.
class packetModel : public QStandardItemModel
{
    Q_OBJECT
public:
    explicit packetModel(QObject *parent = nullptr);

    // rssi 255 means unknown: no bar is placed.
    void addPacket(QAbstractItemView *view, const QString &callsign, const QString &path, int rssi, int size,
        const QString &ext_content);
};

#endif
