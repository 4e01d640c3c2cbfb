#include "mainwindow_harness.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTableView>
#include <QTest>

#include <string.h>

#include "reference_frames.h"
#include "varda_extension.h"
#include "varda_extension_qt.h"
#include "varda_spp_host.h"

namespace harness
{

namespace
{

    const int WAIT_MS = 5000;

    QByteArray subPacket(uint8_t type, const QByteArray &data)
    {
        return char(type) + (char(data.size()) + data);
    }

    template <typename Record> QByteArray bytesOf(const Record &record)
    {
        return QByteArray(reinterpret_cast<const char *>(&record), int(sizeof record));
    }

    QStringList &messages()
    {
        static QStringList lines;
        return lines;
    }

    QtMessageHandler previousHandler = nullptr;

    void recordMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
    {
        messages().append(message);
        if (previousHandler)
            previousHandler(type, context, message);
    }

} // namespace

QByteArray src(const QString &callsign, uint8_t seq)
{
    VardaExtension packet;
    packet.addSource(callsign, seq);
    return packet.getPacket();
}

// A station status as a typical modem reports it.
QByteArray stat()
{
    varda_stat_t status;
    memset(&status, 0, sizeof status);
    status.hw_ver = (2 << 6) | 1;
    status.serial = 1234;
    status.sw_ver = 0x1203;
    status.uptime_s = 90061;
    status.voltage = 123;
    status.temp = -10;
    status.signal = 140;
    status.noise = 95;
    status.cntr_rx_ok = 100;
    status.cntr_tx = 7;
    return subPacket(VRD_EXT_STAT, bytesOf(status));
}

QByteArray text(const QByteArray &reply)
{
    return subPacket(VRD_EXT_TEXT, reply);
}

QByteArray rxFrame(uint8_t rssi, uint8_t flags, const QByteArray &packet)
{
    spp_rxhdr_t header;
    header.timestamp_toh_us = 1234567;
    header.noise = 95;
    header.rssi = rssi;
    header.errors = 0;
    header.varda_flags = flags;
    return reference::sppFrame(SPP_TYPE_RX, bytesOf(header) + packet);
}

QByteArray localFrame(uint8_t flags, const QByteArray &packet)
{
    return reference::sppFrame(SPP_TYPE_LOCAL, char(flags) + packet);
}

QByteArray replyFrame(const QByteArray &reply)
{
    return reference::sppFrame(SPP_TYPE_CMD, reply);
}

QList<SentFrame> takeFrames(QByteArray *stream)
{
    QList<SentFrame> frames;
    for (;;) {
        const int start = stream->indexOf(char(SPP_START));
        if (start < 0) {
            stream->clear();
            break;
        }
        stream->remove(0, start);
        if (stream->size() < SPP_HEADER_LEN)
            break;
        const int length = SPP_HEADER_LEN + uint8_t(stream->at(4));
        if (stream->size() < length)
            break;
        const QByteArray frame = stream->left(length);
        if (reference::withCrc(char(SPP_START), frame.mid(3)) == frame) {
            frames.append({ uint8_t(frame.at(3)), frame.mid(SPP_HEADER_LEN) });
            stream->remove(0, length);
        } else {
            stream->remove(0, 1);
        }
    }
    return frames;
}

void MessageLog::install()
{
    previousHandler = qInstallMessageHandler(recordMessage);
}

bool MessageLog::contains(const QString &line)
{
    return messages().contains(line);
}

bool MessageLog::startsWith(const QString &prefix)
{
    for (const QString &line : messages()) {
        if (line.startsWith(prefix))
            return true;
    }
    return false;
}

int MessageLog::count(const QString &line)
{
    return messages().count(line);
}

void MessageLog::clear()
{
    messages().clear();
}

TcpModem::TcpModem()
{
    m_server.listen(QHostAddress::LocalHost, 0);
}

quint16 TcpModem::port() const
{
    return m_server.serverPort();
}

bool TcpModem::accept()
{
    if (!QTest::qWaitFor([this] { return m_server.hasPendingConnections(); }, WAIT_MS))
        return false;
    m_socket = m_server.nextPendingConnection();
    QObject::connect(
        m_socket, &QTcpSocket::readyRead, m_socket, [this] { m_received += m_socket->readAll(); });
    return true;
}

QTcpSocket *TcpModem::socket() const
{
    return m_socket;
}

void TcpModem::send(const QByteArray &bytes)
{
    m_socket->write(bytes);
    m_socket->flush();
}

QList<SentFrame> TcpModem::waitForFrames(int count)
{
    QList<SentFrame> frames;
    // The caller checks how many came.
    static_cast<void>(QTest::qWaitFor(
        [&] {
            frames += takeFrames(&m_received);
            return frames.size() >= count;
        },
        WAIT_MS));
    return frames;
}

WindowDriver::WindowDriver()
    : m_window(new MainWindow)
{
    m_window->show();
    if (!QTest::qWaitForWindowExposed(m_window.get()))
        qWarning("main window not exposed");
}

WindowDriver::~WindowDriver() = default;

MainWindow *WindowDriver::window() const
{
    return m_window.get();
}

void WindowDriver::chooseLinkType(const QString &type)
{
    auto *combo = find<QComboBox>("linkTypeCombo");
    combo->setCurrentIndex(combo->findText(type));
}

void WindowDriver::setField(const char *name, const QString &value)
{
    auto *field = find<QLineEdit>(name);
    field->clear();
    QTest::keyClicks(field, value);
}

void WindowDriver::pressConnect()
{
    QTest::mouseClick(find<QPushButton>("connectButton"), Qt::LeftButton);
}

QString WindowDriver::connectText() const
{
    return find<QPushButton>("connectButton")->text();
}

bool WindowDriver::connectTcp(TcpModem *modem)
{
    chooseLinkType(QStringLiteral("TCP"));
    setField("portText", QString::number(modem->port()));
    pressConnect();
    return modem->accept()
        && QTest::qWaitFor([this] { return connectText() == QLatin1String("Disconnect"); }, WAIT_MS);
}

int WindowDriver::packetRows() const
{
    return find<QTableView>("packetTable")->model()->rowCount();
}

QString WindowDriver::packetCell(int row, int column) const
{
    const QAbstractItemModel *model = find<QTableView>("packetTable")->model();
    return model->index(row, column).data().toString();
}

const QProgressBar *WindowDriver::rssiBar(int row) const
{
    const auto *table = find<QTableView>("packetTable");
    return qobject_cast<const QProgressBar *>(table->indexWidget(table->model()->index(row, 2)));
}

int WindowDriver::stationRows() const
{
    return find<QTableView>("stationsTable")->model()->rowCount();
}

QString WindowDriver::stationCell(int row, int column) const
{
    const QAbstractItemModel *model = find<QTableView>("stationsTable")->model();
    return model->index(row, column).data().toString();
}

void WindowDriver::chooseTerminalMode(const QString &mode)
{
    auto *box = find<QComboBox>("configModeBox");
    box->setCurrentIndex(box->findText(mode));
}

void WindowDriver::typeCommand(const QString &command)
{
    QTest::keyClicks(find<QLineEdit>("commandLineEdit"), command);
    QTest::mouseClick(find<QPushButton>("cmdPushButton"), Qt::LeftButton);
}

void WindowDriver::typeDestination(const QString &callsign)
{
    QLineEdit *editor = find<QComboBox>("terminalSelectActive")->lineEdit();
    editor->clear();
    QTest::keyClicks(editor, callsign);
    QTest::keyClick(editor, Qt::Key_Return);
}

QString WindowDriver::terminalOutput() const
{
    return find<QPlainTextEdit>("commandOutputTextEdit")->toPlainText();
}

} // namespace harness
