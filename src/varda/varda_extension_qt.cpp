#include "varda_extension_qt.h"

#include <QList>
#include <QPair>
#include <QStandardItem>
#include <QStandardItemModel>

#include <string.h>

#include "propertyrow.h"
#include "varda_extension.h"

namespace
{

// Copies a fixed-size record out of a sub-packet's data; false when the data
// is too short to hold it.
template <typename T> bool readRecord(const QByteArray &data, T *record)
{
    if (size_t(data.size()) < sizeof(T))
        return false;
    memcpy(record, data.constData(), sizeof(T));
    return true;
}

QString decodeCallsign(const QByteArray &data)
{
    if (data.size() < VRD_CALLSIGN_ENC_LEN)
        return QString();
    char text[VRD_CALLSIGN_TEXT_LEN];
    vrd_ext_decode_callsign(text, reinterpret_cast<const uint8_t *>(data.constData()));
    return QString::fromLatin1(text);
}

QByteArray encodeCallsign(const QString &call)
{
    QByteArray enc(VRD_CALLSIGN_ENC_LEN, '\0');
    // A malformed SSID packs nothing: the callsign goes out as six zero
    // bytes, which decode to an empty text.
    vrd_ext_encode_callsign(reinterpret_cast<uint8_t *>(enc.data()), call.toLatin1().constData());
    return enc;
}

QByteArray subPacket(uint8_t type, const QByteArray &data)
{
    QByteArray pkt;
    pkt.reserve(2 + data.size());
    pkt.append(char(type));
    pkt.append(char(data.size() & 0xFF));
    pkt.append(data);
    return pkt;
}

using Row = QPair<QString, QString>;

QList<Row> srcRows(const QByteArray &data)
{
    varda_src_t src;
    if (!readRecord(data, &src))
        return {};
    return { { "Callsign", decodeCallsign(data) }, { "Seq. nr", QString::number(src.sequence) } };
}

QList<Row> statRows(const QByteArray &data)
{
    varda_stat_t st;
    if (!readRecord(data, &st))
        return {};
    const unsigned hw = st.hw_ver;
    const unsigned sw = st.sw_ver;
    return {
        { "Hardware version", QString("%1/%2").arg(hw >> 6).arg(hw & 63) },
        { "Serial number", QString::number(st.serial) },
        { "Software version", QString("%1.%2.%3").arg(sw >> 12).arg((sw >> 8) & 15).arg(sw & 255) },
        { "Uptime", VardaExtension::secondsToDhms(st.uptime_s) },
        { "Voltage (V)", QString::number(st.voltage / 10.0, 'f', 2) },
        { "Temperature (C)", QString::number(st.temp) },
        { "Signal (dBm)", QString::number(vrd_dbm(st.signal)) },
        { "Noise (dBm)", QString::number(vrd_dbm(st.noise)) },
        { "RX count OK", QString::number(st.cntr_rx_ok) },
        { "RX count fixed", QString::number(st.cntr_rx_fix) },
        { "RX count errors", QString::number(st.cntr_rx_err) },
        { "TX count", QString::number(st.cntr_tx) },
    };
}

QList<Row> simplehopRows(const QByteArray &data)
{
    if (data.isEmpty())
        return {};
    const unsigned hop = uint8_t(data.at(0));
    return { { "Hops remaining", QString::number((hop >> 5) & 7) },
        { "Hops total", QString::number((hop >> 2) & 7) } };
}

QList<Row> tohRows(const QByteArray &data)
{
    varda_toh_t toh;
    if (!readRecord(data, &toh))
        return {};
    return { { "Time of hour (us)", QString::number(toh.toh_us) },
        { "Validity", QString::number(toh.toh_val) } };
}

QList<Row> destRows(const QByteArray &data)
{
    if (data.size() < VRD_CALLSIGN_ENC_LEN)
        return {};
    return { { "Callsign", decodeCallsign(data) } };
}

QList<Row> textRows(const QByteArray &data)
{
    return { { "Reply", QString::fromLatin1(data) } };
}

// Label and value rows shown under a type's item; none for types whose
// content is not broken down.
QList<Row> rowsFor(int type, const QByteArray &data)
{
    switch (type) {
    case VRD_EXT_SRC:
        return srcRows(data);
    case VRD_EXT_STAT:
        return statRows(data);
    case VRD_EXT_SIMPLEHOP:
        return simplehopRows(data);
    case VRD_EXT_TOH:
        return tohRows(data);
    case VRD_EXT_DEST:
        return destRows(data);
    case VRD_EXT_TEXT:
        return textRows(data);
    default:
        return {};
    }
}

// The top-level item named after a type, created when missing. Null when
// several items carry the name: which one to update is then unclear, and
// none is touched.
QStandardItem *typeItem(QStandardItemModel *model, const QString &name)
{
    QStandardItem *found = nullptr;
    for (int row = 0; row < model->rowCount(); row++) {
        QStandardItem *item = model->item(row, 0);
        if (!item || item->text() != name)
            continue;
        if (found)
            return nullptr;
        found = item;
    }
    if (!found) {
        found = new QStandardItem(name);
        model->appendRow(found);
    }
    return found;
}

} // namespace

VardaExtension::VardaExtension() = default;

void VardaExtension::parse(const uint8_t *data, uint16_t len)
{
    unsigned pos = 0;
    // The count is taken anew before each sub-packet. It only covers
    // complete sub-packets of a valid chain; the checks below still bound
    // every read by len and drop everything should they ever fail.
    for (unsigned count = 0; count < vrd_ext_numpkts(data, len); count++) {
        const uint8_t type = data[pos];
        const unsigned size = data[pos + 1];
        if (type >= VRD_EXT_TYPES || pos + size + 2 > len) {
            m_pkts.clear();
            return;
        }
        m_pkts.insert(type, QByteArray(reinterpret_cast<const char *>(data + pos + 2), int(size)));
        pos += size + 2;
    }
}

bool VardaExtension::hasExtensionType(uint8_t type) const
{
    return m_pkts.contains(type);
}

QString VardaExtension::getSource() const
{
    return decodeCallsign(m_pkts.value(VRD_EXT_SRC));
}

QByteArray VardaExtension::getData() const
{
    return m_pkts.value(VRD_EXT_DATA);
}

QString VardaExtension::getExtensionCmdReply() const
{
    return QString::fromLatin1(m_pkts.value(VRD_EXT_TEXT));
}

QStringList VardaExtension::getExtensionTypeStrings() const
{
    QStringList names;
    for (auto it = m_pkts.keyBegin(); it != m_pkts.keyEnd(); ++it) {
        const int type = *it;
        if (type < 0 || type >= VRD_EXT_TYPES)
            return { "INVALID" };
        names.append(EXT_TYPE_STRINGS[type]);
    }
    return names;
}

void VardaExtension::getConvertedExtensionData(QStandardItemModel *model) const
{
    for (auto it = m_pkts.cbegin(); it != m_pkts.cend(); ++it) {
        if (it.key() < 0 || it.key() >= VRD_EXT_TYPES)
            continue;
        QStandardItem *parent = typeItem(model, EXT_TYPE_STRINGS[it.key()]);
        if (!parent)
            continue;
        for (const Row &row : rowsFor(it.key(), it.value()))
            setPropertyRow(parent, row.first, row.second);
    }
}

QString VardaExtension::secondsToDhms(unsigned int sec)
{
    const unsigned days = sec / 86400;
    const unsigned rest = sec % 86400;
    const unsigned hours = rest / 3600;
    const unsigned minutes = rest % 3600 / 60;
    const unsigned seconds = rest % 60;
    if (days > 0)
        return QString::asprintf("%u day(s) %02u:%02u:%02u", days, hours, minutes, seconds);
    return QString::asprintf("%02u:%02u:%02u", hours, minutes, seconds);
}

void VardaExtension::addSource(const QString &call, uint8_t seq)
{
    m_txpkts.append(subPacket(VRD_EXT_SRC, encodeCallsign(call) + char(seq)));
}

void VardaExtension::addDestination(const QString &call)
{
    m_txpkts.append(subPacket(VRD_EXT_DEST, encodeCallsign(call)));
}

void VardaExtension::addCommand(const QString &command)
{
    m_txpkts.append(subPacket(VRD_EXT_CMD_REQ, command.toLatin1()));
}

void VardaExtension::addData(const QByteArray &data)
{
    m_txpkts.append(subPacket(VRD_EXT_DATA, data));
}

void VardaExtension::addCommandRequest(const QString &destination, const QString &command)
{
    addDestination(destination);
    addCommand(command);
}

QByteArray VardaExtension::getPacket() const
{
    return m_txpkts.join();
}

QByteArray VardaExtension::packCommand(
    const QString &destination, const QString &source, const QString &command)
{
    if (command.size() > MAX_SIZE)
        return QByteArray();
    VardaExtension ext;
    // Always 123: this one-shot builder keeps no sequence of its own.
    ext.addSource(source, 123);
    ext.addCommandRequest(destination, command);
    return ext.getPacket();
}
