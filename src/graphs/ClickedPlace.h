#pragma once

#include <QPointF>

class QCustomPlot;
class QMouseEvent;

/// Coordinates of a click on a plot, also outside the axis rectangle. What is rounded to the nearest integer, half
/// away from zero, is the pixel and not the coordinate.
QPointF clickedPlace(const QCustomPlot* plot, const QMouseEvent* event);
