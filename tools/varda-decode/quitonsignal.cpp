#include "quitonsignal.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{
int signalPipe[2] = { -1, -1 };

void onSignal(int)
{
    const char byte = 1;
    [[maybe_unused]] const ssize_t n = ::write(signalPipe[1], &byte, 1);
}
} // namespace

QuitOnSignal::QuitOnSignal(QObject *parent)
    : QObject(parent)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, signalPipe) != 0)
        return;
    m_notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &QuitOnSignal::readSignal);
    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

void QuitOnSignal::readSignal()
{
    char byte;
    [[maybe_unused]] const ssize_t n = ::read(signalPipe[0], &byte, 1);
    QCoreApplication::quit();
}
