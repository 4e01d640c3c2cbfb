#include "mainwindow_harness.h"

#include "reference_frames.h"
#include "varda_extension.h"
#include "varda_extension_qt.h"
#include "varda_spp_host.h"

namespace harness
{

namespace
{
    QByteArray subPacket(uint8_t type, const QByteArray &data)
    {
        return char(type) + (char(data.size()) + data);
    }

    QStringList messages;
    QtMessageHandler previousHandler = nullptr;

    void recordMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
    {
        messages.append(message);
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

QByteArray stat()
{
    return subPacket(VRD_EXT_STAT, QByteArray(int(sizeof(varda_stat_t)), '\x01'));
}

QByteArray text(const QByteArray &reply)
{
    return subPacket(VRD_EXT_TEXT, reply);
}

QByteArray rxFrame(uint8_t rssi, uint8_t flags, const QByteArray &packet)
{
    spp_rxhdr_t header = {};
    header.timestamp_toh_us = 1234567;
    header.noise = 95;
    header.rssi = rssi;
    header.varda_flags = flags;
    return reference::sppFrame(
        SPP_TYPE_RX, QByteArray(reinterpret_cast<const char *>(&header), sizeof header) + packet);
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
    for (int start; (start = stream->indexOf(char(SPP_START))) >= 0;) {
        stream->remove(0, start);
        const int length
            = stream->size() < SPP_HEADER_LEN ? INT_MAX : SPP_HEADER_LEN + uint8_t(stream->at(4));
        if (stream->size() < length)
            return frames;
        const QByteArray frame = stream->left(length);
        const bool good = reference::withCrc(char(SPP_START), frame.mid(3)) == frame;
        if (good)
            frames.append({ uint8_t(frame.at(3)), frame.mid(SPP_HEADER_LEN) });
        stream->remove(0, good ? length : 1);
    }
    stream->clear();
    return frames;
}

void MessageLog::install()
{
    previousHandler = qInstallMessageHandler(recordMessage);
}

bool MessageLog::startsWith(const QString &prefix)
{
    return std::any_of(
        messages.begin(), messages.end(), [&](const QString &l) { return l.startsWith(prefix); });
}

int MessageLog::count(const QString &line)
{
    return messages.count(line);
}

void MessageLog::clear()
{
    messages.clear();
}

} // namespace harness
