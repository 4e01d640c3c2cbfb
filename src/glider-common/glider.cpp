#include "glider.h"

#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QMap>
#include <QRandomGenerator>
#include <QTextDocument>
#include <QTime>

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#include "propertyrow.h"
#include "spp_host_qt.h"
#include "ui_glider.h"
#include "varda_extension.h"
#include "varda_extension_qt.h"
#include "varda_spp_payload.h"

namespace
{

// Log lines are rendered into a buffer of this size; longer ones are cut.
const int LOG_LINE_SIZE = 200;
// Paragraphs the log view keeps: a vehicle that reports for days must not
// fill the memory; the log files keep every line.
const int LOG_VIEW_LINES = 5000;
const char *const TIME_FORMAT = "hh:mm:ss dd.MM.yyyy";

struct Subpacket {
    uint8_t type;
    const uint8_t *record;
};

// Splits data into sub-packets (type byte + SIZES[type] bytes). Returns the
// number found, or -1 for an unknown type, a record running past the end or
// a payload of MAX_SUBPACKETS or more sub-packets.
int splitPayload(const uint8_t *data, uint16_t len, Subpacket *out)
{
    int count = 0;
    uint16_t remaining = len;
    while (count < Glider::MAX_SUBPACKETS && remaining != 0) {
        const uint8_t type = *data;
        if (type >= MSG_TYPES) {
            qDebug() << int(type);
            qDebug() << "Invalid type, not parsing";
            return -1;
        }
        const unsigned size = SIZES[type];
        if (remaining < size + 1) {
            qDebug() << "In packet" << count + 1 << "of type" << TYPE_STRINGS[type] << "size is" << size
                     << "but buffer space in only" << remaining;
            return -1;
        }
        qDebug() << "Subpacket" << count + 1 << "type" << TYPE_STRINGS[type] << "using" << size << "(+1) of"
                 << remaining << "bytes";
        out[count++] = { type, data + 1 };
        data += size + 1;
        remaining -= size + 1;
        if (count == Glider::MAX_SUBPACKETS) {
            qDebug() << "Reached max packets with remaining" << remaining << "bytes";
            return -1;
        }
    }
    return count;
}

QString fixed(double value, int decimals)
{
    return QString::number(value, 'f', decimals);
}

// printf's %g with its default precision.
QString significant(double value)
{
    return QString::number(value, 'g', 6);
}

double degrees(int32_t raw)
{
    return raw / 10000000.0;
}

// Position of text in a name table, 0 when it is none of the names.
template <size_t N> uint8_t nameIndex(const char *const (&names)[N], const QString &text)
{
    for (size_t i = 0; i < N; i++) {
        if (text == QLatin1String(names[i]))
            return uint8_t(i);
    }
    return 0;
}

// Whole seconds of an interval code, even for minute and hour codes.
QString intervalSeconds(int value)
{
    return QString::number(cmd_interval_to_msec(uint8_t(value)) / 1000);
}

} // namespace

Glider::Glider(QWidget *parent)
    : QWidget(parent)
    , m_parent(parent)
    , m_file_path("~/.varda-toolbox/")
    , ui(new Ui::GliderForm)
{
    ui->setupUi(this);
    clearModel();
    ui->telemetryTableView->setModel(&m_telemetry_model);
    ui->logView->document()->setMaximumBlockCount(LOG_VIEW_LINES);

    connectForm();

    // Seeded from the time of day so that each run numbers its commands
    // from a different start, 0..254.
    QRandomGenerator rng(quint32(QTime::currentTime().msecsSinceStartOfDay()));
    m_sent_ack = uint8_t(rng.generate() % 255);

    // A directory that cannot be made or entered only costs the log files.
    QDir dir(QDir::homePath() + "/.toolbox");
    if (!dir.exists())
        dir.mkpath(".");
    QDir::setCurrent(dir.path());

    flushCommandQueue();
}

Glider::~Glider()
{
    delete ui;
}

void Glider::connectForm()
{
    connect(ui->powerSet, &QPushButton::pressed, this, &Glider::setPower);
    connect(ui->setTelemetryMessages, &QPushButton::pressed, this, &Glider::setTelemetryMessages);
    connect(ui->telemetryRateSlider, &QSlider::sliderMoved, this, &Glider::telemetryRateMoved);
    connect(ui->telemetryRateSet, &QPushButton::pressed, this, &Glider::setTelemetryRate);
    connect(ui->sonarSet, &QPushButton::pressed, this, &Glider::sendSonarCommand);
    connect(ui->sonarSleep, &QPushButton::pressed, this, &Glider::sendSonarSleep);
    connect(ui->telemetryRequestButton, &QPushButton::pressed, this, &Glider::requestTelemetry);
    connect(ui->cardOpen, &QPushButton::pressed, this, &Glider::openDatastore);
    connect(ui->cardFlush, &QPushButton::pressed, this, &Glider::flushDatastore);
    connect(ui->cardClose, &QPushButton::pressed, this, &Glider::closeDatastore);
    connect(ui->cardClearErrorFlag, &QPushButton::pressed, this, &Glider::clearFlagDatastore);
    connect(ui->sonarWcolMaxSet, &QPushButton::pressed, this, &Glider::setMaxSonarWColumnCount);
    connect(ui->sonarScriptSet, &QPushButton::pressed, this, &Glider::setSonarScript);
    connect(ui->queueSendNow, &QPushButton::pressed, this, &Glider::startSendCommand);
    connect(ui->queueFlush, &QPushButton::pressed, this, &Glider::flushCommandQueue);
    connect(ui->sonarAutoCmdRate, &QSlider::sliderMoved, this, &Glider::sonarRateMoved);
    connect(ui->sonarAutoCmdRateSet, &QPushButton::pressed, this, &Glider::setSonarRate);
    connect(ui->sonarAutoCmdSet, &QPushButton::pressed, this, &Glider::setSonarAutoCmd);
    connect(ui->telemetryTableClear, &QPushButton::pressed, this, &Glider::clearModel);
}

// Packets shorter than their receive header are dropped.
void Glider::incomingPell(uint8_t type, const uint8_t *data, uint16_t length, const QString &source)
{
    Q_UNUSED(source);
    varda_spp_payload_t pkt;
    if (type != SPP_TYPE_RX || varda_spp_split_payload(type, data, length, &pkt) != VARDA_SPP_PAYLOAD_OK)
        return;
    if (!pkt.extension) {
        // Raw vehicle data straight from the modem: any sender is taken.
        handleData(pkt.payload, pkt.payload_len);
        return;
    }
    VardaExtension ext;
    ext.parse(pkt.payload, pkt.payload_len);
    if (!ext.hasExtensionType(VRD_EXT_SRC) || !ext.hasExtensionType(VRD_EXT_DATA)
        || ext.getSource() != ui->pellDestinationEntry->text())
        return;
    const QByteArray vehicle = ext.getData();
    handleData(reinterpret_cast<const uint8_t *>(vehicle.constData()), uint16_t(vehicle.size()));
    emit gliderPayloadReceived(ext.getSource(), vehicle);
}

void Glider::incomingSbd(const QString &imei, const QByteArray &payload)
{
    if (imei != ui->iridiumImei->text())
        return;
    qDebug() << "[Glider] Got valid Iridium IMEI";
    handleData(reinterpret_cast<const uint8_t *>(payload.constData()), uint16_t(payload.size()));
}

void Glider::sendData(const uint8_t *data, uint16_t length)
{
    sendDataOver(ui->activeLinkCombo->currentText(), data, length);
}

void Glider::sendDataOver(const QString &link, const uint8_t *data, uint16_t length)
{
    const QByteArray block(reinterpret_cast<const char *>(data), length);
    if (link == "Pell") {
        if (length > MAX_PELL_BLOCK) {
            fputs("Pell packet oversized\r\n", stdout);
            fflush(stdout);
            return;
        }
        VardaExtension ext;
        ext.addDestination(ui->pellDestinationEntry->displayText());
        ext.addData(block);
        emit outgoingPell(SppHost::packTransmit(ext.getPacket(), VARDA_FLAG_EXTENSION));
    } else if (link == "Iridium") {
        emit outgoingSbd(QString::fromLatin1(ui->iridiumImei->text().toLatin1()), block);
    }
}

void Glider::clearModel()
{
    m_telemetry_model.clear();
    m_telemetry_model.setHorizontalHeaderItem(0, new QStandardItem("Property"));
    m_telemetry_model.setHorizontalHeaderItem(1, new QStandardItem("Value"));
}

void Glider::appendRow(const QString &property, const QString &value)
{
    setPropertyRow(m_telemetry_model.invisibleRootItem(), property, value);
}

void Glider::appendLog(const char *line, bool event)
{
    m_log.setFileName(event ? "event.txt" : "telemetry.txt");
    if (m_log.open(QIODevice::WriteOnly | QIODevice::Append)) {
        m_log.write(line);
        m_log.write("\r\n");
        m_log.close();
    } else {
        qDebug() << "Failed to open log";
    }
    if (!ui->ignoreHousekeepingCheck->isChecked() || event)
        ui->logView->append(QString::fromUtf8(line));
}

void Glider::logLine(bool event, const char *format, ...)
{
    char line[LOG_LINE_SIZE];
    va_list args;
    va_start(args, format);
    vsnprintf(line, sizeof(line), format, args);
    va_end(args);
    appendLog(line, event);
}

void Glider::handleData(const uint8_t *data, uint16_t len)
{
    Subpacket packets[MAX_SUBPACKETS];
    const int count = splitPayload(data, len, packets);
    if (count < 0)
        return;
    qDebug() << "Got" << count << "packets";
    ui->telemetryTableView->setUpdatesEnabled(false);
    for (int i = 0; i < count; i++)
        dispatch(packets[i].type, packets[i].record);
    ui->telemetryTableView->setUpdatesEnabled(true);
}

void Glider::dispatch(uint8_t type, const uint8_t *record)
{
    switch (type) {
    case MSG_DATA:
        break;
    case MSG_HOUSEKEEPING:
        handleHousekeeping(reinterpret_cast<const housekeeping_t *>(record));
        break;
    case MSG_CTD:
        handleCtd(reinterpret_cast<const ctd_sample_t *>(record));
        break;
    case MSG_SONAR_REPORT:
        handleSonarReport(reinterpret_cast<const sonar_report_t *>(record));
        break;
    case MSG_SONAR_WCOL:
        handleSonarColumn8(reinterpret_cast<const sonar_column *>(record));
        break;
    case MSG_SONAR_WCOL_DESC:
        handleSonarColumnDescriber(reinterpret_cast<const sonar_column_describer *>(record));
        break;
    case MSG_HOUSEKEEPING2:
        handleHousekeeping2(reinterpret_cast<const housekeeping2 *>(record));
        break;
    case MSG_O2:
        handleO2(reinterpret_cast<const o2_sample *>(record));
        break;
    case MSG_PTH:
        handlePth(reinterpret_cast<const pth_sample *>(record));
        break;
    case MSG_POSTIME:
        handlePosTime(reinterpret_cast<const pos_time_t *>(record));
        break;
    case MSG_LICOR_24:
        handleLicor(reinterpret_cast<const licor_sample *>(record));
        break;
    case MSG_PCO2_V2:
        handlePco2(reinterpret_cast<const pco2_sample *>(record));
        break;
    default:
        // Ground-to-vehicle commands, superseded records, codes without one.
        qDebug() << "Unknown type";
        break;
    }
}

// Green once the vehicle reports the last command sent as executed; sending
// the next command turns the label red again.
void Glider::confirmCommand(uint8_t last_command_seq)
{
    if (last_command_seq == m_sent_ack)
        setAckColour(Qt::darkGreen);
}

void Glider::setAckColour(const QColor &colour)
{
    QPalette palette = ui->ackLabel->palette();
    palette.setColor(ui->ackLabel->foregroundRole(), colour);
    ui->ackLabel->setPalette(palette);
}

void Glider::showLinkStatus(
    unsigned csq, unsigned state, unsigned ctd, unsigned sonar, unsigned pell, unsigned iridium)
{
    appendRow("Iridium CSQ", QString::number(csq));
    appendRow("Iridium state", QString::number(state));
    appendRow("CTD power", STR_POWER_STATES[ctd]);
    appendRow("Sonar power", STR_POWER_STATES[sonar]);
    appendRow("Pell power", STR_POWER_STATES[pell]);
    appendRow("Iridium power", STR_POWER_STATES[iridium]);
}

void Glider::showPosTime(const pos_time_t *pos, Qt::TimeSpec spec)
{
    appendRow("Lat", fixed(degrees(pos->lat), 7));
    appendRow("Lon", fixed(degrees(pos->lon), 7));
    appendRow("Time", QDateTime::fromSecsSinceEpoch(pos->time, spec).toString(TIME_FORMAT));
}

void Glider::handleHousekeeping(const housekeeping_t *hk)
{
    confirmCommand(hk->last_command_seq);
    appendRow("CTD samples", QString::number(unsigned(hk->ctd_samples)));
    appendRow("Sonar samples", QString::number(unsigned(hk->sonar_samples)));
    showLinkStatus(
        hk->iridium_csq, hk->iridium_state, hk->ctd_state, hk->sonar_state, hk->pell_en, hk->iridium_en);
    appendRow("Pell RSSI", QString::number(vrd_dbm(hk->pell_rssi)));
    appendRow("Uptime", QString::number(hk->uptime));
    showPosTime(&hk->pos_time, Qt::LocalTime);
    appendRow("Last cmd. seq.", QString::number(hk->last_command_seq));

    logLine(false, "housekeeping;%u;%u;%u;%u;%s;%s;%s;%s;%i;%u;%.7f;%.7f;%u;%u", unsigned(hk->ctd_samples),
        unsigned(hk->sonar_samples), unsigned(hk->iridium_csq), unsigned(hk->iridium_state),
        STR_POWER_STATES[hk->ctd_state], STR_POWER_STATES[hk->sonar_state], STR_POWER_STATES[hk->pell_en],
        STR_POWER_STATES[hk->iridium_en], vrd_dbm(hk->pell_rssi), unsigned(hk->uptime),
        degrees(hk->pos_time.lat), degrees(hk->pos_time.lon), unsigned(hk->pos_time.time),
        unsigned(hk->last_command_seq));
}

void Glider::handleHousekeeping2(const housekeeping2 *hk)
{
    confirmCommand(hk->last_command_seq);
    showLinkStatus(
        hk->iridium_csq, hk->iridium_state, hk->ctd_state, hk->sonar_state, hk->pell_en, hk->iridium_en);
    appendRow("CTD log OK", QString::number(unsigned(hk->ctd_log_ok)));
    appendRow("Sonar log OK", QString::number(unsigned(hk->sonar_ok)));
    appendRow("O2 log OK", QString::number(unsigned(hk->o2_ok)));
    appendRow("pCO2 log OK", QString::number(unsigned(hk->pco2_ok)));
    appendRow("Licor log OK", QString::number(unsigned(hk->licor_ok)));
    appendRow("PTH log OK", QString::number(unsigned(hk->pth_ok)));
    appendRow("Logging OK", QString::number(unsigned(hk->logging_ok)));
    appendRow("Log size (KiB)", QString::number(unsigned(hk->logged_kib)));
    appendRow("Pell RSSI", QString::number(vrd_dbm(hk->pell_rssi)));
    appendRow("Uptime", QString::number(hk->uptime));
    appendRow("Last cmd. seq.", QString::number(hk->last_command_seq));

    logLine(false, "housekeeping2;%u;%u;%s;%s;%s;%s;%u;%u;%u;%u;%u;%u;%u;%u;%i;%u;%u",
        unsigned(hk->iridium_csq), unsigned(hk->iridium_state), STR_POWER_STATES[hk->ctd_state],
        STR_POWER_STATES[hk->sonar_state], STR_POWER_STATES[hk->pell_en], STR_POWER_STATES[hk->iridium_en],
        unsigned(hk->ctd_log_ok), unsigned(hk->sonar_ok), unsigned(hk->o2_ok), unsigned(hk->pco2_ok),
        unsigned(hk->licor_ok), unsigned(hk->pth_ok), unsigned(hk->logging_ok), unsigned(hk->logged_kib),
        vrd_dbm(hk->pell_rssi), unsigned(hk->uptime), unsigned(hk->last_command_seq));
}

void Glider::handleCtd(const ctd_sample_t *ctd)
{
    const double salinity = ctd->salinity / 100.0;
    const double temperature = ctd->temperature / 1000.0 - 20.0;
    const double pressure = ctd->pressure / 100.0;
    const double turbidity = ctd->turbidity / 100.0;
    const double fluorescence = ctd->fluorescence / 100.0;
    const double sound_velocity = ctd->sound_velocity / 100.0 + 1300.0;

    appendRow("CTD sample #", QString::number(ctd->sample_n));
    appendRow("CTD salinity", fixed(salinity, 2));
    appendRow("CTD temperature", fixed(temperature, 3));
    appendRow("CTD pressure", fixed(pressure, 2));
    appendRow("CTD turbidity", significant(turbidity));
    appendRow("CTD fluorescence", significant(fluorescence));
    appendRow("CTD sound velocity", significant(sound_velocity));

    logLine(false, "ctd;%u;%.2f;%.3f;%.2f;%.2f;%.2f;%.2f", unsigned(ctd->sample_n), salinity, temperature,
        pressure, turbidity, fluorescence, sound_velocity);
}

void Glider::handleSonarReport(const sonar_report_t *report)
{
    if (report->retstate >= 2)
        return;
    char command[LOG_LINE_SIZE] = "";
    sonar_print_command(command, sizeof(command), report->command);
    logLine(true, "sonar_report;%s;%s;%.7f;%.7f;%u", command, SONAR_STR_RETSTATE[report->retstate],
        degrees(report->pos_time.lat), degrees(report->pos_time.lon), unsigned(report->pos_time.time));
}

void Glider::handleSonarColumn8(const sonar_column *column)
{
    const int8_t *s = column->signal;
    logLine(true, "sonar_wcol8;%i;%i;%i;%i;%i;%i;%i;%i", s[0], s[1], s[2], s[3], s[4], s[5], s[6], s[7]);
}

void Glider::handleSonarColumnDescriber(const sonar_column_describer *desc)
{
    logLine(true, "sonar_desc;%i;%i;%i;%i;%i", desc->status, desc->start_depth, desc->range, desc->avg_pings,
        desc->layers);
}

void Glider::handlePosTime(const pos_time_t *pos)
{
    showPosTime(pos, Qt::UTC);
    logLine(false, "postime;%.7f;%.7f;%u", degrees(pos->lat), degrees(pos->lon), unsigned(pos->time));
}

void Glider::handleO2(const o2_sample *o2)
{
    const double concentration = o2->o2Concentration / 100.0;
    const double saturation = o2->airSaturation / 100.0;
    const double temperature = o2->temperature / 100.0 - 10.0;
    appendRow("O2 concentration", fixed(concentration, 2));
    appendRow("O2 air saturation", fixed(saturation, 2));
    appendRow("O2 temperature", fixed(temperature, 2));
    logLine(false, "o2;%.2f;%.2f;%.2f", concentration, saturation, temperature);
}

void Glider::handlePco2(const pco2_sample *pco2)
{
    const double co2 = pco2->co2 / 100.0;
    const double temperature = pco2->temperature / 100.0 - 10.0;
    appendRow("CO2 pressure (uatm)", significant(pco2->pco2));
    appendRow("CO2 (mg/l)", fixed(co2, 2));
    appendRow("CO2 temperature", fixed(temperature, 2));
    appendRow("CO2 CalPhase (deg)", fixed(pco2->calphase / 1000.0, 3));
    appendRow("CO2 C1Amp (mV)", fixed(pco2->c1amp / 10.0, 1));
    appendRow("CO2 C2Amp (mV)", fixed(pco2->c2amp / 10.0, 1));
    logLine(false, "pco2;%u;%.2f;%.2f", unsigned(pco2->pco2), co2, temperature);
}

// The table and the log scale the reading differently, on purpose.
void Glider::handleLicor(const licor_sample *light)
{
    const int32_t raw = light->light_sensitivity;
    appendRow("Light (µV)", fixed(raw / 524.288, 1));
    logLine(false, "light;%.1f", raw / 4.0);
}

void Glider::handlePth(const pth_sample *pth)
{
    const double pressure = pth->pressure / 10.0;
    const double temperature = pth->temperature / 100.0;
    const double humidity = pth->humidity / 100.0;
    appendRow("PTH pressure", fixed(pressure, 1));
    appendRow("PTH temperature", fixed(temperature, 2));
    appendRow("PTH humidity", fixed(humidity, 2));
    logLine(false, "pth;%.1f;%.2f;%.2f", pressure, temperature, humidity);
}

// The value for the link in "Select link:" (not the active link); 0 for a
// text that names neither.
uint8_t Glider::perLink(uint8_t pell, uint8_t iridium) const
{
    const QString link = ui->linkConfigSelect->currentText();
    return link == "Pell" ? pell : link == "Iridium" ? iridium : 0;
}

void Glider::setPower()
{
    static const QMap<QString, uint8_t> channels { { "CTD", POWER_CTD }, { "Sonar", POWER_SONAR },
        { "Pell", POWER_PELL }, { "Iridium", POWER_IRIDIUM } };
    const uint8_t on = ui->powerState->isChecked() ? 1 : 0;
    sendShort(CMD_POWER, uint8_t(channels.value(ui->powerChannel->currentText(), 0) | on));
}

void Glider::requestTelemetry()
{
    sendShort(CMD_TELEMETRY_REQUEST, perLink(0, 1));
}

void Glider::setTelemetryRate()
{
    sendShort(perLink(CMD_TELEMETRY_RATE_PELL, CMD_TELEMETRY_RATE_IRIDIUM),
        uint8_t(ui->telemetryRateSlider->value()));
}

void Glider::setTelemetryMessages()
{
    const QPair<const QCheckBox *, uint32_t> boxes[] = {
        { ui->checkMsgHousekeeping, TM_HOUSEKEEPING },
        { ui->checkMsgCtd, TM_CTD },
        { ui->checkMsgSonarReport, TM_SONAR_REPORT },
        { ui->checkMsgHk2, TM_HOUSEKEEPING2 },
        { ui->checkMsgO2, TM_O2 },
        { ui->checkMsgPco2, TM_PCO2 },
        { ui->checkMsgLight, TM_LIGHT },
        { ui->checkMsgPth, TM_PTH },
        { ui->checkMsgSonarWcol, TM_SONAR_WCOL },
        { ui->checkMsgPostime, TM_POSTIME },
    };
    uint32_t mask = 0;
    for (const auto &box : boxes) {
        if (box.first->checkState() != Qt::Unchecked)
            mask |= box.second;
    }
    sendLong(perLink(CMD_TELEMETRY_MESSAGES_PELL, CMD_TELEMETRY_MESSAGES_IRIDIUM), mask);
}

void Glider::telemetryRateMoved(int value)
{
    ui->telemetryRateDisplay->setText(intervalSeconds(value) + " s");
}

void Glider::sonarRateMoved(int value)
{
    ui->sonarAutoCmdRateSet->setText("Set rate (" + intervalSeconds(value) + " s)");
}

uint8_t Glider::sonarCommandByte() const
{
    const uint8_t mode = nameIndex(STR_PING_RUN, ui->sonarPing->currentText());
    const uint8_t kind = nameIndex(STR_STEP_SEQ_ENS, ui->sonarStep->currentText());
    const uint8_t program = uint8_t(ui->sonarProgram->value()) & SONAR_CMD_PROGRAM_MASK;
    return uint8_t(SONAR_CMD_ACTIVE | (mode ? SONAR_CMD_RUN : 0) | kind << SONAR_CMD_KIND_SHIFT | program);
}

void Glider::sendSonarCommand()
{
    const uint8_t command = sonarCommandByte();
    qDebug() << "Sending sonar command" << command;
    sendShort(CMD_SONAR, command);
}

void Glider::sendSonarSleep()
{
    sendShort(CMD_SONAR, SONAR_CMD_SLEEP);
}

void Glider::setSonarAutoCmd()
{
    sendShort(CMD_SONAR_AUTO, sonarCommandByte());
}

void Glider::setSonarRate()
{
    sendShort(CMD_SONAR_AUTO_RATE, uint8_t(ui->sonarAutoCmdRate->value()));
}

void Glider::setSonarScript()
{
    const int index = ui->sonarScriptSelect->currentIndex();
    qDebug() << "Setting sonar script index" << index;
    sendShort(CMD_SONAR_SCRIPT, uint8_t(index));
}

void Glider::setMaxSonarWColumnCount()
{
    sendShort(CMD_SONAR_WCOL_MAX, uint8_t(ui->sonarWcolMaxNumber->value()));
}

void Glider::openDatastore()
{
    sendDatastore(DS_Open);
}

void Glider::flushDatastore()
{
    sendDatastore(DS_Flush);
}

void Glider::closeDatastore()
{
    sendDatastore(DS_Close);
}

void Glider::clearFlagDatastore()
{
    sendDatastore(DS_ClearFlag);
}

void Glider::sendDatastore(ds_action action)
{
    const datastore_action ds = { uint8_t(action), 0, 0 };
    uint32_t arg;
    static_assert(sizeof(ds) == sizeof(arg), "datastore_action fills the argument");
    memcpy(&arg, &ds, sizeof(arg));
    sendLong(CMD_DATASTORE, arg);
}

void Glider::sendShort(uint8_t type, uint8_t arg)
{
    command_t cmd = { 0, type, arg };
    sendCommand(&cmd);
}

void Glider::sendLong(uint8_t type, uint32_t arg)
{
    command_long_t cmd = { 0, type, arg };
    sendCommand(&cmd);
}

uint8_t Glider::nextSequence()
{
    return ++m_sent_ack; // 255 wraps to 0
}

void Glider::sendCommand(command_t *cmd)
{
    cmd->cmd_seq = nextSequence();
    enqueue(MSG_COMMAND, cmd, sizeof(*cmd));
}

void Glider::sendCommand(command_long_t *cmd)
{
    cmd->cmd_seq = nextSequence();
    enqueue(MSG_COMMAND_LONG, cmd, sizeof(*cmd));
}

void Glider::enqueue(uint8_t msg_type, const void *record, int size)
{
    m_cmd_queue_size++;
    m_cmd_queue.append(char(msg_type));
    m_cmd_queue.append(static_cast<const char *>(record), size);
    ui->queueItemsLabel->setText(QString::number(m_cmd_queue_size));
    if (!ui->queueEnabled->isChecked())
        startSendCommand();
}

// Red until a housekeeping record reports this number as executed.
void Glider::startSendCommand()
{
    ui->ackLabel->setText(QString::number(m_sent_ack));
    setAckColour(Qt::red);
    qDebug() << "Sent" << m_cmd_queue.toHex();
    sendData(reinterpret_cast<const uint8_t *>(m_cmd_queue.constData()), uint16_t(m_cmd_queue.size()));
    flushCommandQueue();
}

void Glider::flushCommandQueue()
{
    m_cmd_queue_size = 0;
    m_cmd_queue.clear();
    ui->queueItemsLabel->setText("0");
}
