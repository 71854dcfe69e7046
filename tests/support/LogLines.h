#pragma once

#include <QStringList>

/// From construction to destruction keeps what is logged at the level and above, and restores the logger's
/// level at the end. One at a time.
class LogLines
{
public:
    /// @param level of QsLogging::Level
    explicit LogLines(int level);
    ~LogLines();
    LogLines(const LogLines&) = delete;
    LogLines& operator=(const LogLines&) = delete;

    /// Lines so far as level and message, "3 setOffset() failed ", once the logger's thread has written them
    /// all.
    QStringList lines();

private:
    int levelBefore;
};
