#pragma once

#include <QImage>

#include <qcustomplot.h>

#include <cstdlib>

/// What all plots look alike in.
namespace plot_look {

/// Whether everything of the axis is white, and its lines 1.0 wide.
inline bool isWhite(const QCPAxis* axis)
{
    const QPen white(Qt::white, 1.0);
    return axis->labelColor() == Qt::white && axis->tickLabelColor() == Qt::white && axis->basePen() == white &&
           axis->tickPen() == white && axis->subTickPen() == white;
}

/// Whether the background of the plot as it is seen runs from light to dark grey over its whole height.
inline bool gradientFillsTheHeight(QCustomPlot* plot)
{
    const QImage picture = plot->grab().toImage();
    const auto greyAt = [&picture](double height, int wanted) {
        const QColor colour = picture.pixelColor(1, int(height * (picture.height() - 1)));
        return colour.red() == colour.green() && colour.red() == colour.blue() && std::abs(colour.red() - wanted) <= 2;
    };
    return greyAt(0, 100) && greyAt(0.5, 65) && greyAt(1, 30);
}

} // namespace plot_look
