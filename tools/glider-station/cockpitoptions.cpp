#include "cockpitoptions.h"

#include <QCommandLineParser>
#include <QObject>

#include "cockpit.h"
#include "commandjournal.h"
#include "trackexporter.h"

namespace
{
// A positive whole number no larger than a week in the unit given.
bool positive(const QString &text, qint64 unitMs, qint64 *out)
{
    bool ok = false;
    const qint64 value = text.toLongLong(&ok);
    if (!ok || value <= 0 || value * unitMs > 7LL * 24 * 3600 * 1000)
        return false;
    *out = value * unitMs;
    return true;
}
}

CockpitOptions::CockpitOptions()
    : m_pellDeadline("pell-deadline",
        QObject::tr(
            "Seconds a command sent over Pell may wait for the vehicle's confirmation before the journal "
            "marks it not confirmed (default 60)."),
        "seconds", "60")
    , m_iridiumDeadline("iridium-deadline",
          QObject::tr("Minutes a command sent over Iridium may wait for its confirmation (default 30)."),
          "minutes", "30")
    , m_exportTrack("export-track",
          QObject::tr(
              "Write the vehicle's track from ~/.toolbox/telemetry.csv to FILE (.gpx for GPX 1.1, .kml for "
              "KML) and exit without opening a window."),
          "FILE")
{
}

void CockpitOptions::addTo(QCommandLineParser *parser) const
{
    parser->addOption(m_pellDeadline);
    parser->addOption(m_iridiumDeadline);
    parser->addOption(m_exportTrack);
}

bool CockpitOptions::read(const QCommandLineParser &parser, QString *error)
{
    if (!positive(parser.value(m_pellDeadline), 1000, &m_pellMs)) {
        *error = QObject::tr("--pell-deadline: %1 is not a number of seconds from 1 to a week")
                     .arg(parser.value(m_pellDeadline));
        return false;
    }
    if (!positive(parser.value(m_iridiumDeadline), 60 * 1000, &m_iridiumMs)) {
        *error = QObject::tr("--iridium-deadline: %1 is not a number of minutes from 1 to a week")
                     .arg(parser.value(m_iridiumDeadline));
        return false;
    }
    m_export = parser.value(m_exportTrack);
    return true;
}

void CockpitOptions::applyTo(CommandJournal *journal) const
{
    journal->setDeadline("Pell", m_pellMs);
    journal->setDeadline("Iridium", m_iridiumMs);
}

QString CockpitOptions::exportTrack() const
{
    return m_export;
}

bool CockpitOptions::runExport(QString *error) const
{
    return TrackExporter::exportFromHistory(Cockpit::telemetryPath(), m_export, error) == 0;
}

qint64 CockpitOptions::pellDeadlineMs() const
{
    return m_pellMs;
}

qint64 CockpitOptions::iridiumDeadlineMs() const
{
    return m_iridiumMs;
}
