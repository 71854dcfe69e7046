#pragma once

#include <QDebug>
#include <QString>

namespace QsLogging {

/// One log statement in the making: what is streamed into it becomes a line when it dies.
class LogStatement
{
public:
    explicit LogStatement(int level);
    LogStatement(const LogStatement&) = delete;
    LogStatement& operator=(const LogStatement&) = delete;
    /// Queues the line with the present time. A failure is reported to std::cerr and nowhere else.
    ~LogStatement();

    /// A blank follows each item, also the last.
    QDebug& stream() { return debug; }

private:
    int level;
    QString buffer;
    QDebug debug;
};

} // namespace QsLogging
