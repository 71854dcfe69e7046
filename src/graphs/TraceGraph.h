#pragma once

#include <qcustomplot.h>

/// A graph whose data come straight from the stream. Values and keys that are infinite, NaN or beyond any
/// axis take no part in the ranges, so that one such record does not spoil the autoscale of the others; infinite ones
/// and NaN leave a gap in the line.
///
/// Lines and scatters wider than one pixel are drawn in ways of their own, which look like the pen's and cost about
/// as much as a pen of one pixel. Antialiased or dashed lines and exports go the pen's way.
class TraceGraph : public QCPGraph
{
    Q_OBJECT

public:
    TraceGraph(QCPAxis* keyAxis, QCPAxis* valueAxis);

    /// Gives the graph an empty container, which it owns, and returns it for the writer of the data.
    QCPGraphDataContainer* shareNewData();

    QCPRange getKeyRange(bool& foundRange, QCP::SignDomain signDomain = QCP::sdBoth) const override;
    QCPRange getValueRange(bool& foundRange, QCP::SignDomain signDomain = QCP::sdBoth,
                           const QCPRange& keyRange = QCPRange()) const override;

protected:
    void drawLinePlot(QCPPainter* painter, const QVector<QPointF>& lines) const override;
    void drawScatterPlot(QCPPainter* painter, const QVector<QPointF>& scatters,
                         const QCPScatterStyle& style) const override;
};
