#pragma once

#include <QObject>

class QCustomPlot;

/// Redraws a plot when it is seen. Requests of one turn of the event loop, changes of size among them, end in one
/// redraw, and a plot that nobody sees (a dock behind another tab, a hidden dock, a minimised window) is drawn when it
/// comes into sight: the system then asks the widget to paint itself. A child of the plot.
class PlotRedraw : public QObject
{
    Q_OBJECT

public:
    explicit PlotRedraw(QCustomPlot* plot);

    /// The plot's picture is out of date.
    void request();

    bool eventFilter(QObject* object, QEvent* event) override;

private slots:
    void layOut();
    void redrawn();

private:
    void redrawBeforePainting();

    QCustomPlot* plot;
    bool outdated = true;
};
