#include "trackexporter.h"

#include <QFileInfo>
#include <QSaveFile>
#include <QXmlStreamWriter>

namespace
{
const QString Name = QStringLiteral("Glider track");

QString degrees(double value)
{
    return QString::number(value, 'f', 7);
}

void writeGpx(QXmlStreamWriter *xml, const QVector<TelemetryStore::TrackPoint> &track)
{
    xml->writeStartElement("gpx");
    xml->writeDefaultNamespace("http://www.topografix.com/GPX/1/1");
    xml->writeAttribute("version", "1.1");
    xml->writeAttribute("creator", "glider-station");
    xml->writeStartElement("trk");
    xml->writeTextElement("name", Name);
    xml->writeStartElement("trkseg");
    for (const TelemetryStore::TrackPoint &p : track) {
        xml->writeStartElement("trkpt");
        xml->writeAttribute("lat", degrees(p.lat));
        xml->writeAttribute("lon", degrees(p.lon));
        xml->writeTextElement("time", p.fix.toUTC().toString(Qt::ISODate));
        xml->writeEndElement();
    }
    xml->writeEndElement(); // trkseg
    xml->writeEndElement(); // trk
    xml->writeEndElement(); // gpx
}

void writeKmlPlacemark(
    QXmlStreamWriter *xml, const QString &name, const char *geometry, const QString &coordinates)
{
    xml->writeStartElement("Placemark");
    xml->writeTextElement("name", name);
    xml->writeStartElement(geometry);
    xml->writeTextElement("coordinates", coordinates);
    xml->writeEndElement();
    xml->writeEndElement();
}

void writeKml(QXmlStreamWriter *xml, const QVector<TelemetryStore::TrackPoint> &track)
{
    xml->writeStartElement("kml");
    xml->writeDefaultNamespace("http://www.opengis.net/kml/2.2");
    xml->writeStartElement("Document");
    xml->writeTextElement("name", Name);
    QStringList coordinates;
    for (const TelemetryStore::TrackPoint &p : track)
        coordinates << degrees(p.lon) + ',' + degrees(p.lat) + ",0";
    writeKmlPlacemark(xml, Name, "LineString", coordinates.join(' '));
    const TelemetryStore::TrackPoint &last = track.last();
    writeKmlPlacemark(xml,
        QObject::tr("Latest position %1 UTC").arg(last.fix.toUTC().toString("yyyy-MM-dd HH:mm:ss")), "Point",
        coordinates.last());
    xml->writeEndElement(); // Document
    xml->writeEndElement(); // kml
}
}

TrackExporter::Format TrackExporter::formatOf(const QString &fileName)
{
    const QString suffix = QFileInfo(fileName).suffix().toLower();
    return suffix == "gpx" ? Gpx : suffix == "kml" ? Kml : Unknown;
}

bool TrackExporter::write(
    const QVector<TelemetryStore::TrackPoint> &track, const QString &fileName, QString *error)
{
    const Format format = formatOf(fileName);
    if (format == Unknown) {
        *error = QObject::tr("%1: unknown track format, use a .gpx or .kml file name").arg(fileName);
        return false;
    }
    if (track.isEmpty()) {
        *error = QObject::tr("no position in the telemetry history, nothing written");
        return false;
    }
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly)) {
        *error = QObject::tr("%1: %2").arg(fileName, file.errorString());
        return false;
    }
    QXmlStreamWriter xml(&file);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    if (format == Gpx)
        writeGpx(&xml, track);
    else
        writeKml(&xml, track);
    xml.writeEndDocument();
    if (!file.commit()) {
        *error = QObject::tr("%1: %2").arg(fileName, file.errorString());
        return false;
    }
    return true;
}

int TrackExporter::exportFromHistory(const QString &historyPath, const QString &fileName, QString *error)
{
    if (formatOf(fileName) == Unknown) {
        *error = QObject::tr("%1: unknown track format, use a .gpx or .kml file name").arg(fileName);
        return 2;
    }
    TelemetryStore store(historyPath);
    if (store.load() < 0) {
        *error = QObject::tr("%1: cannot be read").arg(historyPath);
        return 2;
    }
    return write(store.track(), fileName, error) ? 0 : 2;
}
