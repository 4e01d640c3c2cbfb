#ifndef VARDA_EXTENSION_QT_H
#define VARDA_EXTENSION_QT_H

#include <QByteArray>
#include <QByteArrayList>
#include <QMap>
#include <QString>
#include <QStringList>

#include <stdint.h>

class QStandardItemModel;

// Object form of an extension packet (sub-packet format in
// varda_extension.h): a received payload split into its sub-packets by type,
// or sub-packets collected for sending.
class VardaExtension
{
public:
    VardaExtension();

    // Receiving. parse() adds to what earlier calls left: a later sub-packet
    // of a type replaces the earlier one. An invalid payload adds nothing.
    void parse(const uint8_t *data, uint16_t len);
    bool hasExtensionType(uint8_t type) const;
    QString getSource() const;
    QByteArray getData() const;
    QString getExtensionCmdReply() const;
    QStringList getExtensionTypeStrings() const;
    // Writes one top-level item per held type with (label, value) rows under
    // it, updating the rows already in the model.
    void getConvertedExtensionData(QStandardItemModel *model) const;

    static QString secondsToDhms(unsigned int sec);

    // Building, in the order called.
    void addSource(const QString &call, uint8_t seq);
    void addDestination(const QString &call);
    void addCommand(const QString &command);
    // A command for another station: "dest", then "cmd_req".
    void addCommandRequest(const QString &destination, const QString &command);
    void addData(const QByteArray &data);
    QByteArray getPacket() const;

    // Longest command packCommand accepts, in characters.
    static constexpr int MAX_SIZE = 203;

    // A complete src + dest + cmd_req packet; empty for a command longer
    // than MAX_SIZE characters. The sequence number is always 123.
    static QByteArray packCommand(const QString &destination, const QString &source, const QString &command);

private:
    QMap<int, QByteArray> m_pkts;
    QByteArrayList m_txpkts;
};

#endif
