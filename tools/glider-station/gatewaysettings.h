#ifndef GATEWAYSETTINGS_H
#define GATEWAYSETTINGS_H

#include <QGroupBox>

class IridiumTcp;
class QCheckBox;
class QLineEdit;
class QPushButton;

// The Iridium gateway settings the radio tool leaves out: host, Connect,
// "Flush queue" and whether vehicle data heard on the radio goes on to
// relayhub. Owns the gateway client, which drives these widgets.
class GatewaySettings : public QGroupBox
{
    Q_OBJECT
public:
    explicit GatewaySettings(QWidget *parent = nullptr);

    IridiumTcp *client() const;
    // "Send Varda data to relayhub" ticked and the gateway connected.
    bool forwardsVardaData() const;
    bool isConnected() const;

private:
    QLineEdit *m_host;
    QPushButton *m_connect;
    QCheckBox *m_flush;
    QCheckBox *m_forward;
    IridiumTcp *m_client;
    bool m_connected = false;
};

#endif
