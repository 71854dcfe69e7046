#include "tour/Tour.h"

#include "tour/Chapters.h"

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QTextStream>
#include <QTimer>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int lookIntervalMs = 200;

QWidget* shownMainWindow()
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->inherits("MainWindow") && widget->isVisible())
            return widget;
    }
    return nullptr;
}

void tell(const QString& report, const QString& folder)
{
    QFile file(folder + QStringLiteral("/tour.txt"));
    if (file.open(QIODevice::WriteOnly))
        QTextStream(&file) << report;
    QTextStream(stdout) << report;
}

/// Plays a chapter, and tells those who wait for the table that it was played.
void play(void (*chapter)(Stage&), Stage& stage)
{
    const int before = stage.findings.rows().size();
    chapter(stage);
    const QVector<Findings::Row>& rows = stage.findings.rows();
    const auto held =
        std::count_if(rows.begin() + before, rows.end(), [](const Findings::Row& row) { return row.holds; });
    QTextStream(stderr) << rows.last().chapter << ": " << held << " of " << rows.size() - before << '\n';
}

} // namespace

Tour::Tour()
{
    // The program is still being built when Qt loads its plugins.
    QTimer::singleShot(lookIntervalMs, this, SLOT(begin()));
}

void Tour::begin()
{
    QWidget* window = shownMainWindow();
    if (!window) {
        QTimer::singleShot(lookIntervalMs, this, SLOT(begin()));
        return;
    }
    kora::simulation::SimulationControl* plant = kora::simulation::findControl();
    if (!plant)
        qFatal("the tour needs the simulated installation");

    Hand hand(window);
    Camera camera(qEnvironmentVariable("KORA_TOUR_FOLDER", QStringLiteral(".")));
    Findings findings;
    Stage stage{hand, camera, findings, *plant};
    for (const auto chapter :
         {tour::watch, tour::logIn, tour::driveOutputsByHand, tour::configure, tour::enableFeedback,
          tour::placeSetPoint, tour::sweepFrequencies, tour::step, tour::scan, tour::scanSurface, tour::save,
          tour::loseAndRegainTheBeam, tour::unplugAndReplugAnAmplifier, tour::lookAround, tour::goHome})
        play(chapter, stage);

    tell(findings.table(), camera.folder());
    if (findings.allHold())
        hand.choose("action_Exit");
    else
        QCoreApplication::exit(1);
}
