#ifndef LINKOPTIONS_H
#define LINKOPTIONS_H

#include <QCommandLineOption>
#include <QString>

#include "linkaddress.h"

#include "optiongroup.h"

class MainWindow;
class QCommandLineParser;

// The link options of both programs: --link connects at start, --reconnect
// tries lost links again; with a gateway, --gateway HOST connects the
// Iridium gateway at start as well.
class LinkOptions : public OptionGroup
{
public:
    enum Gateway { NoGateway, WithGateway };

    explicit LinkOptions(Gateway gateway = NoGateway);

    void addTo(QCommandLineParser *parser) const override;
    // False with a one-line message when --link names no usable link.
    bool read(const QCommandLineParser &parser, QString *error) override;
    // Connects the window as the options ask.
    void applyTo(MainWindow *window) const;

    bool reconnect() const;
    // Empty unless --gateway was given.
    QString gatewayHost() const;

private:
    Gateway m_gateway;
    QCommandLineOption m_link_option;
    QCommandLineOption m_reconnect_option;
    QCommandLineOption m_gateway_option;
    bool m_has_link = false;
    LinkAddress m_link;
    bool m_reconnect = false;
    QString m_gateway_host;
};

#endif
