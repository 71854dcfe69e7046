#pragma once

#include "double/KoralinkDouble.h"
#include "support/DrivenPause.h"
#include "support/FileDialogs.h"
#include "support/Operator.h"
#include "support/World.h"
#include "tools/Graph3D.h"
#include "tools/SurfacePlot.h"
#include "tools/WindowRocking3D.h"
#include "tools/rocking/GridScan.h"

#include <QDoubleSpinBox>
#include <QFile>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <memory>

constexpr std::size_t pausesPerPoint = 12;

/// Four currents of this sum, A.
inline CurrentRecord evenly(double sum)
{
    return {{sum / 4, sum / 4, sum / 4, sum / 4}};
}

/// The tool on the double, anew for every test. Most walks run with the window hidden, so that no surface is
/// painted.
class Rocking3DTool : public QObject
{
    Q_OBJECT

public:
    /// As the program does: its windows are raster windows, and OpenGL draws the surface alone.
    static void initMain() { QCoreApplication::setAttribute(Qt::AA_ForceRasterWidgets); }

protected:
    std::unique_ptr<World> world;
    std::unique_ptr<WindowRocking3D> window;
    QTemporaryDir folder;

    QDoubleSpinBox* box(const char* name) { return operate::find<QDoubleSpinBox>(window.get(), name); }
    QPushButton* button(const char* name) { return operate::find<QPushButton>(window.get(), name); }
    void setRange(double xMin, double xMax, double yMin, double yMax)
    {
        box("xMinBox")->setValue(xMin);
        box("xMaxBox")->setValue(xMax);
        box("yMinBox")->setValue(yMin);
        box("yMaxBox")->setValue(yMax);
    }
    /// Lets the slot run when the walk serves events after so many points.
    void afterPoints(std::size_t points, QObject* receiver, const char* slot)
    {
        driven_pause::setAction([=](unsigned long) {
            if (driven_pause::pauses().size() == points * pausesPerPoint)
                QTimer::singleShot(0, receiver, slot);
        });
    }
    static std::size_t pointsWalked() { return driven_pause::pauses().size() / pausesPerPoint; }
    static QStringList outputsWritten()
    {
        return operate::lines(koralink_double::callsOf("ioctl")).filter(QStringLiteral("anvolt"));
    }
    const std::vector<Quad>& shownCells()
    {
        auto* surface = operate::find<Graph3D>(window.get(), "graph3D")->findChild<SurfacePlot*>();
        if (!surface)
            qFatal("no surface");
        return surface->quads();
    }
    QString savedPath() const { return folder.filePath(QStringLiteral("rock.csv")); }
    QByteArray saved() const
    {
        QFile file(savedPath());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }
    QList<QByteArray> savedRows() const { return saved().split('\n').mid(6, grid_scan::points); }
    void save()
    {
        FileDialogs dialogs(savedPath());
        operate::press(button("saveButton"));
        QCOMPARE(dialogs.dialogs().size(), 1);
    }

private slots:
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
        window = std::make_unique<WindowRocking3D>();
        QFile::remove(savedPath());
        koralink_double::clearCalls();
    }
    void cleanup()
    {
        driven_pause::clear();
        window.reset();
        world.reset();
        QCOMPARE(koralink_double::openDescriptors(), 0);
    }
};
