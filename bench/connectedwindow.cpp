#include "connectedwindow.h"

#include <QAbstractItemModel>
#include <QComboBox>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>
#include <QTcpSocket>

#include <functional>

namespace
{

const int WAIT_MS = 30000;

bool waitFor(const std::function<bool()> &done)
{
    QElapsedTimer timer;
    timer.start();
    while (!done()) {
        if (timer.elapsed() > WAIT_MS)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
    }
    return true;
}

} // namespace

ConnectedWindow::ConnectedWindow(int tab)
{
    m_server.listen(QHostAddress::LocalHost, 0);
    m_window.findChild<QTabWidget *>("tabWidget")->setCurrentIndex(tab);
    m_window.show();
    auto *linkType = m_window.findChild<QComboBox *>("linkTypeCombo");
    linkType->setCurrentIndex(linkType->findText("TCP"));
    m_window.findChild<QLineEdit *>("portText")->setText(QString::number(m_server.serverPort()));
    m_window.findChild<QPushButton *>("connectButton")->click();
    if (!waitFor([this] { return m_server.hasPendingConnections(); }))
        return;
    m_modem = m_server.nextPendingConnection();
    const QAbstractItemModel *log = m_window.findChild<QTableView *>("packetTable")->model();
    QObject::connect(log, &QAbstractItemModel::rowsInserted, &m_window, [this] { m_rows++; });
}

bool ConnectedWindow::connected() const
{
    return m_modem != nullptr;
}

MainWindow *ConnectedWindow::window()
{
    return &m_window;
}

bool ConnectedWindow::deliver(const QByteArray &bytes, int packets)
{
    m_rows = 0;
    m_modem->write(bytes);
    return waitFor([&] { return m_rows >= packets; });
}
