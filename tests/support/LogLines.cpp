#include "support/LogLines.h"

#include "logging/Log.h"

#include <QMutex>
#include <QWaitCondition>

namespace {

constexpr char marker[] = "everything before this line is written";
constexpr unsigned long longestWaitMs = 30000;

QMutex mutex;
QWaitCondition markerWritten;
QStringList kept;
bool markerSeen = false;

class KeepingDestination : public QsLogging::Destination
{
public:
    void write(const QsLogging::LogMessage& message) override
    {
        const QMutexLocker locker(&mutex);
        if (message.message.startsWith(QLatin1String(marker))) {
            markerSeen = true;
            markerWritten.wakeAll();
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
    const QMutexLocker locker(&mutex);
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
        const QMutexLocker locker(&mutex);
        markerSeen = false;
    }
    KORA_LOG_FATAL << marker;
    const QMutexLocker locker(&mutex);
    while (!markerSeen) {
        if (!markerWritten.wait(&mutex, longestWaitMs))
            qFatal("the logger wrote nothing for %lu ms", longestWaitMs);
    }
    return kept;
}
