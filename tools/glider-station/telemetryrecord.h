#ifndef TELEMETRYRECORD_H
#define TELEMETRYRECORD_H

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVector>

#include <stdint.h>

// One received vehicle record as numbers by field name, with when and over
// which link it arrived: the unit of the telemetry history.
class TelemetryRecord
{
public:
    QDateTime received; // UTC
    QString link; // "Pell" or "Iridium"
    QString kind; // "housekeeping", "ctd", ... as in the vehicle log lines
    QVector<double> values; // in the order of fieldNames(kind)

    // Record kinds with numbers, in message type order.
    static const QStringList &kinds();
    static const QStringList &fieldNames(const QString &kind);
    // Unit of a field, empty where the vehicle states none.
    static QString unit(const QString &kind, const QString &field);

    // The record of one sub-packet in displayed units (the scales of the
    // telemetry table). False for types that carry no telemetry: commands,
    // superseded records, codes without a record.
    static bool decode(uint8_t type, const uint8_t *record, TelemetryRecord *out);

    double value(const QString &field) const; // NaN when the kind has no such field
    // Latitude and longitude in degrees and the vehicle's own time of the
    // fix, for kinds that carry a position.
    bool position(double *lat, double *lon, QDateTime *fix) const;
};

#endif
