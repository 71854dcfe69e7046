#pragma once

#include <qcustomplot.h>

/// A plot that is drawn when it is seen. Requests of one turn of the event loop, changes of size among them, end in one
/// drawing. A plot that nobody sees (a dock behind another tab, a hidden dock, a minimised window) is drawn when it
/// comes into sight: the system then asks the widget to paint itself. Places in pixels hold before that.
/// GUI thread only.
class LazyPlot : public QCustomPlot
{
    Q_OBJECT

public:
    explicit LazyPlot(QWidget* parent = nullptr);

    /// The picture is out of date.
    void requestRedraw();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private slots:
    void beginDrawing();
    void redrawn();

private:
    void layOut();

    bool outdated = true;
};
