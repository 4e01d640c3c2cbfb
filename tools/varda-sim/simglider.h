#ifndef SIMGLIDER_H
#define SIMGLIDER_H

#include <QByteArray>
#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

#include "commandblock.h"
#include "glidersensors.h"
#include "telemetry.h"

class QRandomGenerator;

// The vehicle: sends telemetry over its radio modem ("Pell") and over
// Iridium SBD at the rates and with the messages it was told, runs the
// command blocks it receives on either link and answers each block with a
// housekeeping report on the same link, carrying the block's last sequence
// number.
class SimGlider : public QObject
{
    Q_OBJECT
public:
    enum class Link { Pell, Iridium };

    static const char *const Callsign;
    static const char *const Imei;

    explicit SimGlider(QRandomGenerator *rng, QObject *parent = nullptr);

    // Starts the telemetry timers; rate multiplies how often.
    void start(double rate);
    // One telemetry payload for a link with the messages of mask
    // (telemetry_mask_t bits).
    QByteArray telemetry(Link link, quint32 mask);

public slots:
    // A command block that arrived by radio; ignored while the radio is off.
    void receivePell(const QByteArray &block);
    // A mobile-terminated SBD message; false while the Iridium modem is off,
    // so that the gateway keeps it for later.
    bool receiveSbd(const QByteArray &block);
    void sendTelemetry(SimGlider::Link link);

signals:
    void pellPayload(const QByteArray &payload);
    void sbdPayload(const QByteArray &payload);

private:
    enum SonarReport { SonarIdle, SonarStarted, SonarRunning, SonarComplete };

    struct LinkState {
        quint32 mask;
        QTimer timer;
    };

    void executeBlock(const QByteArray &block, Link link);
    void execute(const VehicleCommand &cmd);
    void setRate(Link link, quint8 code);
    void startInterval(QTimer *timer, quint8 code);
    void setPower(quint8 arg);
    void settlePower();
    void runDatastore(quint8 action);
    void runSonar(quint8 command);
    LinkState &state(Link link);
    quint32 uptime() const;
    template <typename Status> void fillStatus(Status *st) const;
    housekeeping_t housekeeping() const;
    housekeeping2_t housekeeping2() const;
    void appendSonarReport(QByteArray *payload);
    void appendColumns(QByteArray *payload, int columns);
    void emitPayload(Link link, const QByteArray &payload);

    QRandomGenerator *m_rng;
    GliderSensors m_sensors;
    QElapsedTimer m_clock;
    quint32 m_uptimeBase;
    double m_rate = 1.0;
    LinkState m_pell;
    LinkState m_iridium;
    quint8 m_lastSeq = 0;
    quint8 m_ctdPower;
    quint8 m_sonarPower;
    bool m_pellOn = true;
    bool m_iridiumOn = true;
    bool m_logging = true;
    bool m_storeError = false;
    quint32 m_loggedKib = 0;
    quint16 m_ctdSamples = 0;
    quint16 m_sonarSamples = 0;
    quint8 m_sonarCommand = 0;
    quint8 m_sonarAuto = 0;
    quint8 m_sonarScript = 0;
    quint8 m_wcolMax = 10;
    SonarReport m_sonarReport = SonarIdle;
    QTimer m_sonarAutoTimer;
};

#endif
