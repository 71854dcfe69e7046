// How long each window takes to be built, against the start of the whole program: a window may take 30 ms or
// a tenth of the start, whichever is more. "of_limit" is the share of that allowance, "of_start" the ratio to
// the start. The rows "painted" add layout and first painting.

#include "ProgramStart.h"

#include "app/Globals.h"
#include "feedback/WidgetFeedbackControl.h"
#include "feedback/WidgetPidCtrl.h"
#include "feedback/WindowBeamlineConf.h"
#include "feedback/WindowFiltparams.h"
#include "feedback/WindowManOutCtrl.h"
#include "feedback/WindowPIDparams.h"
#include "feedback/WindowROC_ROI.h"
#include "hardware/ConfigFile.h"
#include "hardware/MailboxComm.h"
#include "logging/LogWindow.h"
#include "stream/Updater.h"
#include "support/DialogLogin.h"
#include "support/WindowDisplaySettings.h"
#include "support/WindowPico.h"
#include "support/WindowSFPstatus.h"
#include "support/about.h"
#include "tools/WindowFrequencyAnalysis.h"
#include "tools/WindowRocking3D.h"
#include "tools/WindowRockingCurve.h"
#include "tools/WindowSaveData.h"
#include "tools/WindowStepResponse.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QGLWidget>
#include <QPixmap>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>

namespace {

/// What any window with a multisampled OpenGL surface costs on this machine before it holds anything of ours.
class EmptySurface : public QGLWidget
{
public:
    explicit EmptySurface(QWidget* parent) : QGLWidget(QGLFormat(QGL::SampleBuffers), parent) {}
};

/// The same without samples.
class PlainSurface : public QGLWidget
{
public:
    explicit PlainSurface(QWidget* parent) : QGLWidget(parent) {}
};

double startSeconds = 0.0;
QWidget* board = nullptr;

/// Median of several starts, so that a first one with cold files does not count.
double medianStart(ProgramStart& start)
{
    double starts[7];
    for (double& seconds : starts)
        seconds = start.seconds();
    std::sort(std::begin(starts), std::end(starts));
    return starts[0] < 0.0 ? -1.0 : starts[3];
}

template <typename Window>
void build(benchmark::State& state, bool painted)
{
    double total = 0.0;
    for (auto _ : state) {
        QElapsedTimer timer;
        timer.start();
        const auto window = std::make_unique<Window>(board);
        if (painted)
            benchmark::DoNotOptimize(window->grab());
        const double seconds = double(timer.nsecsElapsed()) * 1e-9;
        state.SetIterationTime(seconds);
        total += seconds;
    }
    const double mean = total / double(state.iterations());
    state.counters["of_start"] = mean / startSeconds;
    if (!painted)
        state.counters["of_limit"] = mean / std::max(0.030, startSeconds / 10.0);
}

template <typename Window>
void measure(const std::string& name, const char* row, bool painted)
{
    benchmark::RegisterBenchmark((name + row).c_str(), build<Window>, painted)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

template <typename Window>
void measureBuilt(const std::string& name)
{
    measure<Window>(name, "/built", false);
}

template <typename Window>
void measureBuiltAndPainted(const std::string& name)
{
    measureBuilt<Window>(name);
    measure<Window>(name, "/painted", true);
}

void makeSharedObjects()
{
    configFile = new ConfigFile;
    updater = new Updater;
    mailbox = new MailboxComm(nullptr);
    mailbox->getSystemVersion(&hwTimestampText, &swVersionText, &pidVersionText);
    mailbox->refreshData();
    userLevel = 2;
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    ProgramStart start(KORA_PROGRAM);
    startSeconds = medianStart(start);
    if (startSeconds < 0.0) {
        std::fputs("The program showed no window\n", stderr);
        return 1;
    }
    benchmark::AddCustomContext("program_start_ms", std::to_string(startSeconds * 1e3));

    QApplication::setAttribute(Qt::AA_ForceRasterWidgets);
    QApplication application(argc, argv);
    QFile style(QStringLiteral(":/qss/style.qss"));
    if (style.open(QIODevice::ReadOnly))
        application.setStyleSheet(QString::fromLatin1(style.readAll()));
    makeSharedObjects();
    QWidget host;
    board = &host;

    measureBuiltAndPainted<WidgetFeedbackControl>("WidgetFeedbackControl");
    measureBuiltAndPainted<WidgetPidCtrl>("WidgetPidCtrl");
    measureBuiltAndPainted<WindowPIDparams>("WindowPIDparams");
    measureBuiltAndPainted<WindowFiltparams>("WindowFiltparams");
    measureBuiltAndPainted<WindowROC_ROI>("WindowROC_ROI");
    measureBuiltAndPainted<WindowBeamlineConf>("WindowBeamlineConf");
    measureBuiltAndPainted<WindowManOutCtrl>("WindowManOutCtrl");
    measureBuiltAndPainted<WindowRockingCurve>("WindowRockingCurve");
    // Its surface is painted by OpenGL, which needs the window on the screen.
    measureBuilt<WindowRocking3D>("WindowRocking3D");
    measureBuilt<EmptySurface>("empty OpenGL surface");
    measureBuilt<PlainSurface>("empty OpenGL surface without samples");
    measureBuiltAndPainted<WindowStepResponse>("WindowStepResponse");
    measureBuiltAndPainted<WindowFrequencyAnalysis>("WindowFrequencyAnalysis");
    measureBuiltAndPainted<WindowSaveData>("WindowSaveData");
    measureBuiltAndPainted<DialogLogin>("DialogLogin");
    measureBuiltAndPainted<WindowPico>("WindowPico");
    measureBuiltAndPainted<WindowDisplaySettings>("WindowDisplaySettings");
    measureBuiltAndPainted<WindowSFPstatus>("WindowSFPstatus");
    measureBuiltAndPainted<about>("about");
    measureBuiltAndPainted<QsLogging::Window>("log window");
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
