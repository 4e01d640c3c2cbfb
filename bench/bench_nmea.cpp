// NMEA sentences read, checked, split and unpacked per second. Baseline:
// nmea_checksum alone over the same sentences, the least any reader that
// checks them must do.
#include <benchmark/benchmark.h>

#include <string.h>

#include "nmea.h"

namespace
{

// A receiver's one-second burst: RMC and GGA, as two receivers print them.
const char *const SENTENCES[] = {
    "$GPRMC,083559.00,A,4717.11437,N,00833.91522,E,0.004,77.52,091202,,,A*57\r\n",
    "$GPGGA,092725.00,4717.11399,N,00833.91590,E,1,08,1.01,499.6,M,48.0,M,,*5B\r\n",
    "$GPRMC,153012.250,A,2254.56789,S,04312.34567,W,12.345,270.05,290224,21.7,W,D*27\r\n",
    "$GNGGA,001043.00,3351.86300,S,15112.52600,E,2,12,0.78,-12.3,M,-34.5,M,1.5,0131*43\r\n",
};
const int COUNT = int(sizeof(SENTENCES) / sizeof(SENTENCES[0]));

struct Burst {
    Burst()
    {
        for (const char *s : SENTENCES) {
            memcpy(bytes + len, s, strlen(s));
            len += int(strlen(s));
        }
    }
    uint8_t bytes[512];
    int len = 0;
};

struct Tally {
    int64_t sentences = 0;
    int64_t unpacked = 0;
};

void unpack(uint8_t count, char **fields, void *arg)
{
    Tally *tally = static_cast<Tally *>(arg);
    tally->sentences++;
    nmea_rmc rmc;
    nmea_gga gga;
    if (nmea_rmc_unpack(count, fields, &rmc) == NMEA_OK || nmea_gga_unpack(count, fields, &gga) == NMEA_OK)
        tally->unpacked++;
    benchmark::DoNotOptimize(rmc);
    benchmark::DoNotOptimize(gga);
}

void report(benchmark::State &state, int64_t sentences, int bytesPerBurst)
{
    state.SetItemsProcessed(sentences);
    state.SetBytesProcessed(int64_t(state.iterations()) * bytesPerBurst);
}

void BM_NmeaParseAndUnpack(benchmark::State &state)
{
    static const Burst burst;
    Tally tally;
    nmeaprs reader;
    nmea_init(&reader, unpack, &tally);
    nmea_set_flag(&reader, NMEA_FLAG_CHECKSUM);
    for (auto _ : state)
        nmea_parse(&reader, burst.bytes, burst.len);
    if (tally.unpacked != tally.sentences)
        state.SkipWithError("a sentence was not unpacked");
    report(state, tally.sentences, burst.len);
}
BENCHMARK(BM_NmeaParseAndUnpack);

void BM_NmeaChecksumOnly(benchmark::State &state)
{
    static const Burst burst;
    for (auto _ : state) {
        for (const char *s : SENTENCES)
            benchmark::DoNotOptimize(nmea_checksum(s));
    }
    report(state, int64_t(state.iterations()) * COUNT, burst.len);
}
BENCHMARK(BM_NmeaChecksumOnly);

void BM_NmeaGgaPack(benchmark::State &state)
{
    const nmea_gga gga = { 34045000, 283711399, 51391590, 1, 8, 101, 49960, 4800, 65535, 65535 };
    char text[NMEA_SENTENCE_SIZE];
    for (auto _ : state) {
        benchmark::DoNotOptimize(nmea_gga_pack(&gga, text));
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(int64_t(state.iterations()));
}
BENCHMARK(BM_NmeaGgaPack);

} // namespace
