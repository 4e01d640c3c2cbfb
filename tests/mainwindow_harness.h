#ifndef MAINWINDOW_HARNESS_H
#define MAINWINDOW_HARNESS_H

// Drives a MainWindow as a user would (widgets found by object name) against
// a modem played by the test on 127.0.0.1, and builds the frames both sides
// exchange.

#include <QByteArray>
#include <QList>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QTcpServer>
#include <QTcpSocket>

#include <memory>
#include <stdint.h>

#include "mainwindow.h"

class QAbstractItemModel;
class QPlainTextEdit;
class QProgressBar;

namespace harness
{

// Extension sub-packets and the frames a modem sends.
QByteArray src(const QString &callsign, uint8_t seq);
QByteArray stat();
QByteArray text(const QByteArray &reply);
QByteArray rxFrame(uint8_t rssi, uint8_t flags, const QByteArray &packet);
QByteArray localFrame(uint8_t flags, const QByteArray &packet);
QByteArray replyFrame(const QByteArray &reply);

// A frame the window sent, as the modem reads it.
struct SentFrame {
    int type;
    QByteArray payload;
};

// Takes every complete frame with a good CRC off the front of stream; an
// incomplete frame stays for the next call.
QList<SentFrame> takeFrames(QByteArray *stream);

// Debug and warning lines of the code under test. QtTest installs its own
// handler when the test starts: install this one in initTestCase.
class MessageLog
{
public:
    static void install();
    static bool contains(const QString &line);
    static bool startsWith(const QString &prefix);
    static int count(const QString &line);
    static void clear();
};

// The modem side of a TCP link.
class TcpModem
{
public:
    TcpModem();
    quint16 port() const;
    // Waits for the window to connect.
    bool accept();
    QTcpSocket *socket() const;
    void send(const QByteArray &bytes);
    // Waits for frames from the window and returns them.
    QList<SentFrame> waitForFrames(int count);

private:
    QTcpServer m_server;
    QPointer<QTcpSocket> m_socket;
    QByteArray m_received;
};

class WindowDriver
{
public:
    WindowDriver();
    ~WindowDriver();

    MainWindow *window() const;

    template <typename T> T *find(const char *name) const
    {
        return m_window->findChild<T *>(QLatin1String(name));
    }

    // Link settings
    void chooseLinkType(const QString &type);
    void setField(const char *name, const QString &value);
    void pressConnect();
    QString connectText() const;
    // Picks TCP, connects to the modem and waits until both ends see it.
    bool connectTcp(TcpModem *modem);

    // Packet log, newest first
    int packetRows() const;
    QString packetCell(int row, int column) const;
    const QProgressBar *rssiBar(int row) const;

    // Stations
    int stationRows() const;
    QString stationCell(int row, int column) const;

    // Terminal
    void chooseTerminalMode(const QString &mode);
    void typeCommand(const QString &command);
    void typeDestination(const QString &callsign);
    QString terminalOutput() const;

private:
    std::unique_ptr<MainWindow> m_window;
};

} // namespace harness

#endif
