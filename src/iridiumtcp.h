#ifndef IRIDIUMTCP_H
#define IRIDIUMTCP_H

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QTcpSocket>

#include <stdint.h>

#include "gateway_message.h" // the message layout
#include "gatewayframer.h"

class QCheckBox;
class QLineEdit;
class QPushButton;

// Client of the Iridium gateway. Drives the connect button, host field and
// flush check box its owner hands over; they must outlive it, except that
// its destructor leaves them alone.
class IridiumTcp : public QObject
{
    Q_OBJECT
public:
    enum PacketType : uint32_t { SBDTXRequest = GATEWAY_SBD_TX_REQUEST, RawPayload = GATEWAY_RAW_PAYLOAD };
    Q_ENUM(PacketType)

    static constexpr quint16 GatewayPort = GATEWAY_PORT;
    static constexpr int ImeiLength = GATEWAY_IMEI_LEN;
    static constexpr int CallsignField = GATEWAY_CALLSIGN_FIELD;
    static constexpr int MaxCallsign = GATEWAY_MAX_CALLSIGN;

    IridiumTcp(QPushButton *button, QLineEdit *host, QCheckBox *flush, QObject *parent = nullptr);
    ~IridiumTcp() override;

    // Both return what send returns; sendPayload returns 0 for a callsign of
    // more than MaxCallsign characters, sending nothing.
    int sendSBD(const QString &imei, const QByteArray &pl);
    int sendPayload(const QString &callsign, const QByteArray &payload);
    // Writes one message; returns the bytes written, -1 when the socket
    // refuses (also when it is not connected).
    int send(PacketType packetType, const QByteArray &data);

    // Appends received bytes and hands every complete message to
    // parsePacket. There is no limit on tot_length: a corrupt length stalls
    // the client for good, buffering (the buffer survives reconnects).
    void receive(const QByteArray &bytes);
    // One message without its length field.
    void parsePacket(const QByteArray &packet);
    // "gateway:HOST:PORT" of the connection.
    QString linkName() const;

    // Received bytes not yet framed, and the tot_length the first of them
    // announce (0 while fewer than four wait): what a watchdog needs to see
    // a client wedged by a corrupt length.
    qint64 pendingBytes() const;
    quint32 pendingLength() const;

public slots:
    void connectPressed();
    void setConnected();
    void setDisconnected();
    void readyRead();

signals:
    void newData(QString imei, QByteArray data);
    void connectionStateChanged(bool is_);
    // Every whole message, length field included, as it was received or
    // written, with linkName().
    void messageReceived(const QString &link, const QByteArray &message);
    void messageSent(const QString &link, const QByteArray &message);
    // A connection attempt failed or the connection broke, in the socket's words.
    void connectionError(const QString &reason);

private:
    void reportError();

    // m_address, m_port, m_size and m_state are not used: the host comes
    // from the host field, the port is fixed and framing needs no state.
    [[maybe_unused]] QString m_address;
    QTcpSocket m_socket;
    [[maybe_unused]] int m_port = 0;
    GatewayFramer m_framer; // unbounded: received bytes not yet framed
    [[maybe_unused]] uint32_t m_size = 0;
    [[maybe_unused]] int m_state = 0;
    QPushButton *ui_button;
    QLineEdit *ui_host;
    QCheckBox *ui_flush;
};

#endif
