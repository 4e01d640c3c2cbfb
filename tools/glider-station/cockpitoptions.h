#ifndef COCKPITOPTIONS_H
#define COCKPITOPTIONS_H

#include <QCommandLineOption>
#include <QString>

class CommandJournal;
class QCommandLineParser;

// The station's command-line options for the command journal and the track:
// deadlines for a command's confirmation per link, and a headless export of
// the track from the telemetry history.
class CockpitOptions
{
public:
    CockpitOptions();

    // True when the command line asks only for the track export, which
    // needs no window (nor a display).
    static bool headless(int argc, const char *const *argv);
    // Parses, exports the track from ~/.toolbox/telemetry.csv and returns
    // the exit code: 0, or 2 with a one-line message on standard error.
    static int runHeadless(int argc, char **argv);

    void addTo(QCommandLineParser *parser) const;
    // Reads the values; false with a one-line reason in error for a bad one.
    bool read(const QCommandLineParser &parser, QString *error);
    void applyTo(CommandJournal *journal) const;

    // Non-empty when the program is only to export the track and exit.
    QString exportTrack() const;
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
