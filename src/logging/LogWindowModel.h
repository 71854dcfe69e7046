#pragma once

#include "logging/LogMessage.h"

#include <QAbstractTableModel>
#include <QReadWriteLock>

#include <deque>

namespace QsLogging {

/// The lines of the log window, the oldest first, one row each. GUI thread only: append() tells the
/// views, which live there. The lock guards the entries alone.
class LogWindowModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column
    {
        TimeColumn,
        LevelColumn,
        MessageColumn,
        FormattedColumn = 100 ///< not shown: the whole line, for data() calls made with that number
    };

    /// @param maxItems  lines kept; all bits set keeps every line
    explicit LogWindowModel(quint64 maxItems);

    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    void append(const LogMessage& message);
    void clear();
    /// A copy of the entry. Takes no lock: for the thread that appends.
    LogMessage at(int row) const;
    /// Its level alone, likewise.
    int levelAt(int row) const;
    /// Whether the message is one line of letters that any font has, and so no row is higher than another.
    bool isPlain(int row) const;

private:
    /// One line in little memory: the whole line is kept only where it is not what LogMessage builds of the rest.
    struct Entry
    {
        explicit Entry(const LogMessage& message);
        LogMessage unfold() const;

        QString message;
        QDateTime time;
        QString otherFormatted; ///< null where the line is as built
        int level;
    };

    QVariant shownText(const Entry& entry, int column) const;

    std::deque<Entry> items;
    mutable QReadWriteLock lock; ///< guards items
    quint64 maxItems;
};

} // namespace QsLogging
