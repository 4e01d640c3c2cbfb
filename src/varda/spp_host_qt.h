#ifndef SPP_HOST_QT_H
#define SPP_HOST_QT_H

#include <QByteArray>
#include <QObject>
#include <QString>

#include <stdint.h>

#include "varda_spp_host.h"

// Finds SPP frames (wire format in varda_spp_host.h) in the bytes of
// whichever link is open, and builds the frames the program sends.
// The receive state survives link changes: a frame left half-done by one
// link is continued by the next bytes, whichever link brings them.
class SppHost : public QObject
{
    Q_OBJECT
public:
    enum State : uint8_t { START = VRD_FRAME_START, HEADER = VRD_FRAME_HEADER, PAYLOAD = VRD_FRAME_PAYLOAD };

    explicit SppHost(QObject *parent = nullptr);

    // Names the link the next bytes come from; handed out with each packet.
    void setSource(const QString &source);
    // Feeds one received byte; may emit newPacket before returning.
    void parse(uint8_t byte);

    // Type-3 frame with the command in the local 8-bit encoding. The length
    // byte is the character count (low 8 bits), not the encoded byte count.
    static QByteArray packCommand(const QString &cmd);
    // Type-1 frame: spp_txhdr_t with varda_flags = flags, then the data.
    // Empty when len exceeds 220.
    static QByteArray packTransmit(const uint8_t *data, unsigned len, uint8_t flags);
    static QByteArray packTransmit(const QByteArray &data, uint8_t flags);

    // What the receiver threw away since construction: frames whose CRC
    // failed, and bytes outside any frame (varda_frame_rx.h).
    quint64 badCrcFrames() const;
    quint64 droppedBytes() const;

signals:
    // data points into the host's own buffer and is valid only during the
    // emission; receivers copy what they keep.
    void newPacket(uint8_t type, uint8_t *data, uint16_t len, const QString &source);

private:
    // CRC check and delivery, once per frame; keeps parse() a leaf.
    void frameComplete();

    uint8_t d[SPP_MAX_FRAME];
    uint16_t d_len = 0;
    uint16_t d_target = 0;
    uint8_t state = START;
    vrd_frame_counters_t m_counters = { 0, 0 };
    QString m_source;
};

#endif
