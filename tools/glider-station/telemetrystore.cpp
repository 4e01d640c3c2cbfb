#include "telemetrystore.h"

#include <QFile>
#include <QTextStream>

#include <algorithm>
#include <cmath>

#include "csvline.h"

namespace
{
const QString HeaderMark = QStringLiteral("received_utc");
const int Fixed = 3; // time, link, kind

QString number(double value)
{
    return std::isfinite(value) ? QString::number(value, 'g', 10) : QString();
}
}

TelemetryStore::TelemetryStore(const QString &path, QObject *parent)
    : QObject(parent)
    , m_path(path)
{
}

QString TelemetryStore::path() const
{
    return m_path;
}

int TelemetryStore::load()
{
    QFile file(m_path);
    if (!file.exists())
        return 0;
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return -1;
    QHash<QString, QStringList> headers;
    int before = 0;
    for (const Columns &c : qAsConst(m_kinds))
        before += c.times.size();
    QTextStream in(&file);
    in.setCodec("UTF-8");
    QString line;
    while (in.readLineInto(&line))
        readLine(line, &headers);
    for (auto it = headers.cbegin(); it != headers.cend(); ++it)
        m_headerWritten[it.key()] = it.value() == TelemetryRecord::fieldNames(it.key());
    int after = 0;
    for (const Columns &c : qAsConst(m_kinds))
        after += c.times.size();
    return after - before;
}

void TelemetryStore::readLine(const QString &line, QHash<QString, QStringList> *headers)
{
    const QStringList fields = CsvLine::split(line);
    if (fields.size() < Fixed)
        return;
    const QString kind = fields.at(2);
    if (!TelemetryRecord::kinds().contains(kind))
        return;
    if (fields.at(0) == HeaderMark) {
        headers->insert(kind, fields.mid(Fixed));
        return;
    }
    TelemetryRecord record;
    record.received = QDateTime::fromString(fields.at(0), Qt::ISODateWithMs);
    if (!record.received.isValid() || !headers->contains(kind))
        return;
    record.received = record.received.toUTC();
    record.link = fields.at(1);
    record.kind = kind;
    const QStringList names = headers->value(kind);
    for (const QString &name : TelemetryRecord::fieldNames(kind)) {
        const int column = names.indexOf(name) + Fixed;
        bool ok = false;
        const double value = column >= Fixed && column < fields.size() ? fields.at(column).toDouble(&ok) : 0;
        record.values << (ok ? value : std::nan(""));
    }
    keep(record);
}

bool TelemetryStore::append(const TelemetryRecord &record)
{
    add(record);
    QFile file(m_path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text))
        return false;
    QTextStream out(&file);
    out.setCodec("UTF-8");
    if (!m_headerWritten.value(record.kind)) {
        out << CsvLine::join(
            QStringList { HeaderMark, "link", record.kind } + TelemetryRecord::fieldNames(record.kind))
            << '\n';
        m_headerWritten[record.kind] = true;
    }
    QStringList fields { record.received.toUTC().toString(Qt::ISODateWithMs), record.link, record.kind };
    for (double value : record.values)
        fields << number(value);
    out << CsvLine::join(fields) << '\n';
    return true;
}

void TelemetryStore::add(const TelemetryRecord &record)
{
    keep(record);
    emit recordAdded(record);
}

void TelemetryStore::keep(const TelemetryRecord &record)
{
    Columns &columns = m_kinds[record.kind];
    const qint64 t = record.received.toMSecsSinceEpoch();
    columns.times << t;
    columns.lastLink = record.link;
    if (columns.values.size() < record.values.size())
        columns.values.resize(record.values.size());
    for (int i = 0; i < columns.values.size(); i++) {
        QVector<double> &column = columns.values[i];
        while (column.size() < columns.times.size() - 1)
            column << std::nan("");
        column << (i < record.values.size() ? record.values.at(i) : std::nan(""));
    }
    m_first = m_first == 0 ? t : std::min(m_first, t);
    m_last = std::max(m_last, t);
    TrackPoint point;
    if (!record.position(&point.lat, &point.lon, &point.fix) || (point.lat == 0 && point.lon == 0))
        return;
    // Housekeeping repeats the fix of the position record beside it.
    if (!m_track.isEmpty() && m_track.last().fix == point.fix && m_track.last().lat == point.lat
        && m_track.last().lon == point.lon)
        return;
    m_track << point;
}

int TelemetryStore::count(const QString &kind) const
{
    return m_kinds.value(kind).times.size();
}

QDateTime TelemetryStore::lastReceived(const QString &kind) const
{
    const QVector<qint64> times = m_kinds.value(kind).times;
    return times.isEmpty() ? QDateTime() : QDateTime::fromMSecsSinceEpoch(times.last(), Qt::UTC);
}

QString TelemetryStore::lastLink(const QString &kind) const
{
    return m_kinds.value(kind).lastLink;
}

qint64 TelemetryStore::firstMsecs() const
{
    return m_first;
}

qint64 TelemetryStore::lastMsecs() const
{
    return m_last;
}

QVector<QPointF> TelemetryStore::series(
    const QString &kind, const QString &field, qint64 from, qint64 to, int maxPoints) const
{
    const auto it = m_kinds.constFind(kind);
    const int column = TelemetryRecord::fieldNames(kind).indexOf(field);
    QVector<QPointF> points;
    if (it == m_kinds.cend() || column < 0 || column >= it->values.size())
        return points;
    const QVector<qint64> &times = it->times;
    const QVector<double> &values = it->values.at(column);
    const int begin = int(std::lower_bound(times.cbegin(), times.cend(), from) - times.cbegin());
    const int end = int(std::upper_bound(times.cbegin(), times.cend(), to) - times.cbegin());
    const int n = end - begin;
    const int step = maxPoints > 1 && n > maxPoints ? (2 * n + maxPoints - 1) / maxPoints : 1;
    points.reserve(std::min(n, maxPoints + 2));
    for (int start = begin; start < end; start += step) {
        const int stop = std::min(end, start + step);
        int lo = -1, hi = -1;
        for (int i = start; i < stop; i++) {
            if (!std::isfinite(values.at(i)))
                continue;
            if (lo < 0 || values.at(i) < values.at(lo))
                lo = i;
            if (hi < 0 || values.at(i) > values.at(hi))
                hi = i;
        }
        if (lo < 0)
            continue;
        points << QPointF(times.at(std::min(lo, hi)), values.at(std::min(lo, hi)));
        if (lo != hi)
            points << QPointF(times.at(std::max(lo, hi)), values.at(std::max(lo, hi)));
    }
    return points;
}

QVector<TelemetryStore::TrackPoint> TelemetryStore::track() const
{
    return m_track;
}
