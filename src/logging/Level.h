#pragma once

#include <QString>

namespace QsLogging {

/// Severities of a log line. Plain integers everywhere, since a logging level is compared and stored as one.
enum Level : int
{
    TraceLevel = 0,
    DebugLevel = 1,
    InfoLevel = 2,
    WarnLevel = 3,
    ErrorLevel = 4,
    FatalLevel = 5,
    OffLevel = 6 ///< as logging level: suppresses everything; no statement has it
};

/// Five-character text that starts a line, blank padded; empty for OffLevel, "INFO " for an unknown value.
QString levelText(int level);

/// Translated name for the operator; empty for OffLevel, the name of InfoLevel for an unknown value.
QString levelName(int level);

} // namespace QsLogging
