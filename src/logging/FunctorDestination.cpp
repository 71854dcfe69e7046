#include "logging/FunctorDestination.h"

#include <QThread>

namespace QsLogging {

namespace {

constexpr int sliceMs = 10;
constexpr int linesPerSlice = 2000;

} // namespace

FunctorDestination::FunctorDestination(LogFunction receiver) : function(receiver) {}

void FunctorDestination::write(const LogMessage& message)
{
    if (function)
        function(message);
    if (message.level <= TraceLevel)
        return;
    emit logMessageReady(message);
    pause();
}

bool FunctorDestination::isValid() const
{
    return true;
}

QString FunctorDestination::type() const
{
    return QStringLiteral("functor");
}

/// Queued lines that come faster than a receiver takes them would keep its event loop from ever turning. So a
/// flood is spread in time; the lines wait in the logger's queue meanwhile, and callers wait for nothing.
void FunctorDestination::pause()
{
    if (!slice.isValid() || slice.elapsed() >= sliceMs) {
        slice.start();
        emittedInSlice = 0;
    }
    if (++emittedInSlice < linesPerSlice)
        return;
    QThread::msleep(sliceMs);
    slice.invalidate();
}

} // namespace QsLogging
