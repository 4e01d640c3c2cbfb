#include "simglider.h"

#include <QRandomGenerator>

#include <limits>

#include "simlog.h"
#include "sonar.h"

const char *const SimGlider::Callsign = "RLHB-1";
const char *const SimGlider::Imei = "300100000000000";

namespace
{
const quint8 DefaultPellRate = 10; // 10 s
const quint8 DefaultIridiumRate = 60; // 60 s
const quint8 DefaultSonarAuto = SONAR_CMD_ACTIVE | (1 << SONAR_CMD_KIND_SHIFT) | 2; // PING SEQUENCE 2
const quint8 DefaultSonarAutoRate = 45; // 45 s
const int PowerUpMs = 3000;
const int SonarRunMs = 8000;
const int PellColumns = 2;

// Start depth and range of the sonar scripts; script 0 follows the vehicle.
struct SonarScript {
    quint8 start;
    quint8 range;
};
const SonarScript SonarScripts[] = { { 0, 60 }, { 1, 60 }, { 5, 100 }, { 30, 200 } };

const quint32 DefaultPellMask = TM_HOUSEKEEPING2 | TM_POSTIME | TM_CTD | TM_O2 | TM_PCO2 | TM_LIGHT | TM_PTH
    | TM_SONAR_REPORT | TM_SONAR_WCOL;
const quint32 DefaultIridiumMask = TM_HOUSEKEEPING2 | TM_POSTIME;

enum PowerState : quint8 { Off = 0, On = 1, Pending = 2 };

template <typename Record> void appendRecord(QByteArray *payload, quint8 type, const Record &record)
{
    Q_ASSERT(SIZES[type] == sizeof(Record));
    payload->append(char(type));
    payload->append(reinterpret_cast<const char *>(&record), int(sizeof(Record)));
}

const char *linkName(SimGlider::Link link)
{
    return link == SimGlider::Link::Pell ? "Pell" : "Iridium";
}
}

SimGlider::SimGlider(QRandomGenerator *rng, QObject *parent)
    : QObject(parent)
    , m_rng(rng)
    , m_sensors(rng)
    , m_uptimeBase(rng->bounded(1000u, 90000u))
    , m_ctdPower(On)
    , m_sonarPower(On)
{
    m_pell.mask = DefaultPellMask;
    m_iridium.mask = DefaultIridiumMask;
    m_clock.start();
    connect(&m_pell.timer, &QTimer::timeout, this, [this] { sendTelemetry(Link::Pell); });
    connect(&m_iridium.timer, &QTimer::timeout, this, [this] { sendTelemetry(Link::Iridium); });
    connect(&m_sonarAutoTimer, &QTimer::timeout, this, [this] { runSonar(m_sonarAuto); });
}

void SimGlider::start(double rate)
{
    m_rate = rate;
    setRate(Link::Pell, DefaultPellRate);
    setRate(Link::Iridium, DefaultIridiumRate);
    m_sonarAuto = DefaultSonarAuto;
    startInterval(&m_sonarAutoTimer, DefaultSonarAutoRate);
}

void SimGlider::startInterval(QTimer *timer, quint8 code)
{
    const double ms = cmd_interval_to_msec(code) / m_rate;
    // Code 0 means never; 135 h slowed down by ten no longer fits a timer.
    if (ms > 0)
        timer->start(int(qBound(200.0, ms, double(std::numeric_limits<int>::max()))));
    else
        timer->stop();
}

SimGlider::LinkState &SimGlider::state(Link link)
{
    return link == Link::Pell ? m_pell : m_iridium;
}

quint32 SimGlider::uptime() const
{
    return m_uptimeBase + quint32(m_clock.elapsed() / 1000);
}

void SimGlider::receivePell(const QByteArray &block)
{
    if (m_pellOn)
        executeBlock(block, Link::Pell);
}

bool SimGlider::receiveSbd(const QByteArray &block)
{
    if (!m_iridiumOn)
        return false;
    executeBlock(block, Link::Iridium);
    return true;
}

void SimGlider::executeBlock(const QByteArray &block, Link link)
{
    QVector<VehicleCommand> commands;
    if (!CommandBlock::parse(block, &commands)) {
        simLog("glider",
            QString("dropped a malformed command block of %1 bytes from %2")
                .arg(block.size())
                .arg(linkName(link)));
        return;
    }
    for (const VehicleCommand &cmd : qAsConst(commands)) {
        simLog("glider",
            QString("%1 command seq %2 type %3 arg 0x%4")
                .arg(linkName(link))
                .arg(cmd.seq)
                .arg(cmd.type)
                .arg(cmd.arg, 0, 16));
        execute(cmd);
        m_lastSeq = cmd.seq;
    }
    // The report confirms the block on the link it came by.
    emitPayload(link, telemetry(link, state(link).mask | TM_HOUSEKEEPING2));
}

void SimGlider::execute(const VehicleCommand &cmd)
{
    const quint8 arg8 = quint8(cmd.arg);
    switch (cmd.type) {
    case CMD_TELEMETRY_REQUEST:
        QTimer::singleShot(0, this, [this, arg8] { sendTelemetry(arg8 ? Link::Iridium : Link::Pell); });
        break;
    case CMD_TELEMETRY_RATE_PELL:
        setRate(Link::Pell, arg8);
        break;
    case CMD_TELEMETRY_RATE_IRIDIUM:
        setRate(Link::Iridium, arg8);
        break;
    case CMD_POWER:
        setPower(arg8);
        break;
    case CMD_SONAR:
        runSonar(arg8);
        break;
    case CMD_TELEMETRY_MESSAGES_PELL:
        m_pell.mask = cmd.arg;
        break;
    case CMD_TELEMETRY_MESSAGES_IRIDIUM:
        m_iridium.mask = cmd.arg;
        break;
    case CMD_SONAR_SCRIPT:
        m_sonarScript = arg8;
        break;
    case CMD_DATASTORE:
        runDatastore(arg8);
        break;
    case CMD_SONAR_WCOL_MAX:
        m_wcolMax = qMin<quint8>(arg8, 20);
        break;
    case CMD_SONAR_AUTO:
        m_sonarAuto = arg8;
        break;
    case CMD_SONAR_AUTO_RATE:
        startInterval(&m_sonarAutoTimer, arg8);
        break;
    default:
        simLog("glider", QString("unknown command type %1").arg(cmd.type));
    }
}

void SimGlider::setRate(Link link, quint8 code)
{
    startInterval(&state(link).timer, code);
    simLog("glider", QString("%1 telemetry every %2 ms").arg(linkName(link)).arg(cmd_interval_to_msec(code)));
}

void SimGlider::setPower(quint8 arg)
{
    const bool on = arg & 1;
    switch (arg & 0xF0) {
    case POWER_CTD:
        m_ctdPower = on ? Pending : Off;
        break;
    case POWER_SONAR:
        m_sonarPower = on ? Pending : Off;
        break;
    case POWER_PELL:
        m_pellOn = on;
        break;
    case POWER_IRIDIUM:
        m_iridiumOn = on;
        break;
    default:
        simLog("glider", QString("no power channel 0x%1").arg(arg, 2, 16, QChar('0')));
        return;
    }
    // Instruments report PENDING until they have booted.
    QTimer::singleShot(int(PowerUpMs / m_rate), this, &SimGlider::settlePower);
}

void SimGlider::settlePower()
{
    if (m_ctdPower == Pending)
        m_ctdPower = On;
    if (m_sonarPower == Pending)
        m_sonarPower = On;
}

void SimGlider::runDatastore(quint8 action)
{
    switch (action) {
    case DS_Open:
        m_logging = true;
        break;
    case DS_Close:
        m_logging = false;
        break;
    case DS_ClearFlag:
        m_storeError = false;
        break;
    default: // DS_Flush: nothing is held back
        break;
    }
}

void SimGlider::runSonar(quint8 command)
{
    if (!(command & SONAR_CMD_ACTIVE)) {
        m_sonarCommand = SONAR_CMD_SLEEP;
        return;
    }
    if (m_sonarPower != On) {
        simLog("glider", "sonar is not powered");
        return;
    }
    m_sonarCommand = command;
    m_sonarReport = SonarStarted;
    QTimer::singleShot(int(SonarRunMs / m_rate), this, [this, command] {
        if (m_sonarCommand == command)
            m_sonarReport = SonarComplete;
    });
}

template <typename Status> void SimGlider::fillStatus(Status *st) const
{
    st->iridium_csq = m_iridiumOn ? 3 + m_rng->bounded(3) : 0;
    st->iridium_state = m_iridiumOn ? (uptime() / 5) % 13 : 14;
    st->ctd_state = m_ctdPower;
    st->sonar_state = m_sonarPower;
    st->pell_en = m_pellOn;
    st->iridium_en = m_iridiumOn;
    st->pell_rssi = quint8(200 - 84 + m_rng->bounded(-4, 5));
    st->uptime = uptime();
    st->last_command_seq = m_lastSeq;
}

housekeeping_t SimGlider::housekeeping() const
{
    housekeeping_t hk;
    hk.pos_time = m_sensors.position();
    hk.ctd_samples = m_ctdSamples & 0xFFF;
    hk.sonar_samples = m_sonarSamples & 0xFFF;
    fillStatus(&hk);
    return hk;
}

housekeeping2_t SimGlider::housekeeping2() const
{
    housekeeping2_t hk;
    fillStatus(&hk);
    hk.ctd_log_ok = m_logging && m_ctdPower == On;
    hk.sonar_ok = m_logging && m_sonarPower == On;
    hk.o2_ok = m_logging;
    hk.pco2_ok = m_logging;
    hk.licor_ok = m_logging;
    hk.pth_ok = m_logging;
    hk.logging_ok = m_logging && !m_storeError;
    hk.logged_kib = m_loggedKib & 0x1FFFFFF;
    return hk;
}

QByteArray SimGlider::telemetry(Link link, quint32 mask)
{
    QByteArray p;
    if (mask & TM_HOUSEKEEPING)
        appendRecord(&p, MSG_HOUSEKEEPING, housekeeping());
    if (mask & TM_HOUSEKEEPING2)
        appendRecord(&p, MSG_HOUSEKEEPING2, housekeeping2());
    if (mask & TM_POSTIME)
        appendRecord(&p, MSG_POSTIME, m_sensors.position());
    if ((mask & TM_CTD) && m_ctdPower == On) {
        appendRecord(&p, MSG_CTD, m_sensors.ctd(m_ctdSamples++));
    }
    if (mask & TM_O2)
        appendRecord(&p, MSG_O2, m_sensors.o2());
    if (mask & TM_PCO2)
        appendRecord(&p, MSG_PCO2_V2, m_sensors.pco2());
    if (mask & TM_LIGHT)
        appendRecord(&p, MSG_LICOR_24, m_sensors.light());
    if (mask & TM_PTH)
        appendRecord(&p, MSG_PTH, m_sensors.pth());
    if ((mask & TM_SONAR_REPORT) && m_sonarReport != SonarIdle)
        appendSonarReport(&p);
    if ((mask & TM_SONAR_WCOL) && m_sonarPower == On && (m_sonarCommand & SONAR_CMD_ACTIVE))
        appendColumns(&p, link == Link::Pell ? PellColumns : m_wcolMax);
    if (m_logging)
        m_loggedKib += 1 + p.size() / 64;
    return p;
}

void SimGlider::appendSonarReport(QByteArray *payload)
{
    sonar_report_t report;
    report.pos_time = m_sensors.position();
    report.command = m_sonarCommand;
    report.retstate = m_sonarReport == SonarStarted ? 0 : 1;
    appendRecord(payload, MSG_SONAR_REPORT, report);
    m_sonarReport = m_sonarReport == SonarStarted ? SonarRunning : SonarIdle;
}

void SimGlider::appendColumns(QByteArray *payload, int columns)
{
    if (columns <= 0)
        return;
    const SonarScript &script = SonarScripts[m_sonarScript < 4 ? m_sonarScript : 0];
    const quint8 start = script.start ? script.start : quint8(qMin(255.0, m_sensors.depth()));
    appendRecord(payload, MSG_SONAR_WCOL_DESC, m_sensors.columnDescriber(start, script.range));
    for (int i = 0; i < columns; i++)
        appendRecord(payload, MSG_SONAR_WCOL, m_sensors.column());
    m_sonarSamples += quint16(columns);
}

void SimGlider::sendTelemetry(Link link)
{
    const bool on = link == Link::Pell ? m_pellOn : m_iridiumOn;
    if (on)
        emitPayload(link, telemetry(link, state(link).mask));
}

void SimGlider::emitPayload(Link link, const QByteArray &payload)
{
    if (payload.isEmpty())
        return;
    if (link == Link::Pell)
        emit pellPayload(payload);
    else
        emit sbdPayload(payload);
}
