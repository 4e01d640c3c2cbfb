#ifndef MAINWINDOW_HARNESS_H
#define MAINWINDOW_HARNESS_H

// Drives a MainWindow as a user would (widgets found by object name) against
// a modem played by the test on 127.0.0.1.

#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QTableView>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include <memory>
#include <stdint.h>

#include "mainwindow.h"

namespace harness
{

const int LINK_WAIT_MS = 5000;

// Extension sub-packets and the frames a modem sends.
QByteArray src(const QString &callsign, uint8_t seq);
QByteArray stat();
QByteArray text(const QByteArray &reply);
QByteArray rxFrame(uint8_t rssi, uint8_t flags, const QByteArray &packet);
QByteArray localFrame(uint8_t flags, const QByteArray &packet);
QByteArray replyFrame(const QByteArray &reply);

struct SentFrame {
    int type;
    QByteArray payload;
};

// Takes the complete frames with a good CRC off the front of stream.
QList<SentFrame> takeFrames(QByteArray *stream);

// Debug lines of the code under test; install in initTestCase (after QtTest's own).
struct MessageLog {
    static void install();
    static bool startsWith(const QString &prefix);
    static int count(const QString &line);
    static void clear();
};

class TcpModem
{
public:
    TcpModem()
    {
        m_server.listen(QHostAddress::LocalHost, 0);
    }
    quint16 port() const
    {
        return m_server.serverPort();
    }
    bool accept()
    {
        if (!QTest::qWaitFor([this] { return m_server.hasPendingConnections(); }, LINK_WAIT_MS))
            return false;
        m_socket = m_server.nextPendingConnection();
        QObject::connect(
            m_socket, &QTcpSocket::readyRead, m_socket, [this] { m_received += m_socket->readAll(); });
        return true;
    }
    QTcpSocket *socket() const
    {
        return m_socket;
    }
    void send(const QByteArray &bytes)
    {
        m_socket->write(bytes);
        m_socket->flush();
    }
    // The caller checks how many came.
    QList<SentFrame> waitForFrames(int count)
    {
        QList<SentFrame> frames;
        static_cast<void>(QTest::qWaitFor(
            [&] { return (frames += takeFrames(&m_received)).size() >= count; }, LINK_WAIT_MS));
        return frames;
    }

private:
    QTcpServer m_server;
    QPointer<QTcpSocket> m_socket;
    QByteArray m_received;
};

class WindowDriver
{
public:
    WindowDriver()
        : m_window(new MainWindow)
    {
        m_window->show();
        if (!QTest::qWaitForWindowExposed(m_window.get()))
            qWarning("main window not exposed");
    }
    MainWindow *window() const
    {
        return m_window.get();
    }
    template <typename T> T *find(const char *name) const
    {
        return m_window->findChild<T *>(QLatin1String(name));
    }
    void chooseLinkType(const QString &type)
    {
        choose("linkTypeCombo", type);
    }
    void setField(const char *name, const QString &value)
    {
        find<QLineEdit>(name)->clear();
        QTest::keyClicks(find<QLineEdit>(name), value);
    }
    void pressConnect()
    {
        QTest::mouseClick(find<QPushButton>("connectButton"), Qt::LeftButton);
    }
    QString connectText() const
    {
        return find<QPushButton>("connectButton")->text();
    }
    // Picks TCP, connects to the modem and waits until both ends see it.
    bool connectTcp(TcpModem *modem)
    {
        chooseLinkType(QStringLiteral("TCP"));
        setField("portText", QString::number(modem->port()));
        pressConnect();
        return modem->accept()
            && QTest::qWaitFor([this] { return connectText() == "Disconnect"; }, LINK_WAIT_MS);
    }
    int packetRows() const
    {
        return find<QTableView>("packetTable")->model()->rowCount();
    }
    // Newest first.
    QString packetCell(int row, int column) const
    {
        return cell("packetTable", row, column).data().toString();
    }
    const QProgressBar *rssiBar(int row) const
    {
        return qobject_cast<QProgressBar *>(
            find<QTableView>("packetTable")->indexWidget(cell("packetTable", row, 2)));
    }
    int stationRows() const
    {
        return find<QTableView>("stationsTable")->model()->rowCount();
    }
    QString stationCell(int row, int column) const
    {
        return cell("stationsTable", row, column).data().toString();
    }
    void chooseTerminalMode(const QString &mode)
    {
        choose("configModeBox", mode);
    }
    void typeCommand(const QString &command)
    {
        QTest::keyClicks(find<QLineEdit>("commandLineEdit"), command);
        QTest::mouseClick(find<QPushButton>("cmdPushButton"), Qt::LeftButton);
    }
    void typeDestination(const QString &callsign)
    {
        QLineEdit *editor = find<QComboBox>("terminalSelectActive")->lineEdit();
        editor->clear();
        QTest::keyClicks(editor, callsign);
        QTest::keyClick(editor, Qt::Key_Return);
    }
    QString terminalOutput() const
    {
        return find<QPlainTextEdit>("commandOutputTextEdit")->toPlainText();
    }

private:
    void choose(const char *combo, const QString &item)
    {
        find<QComboBox>(combo)->setCurrentIndex(find<QComboBox>(combo)->findText(item));
    }
    QModelIndex cell(const char *table, int row, int column) const
    {
        return find<QTableView>(table)->model()->index(row, column);
    }
    std::unique_ptr<MainWindow> m_window;
};

} // namespace harness

#endif
