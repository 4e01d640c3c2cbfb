#ifndef LIVEDECODER_H
#define LIVEDECODER_H

#include <QHostAddress>
#include <QObject>
#include <QSerialPort>
#include <QTcpSocket>
#include <QTimer>
#include <QUdpSocket>

#include "captureprinter.h"
#include "linkaddress.h"
#include "streamsegmenter.h"

// Decodes a live modem link: every block of the bytes it receives, cut as
// the recorder cuts them, printed as it completes. Over UDP it announces
// itself with an empty datagram and keeps that up every 10 s, as the tool
// does.
class LiveDecoder : public QObject
{
    Q_OBJECT
public:
    LiveDecoder(const LinkAddress &address, CapturePrinter *printer, QObject *parent = nullptr);

    // False with a message when the link cannot be opened.
    bool open(QString *error);
    // Prints what is left of an incomplete frame.
    void finish();

signals:
    // The link went away or failed; the message says why.
    void lost(const QString &message);

private:
    void readTcp();
    void readUdp();
    void readSerial();
    void tickUdp();
    void feed(const QByteArray &bytes);
    void printBlock(const uint8_t *data, size_t len);

    LinkAddress m_address;
    CapturePrinter *m_printer;
    StreamSegmenter m_segmenter;
    QTcpSocket m_tcp;
    QUdpSocket m_udp;
    QSerialPort m_serial;
    QHostAddress m_peer;
    QTimer m_udpTick;
};

#endif
