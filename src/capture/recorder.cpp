#include "recorder.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <chrono>

#include "streamsegmenter.h"

namespace
{
const quint64 CheckEvery = 1 << 20;
const char *const Suffix = ".pcapng";

uint64_t nowUs()
{
    using namespace std::chrono;
    return uint64_t(duration_cast<microseconds>(system_clock::now().time_since_epoch()).count());
}

const uint8_t *bytesOf(const QByteArray &bytes)
{
    return reinterpret_cast<const uint8_t *>(bytes.constData());
}
} // namespace

// One interface of the file; a modem link cuts each direction on its own.
struct Recorder::Link {
    uint32_t id = 0;
    std::unique_ptr<StreamSegmenter> in;
    std::unique_ptr<StreamSegmenter> out;
};

Recorder::Recorder(QObject *parent)
    : QObject(parent)
{
}

Recorder::~Recorder()
{
    stop();
}

QString Recorder::fileNameFor(const QDateTime &utc)
{
    return utc.toUTC().toString(QStringLiteral("yyyyMMdd'T'HHmmss'Z'")) + QLatin1String(Suffix);
}

bool Recorder::start(const QString &folder, qint64 capBytes)
{
    stop();
    m_error.clear();
    m_folder = folder;
    m_cap = capBytes;
    if (!QDir().mkpath(folder)) {
        m_error = tr("cannot create %1").arg(folder);
        return false;
    }
    const QString name = fileNameFor(QDateTime::currentDateTimeUtc());
    QString path = QDir(folder).filePath(name);
    // Two runs started in the same second: the later one gets a number.
    for (int n = 2; QFileInfo::exists(path); ++n)
        path = QDir(folder).filePath(
            name.chopped(int(strlen(Suffix))) + QStringLiteral("-%1").arg(n) + Suffix);
    const QString application = QFileInfo(QCoreApplication::applicationFilePath()).fileName() + ' '
        + QCoreApplication::applicationVersion();
    if (!m_writer.open(QFile::encodeName(path).toStdString(), application.trimmed().toStdString())) {
        m_error = tr("cannot write %1: %2").arg(path, QString::fromStdString(m_writer.error()));
        return false;
    }
    m_path = path;
    m_nextCheck = CheckEvery;
    pruneFolder();
    return true;
}

void Recorder::stop()
{
    for (const auto &link : qAsConst(m_links)) {
        if (link->in)
            link->in->finish();
        if (link->out)
            link->out->finish();
    }
    m_links.clear();
    m_writer.close();
}

bool Recorder::isRecording() const
{
    return m_writer.isOpen();
}

QString Recorder::filePath() const
{
    return m_path;
}

QString Recorder::error() const
{
    return m_error;
}

void Recorder::recordLinkReceived(const QString &link, const QByteArray &bytes)
{
    recordBytes(link, PCAPNG_DIR_IN, bytes);
}

void Recorder::recordLinkSent(const QString &link, const QByteArray &bytes)
{
    recordBytes(link, PCAPNG_DIR_OUT, bytes);
}

void Recorder::recordGatewayReceived(const QString &link, const QByteArray &message)
{
    recordMessage(link, PCAPNG_DIR_IN, message);
}

void Recorder::recordGatewaySent(const QString &link, const QByteArray &message)
{
    recordMessage(link, PCAPNG_DIR_OUT, message);
}

// Interfaces are described the first time their link is heard of.
Recorder::Link *Recorder::link(const QString &name, uint16_t linkType)
{
    const QPair<quint16, QString> key(linkType, name);
    auto found = m_links.constFind(key);
    if (found != m_links.constEnd())
        return found->get();
    const int id = m_writer.addInterface(linkType, name.toStdString());
    if (id < 0) {
        failWrite();
        return nullptr;
    }
    auto entry = std::make_shared<Link>();
    entry->id = uint32_t(id);
    if (linkType == PCAPNG_LINK_MODEM) {
        const uint32_t iface = entry->id;
        entry->in = std::make_unique<StreamSegmenter>(
            [this, iface](const uint8_t *data, size_t len) { writeBlock(iface, PCAPNG_DIR_IN, data, len); });
        entry->out = std::make_unique<StreamSegmenter>(
            [this, iface](const uint8_t *data, size_t len) { writeBlock(iface, PCAPNG_DIR_OUT, data, len); });
    }
    m_links.insert(key, entry);
    return entry.get();
}

void Recorder::recordBytes(const QString &name, pcapng_direction_t direction, const QByteArray &bytes)
{
    if (!isRecording() || bytes.isEmpty())
        return;
    if (Link *entry = link(name, PCAPNG_LINK_MODEM)) {
        StreamSegmenter *segmenter = direction == PCAPNG_DIR_IN ? entry->in.get() : entry->out.get();
        segmenter->feed(bytesOf(bytes), size_t(bytes.size()));
    }
    flush();
}

void Recorder::recordMessage(const QString &name, pcapng_direction_t direction, const QByteArray &message)
{
    if (!isRecording())
        return;
    if (Link *entry = link(name, PCAPNG_LINK_GATEWAY))
        writeBlock(entry->id, direction, bytesOf(message), size_t(message.size()));
    flush();
}

// The blocks of one read go to the file in one write.
void Recorder::flush()
{
    if (isRecording() && !m_writer.flush())
        failWrite();
}

void Recorder::failWrite()
{
    fail(tr("cannot write %1: %2").arg(m_path, QString::fromStdString(m_writer.error())));
}

void Recorder::writeBlock(uint32_t interfaceId, pcapng_direction_t direction, const uint8_t *data, size_t len)
{
    if (!isRecording())
        return;
    m_writer.writePacket(interfaceId, nowUs(), direction, data, len);
    if (m_writer.size() >= m_nextCheck)
        checkSize();
}

void Recorder::checkSize()
{
    m_nextCheck = m_writer.size() + CheckEvery;
    if (qint64(m_writer.size()) >= m_cap) {
        fail(tr("%1 reached the size cap of %2 MiB").arg(m_path).arg(m_cap >> 20));
        return;
    }
    pruneFolder();
}

// Oldest first by name: the names are the start times.
void Recorder::pruneFolder()
{
    const QFileInfoList files
        = QDir(m_folder).entryInfoList({ QStringLiteral("*") + Suffix }, QDir::Files, QDir::Name);
    qint64 total = qint64(m_writer.size());
    for (const QFileInfo &file : files) {
        if (file.absoluteFilePath() != QFileInfo(m_path).absoluteFilePath())
            total += file.size();
    }
    for (const QFileInfo &file : files) {
        if (total <= m_cap)
            break;
        if (file.absoluteFilePath() == QFileInfo(m_path).absoluteFilePath())
            continue;
        if (QFile::remove(file.absoluteFilePath()))
            total -= file.size();
    }
}

// The links are dropped after the writer closes, so what their segmenters
// still hold goes nowhere.
void Recorder::fail(const QString &reason)
{
    m_error = reason;
    m_writer.close();
    emit stopped(reason);
}
