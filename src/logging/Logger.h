#pragma once

#include "logging/Destination.h"
#include "logging/LogMessage.h"
#include "logging/LoggerThread.h"

#include <QString>

namespace QsLogging {

/// The one logger of the program. Lines are formatted on the caller's thread, queued, and written by a worker
/// thread of low priority. Any thread may call everything but write().
class Logger
{
public:
    /// Created, with its worker running, at first use; destroyed at program exit.
    static Logger& instance()
    {
        static Logger logger;
        return logger;
    }

    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;

    /// Statements below `level` are suppressed; OffLevel suppresses all.
    void setLevel(int level);
    int currentLevel() const { return worker.level; }

    /// Takes ownership. The destination gets the lines that are written from now on.
    void addDestination(DestinationPtr destination);
    bool hasDestinationOfType(const char* type);
    /// Takes the first destination of that type out of the list; null if there is none.
    DestinationPtr removeDestination(const QString& type);

    /// The level with whose text a line starts.
    /// @param[out] ok  whether it starts with any; if not, the result is OffLevel
    static int levelOfLine(const QString& text, bool* ok);

    /// Hands a line to every destination in order. For the worker.
    void write(const LogMessage& message);
    /// Queues a line; does not wait for I/O.
    void pushMessage(const LogMessage& message);

private:
    Logger();
    ~Logger();

    LoggerThread worker;
};

} // namespace QsLogging
