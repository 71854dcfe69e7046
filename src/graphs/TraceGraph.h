#pragma once

#include <qcustomplot.h>

/// A graph whose data come straight from the stream. Values and keys that are infinite or not a number take no part
/// in the ranges, so that one such record does not spoil the autoscale of the others.
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
};
