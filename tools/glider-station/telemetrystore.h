#ifndef TELEMETRYSTORE_H
#define TELEMETRYSTORE_H

#include <QDateTime>
#include <QHash>
#include <QObject>
#include <QPointF>
#include <QString>
#include <QVector>

#include "telemetryrecord.h"

// The telemetry history: every record received, kept in memory by kind as
// columns of numbers and appended to a CSV file that is read back at start.
//
// File: one header line per kind, "received_utc,link,<kind>,<field>,...",
// before the first record of that kind in the file; then one line per
// record, "<ISO 8601 UTC>,<link>,<kind>,<value>,...". Values are read back
// by the field names of the header, so fields added later stay empty.
class TelemetryStore : public QObject
{
    Q_OBJECT
public:
    struct TrackPoint {
        QDateTime fix; // the vehicle's time of the position, UTC
        double lat;
        double lon;
    };

    explicit TelemetryStore(const QString &path, QObject *parent = nullptr);

    QString path() const;
    // Reads the file; lines that do not parse are skipped. Returns the number
    // of records read, -1 when the file exists but cannot be opened.
    int load();
    // Keeps the record and appends it to the file (header first when the
    // kind is new to the file). False when the file cannot be written; the
    // record is kept in memory all the same.
    bool append(const TelemetryRecord &record);
    // Keeps the record in memory only.
    void add(const TelemetryRecord &record);

    int count(const QString &kind) const;
    QDateTime lastReceived(const QString &kind) const; // invalid when none
    QString lastLink(const QString &kind) const;
    qint64 firstMsecs() const; // over all kinds; 0 when empty
    qint64 lastMsecs() const;
    // Field against receive time (ms since the epoch) within [from, to],
    // at most about maxPoints points: longer runs are cut into buckets of
    // which the lowest and the highest point are kept, so peaks survive.
    QVector<QPointF> series(
        const QString &kind, const QString &field, qint64 from, qint64 to, int maxPoints) const;
    // Positions of position records and housekeeping, in receive order.
    QVector<TrackPoint> track() const;

signals:
    void recordAdded(const TelemetryRecord &record);

private:
    struct Columns {
        QVector<qint64> times;
        QVector<QVector<double>> values; // one column per field
        QString lastLink;
    };
    struct Header {
        QStringList names; // as in the file
        QVector<int> columns; // file column of each current field, -1 if none
    };
    using Headers = QHash<QString, Header>;

    void keep(const TelemetryRecord &record);
    bool readLine(const QString &line, Headers *headers);
    static void readHeader(const QString &kind, const QStringList &fields, Headers *headers);

    QString m_path;
    QHash<QString, Columns> m_kinds;
    QHash<QString, bool> m_headerWritten;
    QVector<TrackPoint> m_track;
    qint64 m_first = 0;
    qint64 m_last = 0;
};

#endif
