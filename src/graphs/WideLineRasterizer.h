#pragma once

#include <QPointF>
#include <QRect>
#include <QVector>

/// The pixels of a wide line, without antialiasing: those whose centre lies on a stroke of this width along the
/// points, with square ends and bevelled joins. A pen's own way costs hundreds of times more on noisy data, since it
/// makes one outline of everything and finds all its crossings; here each piece is cut into columns of pixels, and
/// per column what overlaps is joined.
/// @param points finite, in pixels
/// @param width of the stroke, pixels
/// @param clip pixels outside are left out
/// @return rectangles one pixel wide that do not overlap, in an order of no meaning
QVector<QRect> rasterizeWideLine(const QPointF* points, int count, double width, const QRect& clip);
