#ifndef CAPTUREREPLAY_H
#define CAPTUREREPLAY_H

#include <QByteArray>
#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>
#include <QVector>

class SppLink;

// The inbound modem bytes of a capture, played to one client as the modem
// sent them: the recorded gaps divided by the speed, or at speed 0 in
// chunks of ChunkBytes, one per millisecond. Nothing is answered; when the
// bytes are played the link stays as it is.
class CaptureReplay : public QObject
{
    Q_OBJECT
public:
    struct Block {
        quint64 timeUs;
        QByteArray bytes;
    };
    static const int ChunkBytes = 4096;

    // Every inbound block of every modem link of the file, in file order.
    // False with a message when the file cannot be read at all; a damaged
    // file gives the blocks before the damage, with the damage in *warning.
    static bool load(const QString &path, QVector<Block> *blocks, QString *error, QString *warning);

    CaptureReplay(const QVector<Block> &blocks, double speed, SppLink *link);

signals:
    void finished();

private:
    void playDue();
    void playChunk();

    QVector<Block> m_blocks;
    double m_speed;
    SppLink *m_link;
    int m_next = 0;
    QElapsedTimer m_clock;
    QTimer m_timer;
};

#endif
