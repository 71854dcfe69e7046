#include "graphs/PlotTheme.h"

#include <qcustomplot.h>

void plot_theme::drawPlain(QCustomPlot* plot)
{
    plot->setNoAntialiasingOnDrag(true);
    plot->setNotAntialiasedElements(QCP::aeAll);
}

void plot_theme::setGradient(QCustomPlot* plot, double height)
{
    QLinearGradient gradient(0, 0, 0, height);
    gradient.setColorAt(0, QColor(100, 100, 100));
    gradient.setColorAt(1, QColor(30, 30, 30));
    plot->setBackground(QBrush(gradient));
}

void plot_theme::whiten(QCPAxis* axis)
{
    const QPen white(Qt::white, 1.0);
    axis->setLabelColor(Qt::white);
    axis->setTickLabelColor(Qt::white);
    axis->setBasePen(white);
    axis->setTickPen(white);
    axis->setSubTickPen(white);
}

void plot_theme::showLegend(QCustomPlot* plot)
{
    plot->legend->setVisible(true);
    plot->legend->setTextColor(Qt::white);
    plot->legend->setBrush(QColor(10, 10, 10));
}

void plot_theme::allowVerticalZoomAndSelection(QCustomPlot* plot)
{
    plot->setInteractions(QCP::iRangeDrag | QCP::iRangeZoom | QCP::iSelectPlottables | QCP::iSelectAxes |
                          QCP::iSelectLegend);
    plot->axisRect()->setRangeZoom(Qt::Vertical);
}
