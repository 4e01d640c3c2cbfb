#ifndef IRIDIUMTCP_H
#define IRIDIUMTCP_H

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QTcpSocket>

#include <stdint.h>

class QCheckBox;
class QLineEdit;
class QPushButton;

/*
 * Message on the Iridium gateway link (TCP port 10020), the same framing in
 * both directions, all integers little-endian:
 *
 *   offset  width  field       meaning
 *   0       4      tot_length  bytes after this field: 4 + content length
 *   4       4      type        IridiumTcp::PacketType
 *   8       rest   content     by type:
 *
 *   SBDTXRequest, program -> gateway: an SBD message for a vehicle's modem
 *     IMEI as UTF-8 text (normally 15 digits, no terminator, no length),
 *     1 byte flush flag (1 = flush the gateway's queue first), the message
 *   RawPayload, program -> gateway: a vehicle payload for relayhub
 *     11 bytes callsign, UTF-8 padded with zero bytes, the payload
 *   RawPayload, gateway -> program: data a vehicle sent over Iridium
 *     15 bytes IMEI of the sending modem as text, the data
 *
 * The two directions of RawPayload differ on purpose. A callsign is limited
 * to 10 characters, not bytes: a longer UTF-8 form is sent unpadded.
 */
struct __attribute__((packed)) iridium_msg_hdr_t {
    uint32_t tot_length;
    uint32_t type;
};
static_assert(sizeof(iridium_msg_hdr_t) == 8, "iridium_msg_hdr_t is packed");

// Client of the Iridium gateway. Drives the connect button, host field and
// flush check box its owner hands over; they must outlive it, except that
// its destructor leaves them alone.
class IridiumTcp : public QObject
{
    Q_OBJECT
public:
    enum PacketType : uint32_t { SBDTXRequest = 420000, RawPayload = 420001 };
    Q_ENUM(PacketType)

    static constexpr quint16 GatewayPort = 10020;
    static constexpr int ImeiLength = 15;
    static constexpr int CallsignField = 11;
    static constexpr int MaxCallsign = 10;

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

public slots:
    void connectPressed();
    void setConnected();
    void setDisconnected();
    void readyRead();

signals:
    void newData(QString imei, QByteArray data);
    void connectionStateChanged(bool is_);

private:
    // m_address, m_port, m_size and m_state are not used: the host comes
    // from the host field, the port is fixed and framing needs no state.
    [[maybe_unused]] QString m_address;
    QTcpSocket m_socket;
    [[maybe_unused]] int m_port = 0;
    QByteArray m_buffer; // received bytes not yet framed
    [[maybe_unused]] uint32_t m_size = 0;
    [[maybe_unused]] int m_state = 0;
    QPushButton *ui_button;
    QLineEdit *ui_host;
    QCheckBox *ui_flush;
};

#endif
