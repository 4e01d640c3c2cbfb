// Writes seed inputs for the fuzz targets: valid messages of every kind the
// parsers meet, made with the project's own frame and record builders, so
// that fuzzing starts from inputs that reach deep into each parser.
//
//   make_corpus <corpus dir>      (fuzz/corpus in the source tree)
//
// Every seed is written to <corpus dir>/<target>/<name>; the values are
// fixed, so running it again rewrites the same bytes.
#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <QStringList>

#include <stdio.h>
#include <string.h>

#include "gateway_message.h"
#include "gatewaystream.h"
#include "nmea.h"
#include "sonar.h"
#include "spp_host_qt.h"
#include "telemetry.h"
#include "varda_extension.h"
#include "varda_extension_qt.h"
#include "varda_packets.h"
#include "varda_pp_host.h"
#include "varda_spp_host.h"

namespace
{

const char *const Vehicle = "RLHB-1";
const char *const VehicleImei = "300100000000000";

template <typename Record> QByteArray bytesOf(const Record &record)
{
    return QByteArray(reinterpret_cast<const char *>(&record), int(sizeof(Record)));
}

QByteArray concat(const QList<QByteArray> &parts)
{
    QByteArray all;
    for (const QByteArray &part : parts)
        all += part;
    return all;
}

// ---- radio link -------------------------------------------------------

QByteArray encodedCallsign(const char *text)
{
    uint8_t enc[VRD_CALLSIGN_ENC_LEN];
    vrd_ext_encode_callsign(enc, text);
    return bytesOf(enc);
}

// A chain built with the plain codec into a tx_pkt_t, as a station does.
class Chain
{
public:
    Chain()
    {
        tx_pkt_init(&m_pkt);
    }
    Chain &add(uint8_t type, const QByteArray &data)
    {
        vrd_ext_append_pkt(
            &m_pkt, type, reinterpret_cast<const uint8_t *>(data.constData()), uint16_t(data.size()));
        return *this;
    }
    Chain &source(const char *callsign, uint8_t seq)
    {
        varda_src_t src;
        vrd_ext_encode_callsign(src.call_ssid, callsign);
        src.sequence = seq;
        return add(VRD_EXT_SRC, bytesOf(src));
    }
    QByteArray bytes() const
    {
        return QByteArray(reinterpret_cast<const char *>(m_pkt.pl), m_pkt.pl_len);
    }

private:
    tx_pkt_t m_pkt;
};

QByteArray stationStatus()
{
    varda_stat_t stat;
    stat.hw_ver = (2 << 6) | 1;
    stat.serial = 1042;
    stat.sw_ver = (1 << 12) | (4 << 8) | 7;
    stat.uptime_s = 90061;
    stat.voltage = 123;
    stat.temp = -10;
    stat.signal = 140;
    stat.noise = 85;
    stat.cntr_rx_ok = 5120;
    stat.cntr_rx_fix = 31;
    stat.cntr_rx_err = 4;
    stat.cntr_tx = 980;
    return bytesOf(stat);
}

QByteArray beaconChain(const char *callsign, uint8_t seq)
{
    varda_simplehop_t hop;
    hop.reserved = 0;
    hop.hops_total = 3;
    hop.hops_remaining = 2;
    varda_toh_t toh;
    toh.toh_us = 1234567890;
    toh.toh_val = 1;
    return Chain()
        .source(callsign, seq)
        .add(VRD_EXT_STAT, stationStatus())
        .add(VRD_EXT_SIMPLEHOP, bytesOf(hop))
        .add(VRD_EXT_TOH, bytesOf(toh))
        .bytes();
}

QByteArray replyChain(const char *callsign, const char *text)
{
    return Chain()
        .source(callsign, 17)
        .add(VRD_EXT_DEST, encodedCallsign("BASE-1"))
        .add(VRD_EXT_TEXT, text)
        .bytes();
}

QByteArray commandChain(const char *destination, const char *command)
{
    return VardaExtension::packCommand(destination, "BASE-1", command);
}

// A vehicle payload inside an extension packet, as the panel sends it and
// as the vehicle's radio modem answers.
QByteArray vehicleChain(const QString &callsign, const QByteArray &vehicle, bool fromVehicle)
{
    VardaExtension ext;
    if (fromVehicle)
        ext.addSource(callsign, 42);
    else
        ext.addDestination(callsign);
    ext.addData(vehicle);
    return ext.getPacket();
}

QByteArray sppFrame(uint8_t type, const QByteArray &payload)
{
    vrd_spphdr_t hdr;
    varda_spp_fill_header(
        &hdr, type, reinterpret_cast<const uint8_t *>(payload.constData()), uint8_t(payload.size()));
    return bytesOf(hdr) + payload;
}

QByteArray ppFrame(const QByteArray &payload)
{
    vrd_pphdr_t hdr;
    varda_pp_fill_header(
        &hdr, reinterpret_cast<const uint8_t *>(payload.constData()), uint8_t(payload.size()));
    return bytesOf(hdr) + payload;
}

// spp_rxhdr_t in front of a packet heard over the air.
QByteArray received(const QByteArray &packet, uint8_t flags)
{
    spp_rxhdr_t hdr;
    hdr.timestamp_toh_us = 2718281828u % 3600000000u;
    hdr.noise = 88;
    hdr.rssi = 131;
    hdr.errors = 2;
    hdr.varda_flags = flags;
    return bytesOf(hdr) + packet;
}

// ---- vehicle ----------------------------------------------------------

pos_time_t position()
{
    pos_time_t p;
    p.lat = 603912345; // 60.39 N
    p.lon = -52345678; // 5.23 W
    p.time = 1700000000;
    return p;
}

QByteArray record(uint8_t type, const QByteArray &bytes)
{
    return char(type) + bytes;
}

// The link and power status that both housekeeping records carry.
template <typename Status> void fillStatus(Status *st, uint8_t lastSeq)
{
    memset(st, 0, sizeof *st);
    st->iridium_csq = 4;
    st->iridium_state = 9;
    st->ctd_state = 1;
    st->sonar_state = 2;
    st->pell_en = 1;
    st->iridium_en = 1;
    st->pell_rssi = 120;
    st->uptime = 86400;
    st->last_command_seq = lastSeq;
}

QByteArray housekeeping2Record()
{
    housekeeping2_t hk;
    fillStatus(&hk, 17);
    hk.ctd_log_ok = hk.sonar_ok = hk.o2_ok = hk.pco2_ok = hk.licor_ok = hk.pth_ok = hk.logging_ok = 1;
    hk.logged_kib = 123456;
    return record(MSG_HOUSEKEEPING2, bytesOf(hk));
}

QByteArray housekeepingRecord()
{
    housekeeping_t hk;
    fillStatus(&hk, 200);
    hk.pos_time = position();
    hk.ctd_samples = 2047;
    hk.sonar_samples = 310;
    return record(MSG_HOUSEKEEPING, bytesOf(hk));
}

QByteArray sensorRecords()
{
    ctd_sample_t ctd;
    memset(&ctd, 0, sizeof ctd);
    ctd.sample_n = 812;
    ctd.salinity = 3512;
    ctd.temperature = 28250;
    ctd.pressure = 10000;
    ctd.turbidity = 150;
    ctd.fluorescence = 75;
    ctd.sound_velocity = 19250;
    o2_sample o2 = { 912, 9850, 1825 };
    pco2_sample pco2;
    pco2.pco2 = 412;
    pco2.co2 = 1234;
    pco2.temperature = 1900;
    pco2.calphase = 31415;
    pco2.c1amp = 5120;
    pco2.c2amp = 4980;
    licor_sample light;
    light.light_sensitivity = -8388608;
    pth_sample pth = { 10132, -512, 4550 };
    return concat(
        { record(MSG_CTD, bytesOf(ctd)), record(MSG_O2, bytesOf(o2)), record(MSG_PCO2_V2, bytesOf(pco2)),
            record(MSG_LICOR_24, bytesOf(light)), record(MSG_PTH, bytesOf(pth)) });
}

QByteArray sonarRecords()
{
    sonar_report_t report;
    report.pos_time = position();
    report.command = SONAR_CMD_ACTIVE | SONAR_CMD_RUN | (1 << SONAR_CMD_KIND_SHIFT) | 3;
    report.retstate = 1;
    sonar_column_describer_t desc;
    desc.status = 1;
    desc.start_depth = 5;
    desc.range = 100;
    desc.avg_pings = 4;
    desc.layers = 8;
    sonar_column_8_t column = { { -90, -72, -60, -55, -61, -80, -100, -128 } };
    return concat({ record(MSG_SONAR_REPORT, bytesOf(report)), record(MSG_SONAR_WCOL_DESC, bytesOf(desc)),
        record(MSG_SONAR_WCOL, bytesOf(column)), record(MSG_SONAR_WCOL, bytesOf(column)) });
}

QByteArray pellTelemetry()
{
    return housekeeping2Record() + record(MSG_POSTIME, bytesOf(position())) + sensorRecords()
        + sonarRecords();
}

QByteArray iridiumTelemetry()
{
    return housekeeping2Record() + record(MSG_POSTIME, bytesOf(position()));
}

// Records the ground side steps over: ground-to-vehicle commands and the
// superseded pCO2 and light formats.
QByteArray steppedOverRecords()
{
    return concat({ record(MSG_PCO2, QByteArray(8, '\x11')), record(MSG_LICOR, QByteArray(2, '\x22')),
        record(MSG_COMMAND, QByteArray("\x05\x00\x01", 3)), housekeepingRecord() });
}

QByteArray shortCommand(uint8_t seq, uint8_t type, uint8_t arg)
{
    const command_t cmd = { seq, type, arg };
    return record(MSG_COMMAND, bytesOf(cmd));
}

QByteArray longCommand(uint8_t seq, uint8_t type, uint32_t arg)
{
    command_long_t cmd;
    cmd.cmd_seq = seq;
    cmd.type = type;
    cmd.arg = arg;
    return record(MSG_COMMAND_LONG, bytesOf(cmd));
}

uint32_t datastoreArgument(ds_action action)
{
    const datastore_action ds = { uint8_t(action), 0, 0 };
    uint32_t arg;
    memcpy(&arg, &ds, sizeof arg);
    return arg;
}

// Command blocks as the panel's command queue sends them.
QByteArray settingsBlock()
{
    return concat(
        { shortCommand(1, CMD_TELEMETRY_RATE_PELL, 70), shortCommand(2, CMD_TELEMETRY_RATE_IRIDIUM, 125),
            shortCommand(3, CMD_POWER, POWER_SONAR | 1), shortCommand(4, CMD_SONAR_WCOL_MAX, 12),
            longCommand(5, CMD_TELEMETRY_MESSAGES_PELL, TM_HOUSEKEEPING2 | TM_POSTIME | TM_CTD | TM_PTH),
            longCommand(6, CMD_TELEMETRY_MESSAGES_IRIDIUM, TM_HOUSEKEEPING | TM_SONAR_REPORT) });
}

QByteArray sonarBlock()
{
    const uint8_t run = SONAR_CMD_ACTIVE | SONAR_CMD_RUN | (2 << SONAR_CMD_KIND_SHIFT) | 1;
    return concat({ shortCommand(7, CMD_SONAR, run), shortCommand(8, CMD_SONAR_SCRIPT, 2),
        shortCommand(9, CMD_SONAR_AUTO, SONAR_CMD_ACTIVE | 4), shortCommand(10, CMD_SONAR_AUTO_RATE, 61),
        shortCommand(11, CMD_SONAR, SONAR_CMD_SLEEP), shortCommand(12, CMD_TELEMETRY_REQUEST, 0) });
}

QByteArray datastoreBlock()
{
    return concat({ longCommand(13, CMD_DATASTORE, datastoreArgument(DS_Open)),
        longCommand(14, CMD_DATASTORE, datastoreArgument(DS_Flush)),
        longCommand(15, CMD_DATASTORE, datastoreArgument(DS_ClearFlag)),
        longCommand(16, CMD_DATASTORE, datastoreArgument(DS_Close)),
        shortCommand(17, CMD_TELEMETRY_REQUEST, 1) });
}

// ---- gateway ----------------------------------------------------------

QByteArray toVehicle(const QByteArray &block, bool flush)
{
    const QByteArray content = QByteArray(VehicleImei) + char(flush ? 1 : 0) + block;
    return GatewayStream::frame(GATEWAY_SBD_TX_REQUEST, content);
}

QByteArray toRelayhub(const QByteArray &payload)
{
    QByteArray callsign(Vehicle);
    callsign.append(QByteArray(GATEWAY_CALLSIGN_FIELD - callsign.size(), '\0'));
    return GatewayStream::frame(GATEWAY_RAW_PAYLOAD, callsign + payload);
}

QByteArray fromVehicle(const QByteArray &payload)
{
    return GatewayStream::frame(GATEWAY_RAW_PAYLOAD, GatewayStream::vehiclePayload(VehicleImei, payload));
}

// ---- NMEA -------------------------------------------------------------

QByteArray sentence(const QStringList &fields)
{
    QList<QByteArray> latin;
    QVector<const char *> pointers;
    for (const QString &field : fields)
        latin << field.toLatin1();
    for (const QByteArray &field : qAsConst(latin))
        pointers << field.constData();
    char out[NMEA_SENTENCE_SIZE];
    if (nmea_parametric_pack(pointers.size(), pointers.constData(), out) != NMEA_OK)
        return QByteArray();
    return QByteArray(out);
}

QByteArray packedGga(int32_t latitude, int32_t longitude, int32_t altitude)
{
    nmea_gga gga;
    gga.utc = ((12 * 60 + 35) * 60 + 19) * 1000 + 250;
    gga.latitude = latitude;
    gga.longitude = longitude;
    gga.fix = 2;
    gga.sats = 11;
    gga.hdop = 85;
    gga.altitude = altitude;
    gga.geoid_sep = 4690;
    gga.dgps_age = 34;
    gga.dgps_id = 17;
    char out[NMEA_SENTENCE_SIZE];
    return nmea_gga_pack(&gga, out) == NMEA_OK ? QByteArray(out) : QByteArray();
}

// ---- writing ----------------------------------------------------------

class CorpusWriter
{
public:
    explicit CorpusWriter(const QString &root)
        : m_root(root)
    {
    }
    void add(const char *target, const char *name, const QByteArray &bytes)
    {
        if (bytes.isEmpty()) {
            fprintf(stderr, "%s/%s: builder refused the message\n", target, name);
            m_failed = true;
            return;
        }
        const QString dir = m_root + '/' + target;
        QDir().mkpath(dir);
        QFile file(dir + '/' + name);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
            fprintf(stderr, "%s: %s\n", qPrintable(file.fileName()), qPrintable(file.errorString()));
            m_failed = true;
        }
    }
    bool failed() const
    {
        return m_failed;
    }

private:
    QString m_root;
    bool m_failed = false;
};

void radioSeeds(CorpusWriter &out)
{
    const QByteArray beacon = beaconChain("ALPHA-1", 7);
    const QByteArray command = commandChain("ALPHA-1", "ping");
    const QByteArray reply = replyChain("ALPHA-1", "pong");
    const QByteArray telemetry = vehicleChain(Vehicle, pellTelemetry(), true);
    const QByteArray rxBeacon = sppFrame(SPP_TYPE_RX, received(beacon, VARDA_FLAG_EXTENSION));
    const QByteArray rxTelemetry = sppFrame(SPP_TYPE_RX, received(telemetry, VARDA_FLAG_EXTENSION));
    const QByteArray localBeacon
        = sppFrame(SPP_TYPE_LOCAL, char(VARDA_FLAG_EXTENSION) + beaconChain("BASE-1", 200));
    const QByteArray txCommand = SppHost::packTransmit(command, VARDA_FLAG_EXTENSION);
    const QByteArray txVehicle
        = SppHost::packTransmit(vehicleChain(Vehicle, sonarBlock(), false), VARDA_FLAG_EXTENSION);

    out.add("fuzz_spp", "rx_beacon", rxBeacon);
    out.add("fuzz_spp", "rx_vehicle_telemetry", rxTelemetry);
    out.add("fuzz_spp", "rx_raw_vehicle", sppFrame(SPP_TYPE_RX, received(iridiumTelemetry(), 0)));
    out.add("fuzz_spp", "local_beacon", localBeacon);
    out.add("fuzz_spp", "tx_ext_command", txCommand);
    out.add("fuzz_spp", "tx_vehicle_commands", txVehicle);
    out.add("fuzz_spp", "modem_command", SppHost::packCommand("status"));
    out.add("fuzz_spp", "session",
        concat({ localBeacon, txCommand, localBeacon,
            sppFrame(SPP_TYPE_RX, received(reply, VARDA_FLAG_EXTENSION)), QByteArray("\r\nnoise\r\n"),
            rxBeacon }));

    out.add("fuzz_pp", "beacon", ppFrame(beacon));
    out.add("fuzz_pp", "text", ppFrame("BASE-1 status ok"));
    out.add("fuzz_pp", "back_to_back", ppFrame(command) + ppFrame(reply) + ppFrame(telemetry));

    for (const char *target : { "fuzz_ext_codec", "fuzz_extension_decode" }) {
        out.add(target, "beacon", beacon);
        out.add(target, "ext_command", command);
        out.add(target, "reply", reply);
        out.add(target, "vehicle_data", telemetry);
    }
    out.add("fuzz_extension_decode", "beacon_then_reply", beacon + reply);

    for (const char *call : { "BASE-1", "ALPHA-1", "RLHB-1", "N0CALL", "ABCDEFG-63", "Z-9" })
        out.add("fuzz_callsign", qPrintable(QString("enc_%1").arg(call).toLower()), encodedCallsign(call));
    out.add("fuzz_callsign", "text_two_digit_ssid", "ALPHA-12");
}

void vehicleSeeds(CorpusWriter &out)
{
    const QByteArray pell = pellTelemetry();
    out.add("fuzz_glider_payload", "pell_telemetry", pell);
    out.add("fuzz_glider_payload", "iridium_telemetry", iridiumTelemetry());
    out.add("fuzz_glider_payload", "stepped_over", steppedOverRecords());
    out.add("fuzz_glider_payload", "sonar_reports", sonarRecords());
    out.add("fuzz_glider_payload", "radio_ext_telemetry",
        received(vehicleChain(Vehicle, pell, true), VARDA_FLAG_EXTENSION));
    out.add("fuzz_glider_payload", "radio_raw_telemetry", received(iridiumTelemetry(), 0));

    out.add("fuzz_sim_vehicle", "settings", settingsBlock());
    out.add("fuzz_sim_vehicle", "sonar_commands", sonarBlock());
    out.add("fuzz_sim_vehicle", "datastore_commands", datastoreBlock());
}

void gatewaySeeds(CorpusWriter &out)
{
    // The first byte picks how the framing target cuts the stream.
    out.add("fuzz_iridium_framing", "vehicle_payloads",
        char(0x35) + fromVehicle(iridiumTelemetry()) + fromVehicle(pellTelemetry()));
    out.add("fuzz_iridium_framing", "ignored_then_payload",
        char(0x02) + toVehicle(sonarBlock(), false) + fromVehicle(QByteArray())
            + fromVehicle(iridiumTelemetry()));

    out.add("fuzz_sim_gateway", "sbd_commands",
        toVehicle(settingsBlock(), false) + toVehicle(sonarBlock(), true));
    out.add("fuzz_sim_gateway", "relay_telemetry", toRelayhub(pellTelemetry()));
    out.add("fuzz_sim_gateway", "sbd_datastore", toVehicle(datastoreBlock(), true));
}

void modemClientSeeds(CorpusWriter &out)
{
    out.add("fuzz_sim_modem", "commands",
        concat({ SppHost::packCommand("stations"), SppHost::packCommand("call BASE-2"),
            SppHost::packCommand("beacon"), SppHost::packCommand("call") }));
    out.add("fuzz_sim_modem", "station_commands",
        SppHost::packTransmit(commandChain("ALPHA-1", "status"), VARDA_FLAG_EXTENSION)
            + SppHost::packTransmit(commandChain("BRAVO-2", "uptime"), VARDA_FLAG_EXTENSION));
    out.add("fuzz_sim_modem", "vehicle_commands",
        SppHost::packTransmit(vehicleChain(Vehicle, settingsBlock(), false), VARDA_FLAG_EXTENSION));
    // Heard over the air by the simulated station.
    out.add("fuzz_sim_modem", "heard_command", commandChain("ALPHA-1", "version"));
}

void nmeaSeeds(CorpusWriter &out)
{
    out.add("fuzz_nmea", "packed_gga",
        packedGga(288703800, -69100000, 54540) + packedGga(-203123400, 907234500, -1250));
    out.add("fuzz_nmea", "built_rmc",
        sentence({ "GPRMC", "081836.75", "A", "3751.65", "S", "14507.36", "E", "000.0", "360.0", "130998",
            "011.3", "E" })
            + sentence({ "GNRMC", "235959.000", "V", "", "", "", "", "", "", "311299", "", "", "N" }));
    out.add("fuzz_nmea", "built_gga",
        sentence({ "GPGGA", "123519", "4807.038", "N", "01131.000", "E", "1", "08", "0.9", "545.4", "M",
            "46.9", "M", "", "" }));
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2) {
        fprintf(stderr, "usage: %s <corpus dir>\n", argv[0]);
        return 2;
    }
    CorpusWriter out(QString::fromLocal8Bit(argv[1]));
    radioSeeds(out);
    vehicleSeeds(out);
    gatewaySeeds(out);
    modemClientSeeds(out);
    nmeaSeeds(out);
    return out.failed() ? 1 : 0;
}
