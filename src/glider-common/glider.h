#ifndef GLIDER_H
#define GLIDER_H

#include <QByteArray>
#include <QFile>
#include <QStandardItemModel>
#include <QString>
#include <QWidget>

#include <stdint.h>

#include "sonar.h"
#include "telemetry.h"

namespace Ui
{
class GliderForm;
}

// Vehicle panel: shows and logs the vehicle's telemetry and builds its
// commands. A host wires it to the radio link (incomingPell, outgoingPell)
// and to the satellite gateway (incomingSbd, outgoingSbd).
//
// Telemetry lines are appended to "telemetry.txt" and "event.txt" in
// ~/.toolbox, which the constructor makes the current directory.
class Glider : public QWidget
{
    Q_OBJECT
public:
    // Sub-packets kept per payload; reaching it drops the payload.
    static const int MAX_SUBPACKETS = 100;
    // Longest command block that fits an extension packet on the radio link.
    static const int MAX_PELL_BLOCK = 208;

    explicit Glider(QWidget *parent = nullptr);
    ~Glider() override;

    // Sets the value of the row named property, appending the row if new.
    void appendRow(const QString &property, const QString &value);
    // Appends line + CRLF to event.txt or telemetry.txt and shows it in the
    // log view unless the view hides telemetry lines.
    void appendLog(const char *line, bool event);

    // Sends a command block over the link chosen in "Active link:".
    void sendData(const uint8_t *data, uint16_t length);
    // Sends a command block over the named link ("Pell" or "Iridium"),
    // whatever "Active link:" says; for a host that re-routes a block.
    void sendDataOver(const QString &link, const uint8_t *data, uint16_t length);
    // Numbers a command (the next sequence number is written into it) and
    // queues it; sends the queue at once unless queueing is on.
    void sendCommand(command_t *cmd);
    void sendCommand(command_long_t *cmd);

signals:
    void outgoingPell(QByteArray frame);
    void outgoingSbd(QString imei, QByteArray payload);
    void gliderPayloadReceived(const QString &callsign, const QByteArray &payload);

public slots:
    // One SPP packet as SppHost::newPacket delivers it; only received radio
    // packets (type 0) are looked at.
    void incomingPell(uint8_t type, const uint8_t *data, uint16_t length, const QString &source);
    // A mobile-originated payload from the satellite gateway.
    void incomingSbd(const QString &imei, const QByteArray &payload);

    void clearModel();

    // Splits a vehicle payload into sub-packets and, only if the whole
    // payload is well formed, hands each record to its handler.
    void handleData(const uint8_t *data, uint16_t len);

    // Record handlers; each pointer refers to a record inside a payload.
    void handleHousekeeping(const housekeeping_t *hk);
    void handleHousekeeping2(const housekeeping2 *hk);
    void handleCtd(const ctd_sample_t *ctd);
    void handleSonarReport(const sonar_report_t *report);
    void handleSonarColumn8(const sonar_column *column);
    void handleSonarColumnDescriber(const sonar_column_describer *desc);
    void handlePosTime(const pos_time_t *pos);
    void handleO2(const o2_sample *o2);
    void handlePco2(const pco2_sample *pco2);
    void handleLicor(const licor_sample *light);
    void handlePth(const pth_sample *pth);

    // Command builders, one command each.
    void setPower();
    void requestTelemetry();
    void setTelemetryMessages();
    void setTelemetryRate();
    void sendSonarCommand();
    void sendSonarSleep();
    void setSonarScript();
    void setSonarAutoCmd();
    void setSonarRate();
    void setMaxSonarWColumnCount();
    void openDatastore();
    void flushDatastore();
    void closeDatastore();
    void clearFlagDatastore();

    // Slider feedback, in whole seconds of the interval code.
    void telemetryRateMoved(int value);
    void sonarRateMoved(int value);

    void startSendCommand();
    void flushCommandQueue();

private:
    void connectForm();
    void sendShort(uint8_t type, uint8_t arg);
    void sendLong(uint8_t type, uint32_t arg);
    void sendDatastore(ds_action action);
    void enqueue(uint8_t msg_type, const void *record, int size);
    uint8_t nextSequence();
    uint8_t perLink(uint8_t pell, uint8_t iridium) const;
    uint8_t sonarCommandByte() const;
    void setAckColour(const QColor &colour);
    void logLine(bool event, const char *format, ...) __attribute__((format(printf, 3, 4)));
    void dispatch(uint8_t type, const uint8_t *record);
    void confirmCommand(uint8_t last_command_seq);
    void showLinkStatus(
        unsigned csq, unsigned state, unsigned ctd, unsigned sonar, unsigned pell, unsigned iridium);
    void showPosTime(const pos_time_t *pos, Qt::TimeSpec spec);

    QWidget *m_parent; // kept on purpose: stored, never read
    QStandardItemModel m_telemetry_model;
    [[maybe_unused]] uint16_t m_seq_ack = 0; // kept on purpose: no command echo bookkeeping yet
    [[maybe_unused]] uint16_t m_seq_ack_request_start = 0; // kept on purpose, as m_seq_ack
    QFile m_sensorlog; // kept on purpose: never opened, every line goes through m_log
    QFile m_poslog; // kept on purpose: never opened, as m_sensorlog
    QFile m_log;
    uint8_t m_sent_ack = 0;
    QString m_file_path; // kept on purpose: the logs go to ~/.toolbox, the current directory
    int m_cmd_queue_size = 0;
    QByteArray m_cmd_queue;
    Ui::GliderForm *ui;
};

#endif
