#ifndef FUZZ_APP_H
#define FUZZ_APP_H

// What the fuzz targets that need Qt share: one application object, made on
// the first input and never destroyed (libFuzzer exits without unwinding,
// and Qt's own statics are gone by then), widgets on the offscreen
// platform, and the code under test kept quiet.
#include <QByteArray>
#include <QtGlobal>

#include "fuzz_check.h"

namespace fuzz
{

inline void quiet(QtMsgType, const QMessageLogContext &, const QString &) { }

// QApplication for targets that make widgets, QCoreApplication otherwise.
template <typename App> App *application()
{
    static int argc = 1;
    static char name[] = "fuzz";
    static char *argv[] = { name, nullptr };
    static App *app = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qInstallMessageHandler(quiet);
        return new App(argc, argv);
    }();
    return app;
}

} // namespace fuzz

#endif
