#ifndef RECORDINGOPTIONS_H
#define RECORDINGOPTIONS_H

#include <QString>

#include "optiongroup.h"

class QCommandLineParser;

// The recording options of the tools: --no-record, --record-dir DIR and
// --record-cap MIB. Recording is on by default, into the captures folder
// under the user's data folder, capped at 2 GiB.
class RecordingOptions : public OptionGroup
{
public:
    static const qint64 DefaultCapMib = 2048;

    void addTo(QCommandLineParser *parser) const override;
    // After the parser has processed the command line. False with a message
    // in *error when a value is not acceptable.
    bool read(const QCommandLineParser &parser, QString *error) override;

    bool enabled() const;
    QString folder() const;
    qint64 capBytes() const;

    // The application data folder of varda-toolbox (AppLocalDataLocation
    // when the application is named so), then captures; the same for every
    // program that records.
    static QString defaultFolder();

private:
    bool m_enabled = true;
    QString m_folder;
    qint64 m_capMib = DefaultCapMib;
};

#endif
