#include "recordingoptions.h"

#include <QCommandLineParser>
#include <QDir>
#include <QStandardPaths>

namespace
{
const QCommandLineOption NoRecord(
    "no-record", QCoreApplication::translate("RecordingOptions", "Do not record the session."));
const QCommandLineOption RecordDir("record-dir",
    QCoreApplication::translate("RecordingOptions",
        "Folder of the session captures (default: captures in the user's data folder, "
        "~/.local/share/varda-toolbox/captures on Linux)."),
    "dir");
const QCommandLineOption RecordCap("record-cap",
    QCoreApplication::translate("RecordingOptions",
        "Size cap of the captures folder in MiB; the oldest captures go first (default %1).")
        .arg(RecordingOptions::DefaultCapMib),
    "mib");
// A cap no file system has: 2^40 MiB.
const qint64 MaxCapMib = qint64(1) << 40;
} // namespace

void RecordingOptions::addTo(QCommandLineParser *parser) const
{
    parser->addOptions({ NoRecord, RecordDir, RecordCap });
}

bool RecordingOptions::read(const QCommandLineParser &parser, QString *error)
{
    m_enabled = !parser.isSet(NoRecord);
    m_folder = parser.isSet(RecordDir) ? parser.value(RecordDir) : defaultFolder();
    if (m_folder.isEmpty()) {
        *error = QCoreApplication::translate("RecordingOptions", "--record-dir needs a folder");
        return false;
    }
    if (!parser.isSet(RecordCap))
        return true;
    bool ok = false;
    m_capMib = parser.value(RecordCap).toLongLong(&ok);
    if (!ok || m_capMib < 1 || m_capMib > MaxCapMib) {
        *error
            = QCoreApplication::translate("RecordingOptions", "--record-cap is a number of MiB, 1 or more");
        return false;
    }
    return true;
}

bool RecordingOptions::enabled() const
{
    return m_enabled;
}

QString RecordingOptions::folder() const
{
    return m_folder.isEmpty() ? defaultFolder() : m_folder;
}

qint64 RecordingOptions::capBytes() const
{
    return m_capMib << 20;
}

// The radio tool's own data folder, whichever program records: both tools
// keep their captures together.
QString RecordingOptions::defaultFolder()
{
    return QDir(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation))
        .filePath(QStringLiteral("varda-toolbox/captures"));
}
