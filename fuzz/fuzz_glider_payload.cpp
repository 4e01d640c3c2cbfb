// Arbitrary vehicle payloads into the glider panel: the splitter must never
// read past the payload, whatever the type bytes claim. The same bytes also
// go in as a received radio packet (receive header, then raw vehicle data or
// an extension packet), which must be dropped cleanly when too short.
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTextBrowser>

#include <stddef.h>
#include <stdint.h>

#include "fuzz_app.h"
#include "glider.h"
#include "varda_spp_host.h"

namespace
{

// Every record opens, appends to and closes a log file: on a memory file
// system when there is one, that costs far less than on disk.
QString homeTemplate()
{
    const QString shm = QStringLiteral("/dev/shm");
    const QString base = QDir(shm).exists() ? shm : QDir::tempPath();
    return base + QStringLiteral("/fuzz_glider_payload-XXXXXX");
}

// The log files grow by a few lines per input; emptying them now and then
// keeps them small without a file created and deleted for every input.
void trimLogs()
{
    static unsigned inputs = 0;
    if (++inputs % 1024 != 0)
        return;
    QFile::resize(QStringLiteral("telemetry.txt"), 0);
    QFile::resize(QStringLiteral("event.txt"), 0);
}

Glider *panel()
{
    fuzz::application<QApplication>();
    static QTemporaryDir home(homeTemplate());
    static Glider *glider = [] {
        qputenv("HOME", home.path().toLocal8Bit());
        return new Glider;
    }();
    return glider;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Glider *glider = panel();
    if (size > UINT16_MAX)
        return 0;
    glider->handleData(data, uint16_t(size));
    glider->incomingPell(SPP_TYPE_RX, data, uint16_t(size), QString());
    // Keep the table, the view and the files small across many inputs.
    glider->clearModel();
    glider->findChild<QTextBrowser *>("logView")->clear();
    trimLogs();
    // Each clear makes the table's scroll bars post events; without an
    // event loop turn they would pile up, 400 bytes an input.
    QCoreApplication::processEvents();
    return 0;
}
