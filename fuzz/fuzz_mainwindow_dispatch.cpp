// Arbitrary modem frames into the main window's dispatch, in every terminal
// mode, with the local callsign learnt and a destination picked, so that
// the station list, the packet log and both reply paths see them.
//
// Input: byte 0 sets up the window (bits 0-1 terminal mode, bit 2 "Auto
// set", bit 3 "Ignore local packets", bit 4 pick station 0 as destination),
// then frames of [type][length][payload], the last one cut short by the
// input's end.
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>

#include <algorithm>
#include <memory>
#include <stddef.h>
#include <stdint.h>

#include "fuzz_app.h"
#include "mainwindow.h"

namespace
{

// The station list only grows: start again now and then so that runs stay
// fast.
const int INPUTS_PER_WINDOW = 500;

MainWindow *window()
{
    fuzz::application<QApplication>();
    // Never deleted at exit: Qt's own statics are gone by then.
    static MainWindow *current = nullptr;
    static int inputs = 0;
    if (!current || ++inputs % INPUTS_PER_WINDOW == 0) {
        delete current;
        current = new MainWindow;
    }
    return current;
}

void setUp(MainWindow *w, uint8_t control)
{
    auto *mode = w->findChild<QComboBox *>("configModeBox");
    mode->setCurrentIndex((control & 3) % mode->count());
    w->findChild<QCheckBox *>("localCallAutoSetBox")->setChecked(control & 4);
    w->findChild<QCheckBox *>("ignoreLocalBox")->setChecked(control & 8);
    if (control & 16)
        w->terminalStationChanged(0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 1)
        return 0;
    MainWindow *w = window();
    setUp(w, data[0]);
    const QString path = QStringLiteral("tcp");
    size_t at = 1;
    while (at + 2 <= size) {
        const uint8_t type = data[at];
        const size_t length = std::min<size_t>(data[at + 1], size - at - 2);
        // A copy of exactly the frame's length, so that ASan sees any read
        // past its end.
        std::unique_ptr<uint8_t[]> payload(new uint8_t[length ? length : 1]);
        std::copy(data + at + 2, data + at + 2 + length, payload.get());
        w->handleSppPacket(type, payload.get(), uint16_t(length), path);
        at += 2 + length;
    }
    QCoreApplication::processEvents();
    return 0;
}
