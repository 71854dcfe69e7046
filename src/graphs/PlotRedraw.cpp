#include "graphs/PlotRedraw.h"

#include <QCoreApplication>

#include <qcustomplot.h>

PlotRedraw::PlotRedraw(QCustomPlot* plot) : QObject(plot), plot(plot)
{
    // A new plot has queued a drawing of its own, which it needs for its layout alone as long as nobody sees
    // it.
    QCoreApplication::removePostedEvents(plot, QEvent::MetaCall);
    QMetaObject::invokeMethod(this, "layOut", Qt::QueuedConnection);
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
    if (object == plot && event->type() == QEvent::Resize) {
        layOut();
        return true;
    }
    if (object == plot && event->type() == QEvent::Paint && outdated)
        redrawBeforePainting();
    return QObject::eventFilter(object, event);
}

/// Brings axes and pixels together, as the plot's own handler of its size does, but without drawing.
void PlotRedraw::layOut()
{
    plot->setViewport(plot->rect());
    for (const auto phase : {QCPLayoutElement::upPreparation, QCPLayoutElement::upMargins, QCPLayoutElement::upLayout})
        plot->plotLayout()->update(phase);
    request();
}

void PlotRedraw::redrawBeforePainting()
{
    // The plot asks for a paint event at the end of a replot; this one is under way already.
    plot->setAttribute(Qt::WA_UpdatesDisabled, true);
    plot->replot(QCustomPlot::rpQueuedRefresh);
    plot->setAttribute(Qt::WA_UpdatesDisabled, false);
}

void PlotRedraw::redrawn()
{
    outdated = false;
}
