#include "ScenePlugin.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDockWidget>
#include <QDoubleSpinBox>
#include <QMainWindow>
#include <QScreen>

#include <cstdio>

namespace {

constexpr int plotsInRow = 3;

QWidget* topLevel(const char* className)
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->inherits(className) && widget->isVisible())
            return widget;
    }
    return nullptr;
}

} // namespace

Scene::Scene()
{
    connect(&looking, SIGNAL(timeout()), SLOT(look()));
    looking.start(100);
}

void Scene::look()
{
    QWidget* mainWindow = topLevel("MainWindow");
    if (!mainWindow)
        return;
    looking.stop();
    const QList<QByteArray> words = qgetenv("KORA_SCENE").split(' ');
    if (words.first() == "floated")
        floatPlots(mainWindow);
    else if (words.first() == "walk")
        startWalk(mainWindow, words.value(1).toDouble());
}

void Scene::floatPlots(QWidget* mainWindow)
{
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    const QSize size(screen.width() / plotsInRow, screen.height() / plotsInRow);
    int placed = 0;
    for (QDockWidget* dock : mainWindow->findChildren<QDockWidget*>()) {
        if (!dock->findChild<QWidget*>(QStringLiteral("graph")))
            continue;
        dock->setFloating(true);
        dock->show();
        dock->setGeometry(placed % plotsInRow * size.width(), placed / plotsInRow * size.height(), size.width(),
                          size.height());
        ++placed;
    }
    mainWindow->findChild<QComboBox*>(QStringLiteral("fFTLengthComboBox"))->setCurrentText(QStringLiteral("8192"));
    std::printf("%d\n", placed);
    std::fflush(stdout);
}

/// The entry of the menu is closed to operators; its slot is not.
void Scene::startWalk(QWidget* mainWindow, double stepMs)
{
    QMetaObject::invokeMethod(mainWindow, "showRockCurve3D");
    walkWindow = topLevel("WindowRocking3D");
    walkWindow->findChild<QDoubleSpinBox*>(QStringLiteral("timeBox"))->setValue(stepMs);
    QTimer::singleShot(2000, this, SLOT(stepWalk()));
}

void Scene::stepWalk()
{
    QElapsedTimer timer;
    timer.start();
    walkWindow->findChild<QAbstractButton*>(QStringLiteral("goButton"))->click();
    std::printf("%.6f\n", double(timer.nsecsElapsed()) * 1e-9);
    std::fflush(stdout);
}

QObject* ScenePlugin::create(const QString& name, const QString&)
{
    return name == QLatin1String("kora-scene") ? new Scene : nullptr;
}
