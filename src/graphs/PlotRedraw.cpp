#include "graphs/PlotRedraw.h"

#include <qcustomplot.h>

PlotRedraw::PlotRedraw(QCustomPlot* plot) : QObject(plot), plot(plot)
{
    plot->installEventFilter(this);
    connect(plot, SIGNAL(afterReplot()), this, SLOT(redrawn()));
}

void PlotRedraw::request()
{
    outdated = true;
    plot->update();
}

bool PlotRedraw::eventFilter(QObject* object, QEvent* event)
{
    if (object == plot && event->type() == QEvent::Paint && outdated) {
        // The plot asks for a paint event at the end of a replot; this one is under way already.
        plot->setAttribute(Qt::WA_UpdatesDisabled, true);
        plot->replot(QCustomPlot::rpQueuedRefresh);
        plot->setAttribute(Qt::WA_UpdatesDisabled, false);
    }
    return QObject::eventFilter(object, event);
}

void PlotRedraw::redrawn()
{
    outdated = false;
}
