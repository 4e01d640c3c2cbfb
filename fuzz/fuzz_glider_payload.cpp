// Arbitrary vehicle payloads into the glider panel: the splitter must never
// read past the payload, whatever the type bytes claim. The same bytes also
// go in as a received radio packet (receive header, then raw vehicle data or
// an extension packet), which must be dropped cleanly when too short.
#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTextBrowser>

#include <stddef.h>
#include <stdint.h>

#include "glider.h"
#include "varda_spp_host.h"

namespace
{

void quiet(QtMsgType, const QMessageLogContext &, const QString &) { }

Glider *panel()
{
    static int argc = 1;
    static char name[] = "fuzz_glider_payload";
    static char *argv[] = { name, nullptr };
    static QApplication *app = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qInstallMessageHandler(quiet);
        return new QApplication(argc, argv);
    }();
    static QTemporaryDir home;
    static Glider *glider = [] {
        qputenv("HOME", home.path().toLocal8Bit());
        return new Glider;
    }();
    Q_UNUSED(app);
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
    QFile::remove("telemetry.txt");
    QFile::remove("event.txt");
    return 0;
}
