#include "logging/LogMessage.h"

#include "logging/TimeStamp.h"

namespace QsLogging {

namespace {

// Before main, so that a queued connection finds the name whoever makes it first.
void registerLogMessage()
{
    qRegisterMetaType<QsLogging::LogMessage>("QsLogging::LogMessage");
}

} // namespace

Q_CONSTRUCTOR_FUNCTION(registerLogMessage)

LogMessage::LogMessage(const QString& text, const QDateTime& moment, int severity)
    : message(text), time(moment), level(severity)
{
    const QString start = levelText(level);
    formatted.reserve(start.size() + timeStampLength + message.size() + 2);
    formatted += start;
    formatted += QLatin1Char(' ');
    appendTimeStamp(formatted, time);
    formatted += QLatin1Char(' ');
    formatted += message;
}

} // namespace QsLogging
