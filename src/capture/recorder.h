#ifndef RECORDER_H
#define RECORDER_H

#include <QByteArray>
#include <QHash>
#include <QObject>
#include <QPair>
#include <QString>

#include <memory>

#include "capturewriter.h"

class StreamSegmenter;

// Writes everything a tool exchanges with its modem link and its gateway to
// one capture file per run (format in pcapng.h): each modem link an
// interface of its own, its bytes cut per direction into one block per
// frame and blocks of the bytes between; each gateway message one block.
// Blocks reach the file as they complete: those of one read in one write,
// at the end of that read.
//
// The folder is kept under a size cap: at the start and for every further
// MiB written, the oldest captures in it go until the folder fits; the file
// being written is never removed, and recording stops when it alone reaches
// the cap.
class Recorder : public QObject
{
    Q_OBJECT
public:
    explicit Recorder(QObject *parent = nullptr);
    ~Recorder() override;

    // Creates the folder and a file in it named by the current UTC time
    // (YYYYMMDDTHHMMSSZ.pcapng). False with error() set when that fails.
    bool start(const QString &folder, qint64 capBytes);
    // Writes what is still pending (an incomplete frame) and closes the file.
    void stop();

    bool isRecording() const;
    QString filePath() const;
    QString error() const;

    static QString fileNameFor(const QDateTime &utc);

public slots:
    void recordLinkReceived(const QString &link, const QByteArray &bytes);
    void recordLinkSent(const QString &link, const QByteArray &bytes);
    void recordGatewayReceived(const QString &link, const QByteArray &message);
    void recordGatewaySent(const QString &link, const QByteArray &message);

signals:
    // Recording ended before stop(): a write failed or the cap was reached.
    void stopped(const QString &reason);

private:
    struct Link;

    Link *link(const QString &name, uint16_t linkType);
    void recordBytes(const QString &name, pcapng_direction_t direction, const QByteArray &bytes);
    void writeBlock(uint32_t interfaceId, pcapng_direction_t direction, const uint8_t *data, size_t len);
    void recordMessage(const QString &name, pcapng_direction_t direction, const QByteArray &message);
    void flush();
    void checkSize();
    void pruneFolder();
    void fail(const QString &reason);
    void failWrite();

    CaptureWriter m_writer;
    QHash<QPair<quint16, QString>, std::shared_ptr<Link>> m_links;
    QString m_folder;
    QString m_path;
    QString m_error;
    qint64 m_cap = 0;
    quint64 m_nextCheck = 0;
};

#endif
