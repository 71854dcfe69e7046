#pragma once

class QDateTime;
class QString;

namespace QsLogging {

/// Characters of a time stamp of a four-digit year.
constexpr int timeStampLength = 23;

/// Appends `time`, converted to local time, as "yyyy-MM-ddThh:mm:ss.zzz"; nothing for an invalid time.
/// Any thread. The conversion to local time takes a lock of Qt and is most of the cost of a log line, so each
/// thread remembers the text of the last second that it wrote: a time zone that changes shows from the next
/// second on.
void appendTimeStamp(QString& line, const QDateTime& time);

} // namespace QsLogging
