#ifndef TRACKEXPORTER_H
#define TRACKEXPORTER_H

#include <QString>
#include <QVector>

#include "telemetrystore.h"

// Writes the vehicle's track as GPX 1.1 (one track segment of timed
// points) or KML 2.2 (the line and the latest position), chosen by the
// file name's extension.
class TrackExporter
{
public:
    enum Format { Unknown, Gpx, Kml };

    static Format formatOf(const QString &fileName);
    // False with a one-line reason in error when the extension is unknown,
    // there is no position to write or the file cannot be written.
    static bool write(
        const QVector<TelemetryStore::TrackPoint> &track, const QString &fileName, QString *error);
    // Headless export: reads the telemetry history, writes the track.
    // Returns the process exit code (0, or 2 with the reason in error).
    static int exportFromHistory(const QString &historyPath, const QString &fileName, QString *error);
};

#endif
