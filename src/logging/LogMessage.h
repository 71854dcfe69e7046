#pragma once

#include "logging/Level.h"

#include <QDateTime>
#include <QMetaType>
#include <QString>

namespace QsLogging {

/// One log line. A value: it is copied into the queue and crosses threads through queued connections.
struct LogMessage
{
    LogMessage() = default;

    /// Builds `formatted` on the calling thread.
    /// @param time  moment of the statement, UTC
    LogMessage(const QString& message, const QDateTime& time, int level);

    QString message; ///< the bare text
    QDateTime time;  ///< moment of the statement, UTC
    int level = InfoLevel;
    QString formatted; ///< the whole line: level text, local time to the millisecond, message
};

} // namespace QsLogging

Q_DECLARE_METATYPE(QsLogging::LogMessage)
