#include "support/LogLines.h"

#include "logging/Log.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace {

constexpr char marker[] = "everything before this line is written";
constexpr std::chrono::seconds longestWait(30);

// Of the standard library, whose locks the thread sanitizer sees.
using Lock = std::unique_lock<std::mutex>;
std::mutex mutex;
std::condition_variable markerWritten;
QStringList kept;
bool markerSeen = false;

class KeepingDestination : public QsLogging::Destination
{
public:
    void write(const QsLogging::LogMessage& message) override
    {
        const Lock lock(mutex);
        if (message.message.startsWith(QLatin1String(marker))) {
            markerSeen = true;
            markerWritten.notify_all();
        } else {
            kept.append(QString::number(message.level) + QLatin1Char(' ') + message.message);
        }
    }
    bool isValid() const override { return true; }
    QString type() const override { return QStringLiteral("kept lines of a test"); }
};

} // namespace

LogLines::LogLines(int level) : levelBefore(QsLogging::Logger::instance().currentLevel())
{
    QsLogging::Logger::instance().setLevel(level);
    QsLogging::Logger::instance().addDestination(std::make_unique<KeepingDestination>());
    // What was logged before may still be on its way.
    lines();
    const Lock lock(mutex);
    kept.clear();
}

LogLines::~LogLines()
{
    QsLogging::Logger::instance().removeDestination(KeepingDestination().type());
    QsLogging::Logger::instance().setLevel(levelBefore);
}

QStringList LogLines::lines()
{
    {
        const Lock lock(mutex);
        markerSeen = false;
    }
    KORA_LOG_FATAL << marker;
    Lock lock(mutex);
    if (!markerWritten.wait_for(lock, longestWait, [] { return markerSeen; }))
        qFatal("the logger has written nothing for %d s", int(longestWait.count()));
    return kept;
}
