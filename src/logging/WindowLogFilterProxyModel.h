#pragma once

#include "logging/Level.h"

#include <QSortFilterProxyModel>

#include <vector>

namespace QsLogging {

class LogWindowModel;

/// Shows the lines of a LogWindowModel from a level up, in their order. GUI thread.
///
/// Keeps the mapping of rows itself: the one of the base class costs the whole log at each new line, and at a
/// change of the filter once more for each run of lines that comes or goes, which is minutes over 100000
/// lines. Here a new line costs the same however long the log is, and a filter change one pass. Nothing is
/// sorted, and the source only ever appends, changes or starts anew.
class WindowLogFilterProxyModel : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    WindowLogFilterProxyModel(int level, int pauseRowLimit);

    /// Lowest level shown. Invalidates the filter.
    void setLevel(int level);
    /// Asks anew for each row whether it is shown. Selected rows that stay are still selected.
    void refilter();

    /// Whether a row is surely as high as any other row of one plain line of text.
    bool isPlain(int row) const;

    /// @param source  a LogWindowModel
    void setSourceModel(QAbstractItemModel* source) override;

    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    QModelIndex sibling(int row, int column, const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    bool hasChildren(const QModelIndex& parent = QModelIndex()) const override;
    /// Rows bear the numbers of the source, from 1.
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    QModelIndex mapToSource(const QModelIndex& proxyIndex) const override;
    QModelIndex mapFromSource(const QModelIndex& sourceIndex) const override;
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    /// 0 when not paused. Otherwise rows of the source up to this one are shown whatever their level, and
    /// later ones are not. Takes effect on new rows, and on the others at the next change of the filter.
    int pauseRowLimit;

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;

private slots:
    void sourceRowsInserted(const QModelIndex& sourceParent, int first, int last);
    void sourceDataChanged();
    void sourceAboutToBeReset();
    void sourceReset();

private:
    std::vector<int> acceptedRows() const;
    int proxyRowOf(int sourceRow) const;

    int level;
    const LogWindowModel* log = nullptr;
    std::vector<int> shownRows; ///< rows of the source, ascending
};

} // namespace QsLogging
