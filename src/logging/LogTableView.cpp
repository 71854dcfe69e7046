#include "logging/LogTableView.h"

#include "logging/LogRowHeader.h"
#include "logging/LogWindowModel.h"

#include <QEvent>
#include <QScrollBar>

namespace QsLogging {

LogTableView::LogTableView(QWidget* parent) : QTableView(parent)
{
    setVerticalHeader(new LogRowHeader(this));
    // Whole lines are what is copied and saved.
    setSelectionBehavior(QAbstractItemView::SelectRows);
}

void LogTableView::followNextRow(bool follow)
{
    followsNextRow = follow;
    if (follow)
        verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

int LogTableView::sizeHintForRow(int row) const
{
    if (!model() ||
        !model()->index(row, LogWindowModel::MessageColumn).data(LogWindowModel::plainRowRole).toBool())
        return QTableView::sizeHintForRow(row);
    if (plainRowHeight == 0)
        plainRowHeight = QTableView::sizeHintForRow(row);
    return plainRowHeight;
}

void LogTableView::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        plainRowHeight = 0;
    QTableView::changeEvent(event);
}

void LogTableView::rowsInserted(const QModelIndex& parent, int start, int end)
{
    QTableView::rowsInserted(parent, start, end);
    endWanted = endWanted || followsNextRow;
}

void LogTableView::updateGeometries()
{
    QTableView::updateGeometries();
    if (!endWanted)
        return;
    endWanted = false;
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

} // namespace QsLogging
