#ifndef MODEMSERVER_H
#define MODEMSERVER_H

#include <QByteArray>
#include <QElapsedTimer>
#include <QHash>
#include <QHostAddress>
#include <QObject>
#include <QString>
#include <QTcpServer>
#include <QTimer>
#include <QUdpSocket>

class QRandomGenerator;

class PseudoTerminal;
class SppLink;

// The ways into the simulated modem: TCP clients, UDP peers (each one known
// from the datagrams it sends, the empty keep-alive included) and,
// optionally, a pseudo-terminal. Every client gets its own SppLink.
class ModemServer : public QObject
{
    Q_OBJECT
public:
    explicit ModemServer(QObject *parent = nullptr);

    // TCP and UDP on the same port.
    bool listen(const QHostAddress &address, quint16 port, QString *error);
    // Returns the name of the terminal's slave side, empty on failure.
    QString openPty(QString *error);

    QList<SppLink *> links() const;
    // Faults: every dropEverySeconds (0: never) TCP clients are closed and
    // the pseudo-terminal is opened afresh; a corruptShare of broadcast
    // frames goes out with a bad CRC. Each client's tally is logged when it
    // goes.
    void setFaults(double dropEverySeconds, double corruptShare, QRandomGenerator *rng);

    // Sends a frame to every client.
    void broadcast(const QByteArray &frame);

signals:
    void clientJoined(SppLink *link);
    void frameReceived(SppLink *link, quint8 type, const QByteArray &payload);

private:
    void acceptTcp();
    void readUdp();
    SppLink *addLink(const QString &name, const std::function<void(const QByteArray &)> &writer);
    void dropSilentUdpPeers();
    void dropClients();
    SppLink *addPtyLink();

    struct UdpPeer {
        SppLink *link;
        QElapsedTimer lastHeard;
    };

    QTcpServer m_tcp;
    QUdpSocket m_udp;
    QHash<QString, UdpPeer> m_udpPeers;
    QList<SppLink *> m_links;
    PseudoTerminal *m_pty = nullptr;
    SppLink *m_ptyLink = nullptr;
    QTimer m_drop;
    double m_corrupt = 0;
    QRandomGenerator *m_rng = nullptr;
};

#endif
