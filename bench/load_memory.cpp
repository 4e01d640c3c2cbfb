// Floods a shown main window over TCP on 127.0.0.1 with the mixed traffic of
// a fixed set of stations and prints the resident size (VmRSS) as it goes:
// after 10,000 packets, then every 100,000 up to the count asked for
// (default 1,000,000). The packet log keeps 200 rows and their bars and the
// station list stops growing once every station was heard, so the size
// must level off.
//
//   varda-load-memory [packets] [stations]

#include <QApplication>
#include <QFile>
#include <QTextStream>

#include <stdio.h>

#include "connectedwindow.h"
#include "loadtraffic.h"
#include "quietdebug.h"

namespace
{

const int BATCH = 1000;
const int FIRST_REPORT = 10000;
const int REPORT_EVERY = 100000;
const int PACKETS_TAB = 1;

// Resident size in kB, 0 when /proc cannot be read.
long residentKb()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    QTextStream lines(&status);
    for (QString line = lines.readLine(); !line.isNull(); line = lines.readLine()) {
        if (line.startsWith(QLatin1String("VmRSS:")))
            return line.split(QLatin1Char(' '), Qt::SkipEmptyParts).value(1).toLong(); // "VmRSS: 1234 kB"
    }
    return 0;
}

bool reportDue(long sent)
{
    return sent == FIRST_REPORT || sent % REPORT_EVERY == 0;
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const QStringList args = app.arguments();
    bool packets_ok = true;
    bool stations_ok = true;
    const long packets = args.size() > 1 ? args.at(1).toLong(&packets_ok) : 1000000;
    const int stations = args.size() > 2 ? args.at(2).toInt(&stations_ok) : 100;
    if (!packets_ok || !stations_ok || packets < FIRST_REPORT || stations < 1) {
        fprintf(stderr, "usage: varda-load-memory [packets >= %d] [stations >= 1]\n", FIRST_REPORT);
        return 2;
    }

    const QuietDebug quiet;
    ConnectedWindow window(PACKETS_TAB);
    if (!window.connected()) {
        fprintf(stderr, "no TCP connection\n");
        return 1;
    }
    LoadTraffic traffic(stations);
    long first = 0;
    long last = 0;
    printf("%10s %10s\n", "packets", "VmRSS kB");
    for (long sent = BATCH; sent <= packets; sent += BATCH) {
        if (!window.deliver(traffic.next(BATCH), BATCH)) {
            fprintf(stderr, "the window fell behind after %ld packets\n", sent - BATCH);
            return 1;
        }
        if (!reportDue(sent))
            continue;
        last = residentKb();
        if (!first)
            first = last;
        printf("%10ld %10ld\n", sent, last);
        fflush(stdout);
    }
    if (first)
        printf("growth after %d packets: %+.1f %%\n", FIRST_REPORT, 100.0 * (last - first) / first);
    return 0;
}
