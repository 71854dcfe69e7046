#include "logging/TimeStamp.h"

#include <QDateTime>
#include <QString>

namespace QsLogging {

namespace {

/// The last second that a thread wrote.
struct WrittenSecond
{
    qint64 second = 0; ///< since the epoch
    QString text;      ///< up to and with the point; empty before the first use
};

} // namespace

void appendTimeStamp(QString& line, const QDateTime& time)
{
    if (!time.isValid())
        return;
    const qint64 sinceEpoch = time.toMSecsSinceEpoch();
    const qint64 remainder = sinceEpoch % 1000;
    const int milliseconds = int(remainder < 0 ? remainder + 1000 : remainder);
    const qint64 second = (sinceEpoch - milliseconds) / 1000;

    static thread_local WrittenSecond last;
    if (last.second != second || last.text.isEmpty()) {
        last.text = time.toLocalTime().toString(QStringLiteral("yyyy-MM-ddThh:mm:ss."));
        last.second = second;
    }
    const QChar digits[] = {QLatin1Char(char('0' + milliseconds / 100)),
                            QLatin1Char(char('0' + milliseconds / 10 % 10)),
                            QLatin1Char(char('0' + milliseconds % 10))};
    line += last.text;
    line.append(digits, 3);
}

} // namespace QsLogging
