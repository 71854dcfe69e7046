#pragma once

#include "stream/PlotData.h"

#include <QWidget>

#include <memory>

class QCPItemRect;
class QMouseEvent;
class TraceGraph;
struct LoopConfiguration;

namespace Ui {
class WidgetGraphXY;
}

/// Where the beam is on one monitor: a cloud of the newest positions, the set-point of the feedback and the two limit
/// rectangles, in micrometres. With the right level a click puts a new set-point. GUI thread only.
class WidgetGraphXY : public QWidget
{
    Q_OBJECT

public:
    /// @param bpmIndex 0 BPM1, 1 BPM2
    WidgetGraphXY(int bpmIndex, QWidget* parent);
    ~WidgetGraphXY() override;

    /// Makes new empty data for the cloud, owned by the plot, and returns it for registration with Updater.
    QCPDataMap* dataMap();

    /// Shows the region of interest of these half-widths, and the region of confidence as a fraction of it.
    void setLimits(double roiX, double roiY, double rocFraction);

signals:
    /// A click has been taken.
    void XYchanged();

public slots:
    void replot();
    /// Reads set-points and configuration from the hardware and draws the marker.
    void updateGraphXY();
    /// Fits the axes to the region of confidence; draws nothing by itself.
    void resetZoom();

protected:
    void resizeEvent(QResizeEvent* event) override;

private slots:
    void graphClicked(QMouseEvent* event);

private:
    void buildGraphs();
    void buildLimits();
    void buildAxes();
    bool isInsideLimits(const LoopConfiguration& configuration, double x, double y) const;
    void sendSetpoints(const LoopConfiguration& configuration, double x, double y);
    void drawMarker(const LoopConfiguration& configuration, double x, double y);
    void drawVerticalLine(double x);
    void drawHorizontalLine(double y);

    int bpmIndex;
    std::unique_ptr<Ui::WidgetGraphXY> ui;
    QCPItemRect* rectROI;
    QCPItemRect* rectROC;
    TraceGraph* cloud;
    TraceGraph* target;
};
