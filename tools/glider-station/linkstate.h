#ifndef LINKSTATE_H
#define LINKSTATE_H

#include <QObject>
#include <QString>

class GatewaySettings;
class MainWindow;

// Whether each link to the vehicle can carry a command now: "Pell" while the
// radio tool has a link to its modem open, "Iridium" while the gateway
// client is connected.
class LinkState : public QObject
{
    Q_OBJECT
public:
    LinkState(const MainWindow *radio, const GatewaySettings *gateway, QObject *parent = nullptr);

    bool isUp(const QString &link) const;
    // The link that is not this one.
    static QString other(const QString &link);

private:
    const MainWindow *m_radio;
    const GatewaySettings *m_gateway;
};

#endif
