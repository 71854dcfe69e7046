#include "logging/LogTableView.h"

#include "logging/LogRowHeader.h"
#include "logging/LogWindowModel.h"

#include <QEvent>
#include <QScrollBar>
#include <QStyle>
#include <QStyleOptionViewItem>

#include <algorithm>

namespace QsLogging {

LogTableView::LogTableView(QWidget* parent) : QTableView(parent)
{
    setVerticalHeader(new LogRowHeader(this));
    connect(verticalScrollBar(), SIGNAL(rangeChanged(int, int)), SLOT(stayAtEnd()));
    // Whole lines are what is copied and saved.
    setSelectionBehavior(QAbstractItemView::SelectRows);
    forgetRowHeight();
}

void LogTableView::setModel(QAbstractItemModel* source)
{
    if (model())
        disconnect(model(), SIGNAL(layoutChanged()), this, SLOT(doItemsLayout()));
    QTableView::setModel(source);
    // At once: left to itself the table would first paint its header at an offset that is valid no more, and
    // that paints all rows.
    if (source)
        connect(source, SIGNAL(layoutChanged()), SLOT(doItemsLayout()));
}

void LogTableView::follow(bool follow)
{
    following = follow;
    stayAtEnd();
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
        forgetRowHeight();
    QTableView::changeEvent(event);
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

/// Rows of the header's default height cost it nothing when the filter changes, so the default becomes the
/// height that the delegate will give to a plain line.
void LogTableView::forgetRowHeight()
{
    plainRowHeight = 0;
    QStyleOptionViewItem line = viewOptions();
    line.features |= QStyleOptionViewItem::HasDisplay;
    line.text = QStringLiteral("0");
    const int height = style()->sizeFromContents(QStyle::CT_ItemViewItem, &line, QSize(), this).height();
    // A minimum that is not given is computed anew for each row.
    verticalHeader()->setMinimumSectionSize(-1);
    verticalHeader()->setMinimumSectionSize(verticalHeader()->minimumSectionSize());
    verticalHeader()->setDefaultSectionSize(std::max(height, verticalHeader()->minimumSectionSize()));
}

} // namespace QsLogging
