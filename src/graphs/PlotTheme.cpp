#include "graphs/PlotTheme.h"

#include "stream/StreamSignal.h"

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

QString plot_theme::axisTitle(const Quantity& quantity)
{
    return QStringLiteral("%1 [%2]").arg(QLatin1String(quantity.name), QLatin1String(quantity.unit));
}

void plot_theme::showLegend(QCustomPlot* plot)
{
    plot->legend->setVisible(true);
    plot->legend->setTextColor(Qt::white);
    plot->legend->setBrush(QColor(10, 10, 10));
    plot->axisRect()->insetLayout()->setInsetAlignment(0, Qt::AlignTop | Qt::AlignLeft);
}

void plot_theme::listVisibleTraces(QCustomPlot* plot)
{
    plot->legend->clearItems();
    for (int i = 0; i < plot->graphCount(); ++i) {
        if (plot->graph(i)->visible())
            plot->graph(i)->addToLegend();
    }
    plot->legend->setVisible(plot->legend->itemCount() > 0);
}

void plot_theme::keepLeftMargin(QCustomPlot* plot, const QString& widestLabel)
{
    const QCPAxis* axis = plot->yAxis;
    const int title = axis->label().isEmpty() ? 0 : QFontMetrics(axis->labelFont()).height() + axis->labelPadding();
    const int label = QFontMetrics(axis->tickLabelFont()).horizontalAdvance(widestLabel) + axis->tickLabelPadding();
    const int lines = axis->padding() + qMax(axis->tickLengthOut(), axis->subTickLengthOut());
    QMargins margins = plot->axisRect()->minimumMargins();
    // The plot measures its labels in a slightly larger font, which rounds to some pixels more.
    margins.setLeft(title + label + lines + QFontMetrics(axis->tickLabelFont()).averageCharWidth());
    plot->axisRect()->setMinimumMargins(margins);
}

void plot_theme::fitTicksToHeight(QCustomPlot* plot)
{
    constexpr int usualTicks = 5;
    const int linesPerTick = 2;
    const int room = plot->axisRect()->height() / (linesPerTick * QFontMetrics(plot->yAxis->tickLabelFont()).height());
    plot->yAxis->ticker()->setTickCount(qBound(1, room, usualTicks));
}

void plot_theme::allowVerticalZoomAndSelection(QCustomPlot* plot)
{
    plot->setInteractions(QCP::iRangeDrag | QCP::iRangeZoom | QCP::iSelectPlottables | QCP::iSelectAxes |
                          QCP::iSelectLegend);
    plot->axisRect()->setRangeZoom(Qt::Vertical);
}
