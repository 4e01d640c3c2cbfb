// Links every library of the toolbox from a foreign project and uses one
// piece of each: headers by bare name, resources of the static toolbox
// library, a frame through SppHost. Exits non-zero on the first fault.
#include <QApplication>
#include <QFile>
#include <QTextStream>

#include "glider.h"
#include "iridiumtcp.h"
#include "mainwindow.h"
#include "nmea.h"
#include "packetmodel.h"
#include "spp_host_qt.h"
#include "stationlistmodel.h"
#include "telemetry.h"
#include "varda_extension.h"
#include "varda_extension_qt.h"

static int fail(const char *what)
{
    QTextStream(stderr) << "embed_host: " << what << '\n';
    return 1;
}

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);

    MainWindow window;
    if (!QFile::exists(":/img/blue-rfid-signal-16.png"))
        return fail("toolbox resources not loaded");

    Glider glider;

    VardaExtension ext;
    ext.addSource("LA1ABC-5", 1);
    const QByteArray frame = SppHost::packTransmit(ext.getPacket(), 1);
    SppHost host;
    int delivered = 0;
    QObject::connect(&host, &SppHost::newPacket, &host,
        [&delivered](uint8_t type, uint8_t *, uint16_t len, const QString &) {
            delivered += type == SPP_TYPE_TX && len == 10;
        });
    for (char c : frame)
        host.parse(uint8_t(c));
    if (delivered != 1)
        return fail("SppHost did not deliver the frame");
    return 0;
}
