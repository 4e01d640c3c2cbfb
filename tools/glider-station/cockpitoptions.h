#ifndef COCKPITOPTIONS_H
#define COCKPITOPTIONS_H

#include <QCommandLineOption>
#include <QString>

#include "optiongroup.h"

class CommandJournal;
class QCommandLineParser;

// The station's command-line options for the command journal and the track:
// deadlines for a command's confirmation per link, and a headless export of
// the track from the telemetry history.
class CockpitOptions : public OptionGroup
{
public:
    CockpitOptions();

    void addTo(QCommandLineParser *parser) const override;
    // Reads the values; false with a one-line reason in error for a bad one.
    bool read(const QCommandLineParser &parser, QString *error) override;
    void applyTo(CommandJournal *journal) const;

    // Non-empty when the program is only to export the track and exit.
    QString exportTrack() const;
    // Writes the track from ~/.toolbox/telemetry.csv to exportTrack(); needs
    // no application object. False with a one-line reason in error.
    bool runExport(QString *error) const;
    qint64 pellDeadlineMs() const;
    qint64 iridiumDeadlineMs() const;

private:
    QCommandLineOption m_pellDeadline;
    QCommandLineOption m_iridiumDeadline;
    QCommandLineOption m_exportTrack;
    qint64 m_pellMs = 60 * 1000;
    qint64 m_iridiumMs = 30 * 60 * 1000;
    QString m_export;
};

#endif
