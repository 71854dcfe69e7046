#include "app/TerminationSignals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int handledSignals[] = {SIGTERM, SIGINT, SIGHUP};

/// Written from the signal handler, where little more than write(2) is allowed.
int writeEnd = -1;

void writeSignalByte(int)
{
    const char byte = 1;
    if (::write(writeEnd, &byte, 1) < 0)
        ::_exit(1);
}

void handleWith(void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    for (int number : handledSignals)
        ::sigaction(number, &action, nullptr);
}

} // namespace

TerminationSignals::TerminationSignals() : readEnd(-1)
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return;
    readEnd = ends[0];
    writeEnd = ends[1];
    auto* notifier = new QSocketNotifier(readEnd, QSocketNotifier::Read, this);
    connect(notifier, SIGNAL(activated(int)), this, SLOT(handleSignal()));
    handleWith(writeSignalByte);
}

TerminationSignals::~TerminationSignals()
{
    if (readEnd < 0)
        return;
    handleWith(SIG_DFL);
    ::close(readEnd);
    ::close(writeEnd);
}

void TerminationSignals::handleSignal()
{
    char byte;
    if (::read(readEnd, &byte, 1) == 1)
        QCoreApplication::quit();
}
