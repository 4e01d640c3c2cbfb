#include "mainwindow.h"
#include "ui_mainwindow.h"

#include <QComboBox>
#include <QDateTime>
#include <QDebug>
#include <QFormLayout>
#include <QHostInfo>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>
#include <QPushButton>
#include <QSerialPort>
#include <QSerialPortInfo>
#include <QStandardItemModel>
#include <QStatusBar>
#include <QTextCursor>

#include "blinkschedule.h"
#include "linkstatus.h"
#include "packetmodel.h"
#include "reconnector.h"
#include "spp_host_qt.h"
#include "stationlistmodel.h"
#include "varda_extension.h"
#include "varda_extension_qt.h"
#include "varda_spp_payload.h"

namespace
{

const int UDP_TICK_MS = 10000;
const int INDICATOR_MS = 200;
const int READY_MESSAGE_MS = 5000;
// Bytes one read takes at most: about 40 frames, a few
// milliseconds of work, so a flood never holds the event loop for long. What
// is left is read on in the next pass of the event loop.
const qint64 READ_BYTES = 2048;
// Lines the terminal keeps, as a terminal's scrollback: a modem that talks
// without end must not fill the memory.
const int TERMINAL_LINES = 1000;

const char ICON_ACTIVE[] = ":/img/blue-rfid-signal-16.png";
const char ICON_IDLE[] = ":/img/888888-rfid-signal-16.png";

const char LINK_SERIAL[] = "Serial";
const char LINK_TCP[] = "TCP";
const char LINK_UDP[] = "UDP";

const char TERMINAL_MODES[][32]
    = { "Dumb terminal (local)", "SPP cmd (local)", "Ext. cmd (select below)", "Ext. data (select below)" };

template <typename Widget> Widget *newLinkWidget(const char *name, QWidget *parent)
{
    auto *widget = new Widget(parent);
    widget->setObjectName(QLatin1String(name));
    return widget;
}

} // namespace

// The form lives in the toolbox library, which is static: its resources have
// to be registered by hand for any program that links it.
static void initToolboxResources()
{
    Q_INIT_RESOURCE(resources);
}

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent)
    , ui(new Ui::MainWindow)
    , m_version(QStringLiteral("1.5"))
{
    initToolboxResources();
    ui->setupUi(this);
    setWindowTitle(QStringLiteral("Varda toolbox v") + m_version);

    m_config_mode = SPP_CMD;
    m_active_connection = NONE;

    m_packet_model = new packetModel(this);
    m_stations.reset(new StationListModel);
    m_serial = new QSerialPort(this);
    connect(m_serial, &QSerialPort::errorOccurred, this, &MainWindow::serialPortError);
    m_spp_host.reset(new SppHost);
    connect(m_spp_host.get(), &SppHost::newPacket, this, &MainWindow::handleSppPacket);

    // A member, gone before the window: the parent only makes it findable.
    m_udp_tick_timer.setParent(this);
    m_udp_tick_timer.setObjectName(QStringLiteral("m_udp_tick_timer"));

    ui->packetTable->setModel(m_packet_model);
    ui->stationsTable->setModel(m_stations.get());
    ui->stationsTable->setColumnWidth(0, 80);
    ui->stationsTable->setColumnWidth(1, 150);
    connectViews();
    ui->commandOutputTextEdit->setMaximumBlockCount(TERMINAL_LINES);

    // The gateway settings are not offered by this window.
    delete ui->iridiumGroup;
    ui->iridiumGroup = nullptr;

    buildLinkSettings();

    m_icon_active.load(QLatin1String(ICON_ACTIVE));
    m_icon_idle.load(QLatin1String(ICON_IDLE));
    m_packet_inducator = new QLabel(this);
    m_packet_inducator->setObjectName(QStringLiteral("m_packet_inducator"));
    packetIndicatorStop();
    statusBar()->addPermanentWidget(m_packet_inducator);
    statusBar()->showMessage(tr("Ready"), READY_MESSAGE_MS);
    buildLinkStatus();
}

void MainWindow::buildLinkStatus()
{
    m_link_status_label = new QLabel(this);
    m_link_status_label->setObjectName(QStringLiteral("linkStatusLabel"));
    m_link_status = new LinkStatus(this);
    m_link_status->setReceiver(m_spp_host.get());
    m_link_status_label->setText(m_link_status->text());
    connect(m_link_status, &LinkStatus::textChanged, m_link_status_label, &QLabel::setText);
    connect(m_link_status, &LinkStatus::toolTipChanged, m_link_status_label, &QLabel::setToolTip);
    connect(m_spp_host.get(), &SppHost::newPacket, m_link_status, &LinkStatus::frameReceived);
    // Left of the activity icon.
    statusBar()->insertPermanentWidget(0, m_link_status_label);

    m_reconnector = new Reconnector(this);
    connect(m_reconnector, &Reconnector::scheduled, m_link_status, &LinkStatus::retrying);
    connect(m_reconnector, &Reconnector::retry, this, &MainWindow::retryLink);
    connect(&tcpSocket, &QTcpSocket::errorOccurred, this, &MainWindow::tcpError);

    m_blink = new BlinkSchedule(INDICATOR_MS, this);
    connect(m_blink, &BlinkSchedule::due, this, &MainWindow::packetIndicatorStop);
    m_drain_timer.setSingleShot(true);
    m_drain_timer.setInterval(0);
    connect(&m_drain_timer, &QTimer::timeout, this, &MainWindow::drainLinks);
}

void MainWindow::openLink(const LinkAddress &address)
{
    linkTypeCombo->setCurrentText(address.typeName());
    if (address.kind == LinkAddress::Serial) {
        serialPortCombo->setCurrentText(address.device);
        serialBaudText->setText(QString::number(address.baud));
    } else {
        hostText->setText(address.host);
        portText->setText(QString::number(address.port));
    }
    toggleConnection();
}

void MainWindow::setReconnect(bool enabled)
{
    m_reconnector->setEnabled(enabled);
}

LinkStatus *MainWindow::linkStatus() const
{
    return m_link_status;
}

// The link as the fields describe it.
LinkAddress MainWindow::linkInFields() const
{
    LinkAddress address;
    const QString type = linkTypeCombo->currentText();
    if (type == QLatin1String(LINK_SERIAL)) {
        address.kind = LinkAddress::Serial;
        address.device = serialPortCombo ? serialPortCombo->currentText() : QString();
        address.baud = serialBaudText ? serialBaudText->text().toInt() : 0;
    } else {
        address.kind = type == QLatin1String(LINK_UDP) ? LinkAddress::Udp : LinkAddress::Tcp;
        address.host = hostText ? hostText->text() : QString();
        address.port = currentPort();
    }
    return address;
}

// A retry connects the handlers once only, so that reconnecting all night
// does not pile up handler runs.
Qt::ConnectionType MainWindow::handlerConnection() const
{
    return m_retrying ? Qt::UniqueConnection : Qt::AutoConnection;
}

void MainWindow::linkUp()
{
    // A loss message from before is stale now.
    const QString shown = statusBar()->currentMessage();
    if (shown == tr("TCP disconnected!") || shown == tr("Serial port lost!"))
        statusBar()->clearMessage();
    m_link_status->up();
    m_reconnector->connected();
}

void MainWindow::linkFailed(const QString &reason)
{
    m_link_status->down(reason);
    m_reconnector->failed();
    // While a retry is due, the button stops the retries.
    if (m_reconnector->isPending() && connectButton)
        connectButton->setText(tr("Disconnect"));
}

void MainWindow::retryLink()
{
    setConnected(NONE);
    m_retrying = true;
    toggleConnection();
    m_retrying = false;
}

void MainWindow::tcpError(QAbstractSocket::SocketError error)
{
    // A loss of an established connection is reported by tcpDisconnected.
    if (m_link_status->state() != LinkStatus::Connecting)
        return;
    switch (error) {
    case QAbstractSocket::ConnectionRefusedError:
        linkFailed(tr("connection refused"));
        break;
    case QAbstractSocket::HostNotFoundError:
        linkFailed(tr("host not found"));
        break;
    default:
        linkFailed(tcpSocket.errorString());
        break;
    }
}

MainWindow::~MainWindow()
{
    // The sockets are members and outlive this body: a connection torn down
    // with the window must not call back into it.
    tcpSocket.disconnect(this);
    udpSocket.disconnect(this);
    if (m_serial->isOpen())
        m_serial->close();
    delete ui;
}

void MainWindow::connectViews()
{
    connect(ui->stationsTable, &QTableView::clicked, this, &MainWindow::selectStationTree);
    connect(
        ui->stationRelativeTime, &QCheckBox::stateChanged, m_stations.get(), &StationListModel::setDeltaTime);

    ui->terminalSelectActive->setModel(m_stations.get());
    connect(ui->terminalSelectActive, QOverload<int>::of(&QComboBox::activated), this,
        QOverload<int>::of(&MainWindow::terminalStationChanged));
    connect(ui->terminalSelectActive->lineEdit(), &QLineEdit::editingFinished, this,
        QOverload<>::of(&MainWindow::terminalStationChanged));

    connect(ui->cmdPushButton, &QPushButton::pressed, this, &MainWindow::sendCommand);
    connect(ui->commandLineEdit, &QLineEdit::returnPressed, this, &MainWindow::sendCommand);
    connect(ui->configModeBox, &QComboBox::currentTextChanged, this, &MainWindow::configModeChanged);
}

// The link settings start with the "Link type" row alone: the combo starts
// one past its last item, so nothing is selected until the user picks a
// type. The other link widgets exist but are placed by linkTypeChanged.
void MainWindow::buildLinkSettings()
{
    QWidget *box = ui->UdpSettingsGroup;
    linkTypeCombo = newLinkWidget<QComboBox>("linkTypeCombo", box);
    linkTypeCombo->addItems({ LINK_SERIAL, LINK_TCP, LINK_UDP });
    linkTypeCombo->setCurrentIndex(3);

    connectButton = newLinkWidget<QPushButton>("connectButton", box);
    connectButton->setText(tr("Connect"));
    serialPortCombo = newLinkWidget<QComboBox>("serialPortCombo", box);
    serialBaudText = newLinkWidget<QLineEdit>("serialBaudText", box);
    hostText = newLinkWidget<QLineEdit>("hostText", box);
    portText = newLinkWidget<QLineEdit>("portText", box);
    const QList<QWidget *> unplaced { connectButton.data(), serialPortCombo.data(), serialBaudText.data(),
        hostText.data(), portText.data() };
    for (QWidget *widget : unplaced)
        widget->hide();

    linkTypeLayout = new QFormLayout;
    linkTypeLayout->setSpacing(10);
    linkTypeLayout->setContentsMargins(15, 15, 15, 15);
    linkTypeLayout->addRow(tr("Link type"), linkTypeCombo);
    // Connected only now, so the start-up index change reaches no handler.
    connect(linkTypeCombo, &QComboBox::currentTextChanged, this, &MainWindow::linkTypeChanged);
    box->setLayout(linkTypeLayout);
}

void MainWindow::clearLinkRows()
{
    while (linkTypeLayout->rowCount() >= 2)
        linkTypeLayout->removeRow(1);
    // Removing a row destroys its widgets; what is left was never placed.
    delete connectButton;
    delete serialPortCombo;
    delete serialBaudText;
    delete hostText;
    delete portText;
}

void MainWindow::linkTypeChanged(const QString &type)
{
    closeConnection();
    clearLinkRows();

    QWidget *box = ui->UdpSettingsGroup;
    if (type == QLatin1String(LINK_SERIAL)) {
        serialPortCombo = newLinkWidget<QComboBox>("serialPortCombo", box);
        for (const QSerialPortInfo &port : QSerialPortInfo::availablePorts())
            serialPortCombo->addItem(port.portName());
        // Ports the system does not list, such as pseudo-terminals, are typed in.
        serialPortCombo->setEditable(true);
        serialBaudText = newLinkWidget<QLineEdit>("serialBaudText", box);
        serialBaudText->setText(QStringLiteral("38400"));
        linkTypeLayout->addRow(tr("Port"), serialPortCombo);
        linkTypeLayout->addRow(tr("Baud rate"), serialBaudText);
    } else {
        hostText = newLinkWidget<QLineEdit>("hostText", box);
        hostText->setText(QStringLiteral("127.0.0.1"));
        portText = newLinkWidget<QLineEdit>("portText", box);
        portText->setText(QStringLiteral("10004"));
        linkTypeLayout->addRow(tr("Host"), hostText);
        linkTypeLayout->addRow(tr("Port"), portText);
    }

    connectButton = newLinkWidget<QPushButton>("connectButton", box);
    connectButton->setText(tr("Connect"));
    connect(connectButton, &QPushButton::pressed, this, &MainWindow::toggleConnection);
    linkTypeLayout->addRow(connectButton);
}

// The readiness and timer connections below are made again on every
// successful connect and never undone: after a second connect of the same
// link each notification runs its handler twice. Kept on purpose.
void MainWindow::toggleConnection()
{
    if (connectButton && connectButton->text() == tr("Disconnect")) {
        closeConnection();
        return;
    }

    if (!m_retrying)
        m_reconnector->stop(); // the operator's own press starts over
    m_link_status->connecting(linkInFields().describe());
    const QString type = linkTypeCombo->currentText();
    if (type == QLatin1String(LINK_SERIAL)) {
        openSerial();
        return;
    }
    if (!resolvePeer()) {
        linkFailed(tr("host not found"));
        return;
    }
    if (type == QLatin1String(LINK_TCP)) {
        connect(&tcpSocket, &QTcpSocket::connected, this, &MainWindow::tcpConnected, handlerConnection());
        connect(
            &tcpSocket, &QTcpSocket::disconnected, this, &MainWindow::tcpDisconnected, handlerConnection());
        connect(&tcpSocket, &QTcpSocket::readyRead, this, &MainWindow::readTcpData, handlerConnection());
        tcpSocket.connectToHost(m_ip_address, currentPort(), QIODevice::ReadWrite);
    } else if (type == QLatin1String(LINK_UDP)) {
        openUdp();
    }
}

void MainWindow::openSerial()
{
    if (!serialPortCombo || !serialBaudText)
        return;
    m_serial->setPortName(serialPortCombo->currentText());
    m_serial->setBaudRate(serialBaudText->text().toInt());
    if (!m_serial->open(QIODevice::ReadWrite)) {
        qDebug() << "Port NOT opened:" << m_serial->errorString();
        linkFailed(tr("port cannot be opened: %1").arg(m_serial->errorString()));
        return;
    }
    connect(m_serial, &QSerialPort::readyRead, this, &MainWindow::readSerialData, handlerConnection());
    setConnected(SERIAL);
    linkUp();
}

// Fills m_ip_address from the host field: an IPv4 literal directly,
// anything else (a name or an IPv6 literal) by a blocking look-up. Returns
// false when the look-up fails or yields no address.
bool MainWindow::resolvePeer()
{
    const QString host = hostText ? hostText->text() : QString();
    QHostAddress literal;
    if (literal.setAddress(host) && literal.protocol() == QAbstractSocket::IPv4Protocol) {
        qDebug() << "Valid IPv4 address.";
        m_ip_address = literal;
        return true;
    }
    const QHostInfo info = QHostInfo::fromName(host);
    if (info.error() != QHostInfo::NoError || info.addresses().isEmpty()) {
        qDebug() << "DNS lookup failed:" << info.errorString();
        return false;
    }
    m_ip_address = info.addresses().constFirst();
    qDebug() << "DNS lookup success:" << m_ip_address.toString();
    return true;
}

void MainWindow::openUdp()
{
    udpSocket.bind(0);
    // An empty datagram tells the far end where this client listens.
    udpSocket.writeDatagram(QByteArray(), m_ip_address, currentPort());
    m_udp_tick_timer.start(UDP_TICK_MS);
    connect(&m_udp_tick_timer, &QTimer::timeout, this, &MainWindow::tickUdpSocket, handlerConnection());
    connect(&udpSocket, &QUdpSocket::readyRead, this, &MainWindow::readUdpData, handlerConnection());
    setConnected(UDP);
    linkUp();
}

void MainWindow::setConnected(ConnectionType connection)
{
    m_active_connection = connection;
    if (connectButton)
        connectButton->setText(connection == NONE ? tr("Connect") : tr("Disconnect"));
}

// The port field is read at each use, so an edit takes effect at once.
quint16 MainWindow::currentPort() const
{
    return portText ? portText->text().toUShort() : 0;
}

void MainWindow::tcpConnected()
{
    setConnected(TCP);
    linkUp();
}

void MainWindow::tcpDisconnected()
{
    if (m_active_connection != TCP)
        return;
    setConnected(NONE);
    statusBar()->showMessage(tr("TCP disconnected!"));
    linkFailed(tr("lost"));
}

// A port that goes away while open (an adapter pulled out, the far end of a
// pseudo-terminal closed) keeps signalling data that is not there: it is
// closed rather than polled at full speed.
void MainWindow::serialPortError(QSerialPort::SerialPortError error)
{
    if (error != QSerialPort::ResourceError && error != QSerialPort::ReadError)
        return;
    if (m_active_connection != SERIAL || !m_serial->isOpen())
        return;
    qWarning() << "Serial port lost:" << m_serial->errorString();
    const QString reason = m_serial->errorString();
    closeConnection();
    statusBar()->showMessage(tr("Serial port lost!"));
    linkFailed(tr("lost: %1").arg(reason));
}

void MainWindow::closeConnection()
{
    if (m_serial->isOpen())
        m_serial->close();
    if (udpSocket.state() != QAbstractSocket::UnconnectedState) {
        udpSocket.close();
        m_udp_tick_timer.stop();
    }
    // NONE before the graceful disconnect: with nothing left to write it
    // completes at once, and tcpDisconnected must see a loss the user asked
    // for.
    setConnected(NONE);
    m_reconnector->stop();
    m_link_status->closed();
    if (tcpSocket.state() != QAbstractSocket::UnconnectedState)
        tcpSocket.disconnectFromHost();
}

void MainWindow::tickUdpSocket()
{
    if (m_active_connection == UDP)
        udpSocket.writeDatagram(QByteArray(), m_ip_address, currentPort());
}

// The packet log's table lays itself out once per pass of the event loop,
// not once per packet (PacketTableView), so a burst costs that once.
void MainWindow::feedSppHost(const QString &source, const QByteArray &bytes)
{
    emit linkBytesReceived(linkName(), bytes);
    m_spp_host->setSource(source);
    for (const char byte : bytes)
        m_spp_host->parse(uint8_t(byte));
}

// Each read takes at most READ_BYTES and hands all of them over before it
// returns; the rest waits for the next pass of the event loop.
void MainWindow::readSerialData()
{
    feedSppHost(QStringLiteral("serial"), m_serial->read(READ_BYTES));
    drainLater(m_serial->bytesAvailable() > 0);
}

void MainWindow::readTcpData()
{
    feedSppHost(QStringLiteral("tcp"), tcpSocket.read(READ_BYTES));
    drainLater(tcpSocket.bytesAvailable() > 0);
}

void MainWindow::drainLater(bool more)
{
    if (more && !m_drain_timer.isActive())
        m_drain_timer.start();
}

void MainWindow::drainLinks()
{
    if (m_serial->isOpen() && m_serial->bytesAvailable() > 0)
        readSerialData();
    if (tcpSocket.bytesAvailable() > 0)
        readTcpData();
    if (udpSocket.hasPendingDatagrams())
        readUdpData();
}

// Datagram boundaries are not frame boundaries: the framing host joins
// frames split across datagrams.
void MainWindow::readUdpData()
{
    qint64 taken = 0;
    do {
        QByteArray datagram(int(qMax<qint64>(0, udpSocket.pendingDatagramSize())), Qt::Uninitialized);
        QHostAddress sender;
        quint16 sender_port = 0;
        if (udpSocket.readDatagram(datagram.data(), datagram.size(), &sender, &sender_port) < 0)
            break;
        feedSppHost(QStringLiteral("udp"), datagram);
        taken += datagram.size();
    } while (udpSocket.hasPendingDatagrams() && taken < READ_BYTES);
    drainLater(udpSocket.hasPendingDatagrams());
}

void MainWindow::sendData(const QByteArray &data)
{
    qDebug() << "Sending length" << data.size();
    if (data.isEmpty())
        return;
    switch (m_active_connection) {
    case SERIAL:
        m_serial->write(data);
        break;
    case UDP:
        udpSocket.writeDatagram(data, m_ip_address, currentPort());
        break;
    case TCP:
        tcpSocket.write(data);
        break;
    case NONE:
        return;
    }
    emit linkBytesSent(linkName(), data);
}

QString MainWindow::linkName() const
{
    switch (m_active_connection) {
    case SERIAL:
        return QStringLiteral("serial:%1@%2").arg(m_serial->portName()).arg(m_serial->baudRate());
    case UDP:
        return QStringLiteral("udp:%1:%2").arg(m_ip_address.toString()).arg(currentPort());
    case TCP:
        return QStringLiteral("tcp:%1:%2").arg(m_ip_address.toString()).arg(tcpSocket.peerPort());
    case NONE:
        break;
    }
    return QString();
}

// Every packet asks for its own return to grey 200 ms later; the first of
// a burst turns the icon grey again.
void MainWindow::packetIndicatorStart()
{
    if (!m_blue)
        m_packet_inducator->setPixmap(m_icon_active);
    m_blue = true;
    m_blink->add();
}

void MainWindow::packetIndicatorStop()
{
    m_packet_inducator->setPixmap(m_icon_idle);
    m_blue = false;
}

// A payload too short for its header counts as all header: no extension
// flag, no packet bytes (see varda_spp_split_payload). A transmit request
// (type 1) never comes from the modem and is logged as an unknown type.
void MainWindow::handleSppPacket(uint8_t type, const uint8_t *d, uint16_t d_len, const QString &path)
{
    varda_spp_payload_t pkt;
    varda_spp_split_payload(type, d, d_len, &pkt);
    const bool radio = type == SPP_TYPE_RX || type == SPP_TYPE_LOCAL;
    QStringList paths { path };
    VardaExtension ext;
    QString content = QStringLiteral("spp(");

    if (radio)
        ext.parse(pkt.payload, pkt.payload_len);
    switch (type) {
    case SPP_TYPE_RX:
        paths.prepend(QStringLiteral("rx(%1)").arg(pkt.rssi_dbm));
        content += QLatin1String("rx)");
        break;
    case SPP_TYPE_LOCAL:
        paths.prepend(QStringLiteral("local"));
        content += QLatin1String("local)");
        break;
    case SPP_TYPE_CMD:
        paths.prepend(QStringLiteral("local"));
        content += QLatin1String("cmd)");
        if (m_config_mode == SPP_CMD)
            appendTerminal(QString::fromLatin1(reinterpret_cast<const char *>(pkt.payload), pkt.payload_len));
        break;
    default:
        // Unknown types are logged as they are; the summary stays open.
        break;
    }

    if (radio && pkt.extension) {
        handleExt(ext, paths);
        content += QLatin1String(", ext(") + ext.getExtensionTypeStrings().join(QLatin1String(", "))
            + QLatin1Char(')');
    }

    if (type == SPP_TYPE_LOCAL && ui->ignoreLocalBox->isChecked())
        return;
    m_packet_model->addPacket(ui->packetTable, ext.getSource(), paths.join(QLatin1String(", ")), pkt.rssi_dbm,
        radio ? pkt.payload_len : d_len, content);
    packetIndicatorStart();
}

Station *MainWindow::stationFor(const QString &callsign)
{
    Station *station = m_stations->get(callsign);
    return station ? station : m_stations->append(callsign);
}

void MainWindow::handleExt(const VardaExtension &ext, const QStringList &paths)
{
    if (!ext.hasExtensionType(VRD_EXT_SRC))
        return;
    const QString callsign = ext.getSource();
    stationFor(callsign)->update(QDateTime::currentDateTime(), ext, paths);

    // The first packet the local modem sends itself teaches the window its
    // own callsign.
    if (paths.constFirst() == QLatin1String("local") && ui->localCallAutoSetBox->isChecked()
        && callsign != m_this_station) {
        m_this_station = callsign;
        ui->localCallEdit->setText(callsign);
    }

    if (m_config_mode == EXT_CMD && ext.hasExtensionType(VRD_EXT_TEXT) && callsign == m_active_station)
        appendTerminal(ext.getExtensionCmdReply());
}

// Satellite messages carry no extension content and no path.
void MainWindow::incomingSbd(const QString &imei, const QByteArray &data)
{
    stationFor(imei)->updateTime(QDateTime::currentDateTime());
    m_packet_model->addPacket(
        ui->packetTable, imei, QStringLiteral("iridium"), VRD_RSSI_UNKNOWN, data.size(), QString());
}

void MainWindow::appendTerminal(const QString &text)
{
    QPlainTextEdit *output = ui->commandOutputTextEdit;
    output->moveCursor(QTextCursor::End);
    output->insertPlainText(text);
    output->moveCursor(QTextCursor::End);
}

// The mode starts as SPP_CMD while the box shows its first item, "Dumb
// terminal (local)": commands typed before any pick go out as SPP commands.
// Kept on purpose.
void MainWindow::configModeChanged(const QString &mode)
{
    for (int i = DUMB; i <= EXT_DATA; i++) {
        if (mode == QLatin1String(TERMINAL_MODES[i])) {
            m_config_mode = ConfigMode(i);
            return;
        }
    }
}

void MainWindow::sendCommand()
{
    QString command = ui->commandLineEdit->text();
    ui->commandLineEdit->clear();
    if (command.isEmpty())
        return;
    if (ui->terminalAddNewline->isChecked())
        command += QLatin1String("\r\n");

    QByteArray data;
    switch (m_config_mode) {
    case SPP_CMD:
        data = SppHost::packCommand(command);
        qDebug() << "Sending d" << data.constData();
        break;
    case EXT_CMD:
        data = packExtCommand(command);
        break;
    case DUMB:
    case EXT_DATA:
        break;
    }
    sendData(data);
}

// Without a known local callsign the packet goes out without a source and
// the sequence number stays where it is.
QByteArray MainWindow::packExtCommand(const QString &command)
{
    if (m_active_station.isEmpty()) {
        qDebug() << "No destination!";
        return QByteArray();
    }
    VardaExtension ext;
    if (!m_this_station.isEmpty())
        ext.addSource(m_this_station, ++m_seq_nr);
    ext.addCommandRequest(m_active_station, command);
    return SppHost::packTransmit(ext.getPacket(), VARDA_FLAG_EXTENSION);
}

void MainWindow::setActiveStation(const QString &callsign)
{
    m_active_station = callsign;
    ui->commandOutputTextEdit->clear();
    ui->commandLineEdit->clear();
}

// A destination picked from the list is taken as listed.
void MainWindow::terminalStationChanged(int index)
{
    if (index == -1)
        return;
    const Station *station = m_stations->get(index);
    if (!station)
        return;
    const QString callsign = station->getCallsign();
    ui->terminalSelectActive->setEditText(callsign);
    if (callsign == m_active_station)
        return;
    setActiveStation(callsign);
    qDebug() << "Select finished. Active station" << callsign;
}

// A typed destination need not be in the list; it is upper-cased.
void MainWindow::terminalStationChanged()
{
    const QString callsign = ui->terminalSelectActive->currentText().toUpper();
    if (callsign.isEmpty() || callsign == m_active_station)
        return;
    setActiveStation(callsign);
    ui->terminalSelectActive->setEditText(callsign);
    qDebug() << "Edit finished. Active station" << callsign;
}

void MainWindow::selectStationTree(const QModelIndex &index)
{
    QTreeView *tree = ui->stationTreeView;
    QStandardItemModel *properties = m_stations->getExtensionModel(index.row());
    if (tree->model() != properties) {
        // setModel leaves the old selection model to its owner: us.
        QItemSelectionModel *old_selection = tree->selectionModel();
        tree->setModel(properties);
        delete old_selection;
    }
    tree->expandAll();
    tree->setColumnWidth(0, 250);
}
