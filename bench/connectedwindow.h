#ifndef CONNECTEDWINDOW_H
#define CONNECTEDWINDOW_H

#include <QByteArray>
#include <QTcpServer>

#include "mainwindow.h"

class QTcpSocket;

// A shown main window connected over TCP on 127.0.0.1 to a modem played in
// this process, with one tab on view (0 "Settings", 1 "Packets",
// 2 "Stations", 3 "Terminal").
class ConnectedWindow
{
public:
    explicit ConnectedWindow(int tab);

    bool connected() const;
    MainWindow *window();
    // Sends the bytes and runs the event loop until the packet log has taken
    // that many packets; false when it has not within 30 s.
    bool deliver(const QByteArray &bytes, int packets);

private:
    QTcpServer m_server;
    MainWindow m_window;
    QTcpSocket *m_modem = nullptr;
    int m_rows = 0;
};

#endif
