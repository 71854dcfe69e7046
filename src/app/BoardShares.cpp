#include "app/BoardShares.h"

#include <QDockWidget>
#include <QEvent>
#include <QMainWindow>

#include <algorithm>
#include <numeric>

namespace {

int extentOf(const QDockWidget* dock, Qt::Orientation orientation)
{
    return orientation == Qt::Horizontal ? dock->width() : dock->height();
}

/// Whether the second dock begins where the first one ends, and not beside or behind it.
bool follows(const QRect& first, const QRect& second, Qt::Orientation orientation)
{
    return orientation == Qt::Horizontal ? second.left() > first.right() : second.top() > first.bottom();
}

double sumOf(const QVector<BoardShares::Share>& shares)
{
    return std::accumulate(shares.begin(), shares.end(), 0.0,
                           [](double sum, const BoardShares::Share& share) { return sum + share.weight; });
}

bool sameWeights(const QVector<BoardShares::Share>& a, const QVector<BoardShares::Share>& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const BoardShares::Share& x, const BoardShares::Share& y) { return x.weight == y.weight; });
}

} // namespace

BoardShares::BoardShares(QMainWindow* board) : QObject(board), board(board)
{
    board->installEventFilter(this);
}

void BoardShares::share(Qt::Orientation orientation, const QVector<Share>& row)
{
    rows.append({orientation, row});
}

bool BoardShares::eventFilter(QObject* object, QEvent* event)
{
    switch (event->type()) {
    case QEvent::Resize:
    case QEvent::Show:
        // The board's own layout comes first, so that the extents are those of the new size.
        QMetaObject::invokeMethod(this, "layOut", Qt::QueuedConnection);
        break;
    case QEvent::MouseButtonPress:
        // The board itself gets the mouse where its separators are.
        beforeDrag.clear();
        for (const Row& row : rows)
            beforeDrag.append(extents(row));
        break;
    case QEvent::MouseButtonRelease:
        keepDraggedSizes();
        break;
    default:
        break;
    }
    return QObject::eventFilter(object, event);
}

void BoardShares::layOut()
{
    for (const Row& row : rows)
        layOut(row);
}

void BoardShares::layOut(const Row& row) const
{
    const QVector<Share> present = extents(row);
    QList<QDockWidget*> docks;
    QVector<Share> wanted;
    for (const Share& place : present) {
        const auto share = std::find_if(row.shares.begin(), row.shares.end(),
                                        [&](const Share& candidate) { return seen(candidate.dock) == place.dock; });
        docks.append(place.dock);
        wanted.append(*share);
    }
    if (docks.size() < 2)
        return;
    QList<int> sizes;
    for (const Share& share : wanted)
        sizes.append(std::max(1, qRound(sumOf(present) * share.weight / sumOf(wanted))));
    board->resizeDocks(docks, sizes, row.orientation);
}

QVector<BoardShares::Share> BoardShares::extents(const Row& row) const
{
    QVector<Share> found;
    for (const Share& share : row.shares) {
        QDockWidget* dock = seen(share.dock);
        if (!dock)
            continue;
        if (!found.isEmpty() && !follows(found.last().dock->geometry(), dock->geometry(), row.orientation))
            return {};
        found.append({dock, double(extentOf(dock, row.orientation))});
    }
    return found;
}

QDockWidget* BoardShares::seen(QDockWidget* dock) const
{
    for (QDockWidget* candidate : QList<QDockWidget*>{dock} + board->tabifiedDockWidgets(dock)) {
        // One behind another tab is kept beyond the edges of the board.
        if (candidate->isVisible() && !candidate->isFloating() && board->rect().intersects(candidate->geometry()))
            return candidate;
    }
    return nullptr;
}

void BoardShares::keepDraggedSizes()
{
    for (int i = 0; i < beforeDrag.size(); ++i) {
        const QVector<Share> dragged = extents(rows[i]);
        if (sameWeights(dragged, beforeDrag[i]))
            continue;
        QVector<Share*> changed;
        double sum = 0;
        for (Share& share : rows[i].shares) {
            if (seen(share.dock)) {
                changed.append(&share);
                sum += share.weight;
            }
        }
        // Docks that are hidden now keep their weight among the others.
        for (int j = 0; j < changed.size() && changed.size() == dragged.size(); ++j)
            changed[j]->weight = dragged[j].weight * sum / sumOf(dragged);
    }
    beforeDrag.clear();
}
