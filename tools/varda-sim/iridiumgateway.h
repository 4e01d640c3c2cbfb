#ifndef IRIDIUMGATEWAY_H
#define IRIDIUMGATEWAY_H

#include <QByteArray>
#include <QHash>
#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QString>
#include <QTcpServer>
#include <QTimer>

#include "gatewaystream.h"

class QTcpSocket;
class SimGlider;

// The Iridium gateway: takes SBD messages for the vehicle's IMEI from its
// TCP clients, queues them as the satellite service does and hands them to
// the vehicle at its next session; passes what the vehicle sends back to
// every client, tagged with the IMEI. Relayhub payloads are only logged.
class IridiumGateway : public QObject
{
    Q_OBJECT
public:
    explicit IridiumGateway(QObject *parent = nullptr);

    bool listen(const QHostAddress &address, quint16 port, QString *error);
    // The vehicle behind imei; without one, messages are taken and dropped.
    void setVehicle(SimGlider *glider, const QString &imei);
    void setRate(double rate);
    // Fault: the next message to the clients is preceded by one whose
    // tot_length is absurd.
    void setCorruptLength(bool corrupt);

public slots:
    // A mobile-originated message of the vehicle.
    void deliverMo(const QByteArray &data);

private:
    void acceptClient();
    void readClient(QTcpSocket *socket);
    void handleMessage(uint32_t type, const QByteArray &content);
    void queueSbd(const QByteArray &content);
    void runSession();

    QTcpServer m_server;
    QHash<QTcpSocket *, GatewayStream> m_clients;
    SimGlider *m_vehicle = nullptr;
    QString m_imei;
    QList<QByteArray> m_mtQueue;
    QTimer m_session;
    double m_rate = 1.0;
    bool m_corruptLength = false;
};

#endif
