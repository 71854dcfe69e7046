#include "graphs/LazyPlot.h"

#include <QTimer>

LazyPlot::LazyPlot(QWidget* parent) : QCustomPlot(parent)
{
    connect(this, SIGNAL(afterReplot()), this, SLOT(redrawn()));
    // A new plot has queued a drawing of its own. While one seems to be under way it is not begun; the layout comes
    // behind it.
    mReplotting = true;
    QTimer::singleShot(0, this, SLOT(beginDrawing()));
}

void LazyPlot::requestRedraw()
{
    outdated = true;
    update();
}

void LazyPlot::paintEvent(QPaintEvent* event)
{
    if (outdated) {
        mReplotting = false;
        // A drawing asks for a paint event at its end; this one is under way already.
        setAttribute(Qt::WA_UpdatesDisabled, true);
        replot(rpQueuedRefresh);
        setAttribute(Qt::WA_UpdatesDisabled, false);
    }
    QCustomPlot::paintEvent(event);
}

void LazyPlot::resizeEvent(QResizeEvent*)
{
    layOut();
}

void LazyPlot::beginDrawing()
{
    mReplotting = false;
    layOut();
}

void LazyPlot::layOut()
{
    setViewport(rect());
    updateLayout();
    requestRedraw();
}

void LazyPlot::redrawn()
{
    outdated = false;
}
