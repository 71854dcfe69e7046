#include "logging/Logger.h"

#include "logging/MutexLock.h"

#include <algorithm>
#include <utility>

namespace QsLogging {

Logger::Logger()
{
    worker.start(QThread::LowPriority);
}

Logger::~Logger()
{
    worker.shutDown();
    worker.destinations.clear();
}

void Logger::setLevel(int level)
{
    worker.level = level;
}

void Logger::addDestination(DestinationPtr destination)
{
    const MutexLock lock(worker.destinationMutex);
    worker.destinations.push_back(std::move(destination));
}

bool Logger::hasDestinationOfType(const char* type)
{
    const MutexLock lock(worker.destinationMutex);
    return std::any_of(worker.destinations.cbegin(), worker.destinations.cend(),
                       [type](const DestinationPtr& each) { return each->type() == QLatin1String(type); });
}

DestinationPtr Logger::removeDestination(const QString& type)
{
    const MutexLock lock(worker.destinationMutex);
    const auto found = std::find_if(worker.destinations.begin(), worker.destinations.end(),
                                    [&type](const DestinationPtr& each) { return each->type() == type; });
    if (found == worker.destinations.end())
        return nullptr;
    DestinationPtr removed = std::move(*found);
    worker.destinations.erase(found);
    return removed;
}

int Logger::levelOfLine(const QString& text, bool* ok)
{
    for (int level = TraceLevel; level <= FatalLevel; ++level) {
        if (text.startsWith(levelText(level))) {
            *ok = true;
            return level;
        }
    }
    *ok = false;
    return OffLevel;
}

void Logger::write(const LogMessage& message)
{
    worker.write(message);
}

void Logger::pushMessage(const LogMessage& message)
{
    worker.push(message);
}

} // namespace QsLogging
