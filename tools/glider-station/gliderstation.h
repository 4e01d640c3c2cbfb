#ifndef GLIDERSTATION_H
#define GLIDERSTATION_H

#include <QByteArray>
#include <QMainWindow>
#include <QString>

class Cockpit;
class GatewaySettings;
class Glider;
class MainWindow;
class QTabWidget;

// The vehicle station: the radio tool and the glider panel in one window,
// with the Iridium gateway client. Radio packets reach the panel, its
// radio commands leave over whatever link the radio tool has open, and its
// satellite traffic goes through the gateway.
class GliderStation : public QMainWindow
{
    Q_OBJECT
public:
    explicit GliderStation(QWidget *parent = nullptr);

    MainWindow *radio() const;
    Glider *glider() const;
    GatewaySettings *gateway() const;
    Cockpit *cockpit() const;

public slots:
    // Vehicle data heard on the radio goes on to relayhub while the
    // operator wants it to and the gateway is connected.
    void forwardPayload(const QString &callsign, const QByteArray &payload);
    // Says in the status bar that the gateway client was replaced.
    void gatewayStalled(const QString &reason);

private:
    void wire();
    void addCockpit(QWidget *vehicle);

    QTabWidget *m_tabs;
    MainWindow *m_radio;
    GatewaySettings *m_gateway;
    Glider *m_glider;
    Cockpit *m_cockpit;
};

#endif
