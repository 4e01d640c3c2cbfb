#include "capturewriter.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <unistd.h>

CaptureWriter::~CaptureWriter()
{
    close();
}

bool CaptureWriter::open(const std::string &path, const std::string &application)
{
    close();
    m_fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (m_fd < 0) {
        m_error = strerror(errno);
        return false;
    }
    if (!writeBlock(pcapng_section_header(application))) {
        close();
        return false;
    }
    return true;
}

bool CaptureWriter::isOpen() const
{
    return m_fd >= 0;
}

void CaptureWriter::close()
{
    flush();
    if (m_fd >= 0)
        ::close(m_fd);
    m_fd = -1;
    m_size = 0;
    m_interfaces = 0;
}

int CaptureWriter::addInterface(uint16_t link_type, const std::string &name)
{
    // Packets already added stay in front of the new interface.
    if (!flush() || !writeBlock(pcapng_interface(link_type, name)))
        return -1;
    return int(m_interfaces++);
}

bool CaptureWriter::writePacket(
    uint32_t interface_id, uint64_t time_us, pcapng_direction_t direction, const uint8_t *data, size_t len)
{
    if (!isOpen() || interface_id >= m_interfaces)
        return false;
    pcapng_append_enhanced_packet(&m_pending, interface_id, time_us, direction, data, len);
    return true;
}

bool CaptureWriter::flush()
{
    if (m_pending.empty() || !isOpen())
        return isOpen();
    const bool ok = writeBlock(m_pending);
    m_pending.clear();
    return ok;
}

uint64_t CaptureWriter::size() const
{
    return m_size + m_pending.size();
}

const std::string &CaptureWriter::error() const
{
    return m_error;
}

// A short write (a full disk) leaves a cut block at the end of the file,
// which readers report as truncated there; nothing is written after it.
bool CaptureWriter::writeBlock(const std::vector<uint8_t> &block)
{
    size_t done = 0;
    while (done < block.size()) {
        const ssize_t n = ::write(m_fd, block.data() + done, block.size() - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            m_error = n < 0 ? strerror(errno) : "nothing written";
            ::close(m_fd);
            m_fd = -1;
            m_pending.clear();
            return false;
        }
        done += size_t(n);
    }
    m_size += block.size();
    return true;
}
