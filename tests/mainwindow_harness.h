#ifndef MAINWINDOW_HARNESS_H
#define MAINWINDOW_HARNESS_H

// Drives a MainWindow through its widgets against a modem played by the test over TCP, UDP or socat's pty.

#include <QtNetwork>
#include <QtSerialPort>
#include <QtTest>
#include <QtWidgets>

#include "mainwindow.h"
#include "reference_frames.h"
#include "varda_extension_qt.h"

namespace harness
{

const int LINK_WAIT_MS = 15000;

struct SentFrame {
    int type;
    QByteArray payload;
};

// Extension sub-packets (type, length, data) and the frames a modem sends.
inline QByteArray src(const QString &callsign, uint8_t seq)
{
    VardaExtension packet;
    packet.addSource(callsign, seq);
    return packet.getPacket();
}

inline QByteArray stat()
{
    return "\x02\x16" + QByteArray(22, '\x01');
}

inline QByteArray text(const QByteArray &reply)
{
    return '\x08' + (char(reply.size()) + reply);
}

// After the SPP header: timestamp (little-endian), noise, rssi, errors, flags.
inline QByteArray rxFrame(uint8_t rssi, uint8_t flags, const QByteArray &packet)
{
    return reference::sppFrame(
        0, QByteArray::fromHex("87d612005f") + char(rssi) + '\0' + char(flags) + packet);
}

inline QByteArray localFrame(uint8_t flags, const QByteArray &packet)
{
    return reference::sppFrame(2, char(flags) + packet);
}

inline QByteArray replyFrame(const QByteArray &reply)
{
    return reference::sppFrame(3, reply);
}

// Takes the complete frames with a good CRC off the front of stream.
inline QList<SentFrame> takeFrames(QByteArray *stream)
{
    QList<SentFrame> frames;
    for (int start; (start = stream->indexOf('$')) >= 0;) {
        stream->remove(0, start);
        const int length = stream->size() < 5 ? INT_MAX : 5 + uint8_t(stream->at(4));
        if (stream->size() < length)
            return frames;
        const QByteArray frame = stream->left(length);
        const bool good = reference::withCrc('$', frame.mid(3)) == frame;
        if (good)
            frames.append({ uint8_t(frame.at(3)), frame.mid(5) });
        stream->remove(0, good ? length : 1);
    }
    stream->clear();
    return frames;
}

// The far end of the window's link; open() after drop() comes back on the same port or pty path.
struct Modem {
    enum Link { Tcp, Udp, Serial } const link;
    explicit Modem(Link link = Tcp)
        : link(link)
    {
    }
    ~Modem()
    {
        drop();
    }
    bool open();
    // TCP: a new connection taken; UDP: a datagram came (send() answers its sender).
    bool accept();
    void drop(); // closes the TCP connection; the UDP socket or socat goes away
    void send(const QByteArray &bytes);
    QList<SentFrame> waitForFrames(int count); // the caller checks how many came

    QString address; // port, or the path of the window's end of the pseudo-terminal
    QTcpServer server;
    QPointer<QTcpSocket> tcp;
    std::unique_ptr<QUdpSocket> udp;
    QHostAddress client;
    quint16 clientPort = 0;
    QTemporaryDir dir;
    QProcess socat;
    QSerialPort serial;
    QByteArray received;
};

struct WindowDriver {
    WindowDriver()
    {
        window.show();
        static_cast<void>(QTest::qWaitForWindowExposed(&window));
    }
    template <typename T> T *find(const char *name) const
    {
        return window.findChild<T *>(QLatin1String(name));
    }
    void choose(const char *combo, const QString &item)
    {
        find<QComboBox>(combo)->setCurrentIndex(find<QComboBox>(combo)->findText(item));
    }
    // Types into a line edit, or the editor of a combo box, and presses Return.
    void setField(const char *name, const QString &value)
    {
        QLineEdit *edit = find<QComboBox>(name) ? find<QComboBox>(name)->lineEdit() : find<QLineEdit>(name);
        edit->clear();
        QTest::keyClicks(edit, value);
        QTest::keyClick(edit, Qt::Key_Return);
    }
    void pressConnect()
    {
        QTest::mouseClick(find<QPushButton>("connectButton"), Qt::LeftButton);
    }
    QString connectText() const
    {
        return find<QPushButton>("connectButton")->text();
    }
    // Picks the modem's link and address, (dis)connects; true once both ends see the link.
    bool connectTo(Modem *modem)
    {
        choose("linkTypeCombo", QStringList { "TCP", "UDP", "Serial" }.at(modem->link));
        setField(modem->link == Modem::Serial ? "serialPortCombo" : "portText", modem->address);
        if (connectText() == "Disconnect")
            pressConnect();
        pressConnect();
        return modem->accept()
            && QTest::qWaitFor([this] { return connectText() == "Disconnect"; }, LINK_WAIT_MS);
    }
    int rows(const char *table) const
    {
        return find<QTableView>(table)->model()->rowCount();
    }
    QString cell(const char *table, int row, int column) const
    {
        return find<QTableView>(table)->model()->index(row, column).data().toString();
    }
    void typeCommand(const QString &command)
    {
        QTest::keyClicks(find<QLineEdit>("commandLineEdit"), command);
        QTest::mouseClick(find<QPushButton>("cmdPushButton"), Qt::LeftButton);
    }
    QString terminalOutput() const
    {
        return find<QPlainTextEdit>("commandOutputTextEdit")->toPlainText();
    }

    MainWindow window;
};

} // namespace harness

#endif
