#include "capturereplay.h"

#include <QFile>

#include "capturefile.h"
#include "spplink.h"

namespace
{
const int ChunkPeriodMs = 1;
}

bool CaptureReplay::load(const QString &path, QVector<Block> *blocks, QString *error, QString *warning)
{
    CaptureFile file;
    const bool clean = file.read(QFile::encodeName(path).toStdString(),
        [blocks](const CaptureRecord &record, const CaptureInterface &link) {
            if (link.link_type != PCAPNG_LINK_MODEM || record.direction != PCAPNG_DIR_IN)
                return;
            const auto *data = reinterpret_cast<const char *>(record.data.data());
            blocks->append(Block { record.time_us, QByteArray(data, int(record.data.size())) });
        });
    if (clean)
        return true;
    const QString what = QString("%1: %2 at byte offset %3")
                             .arg(path, QString::fromStdString(file.error()))
                             .arg(file.errorOffset());
    // A file that could not be opened, or is no capture, has no blocks.
    if (file.errorOffset() == 0) {
        *error = what;
        return false;
    }
    *warning = what;
    return true;
}

CaptureReplay::CaptureReplay(const QVector<Block> &blocks, double speed, SppLink *link)
    : QObject(link)
    , m_blocks(blocks)
    , m_speed(speed)
    , m_link(link)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    if (m_speed > 0) {
        connect(&m_timer, &QTimer::timeout, this, &CaptureReplay::playDue);
    } else {
        connect(&m_timer, &QTimer::timeout, this, &CaptureReplay::playChunk);
        m_timer.setSingleShot(false);
        m_timer.setInterval(ChunkPeriodMs);
    }
    m_clock.start();
    if (m_speed > 0)
        playDue();
    else
        m_timer.start();
}

// Every block whose time has come, then a timer for the next one; times
// count from the first block, so rounding never adds up.
void CaptureReplay::playDue()
{
    const quint64 first = m_blocks.isEmpty() ? 0 : m_blocks.first().timeUs;
    while (m_next < m_blocks.size()) {
        const double dueMs = double(qMax(m_blocks[m_next].timeUs, first) - first) / 1000.0 / m_speed;
        const qint64 wait = qint64(dueMs) - m_clock.elapsed();
        if (wait > 0) {
            m_timer.start(int(qMin<qint64>(wait, 1 << 30)));
            return;
        }
        m_link->send(m_blocks[m_next++].bytes);
    }
    emit finished();
}

void CaptureReplay::playChunk()
{
    QByteArray chunk;
    while (m_next < m_blocks.size() && chunk.size() + m_blocks[m_next].bytes.size() <= ChunkBytes)
        chunk += m_blocks[m_next++].bytes;
    if (chunk.isEmpty() && m_next < m_blocks.size())
        chunk = m_blocks[m_next++].bytes; // a block larger than a chunk goes alone
    m_link->send(chunk);
    if (m_next >= m_blocks.size()) {
        m_timer.stop();
        emit finished();
    }
}
