#include <benchmark/benchmark.h>

#include <QAbstractItemModel>
#include <QComboBox>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>
#include <QTcpServer>
#include <QTcpSocket>

#include <functional>
#include <string.h>

#include "mainwindow.h"
#include "spp_host_qt.h"
#include "varda_extension.h"
#include "varda_extension_qt.h"
#include "varda_spp_host.h"

// How many typical packets per second the main window takes from a modem on
// TCP loopback, against the bare SppHost parser over the same bytes.

namespace
{

const int BATCH = 1000;
const int STATIONS = 10;
const int WAIT_MS = 30000;

// A received radio packet as a modem on the air delivers it: receive header,
// then src and stat sub-packets.
QByteArray typicalFrame(int station, uint8_t seq)
{
    VardaExtension ext;
    ext.addSource(QStringLiteral("STN%1-%2").arg(station).arg(station % 4), seq);
    varda_stat_t status;
    memset(&status, 0, sizeof status);
    status.serial = uint16_t(1000 + station);
    status.uptime_s = 3600u * uint32_t(station);
    status.voltage = 124;
    status.signal = 120;
    status.noise = 90;
    const spp_rxhdr_t rx = { 123456, 90, uint8_t(100 + station), 0, 1 };

    QByteArray payload(reinterpret_cast<const char *>(&rx), sizeof rx);
    payload += ext.getPacket();
    payload += char(VRD_EXT_STAT);
    payload += char(sizeof status);
    payload += QByteArray(reinterpret_cast<const char *>(&status), sizeof status);

    vrd_spphdr_t header;
    varda_spp_fill_header(&header, SPP_TYPE_RX, reinterpret_cast<const uint8_t *>(payload.constData()),
        uint8_t(payload.size()));
    return QByteArray(reinterpret_cast<const char *>(&header), sizeof header) + payload;
}

QByteArray typicalBatch()
{
    QByteArray batch;
    for (int i = 0; i < BATCH; i++)
        batch += typicalFrame(i % STATIONS, uint8_t(i));
    return batch;
}

bool waitFor(const std::function<bool()> &done)
{
    QElapsedTimer timer;
    timer.start();
    while (!done()) {
        if (timer.elapsed() > WAIT_MS)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
    }
    return true;
}

// A shown window connected over TCP to a modem played in this process.
class ConnectedWindow
{
public:
    explicit ConnectedWindow(int tab)
    {
        m_server.listen(QHostAddress::LocalHost, 0);
        m_window.findChild<QTabWidget *>("tabWidget")->setCurrentIndex(tab);
        m_window.show();
        auto *linkType = m_window.findChild<QComboBox *>("linkTypeCombo");
        linkType->setCurrentIndex(linkType->findText("TCP"));
        m_window.findChild<QLineEdit *>("portText")->setText(QString::number(m_server.serverPort()));
        m_window.findChild<QPushButton *>("connectButton")->click();
        waitFor([this] { return m_server.hasPendingConnections(); });
        m_modem = m_server.nextPendingConnection();
        const QAbstractItemModel *log = m_window.findChild<QTableView *>("packetTable")->model();
        QObject::connect(log, &QAbstractItemModel::rowsInserted, &m_window, [this] { m_rows++; });
    }

    bool connected() const
    {
        return m_modem != nullptr;
    }

    // Sends the batch and runs the event loop until every packet is logged.
    bool deliver(const QByteArray &batch, int packets)
    {
        m_rows = 0;
        m_modem->write(batch);
        return waitFor([&] { return m_rows >= packets; });
    }

private:
    QTcpServer m_server;
    MainWindow m_window;
    QTcpSocket *m_modem = nullptr;
    int m_rows = 0;
};

void silence(QtMsgType, const QMessageLogContext &, const QString &) { }

} // namespace

static void BM_MainWindowTcp(benchmark::State &state)
{
    const QtMessageHandler previous = qInstallMessageHandler(silence);
    ConnectedWindow window(int(state.range(0)));
    if (!window.connected()) {
        state.SkipWithError("no TCP connection");
        return;
    }
    const QByteArray batch = typicalBatch();
    window.deliver(batch, BATCH); // every station heard once, rows at the 200 limit
    for (auto _ : state) {
        if (!window.deliver(batch, BATCH)) {
            state.SkipWithError("window fell behind");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * BATCH);
    state.SetBytesProcessed(state.iterations() * batch.size());
    qInstallMessageHandler(previous);
}
// Argument: the tab on view (1 "Packets", 2 "Stations", 0 "Settings").
BENCHMARK(BM_MainWindowTcp)->Arg(1)->Arg(2)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime();

static void BM_SppHostBare(benchmark::State &state)
{
    const QByteArray batch = typicalBatch();
    SppHost host;
    int packets = 0;
    QObject::connect(&host, &SppHost::newPacket, &host, [&packets] { packets++; });
    host.setSource(QStringLiteral("tcp"));
    for (auto _ : state) {
        for (const char byte : batch)
            host.parse(uint8_t(byte));
    }
    benchmark::DoNotOptimize(packets);
    state.SetItemsProcessed(state.iterations() * BATCH);
    state.SetBytesProcessed(state.iterations() * batch.size());
}
BENCHMARK(BM_SppHostBare)->Unit(benchmark::kMillisecond)->UseRealTime();
