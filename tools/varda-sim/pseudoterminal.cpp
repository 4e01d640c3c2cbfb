#include "pseudoterminal.h"

#include <QSocketNotifier>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

PseudoTerminal::PseudoTerminal(QObject *parent)
    : QObject(parent)
{
}

PseudoTerminal::~PseudoTerminal()
{
    closeAll();
}

void PseudoTerminal::closeAll()
{
    delete m_notifier;
    m_notifier = nullptr;
    if (m_slave >= 0)
        ::close(m_slave);
    if (m_master >= 0)
        ::close(m_master);
    m_slave = m_master = -1;
}

bool PseudoTerminal::reopen(QString *error)
{
    closeAll();
    return open(error);
}

static QString systemError(const char *what)
{
    return QString("%1: %2").arg(what, QString::fromLocal8Bit(strerror(errno)));
}

bool PseudoTerminal::open(QString *error)
{
    m_master = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
    if (m_master < 0 || grantpt(m_master) != 0 || unlockpt(m_master) != 0) {
        *error = systemError("posix_openpt");
        return false;
    }
    m_name = QString::fromLocal8Bit(ptsname(m_master));
    m_slave = ::open(m_name.toLocal8Bit().constData(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    if (m_slave < 0) {
        *error = systemError("open slave");
        return false;
    }
    // No echo, no line editing, no CR/LF translation: frames are binary.
    termios tio;
    tcgetattr(m_slave, &tio);
    cfmakeraw(&tio);
    tcsetattr(m_slave, TCSANOW, &tio);

    m_notifier = new QSocketNotifier(m_master, QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &PseudoTerminal::readMaster);
    return true;
}

QString PseudoTerminal::name() const
{
    return m_name;
}

void PseudoTerminal::write(const QByteArray &bytes)
{
    if (m_master < 0)
        return;
    const ssize_t written = ::write(m_master, bytes.constData(), size_t(bytes.size()));
    Q_UNUSED(written) // a full terminal drops the rest; the reader resynchronises
}

void PseudoTerminal::readMaster()
{
    char buf[512];
    const ssize_t n = ::read(m_master, buf, sizeof(buf));
    if (n > 0)
        emit bytesRead(QByteArray(buf, int(n)));
    else if (n < 0 && errno != EAGAIN && errno != EINTR)
        m_notifier->setEnabled(false); // the terminal is gone; stop polling it
}
