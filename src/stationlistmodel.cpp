#include "stationlistmodel.h"

#include <QStandardItemModel>

#include "varda_extension_qt.h"
#include "varda_packets.h"

namespace
{

enum Column { CALLSIGN, LAST_ACTIVITY, PATH, COLUMNS };

const int DELTA_TIME_TICK_MS = 1000;

} // namespace

QString toHms(unsigned int sec)
{
    return QString::asprintf("%u:%02u:%02u", sec / 3600, sec % 3600 / 60, sec % 60);
}

// The station is a child of its list and its property model a child of the
// station: both go when the list is deleted.
Station::Station(StationListModel *parent, const QString &callsign)
    : QObject(parent)
    , m_parent(parent)
    , m_extension(new QStandardItemModel(0, 2, this))
    , m_callsign(callsign)
    , m_last_activity(QDateTime::currentDateTime())
    , m_rssi(VRD_RSSI_UNKNOWN)
{
    m_extension->setHorizontalHeaderLabels({ "Property", "Value" });
}

Station::~Station() = default;

QString Station::getCallsign() const
{
    return m_callsign;
}

QStandardItemModel *Station::getExtensionModel() const
{
    return m_extension;
}

QString Station::getTimeString() const
{
    return m_last_activity.toString("hh:mm:ss dd.MM.yyyy");
}

QStringList Station::getPaths() const
{
    return m_paths;
}

quint32 Station::getAge() const
{
    return quint32(m_last_activity.secsTo(QDateTime::currentDateTime()));
}

void Station::update(const QDateTime &time, const VardaExtension &ext, const QStringList &paths)
{
    m_last_activity = time;
    ext.getConvertedExtensionData(m_extension);
    m_paths = paths;
    emit changed();
}

void Station::updateTime(const QDateTime &time)
{
    m_last_activity = time;
    emit changed();
}

StationListModel::StationListModel(QObject *parent)
    : QAbstractTableModel(parent)
{
    m_delta_time_tick.setInterval(DELTA_TIME_TICK_MS);
    connect(&m_delta_time_tick, &QTimer::timeout, this, &StationListModel::tickDeltaTime);
}

StationListModel::~StationListModel() = default;

Station *StationListModel::get(const QString &callsign) const
{
    return m_first_by_callsign.value(callsign);
}

Station *StationListModel::get(int index) const
{
    if (index < 0 || index >= m_stations.size())
        return nullptr;
    return m_stations.at(index);
}

// Rows only ever grow at the end and never move, and the whole table is
// redrawn on any change, so a layout change announces new rows as well.
Station *StationListModel::append(const QString &callsign)
{
    auto *station = new Station(this, callsign);
    connect(station, &Station::changed, this, &StationListModel::changed);
    emit layoutAboutToBeChanged();
    m_stations.append(station);
    if (!m_first_by_callsign.contains(callsign))
        m_first_by_callsign.insert(callsign, station);
    emit layoutChanged();
    return station;
}

QStandardItemModel *StationListModel::getExtensionModel(int index) const
{
    const Station *station = get(index);
    return station ? station->getExtensionModel() : nullptr;
}

int StationListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_stations.size();
}

int StationListModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : COLUMNS;
}

QVariant StationListModel::data(const QModelIndex &index, int role) const
{
    const Station *station = index.isValid() ? get(index.row()) : nullptr;
    if (!station || role != Qt::DisplayRole)
        return QVariant();
    switch (index.column()) {
    case CALLSIGN:
        return station->getCallsign();
    case LAST_ACTIVITY:
        return m_show_delta_time ? VardaExtension::secondsToDhms(station->getAge())
                                 : station->getTimeString();
    case PATH:
        return station->getPaths().join(", ");
    default:
        return QVariant();
    }
}

QVariant StationListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    switch (section) {
    case CALLSIGN:
        return QStringLiteral("Callsign");
    case LAST_ACTIVITY:
        return QStringLiteral("Last activity");
    case PATH:
        return QStringLiteral("Path");
    default:
        return QVariant();
    }
}

void StationListModel::setDeltaTime(bool on)
{
    m_show_delta_time = on;
    changed();
    if (on)
        m_delta_time_tick.start();
    else
        m_delta_time_tick.stop();
}

void StationListModel::tickDeltaTime()
{
    changed();
}

void StationListModel::changed()
{
    emit layoutAboutToBeChanged();
    emit layoutChanged();
}
