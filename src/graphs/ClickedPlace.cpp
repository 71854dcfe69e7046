#include "graphs/ClickedPlace.h"

#include <QMouseEvent>
#include <qcustomplot.h>

#include <cmath>

QPointF clickedPlace(const QCustomPlot* plot, const QMouseEvent* event)
{
    return {plot->xAxis->pixelToCoord(std::round(event->localPos().x())),
            plot->yAxis->pixelToCoord(std::round(event->localPos().y()))};
}
