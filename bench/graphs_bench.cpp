#include "Interleaved.h"

#include "graphs/PlotTheme.h"
#include "graphs/TraceGraph.h"

#include <QApplication>
#include <qwt_plot.h>
#include <qwt_plot_canvas.h>
#include <qwt_plot_curve.h>

#include <random>

// Redraws of shown plots, painted at once. The sizes are those of the plots.

namespace {

constexpr int windowRecords = 14336;

QVector<double> noise(int count, unsigned seed, double offset)
{
    std::mt19937 generator(seed);
    std::normal_distribution<double> normal(offset, 1.0);
    QVector<double> values(count);
    std::generate(values.begin(), values.end(), [&] { return normal(generator); });
    return values;
}

QVector<double> times(int count)
{
    QVector<double> keys(count);
    for (int i = 0; i < count; ++i)
        keys[i] = double(float(i) / 1000.0f);
    return keys;
}

void show(QWidget& widget, const benchmark::State& state)
{
    widget.resize(int(state.range(0)), int(state.range(1)));
    widget.show();
    for (int turn = 0; turn < 20; ++turn)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
}

void redraw(QCustomPlot& plot)
{
    plot.replot(QCustomPlot::rpImmediateRefresh);
    QCoreApplication::processEvents();
}

template <typename Graph>
Graph* addTrace(QCustomPlot& plot, const QVector<double>& keys, const QVector<double>& values, const QPen& pen)
{
    auto* graph = new Graph(plot.xAxis, plot.yAxis);
    graph->setData(keys, values, true);
    graph->setPen(pen);
    return graph;
}

/// The look of the program's plots.
void dress(QCustomPlot& plot)
{
    plot_theme::drawPlain(&plot);
    plot_theme::setGradient(&plot, plot.height());
    plot_theme::whiten(plot.xAxis);
    plot_theme::whiten(plot.yAxis);
}

void timeSeries(benchmark::State& state)
{
    const QColor colours[4] = {0xffff87, 0xff82ff, 0x82ff82, 0x82d2fa};
    QCustomPlot plot;
    QwtPlot qwt;
    plot_theme::showLegend(&plot);
    for (unsigned trace = 0; trace < 4; ++trace) {
        const QVector<double> values = noise(windowRecords, trace, 4.0 * trace);
        addTrace<TraceGraph>(plot, times(windowRecords), values, QPen(colours[trace], 1.0));
        auto* curve = new QwtPlotCurve;
        curve->setPaintAttribute(QwtPlotCurve::FilterPoints);
        curve->setPen(QPen(colours[trace], 1.0));
        curve->setSamples(times(windowRecords), values);
        curve->attach(&qwt);
    }
    static_cast<QwtPlotCanvas*>(qwt.canvas())->setPaintAttribute(QwtPlotCanvas::ImmediatePaint);
    qwt.setCanvasBackground(QColor(60, 60, 60));
    plot.rescaleAxes();
    dress(plot);
    show(plot, state);
    show(qwt, state);
    Interleaved()
        .way("redraw", [&] { redraw(plot); })
        .way("qwt",
             [&] {
                 qwt.replot();
                 QCoreApplication::processEvents();
             })
        .run(state);
}

void wideSpectrum(benchmark::State& state)
{
    constexpr int bins = 4097;
    QVector<double> keys(bins), values = noise(bins, 1, 0);
    for (int bin = 0; bin < bins; ++bin) {
        keys[bin] = double(bin);
        values[bin] = std::exp(values[bin]);
    }
    QCustomPlot wide, thin;
    addTrace<TraceGraph>(wide, keys, values, QPen(QColor(0xdddd00), 2.0));
    addTrace<TraceGraph>(thin, keys, values, QPen(QColor(0xdddd00), 1.0));
    for (QCustomPlot* plot : {&wide, &thin}) {
        for (QCPAxis* axis : {plot->xAxis, plot->yAxis}) {
            axis->setScaleType(QCPAxis::stLogarithmic);
            axis->setTicker(QSharedPointer<QCPAxisTicker>(new QCPAxisTickerLog));
        }
        plot->xAxis->grid()->setSubGridVisible(true);
        plot->rescaleAxes();
        dress(*plot);
        show(*plot, state);
    }
    Interleaved().way("wide", [&] { redraw(wide); }).way("thin", [&] { redraw(thin); }).run(state);
}

void wideCloud(benchmark::State& state)
{
    constexpr int points = 1000;
    QCustomPlot wide, thin;
    for (QCustomPlot* plot : {&wide, &thin}) {
        QVector<double> keys = noise(points, 1, 0);
        std::sort(keys.begin(), keys.end());
        auto* graph = addTrace<TraceGraph>(*plot, keys, noise(points, 2, 0),
                                           QPen(QColor(250, 250, 200, 240), plot == &wide ? 2.0 : 1.0));
        graph->setLineStyle(QCPGraph::lsNone);
        graph->setScatterStyle(QCPScatterStyle(QCPScatterStyle::ssCross, 2));
        plot->rescaleAxes();
        dress(*plot);
        show(*plot, state);
    }
    Interleaved().way("wide", [&] { redraw(wide); }).way("thin", [&] { redraw(thin); }).run(state);
}

void sizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Args({600, 300})->Args({1900, 500})->UseManualTime()->Unit(benchmark::kMillisecond);
}

} // namespace

BENCHMARK(timeSeries)->Apply(sizes);
BENCHMARK(wideSpectrum)->Apply(sizes);
BENCHMARK(wideCloud)->Apply(sizes);

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
