// Arbitrary text as the station's own files: the telemetry history and the
// command journal read it back without failing, and a CSV line splits into
// fields that join and split again to the same fields.

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <stddef.h>
#include <stdint.h>

#include "commandjournal.h"
#include "csvline.h"
#include "fuzz_app.h"
#include "telemetrystore.h"

using fuzz::check;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::application<QCoreApplication>();
    const QByteArray bytes(reinterpret_cast<const char *>(data), int(size));
    // On a memory file system when there is one: the file is written and
    // read back twice for every input.
    static const QString path
        = (QDir(QStringLiteral("/dev/shm")).exists() ? QDir(QStringLiteral("/dev/shm")) : QDir::temp())
              .filePath(QStringLiteral("fuzz_station_files-%1.csv").arg(QCoreApplication::applicationPid()));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return 0;
    file.write(bytes);
    file.close();

    TelemetryStore store(path);
    check(store.load() >= 0);
    store.series(QStringLiteral("ctd"), QStringLiteral("pressure"), 0, store.lastMsecs(), 10);
    CommandJournal journal(path);
    check(journal.load() >= 0);
    QFile::remove(path);

    for (const QString &line : QString::fromUtf8(bytes).split('\n')) {
        const QStringList fields = CsvLine::split(line);
        check(CsvLine::split(CsvLine::join(fields)) == fields);
    }
    return 0;
}
