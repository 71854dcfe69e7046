#include "logging/window/LogTableView.h"

#include "logging/Level.h"
#include "logging/LogWindowModel.h"
#include "logging/WindowLogFilterProxyModel.h"
#include "logging/window/LogRowHeader.h"

#include <QEvent>
#include <QResizeEvent>
#include <QScrollBar>
#include <QStyle>
#include <QStyleOptionViewItem>

#include <algorithm>

namespace QsLogging {

LogTableView::LogTableView(QWidget* parent) : QTableView(parent)
{
    setVerticalHeader(new LogRowHeader(this));
    // Besides the rows in view; the default of 1000 is most of the cost of new lines.
    horizontalHeader()->setResizeContentsPrecision(100);
    connect(verticalScrollBar(), SIGNAL(rangeChanged(int, int)), SLOT(stayAtEnd()));
    // Whole lines are what is copied and saved.
    setSelectionBehavior(QAbstractItemView::SelectRows);
    measureLines();
}

void LogTableView::setModel(QAbstractItemModel* source)
{
    if (model())
        disconnect(model(), SIGNAL(layoutChanged()), this, SLOT(doItemsLayout()));
    QTableView::setModel(source);
    log = qobject_cast<WindowLogFilterProxyModel*>(source);
    // At once: left to itself the table would first paint its header at an offset that is valid no more, and
    // that paints all rows.
    if (source)
        connect(source, SIGNAL(layoutChanged()), SLOT(doItemsLayout()));
}

void LogTableView::showEnd()
{
    following = true;
    stayAtEnd();
}

void LogTableView::stay()
{
    if (following)
        executeDelayedItemsLayout();
    following = false;
}

int LogTableView::sizeHintForRow(int row) const
{
    if (!log || !log->isPlain(row))
        return QTableView::sizeHintForRow(row);
    if (plainRowHeight == 0)
        plainRowHeight = QTableView::sizeHintForRow(row);
    return plainRowHeight;
}

int LogTableView::sizeHintForColumn(int column) const
{
    const int hint = QTableView::sizeHintForColumn(column);
    return column == LogWindowModel::LevelColumn ? std::max(hint, levelWidth) : hint;
}

void LogTableView::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        measureLines();
    QTableView::changeEvent(event);
}

void LogTableView::resizeEvent(QResizeEvent* event)
{
    if (event->size().height() != event->oldSize().height())
        stay();
    QTableView::resizeEvent(event);
}

void LogTableView::scrollContentsBy(int dx, int dy)
{
    if (verticalScrollBar()->value() != verticalScrollBar()->maximum())
        following = false;
    QTableView::scrollContentsBy(dx, dy);
}

void LogTableView::stayAtEnd()
{
    if (following)
        verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

void LogTableView::measureLines()
{
    QStyleOptionViewItem cell = viewOptions();
    cell.features |= QStyleOptionViewItem::HasDisplay;
    const auto sizeOf = [&](const QString& text) {
        cell.text = text;
        return style()->sizeFromContents(QStyle::CT_ItemViewItem, &cell, QSize(), this);
    };
    plainRowHeight = 0;
    levelWidth = 0;
    for (int level = TraceLevel; level <= FatalLevel; ++level)
        levelWidth = std::max(levelWidth, sizeOf(levelName(level)).width());

    // A minimum that is not given is computed anew for each row.
    verticalHeader()->setMinimumSectionSize(-1);
    const int minimum = verticalHeader()->minimumSectionSize();
    verticalHeader()->setMinimumSectionSize(minimum);
    // Rows of the default height cost the header nothing when the filter changes.
    verticalHeader()->setDefaultSectionSize(std::max(minimum, sizeOf(QStringLiteral("0")).height()));
}

} // namespace QsLogging
