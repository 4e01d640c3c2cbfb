#ifndef GATEWAYSETTINGS_H
#define GATEWAYSETTINGS_H

#include <QByteArray>
#include <QElapsedTimer>
#include <QGroupBox>
#include <QString>
#include <QTimer>

#include "gatewaywatchdog.h"

class IridiumTcp;
class LinkStatus;
class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class Reconnector;

// The Iridium gateway settings the radio tool leaves out: host, Connect,
// "Flush queue" and whether vehicle data heard on the radio goes on to
// relayhub, with the link's state in words. Owns the gateway client, which
// drives these widgets, and watches it: a client wedged by a corrupt
// length is dropped and a fresh one connected. The station talks to the
// gateway through this group only, never through a client it kept.
class GatewaySettings : public QGroupBox
{
    Q_OBJECT
public:
    explicit GatewaySettings(QWidget *parent = nullptr);

    // The client of the moment; another one after a stall.
    IridiumTcp *client() const;
    // "Send Varda data to relayhub" ticked and the gateway connected.
    bool forwardsVardaData() const;
    bool isConnected() const;
    LinkStatus *linkStatus() const;

    // Off by default: a lost or failed gateway link is tried again after
    // 1 s, doubling to 30 s.
    void setReconnect(bool enabled);
    // As if the operator typed host and pressed "Connect".
    void connectTo(const QString &host);

public slots:
    int sendSBD(const QString &imei, const QByteArray &pl);
    int sendPayload(const QString &callsign, const QByteArray &payload);

signals:
    void newData(QString imei, QByteArray data);
    // The client was wedged and has been replaced; reason in words.
    void stalled(const QString &reason);

private:
    void newClient();
    void buttonPressed();
    void connectionChanged(bool up);
    void connectionFailed(const QString &reason);
    void retry();
    void watch();
    void connectClient();
    QString endpoint() const;

    QLineEdit *m_host;
    QPushButton *m_connect;
    QCheckBox *m_flush;
    QCheckBox *m_forward;
    QLabel *m_status_label;
    IridiumTcp *m_client = nullptr;
    bool m_connected = false;
    bool m_closing = false; // the operator pressed "Disconnect"
    LinkStatus *m_status;
    Reconnector *m_reconnector;
    GatewayWatchdog m_watchdog;
    QTimer m_watch;
    QElapsedTimer m_clock;
};

#endif
