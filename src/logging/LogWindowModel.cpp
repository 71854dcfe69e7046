#include "logging/LogWindowModel.h"

#include <QColor>
#include <QReadLocker>
#include <QWriteLocker>

#include <algorithm>
#include <limits>

namespace QsLogging {

namespace {

constexpr int shownColumns = 3;
constexpr quint64 noLimit = std::numeric_limits<quint64>::max();

QVariant background(int level)
{
    switch (level) {
    case WarnLevel:
        return QColor(255, 255, 128);
    case ErrorLevel:
        return QColor(255, 128, 128);
    case FatalLevel:
        return QColor(255, 0, 0);
    default:
        return QVariant();
    }
}

} // namespace

LogWindowModel::Entry::Entry(const LogMessage& line) : message(line.message), time(line.time), level(line.level)
{
    // The sender built the text with room to spare.
    message.squeeze();
    if (line.formatted != LogMessage(message, time, level).formatted)
        otherFormatted = line.formatted.isNull() ? QStringLiteral("") : line.formatted;
}

LogMessage LogWindowModel::Entry::unfold() const
{
    LogMessage line(message, time, level);
    if (!otherFormatted.isNull())
        line.formatted = otherFormatted;
    return line;
}

LogWindowModel::LogWindowModel(quint64 limit) : maxItems(limit) {}

int LogWindowModel::columnCount(const QModelIndex&) const
{
    return shownColumns;
}

int LogWindowModel::rowCount(const QModelIndex& parent) const
{
    if (parent.isValid())
        return 0;
    const QReadLocker locker(&lock);
    return int(items.size());
}

QVariant LogWindowModel::data(const QModelIndex& index, int role) const
{
    const QReadLocker locker(&lock);
    if (!index.isValid() || std::size_t(index.row()) >= items.size())
        return QVariant();
    const Entry& entry = items[std::size_t(index.row())];
    switch (role) {
    case Qt::DisplayRole:
        return shownText(entry, index.column());
    case Qt::BackgroundRole:
        return background(entry.level);
    default:
        return QVariant();
    }
}

QVariant LogWindowModel::shownText(const Entry& entry, int column) const
{
    switch (column) {
    case TimeColumn:
        return entry.time.toLocalTime().toString(Qt::TextDate);
    case LevelColumn:
        return levelName(entry.level);
    case MessageColumn:
        return entry.message;
    case FormattedColumn:
        return entry.unfold().formatted;
    default:
        return QVariant();
    }
}

QVariant LogWindowModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole) {
        switch (section) {
        case TimeColumn:
            return tr("Time");
        case LevelColumn:
            return tr("Level");
        case MessageColumn:
            return tr("Message");
        default:
            return QVariant();
        }
    }
    return QAbstractTableModel::headerData(section, orientation, role);
}

void LogWindowModel::append(const LogMessage& message)
{
    const int end = rowCount();
    beginInsertRows(QModelIndex(), end, end);
    {
        const QWriteLocker locker(&lock);
        items.emplace_back(message);
    }
    endInsertRows();

    if (maxItems == noLimit || quint64(rowCount()) <= maxItems)
        return;
    {
        const QWriteLocker locker(&lock);
        items.pop_front();
    }
    // Every entry has moved up by one.
    emit dataChanged(index(0, 0), index(rowCount() - 1, shownColumns - 1));
}

void LogWindowModel::clear()
{
    beginResetModel();
    {
        const QWriteLocker locker(&lock);
        items.clear();
    }
    endResetModel();
}

LogMessage LogWindowModel::at(int row) const
{
    return items[std::size_t(row)].unfold();
}

int LogWindowModel::levelAt(int row) const
{
    return items[std::size_t(row)].level;
}

bool LogWindowModel::isPlain(int row) const
{
    constexpr ushort firstPrintable = 0x20;
    constexpr ushort lastLatin = 0x17F;
    const QReadLocker locker(&lock);
    const QString& text = items[std::size_t(row)].message;
    return std::all_of(text.cbegin(), text.cend(), [](QChar letter) {
        return letter.unicode() >= firstPrintable && letter.unicode() <= lastLatin;
    });
}

} // namespace QsLogging
