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

// "2026-11-23T12:00:00.000Z" as written here, read without the general ISO
// parser, which costs more than the rest of a line; anything else goes to it.
QDateTime receiveTime(const QString &text)
{
    static const QString layout = QStringLiteral("0000-00-00T00:00:00.000Z");
    bool exact = text.size() == layout.size();
    for (int i = 0; exact && i < layout.size(); i++)
        exact = layout.at(i) == QLatin1Char('0') ? text.at(i).isDigit() : text.at(i) == layout.at(i);
    if (!exact)
        return QDateTime::fromString(text, Qt::ISODateWithMs).toUTC();
    const auto number = [&](int from, int length) { return text.midRef(from, length).toInt(); };
    return QDateTime(QDate(number(0, 4), number(5, 2), number(8, 2)),
        QTime(number(11, 2), number(14, 2), number(17, 2), number(20, 3)), Qt::UTC);
}

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
    Headers headers;
    int records = 0;
    QTextStream in(&file);
    in.setCodec("UTF-8");
    QString line;
    while (in.readLineInto(&line))
        records += readLine(line, &headers) ? 1 : 0;
    for (auto it = headers.cbegin(); it != headers.cend(); ++it)
        m_headerWritten[it.key()] = it.value().names == TelemetryRecord::fieldNames(it.key());
    return records;
}

// A header line maps the file's columns to the fields the kind has now.
void TelemetryStore::readHeader(const QString &kind, const QStringList &fields, Headers *headers)
{
    Header header;
    header.names = fields.mid(Fixed);
    for (const QString &name : TelemetryRecord::fieldNames(kind)) {
        const int index = header.names.indexOf(name);
        header.columns << (index < 0 ? -1 : index + Fixed);
    }
    headers->insert(kind, header);
}

bool TelemetryStore::readLine(const QString &line, Headers *headers)
{
    const QStringList fields = CsvLine::split(line);
    if (fields.size() < Fixed)
        return false;
    const QString &kind = fields.at(2);
    if (fields.at(0) == HeaderMark) {
        if (TelemetryRecord::kinds().contains(kind))
            readHeader(kind, fields, headers);
        return false;
    }
    const auto header = headers->constFind(kind);
    if (header == headers->cend())
        return false;
    TelemetryRecord record;
    record.received = receiveTime(fields.at(0));
    if (!record.received.isValid())
        return false;
    record.link = fields.at(1);
    record.kind = kind;
    record.values.reserve(header->columns.size());
    for (int column : header->columns) {
        bool ok = false;
        const double value = column >= 0 && column < fields.size() ? fields.at(column).toDouble(&ok) : 0;
        record.values << (ok ? value : std::nan(""));
    }
    keep(record);
    return true;
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
