#pragma once

class QCPAxis;
class QCustomPlot;
class QString;
struct Quantity;

/// The common look of the plots: dark background, white axes, dark legend.
namespace plot_theme {

/// Height of the gradient until the plot is first resized, pixels.
constexpr double firstGradientHeight = 200;

/// Draws without antialiasing, always: it nearly doubles the cost of a redraw.
void drawPlain(QCustomPlot* plot);

/// Fills the background with a vertical gradient from light grey at the top to dark grey at the bottom.
/// @param height of the gradient in pixels
void setGradient(QCustomPlot* plot, double height);

/// Label, tick labels and all lines of the axis in white, 1.0 wide.
void whiten(QCPAxis* axis);

/// Name and unit of what an axis measures.
QString axisTitle(const Quantity& quantity);

/// Shows the legend with white text on a nearly black brush, top left: the newest data come in at the right.
void showLegend(QCustomPlot* plot);

/// Leaves in the legend the visible traces alone, in their order. One without an entry is not shown.
void listVisibleTraces(QCustomPlot* plot);

/// Room for the widest usual tick label of the left axis beside its title, so that the plot stays in place while
/// the labels change.
/// @param widestLabel text of such a label
void keepLeftMargin(QCustomPlot* plot, const QString& widestLabel);

/// No more ticks on the left axis than have room for their labels in the plot's present height.
void fitTicksToHeight(QCustomPlot* plot);

/// Dragging and zooming of ranges, zooming in the vertical direction only; selection of traces, axes and legend.
void allowVerticalZoomAndSelection(QCustomPlot* plot);

} // namespace plot_theme
