// Vehicle payloads through the glider panel: split, show in the table and
// append to telemetry.txt, against the file appends alone.
#include <benchmark/benchmark.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "glider.h"

namespace
{

// housekeeping2 + postime + ctd + o2, as the vehicle sends them over Pell
const QByteArray TYPICAL = QByteArray::fromHex("09 4C 64 65 20 F1 00 96 80 51 01 00 07"
                                               "0F 87 1C D6 23 C1 2F 1B F1 00 F1 53 65"
                                               "04 02 01 B8 0D 33 89 10 27 00 D2 04 05 00 20 4E"
                                               "0B B4 61 94 26 F4 01");
const int RECORDS = 4;

void quiet(QtMsgType, const QMessageLogContext &, const QString &) { }

// A panel in a scratch home, with the debug stream silenced so that the
// terminal does not set the pace; the working directory is restored after.
class PanelFixture
{
public:
    PanelFixture()
        : m_cwd(QDir::currentPath())
        , m_previous(qInstallMessageHandler(quiet))
    {
        qputenv("HOME", m_home.path().toLocal8Bit());
        m_glider = new Glider;
    }
    ~PanelFixture()
    {
        delete m_glider;
        qInstallMessageHandler(m_previous);
        QDir::setCurrent(m_cwd);
    }
    Glider *glider() const
    {
        return m_glider;
    }
    void feed(const QByteArray &payload) const
    {
        m_glider->handleData(
            reinterpret_cast<const uint8_t *>(payload.constData()), uint16_t(payload.size()));
    }

private:
    QTemporaryDir m_home;
    QString m_cwd;
    QtMessageHandler m_previous;
    Glider *m_glider = nullptr;
};

// Records per second through handleData. Run on the typical payload, and as
// baseline 1 on the same payload with an invalid type byte at the end: that
// one is split and checked, then dropped before any record is shown or logged.
void BM_Glider(benchmark::State &state, const QByteArray &payload)
{
    PanelFixture panel;
    for (auto _ : state)
        panel.feed(payload);
    state.SetItemsProcessed(state.iterations() * RECORDS);
}
BENCHMARK_CAPTURE(BM_Glider, TypicalPayload, TYPICAL);
BENCHMARK_CAPTURE(BM_Glider, SplitOnly, TYPICAL + char(0x20));

// Baseline 2: the four log lines of the typical payload appended as the
// panel does, one open/write/close per line, with no decoding and no table.
void BM_PlainLogAppend(benchmark::State &state)
{
    QTemporaryDir dir;
    QFile log(dir.filePath("telemetry.txt"));
    const char *lines[RECORDS] = { "housekeeping2;4;9;ON;PENDING;ON;OFF;1;0;1;0;0;1;1;123456;-50;86400;7",
        "postime;60.1234567;-24.9876543;1700000000", "ctd;258;35.12;15.123;100.00;12.34;0.05;1500.00",
        "o2;250.12;98.76;-5.00" };
    for (auto _ : state) {
        for (const char *line : lines) {
            log.open(QIODevice::WriteOnly | QIODevice::Append);
            log.write(line);
            log.write("\r\n");
            log.close();
        }
    }
    state.SetItemsProcessed(state.iterations() * RECORDS);
}
BENCHMARK(BM_PlainLogAppend);

} // namespace
