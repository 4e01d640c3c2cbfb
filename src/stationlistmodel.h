#ifndef STATIONLISTMODEL_H
#define STATIONLISTMODEL_H

#include <QAbstractTableModel>
#include <QDateTime>
#include <QHash>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

class QStandardItemModel;
class StationListModel;
class VardaExtension;

// "%u:%02u:%02u": hours unpadded, minutes and seconds two digits. Kept on
// purpose: the list shows ages with VardaExtension::secondsToDhms.
QString toHms(unsigned int sec);

// A heard station: its callsign (or IMEI), when it was last heard, by which
// path, and the decoded content of its latest extension packet.
class Station : public QObject
{
    Q_OBJECT
public:
    Station(StationListModel *parent, const QString &callsign);
    ~Station() override;

    QString getCallsign() const;
    QStandardItemModel *getExtensionModel() const;
    QString getTimeString() const;
    QStringList getPaths() const;
    quint32 getAge() const;

    void update(const QDateTime &time, const VardaExtension &ext, const QStringList &paths);
    void updateTime(const QDateTime &time);

signals:
    void changed();

private:
    StationListModel *m_parent;
    QStandardItemModel *m_extension;
    QString m_callsign;
    QDateTime m_last_activity;
    int m_rssi; // kept on purpose: 255 from construction, nothing updates it
    QStringList m_paths;
};

// Stations in the order they were first heard: "Callsign", "Last activity"
// (absolute or relative) and "Path".
class StationListModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    explicit StationListModel(QObject *parent = nullptr);
    ~StationListModel() override;

    Station *get(const QString &callsign) const;
    Station *get(int index) const;
    Station *append(const QString &callsign);
    QStandardItemModel *getExtensionModel(int index) const;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

public slots:
    void setDeltaTime(bool on);
    void tickDeltaTime();
    void changed();

private:
    QList<Station *> m_stations;
    // The first station of each callsign, the one a search in list order
    // finds: append does not refuse a callsign already listed.
    QHash<QString, Station *> m_first_by_callsign;
    bool m_show_delta_time = false;
    QTimer m_delta_time_tick;
};

#endif
