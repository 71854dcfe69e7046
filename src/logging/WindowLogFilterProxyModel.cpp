#include "logging/WindowLogFilterProxyModel.h"

#include "logging/LogWindowModel.h"

#include <algorithm>

namespace QsLogging {

WindowLogFilterProxyModel::WindowLogFilterProxyModel(int lowestLevel, int rowLimit)
    : pauseRowLimit(rowLimit), level(lowestLevel)
{
}

void WindowLogFilterProxyModel::setLevel(int lowestLevel)
{
    level = lowestLevel;
    refilter();
}

void WindowLogFilterProxyModel::refilter()
{
    emit layoutAboutToBeChanged();
    const QModelIndexList before = persistentIndexList();
    const std::vector<int> shownBefore = std::move(shownRows);
    shownRows = acceptedRows();
    QModelIndexList after;
    after.reserve(before.size());
    for (const QModelIndex& each : before)
        after.append(index(proxyRowOf(shownBefore[std::size_t(each.row())]), each.column()));
    changePersistentIndexList(before, after);
    emit layoutChanged();
}

void WindowLogFilterProxyModel::setSourceModel(QAbstractItemModel* source)
{
    beginResetModel();
    if (sourceModel())
        sourceModel()->disconnect(this);
    // Past the base class, which would connect and fill a mapping of its own.
    QAbstractProxyModel::setSourceModel(source);
    log = qobject_cast<const LogWindowModel*>(source);
    connect(source, SIGNAL(rowsInserted(QModelIndex, int, int)), SLOT(sourceRowsInserted(QModelIndex, int, int)));
    connect(source, SIGNAL(dataChanged(QModelIndex, QModelIndex, QVector<int>)), SLOT(sourceDataChanged()));
    connect(source, SIGNAL(modelAboutToBeReset()), SLOT(sourceAboutToBeReset()));
    connect(source, SIGNAL(modelReset()), SLOT(sourceReset()));
    shownRows = acceptedRows();
    endResetModel();
}

QModelIndex WindowLogFilterProxyModel::index(int row, int column, const QModelIndex& parent) const
{
    return hasIndex(row, column, parent) ? createIndex(row, column) : QModelIndex();
}

QModelIndex WindowLogFilterProxyModel::parent(const QModelIndex&) const
{
    return QModelIndex();
}

QModelIndex WindowLogFilterProxyModel::sibling(int row, int column, const QModelIndex&) const
{
    return index(row, column);
}

int WindowLogFilterProxyModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(shownRows.size());
}

int WindowLogFilterProxyModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() || !log ? 0 : log->columnCount();
}

bool WindowLogFilterProxyModel::hasChildren(const QModelIndex& parent) const
{
    return rowCount(parent) > 0;
}

QVariant WindowLogFilterProxyModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (!log || section < 0)
        return QVariant();
    if (orientation == Qt::Horizontal)
        return log->headerData(section, orientation, role);
    if (role != Qt::DisplayRole || std::size_t(section) >= shownRows.size())
        return QVariant();
    return shownRows[std::size_t(section)] + 1;
}

bool WindowLogFilterProxyModel::isPlain(int row) const
{
    return std::size_t(row) < shownRows.size() && log->isPlain(shownRows[std::size_t(row)]);
}

QModelIndex WindowLogFilterProxyModel::mapToSource(const QModelIndex& proxyIndex) const
{
    if (!proxyIndex.isValid() || std::size_t(proxyIndex.row()) >= shownRows.size())
        return QModelIndex();
    return log->index(shownRows[std::size_t(proxyIndex.row())], proxyIndex.column());
}

QModelIndex WindowLogFilterProxyModel::mapFromSource(const QModelIndex& sourceIndex) const
{
    return sourceIndex.isValid() ? index(proxyRowOf(sourceIndex.row()), sourceIndex.column()) : QModelIndex();
}

void WindowLogFilterProxyModel::sort(int, Qt::SortOrder) {}

bool WindowLogFilterProxyModel::filterAcceptsRow(int sourceRow, const QModelIndex&) const
{
    if (pauseRowLimit != 0)
        return pauseRowLimit >= sourceRow;
    return log->levelAt(sourceRow) >= level;
}

void WindowLogFilterProxyModel::sourceRowsInserted(const QModelIndex& sourceParent, int first, int last)
{
    for (int sourceRow = first; sourceRow <= last; ++sourceRow) {
        if (!filterAcceptsRow(sourceRow, sourceParent))
            continue;
        const int end = rowCount();
        beginInsertRows(QModelIndex(), end, end);
        shownRows.push_back(sourceRow);
        endInsertRows();
    }
}

void WindowLogFilterProxyModel::sourceDataChanged()
{
    refilter();
}

void WindowLogFilterProxyModel::sourceAboutToBeReset()
{
    beginResetModel();
}

void WindowLogFilterProxyModel::sourceReset()
{
    shownRows = acceptedRows();
    endResetModel();
}

std::vector<int> WindowLogFilterProxyModel::acceptedRows() const
{
    std::vector<int> accepted;
    const int rows = log ? log->rowCount() : 0;
    for (int sourceRow = 0; sourceRow < rows; ++sourceRow) {
        if (filterAcceptsRow(sourceRow, QModelIndex()))
            accepted.push_back(sourceRow);
    }
    return accepted;
}

/// -1 for a row that is not shown.
int WindowLogFilterProxyModel::proxyRowOf(int sourceRow) const
{
    const auto found = std::lower_bound(shownRows.begin(), shownRows.end(), sourceRow);
    return found != shownRows.end() && *found == sourceRow ? int(found - shownRows.begin()) : -1;
}

} // namespace QsLogging
