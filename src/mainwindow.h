#ifndef MAINWINDOW_H
#define MAINWINDOW_H

#include <QByteArray>
#include <QHostAddress>
#include <QMainWindow>
#include <QModelIndex>
#include <QPixmap>
#include <QPointer>
#include <QSerialPort>
#include <QString>
#include <QStringList>
#include <QTcpSocket>
#include <QTimer>
#include <QUdpSocket>

#include <memory>
#include <stdint.h>

#include "linkaddress.h"

class BlinkSchedule;
class IridiumTcp;
class LinkStatus;
class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class Reconnector;
class SppHost;
class Station;
class StationListModel;
class VardaExtension;
class packetModel;

namespace Ui
{
class MainWindow;
}

// The radio tool's window: one link to the local modem (serial, TCP or UDP),
// the packet log, the station list and the operator's terminal.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    enum ConfigMode { DUMB = 0, SPP_CMD = 1, EXT_CMD = 2, EXT_DATA = 3 };
    enum ConnectionType { NONE = 0, SERIAL = 1, UDP = 2, TCP = 3 };

    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

    // The framing host all links feed; a host of the vehicle panel listens
    // to its packets too.
    SppHost *sppHost() const
    {
        return m_spp_host.get();
    }
    // The open modem link as "tcp:HOST:PORT", "udp:HOST:PORT" or
    // "serial:DEVICE@BAUD"; empty while none is open.
    QString linkName() const;

    // Acts as if the operator had picked the link type, filled the fields
    // and pressed "Connect".
    void openLink(const LinkAddress &address);
    // Off by default: a lost link or a failed attempt is tried again after
    // 1 s, doubling to 30 s, until the operator disconnects.
    void setReconnect(bool enabled);
    // What the status label shows, with the link's counters.
    LinkStatus *linkStatus() const;

public slots:
    // Link management
    void linkTypeChanged(const QString &type);
    void toggleConnection();
    void closeConnection();
    void tcpConnected();
    void tcpDisconnected();
    void serialPortError(QSerialPort::SerialPortError error);
    void tickUdpSocket();
    void readSerialData();
    void readTcpData();
    void readUdpData();
    void sendData(const QByteArray &data);
    void packetIndicatorStart();
    void packetIndicatorStop();
    void tcpError(QAbstractSocket::SocketError error);
    void retryLink();
    // Reads on where a bounded read left bytes behind.
    void drainLinks();

    // Incoming packets
    void handleSppPacket(uint8_t type, const uint8_t *d, uint16_t d_len, const QString &path);
    void handleExt(const VardaExtension &ext, const QStringList &paths);
    void incomingSbd(const QString &imei, const QByteArray &data);

    // Terminal
    void terminalStationChanged(int index);
    void terminalStationChanged();
    void selectStationTree(const QModelIndex &index);
    void sendCommand();
    void configModeChanged(const QString &mode);

signals:
    // Every byte read from and written to the modem link, with linkName().
    void linkBytesReceived(const QString &link, const QByteArray &bytes);
    void linkBytesSent(const QString &link, const QByteArray &bytes);

private:
    void connectViews();
    void buildLinkSettings();
    void clearLinkRows();
    void openSerial();
    bool resolvePeer();
    void openUdp();
    void setConnected(ConnectionType connection);
    quint16 currentPort() const;
    void feedSppHost(const QString &source, const QByteArray &bytes);
    Station *stationFor(const QString &callsign);
    QByteArray packExtCommand(const QString &command);
    void appendTerminal(const QString &text);
    void setActiveStation(const QString &callsign);
    void buildLinkStatus();
    LinkAddress linkInFields() const;
    Qt::ConnectionType handlerConnection() const;
    void linkUp();
    void linkFailed(const QString &reason);
    void drainLater(bool more);

    Ui::MainWindow *ui;
    QSerialPort *m_serial;
    packetModel *m_packet_model;
    // The station list and the framing host have no QObject parent; the
    // window still owns them, so they go away with it instead of at exit.
    std::unique_ptr<StationListModel> m_stations;
    QString m_active_station;
    QString m_this_station;
    uint8_t m_seq_nr = 0; // the first command carries 1
    ConfigMode m_config_mode;
    ConnectionType m_active_connection;
    bool m_ignore_local_packets = false; // kept on purpose: the check box is what is consulted
    QHostAddress m_ip_address;
    IridiumTcp *m_iridium_tcp = nullptr; // kept on purpose: this window creates no gateway client
    QUdpSocket udpSocket;
    QTcpSocket tcpSocket;
    std::unique_ptr<SppHost> m_spp_host;
    QTimer m_udp_tick_timer;
    QLabel *m_packet_inducator; // the activity icon; the name is spelt so on purpose
    // Loaded once: looking the image up again for every packet would cost
    // more than the rest of the blink.
    QPixmap m_icon_active;
    QPixmap m_icon_idle;
    const QString m_version;
    // The link settings rows are destroyed by the form layout on every link
    // type change, hence the guarded pointers.
    QComboBox *linkTypeCombo;
    QPointer<QPushButton> connectButton;
    QPointer<QComboBox> serialPortCombo;
    QPointer<QLineEdit> serialBaudText;
    QPointer<QLineEdit> hostText;
    QPointer<QLineEdit> portText;
    QFormLayout *linkTypeLayout;

    // Beside the link: its state in words, automatic reconnection, reads
    // bounded so that a flood cannot hold the event loop.
    QLabel *m_link_status_label = nullptr;
    LinkStatus *m_link_status = nullptr;
    Reconnector *m_reconnector = nullptr;
    BlinkSchedule *m_blink = nullptr;
    bool m_blue = false;
    bool m_retrying = false; // toggleConnection runs for a retry
    QTimer m_drain_timer;
};

#endif
