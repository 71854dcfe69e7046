#include "Interleaved.h"

#include "graphs/TraceGraph.h"
#include "tools/SurfacePlot.h"
#include "tools/WindowRockingCurve.h"
#include "tools/rocking/GridScan.h"

#include <QApplication>
#include <QGLWidget>

#include <GL/gl.h>
#include <GL/glext.h>

#include <cmath>
#include <memory>

// The rocking curves: redraw of a point and a frame of the surface. The walk is measured in the whole program
// (program/).

namespace {

constexpr int side = grid_scan::side;

void settle()
{
    for (int turn = 0; turn < 20; ++turn)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
}

/// Traces of a whole scan, with noise as the amplifier has it.
void fill(QCustomPlot* plot, int points)
{
    for (int trace = 0; trace < plot->graphCount(); ++trace) {
        QVector<double> keys(points), values(points);
        unsigned random = 1;
        for (int i = 0; i < points; ++i) {
            random = random * 1664525U + 1013904223U;
            const double noise = double(random >> 8) / double(1 << 24) - 0.5;
            keys[i] = 4 + 2.0 * i / points;
            values[i] = 1e-6 * (trace + 1) * (std::exp(-2 * std::pow(keys[i] - 5, 2)) + 0.02 * noise);
        }
        plot->graph(trace)->setData(keys, values, true);
    }
    plot->rescaleAxes();
}

void redraw(QCustomPlot* plot)
{
    plot->replot(QCustomPlot::rpImmediateRefresh);
    QCoreApplication::processEvents();
}

/// Redraw with the stated 2.0 and 3.0 wide pens, against the same window with pens of 1.0.
void scanRedraw(benchmark::State& state)
{
    WindowRockingCurve wide, thin;
    for (WindowRockingCurve* window : {&wide, &thin}) {
        window->resize(int(state.range(1)), int(state.range(2)));
        window->show();
        fill(window->findChild<QCustomPlot*>(), int(state.range(0)));
    }
    auto* widePlot = wide.findChild<QCustomPlot*>();
    auto* thinPlot = thin.findChild<QCustomPlot*>();
    for (int trace = 0; trace < 3; ++trace)
        thinPlot->graph(trace)->setPen(QPen(thinPlot->graph(trace)->pen().color(), 1.0));
    settle();
    Interleaved().way("wide", [&] { redraw(widePlot); }).way("thin", [&] { redraw(thinPlot); }).run(state);
}

/// Currents of a beam whose tuning peaks in the middle of the grid.
std::vector<float> measuredGrid()
{
    std::vector<float> currents(grid_scan::points);
    for (int i = 0; i < grid_scan::points; ++i) {
        const double x = (i / side - 31.5) / 16;
        const double y = (i % side - 31.5) / 16;
        currents[std::size_t(i)] = float(4e-6 * std::exp(-0.5 * (x * x + y * y)));
    }
    return currents;
}

/// The surface at the size and angle of the view, by the quads' own calls or from a vertex buffer.
class Frame : public QGLWidget
{
public:
    enum Way
    {
        Immediate,
        VertexBuffer
    };

    explicit Frame(Way way) : QGLWidget(QGLFormat(QGL::SampleBuffers)), way(way)
    {
        setAutoBufferSwap(false);
        std::vector<float> heights(grid_scan::points);
        grid_scan::normalise(measuredGrid().data(), heights.data());
        surface.setData(heights.data(), side, side);
        resize(800, 600);
        show();
        settle();
    }

    void draw()
    {
        makeCurrent();
        glViewport(100, 0, 600, 600);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(-0.8, 0.8, -0.5, 1.0, 4.0, 15.0);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glTranslatef(0, 0, -10);
        glRotatef(4690 / 16.0f, 1, 0, 0);
        glRotatef(21 / 16.0f, 0, 1, 0);
        glRotatef(3744 / 16.0f, 0, 0, 1);
        if (way == Immediate)
            surface.draw();
        else
            drawBuffer();
        glFinish();
    }

protected:
    void initializeGL() override
    {
        glShadeModel(GL_SMOOTH);
        glClearColor(1, 1, 1, 0.5f);
        glEnable(GL_DEPTH_TEST);
        glDepthFunc(GL_LEQUAL);
    }
    void paintGL() override {}

private:
    struct Vertex
    {
        float r, g, b, a;
        float x, y, z;
    };

    void fillBuffer()
    {
        std::vector<Vertex> vertices;
        for (const Quad& quad : surface.quads()) {
            for (const auto& corner : quad.corners)
                vertices.push_back({quad.r, quad.g, quad.b, 1, corner[0], corner[1], corner[2]});
        }
        count = int(vertices.size());
        const auto generate = function<PFNGLGENBUFFERSPROC>("glGenBuffers");
        const auto data = function<PFNGLBUFFERDATAPROC>("glBufferData");
        generate(1, &buffer);
        bind(GL_ARRAY_BUFFER, buffer);
        data(GL_ARRAY_BUFFER, GLsizeiptr(vertices.size() * sizeof(Vertex)), vertices.data(), GL_STATIC_DRAW);
    }

    void drawBuffer()
    {
        if (!bind)
            bind = function<PFNGLBINDBUFFERPROC>("glBindBuffer");
        if (buffer == 0)
            fillBuffer();
        bind(GL_ARRAY_BUFFER, buffer);
        glEnableClientState(GL_COLOR_ARRAY);
        glEnableClientState(GL_VERTEX_ARRAY);
        glColorPointer(4, GL_FLOAT, sizeof(Vertex), nullptr);
        glVertexPointer(3, GL_FLOAT, sizeof(Vertex), reinterpret_cast<const void*>(4 * sizeof(float)));
        glDrawArrays(GL_QUADS, 0, count);
        bind(GL_ARRAY_BUFFER, 0);
    }

    template <typename Function>
    Function function(const char* name)
    {
        return reinterpret_cast<Function>(context()->getProcAddress(QLatin1String(name)));
    }

    Way way;
    SurfacePlot surface;
    PFNGLBINDBUFFERPROC bind = nullptr;
    GLuint buffer = 0;
    int count = 0;
};

void surfaceFrame(benchmark::State& state)
{
    Frame immediate(Frame::Immediate);
    Frame buffered(Frame::VertexBuffer);
    // Mesa draws in threads of its own.
    Interleaved(CLOCK_MONOTONIC)
        .way("frame", [&] { immediate.draw(); })
        .way("buffer", [&] { buffered.draw(); })
        .run(state);
}

} // namespace

BENCHMARK(scanRedraw)
    ->ArgNames({"points", "width", "height"})
    ->Args({1000, 860, 560})
    ->Args({1000, 1900, 1000})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(surfaceFrame)->UseManualTime()->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
