#pragma once

class QCPAxis;
class QCustomPlot;

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

/// Shows the legend with white text on a nearly black brush.
void showLegend(QCustomPlot* plot);

/// Dragging and zooming of ranges, zooming in the vertical direction only; selection of traces, axes and legend.
void allowVerticalZoomAndSelection(QCustomPlot* plot);

} // namespace plot_theme
