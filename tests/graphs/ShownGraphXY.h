#pragma once

#include "app/Globals.h"
#include "double/KoralinkDouble.h"
#include "graphs/WidgetGraphXY.h"
#include "hardware/ConfigFile.h"
#include "support/Operator.h"
#include "support/World.h"

#include <QPushButton>
#include <QtTest>
#include <qcustomplot.h>

#include <memory>
#include <vector>

/// What is agreed about the codes, written down once more for comparison: loops that run, axes that a click
/// checks, and the marker: | vertical, - horizontal, + by the monitors, blank none.
struct Agreed
{
    const char* loops;
    const char* checked;
    char marker;
};
const Agreed agreed[15] = {
    {"Xlf", "X", '|'},          {"Xlf Xhf", "X", '|'},     {"Xlf Ylf", "XY", '+'},     {"Xlf Yhf", "X", '+'},
    {"Xlf Xhf Ylf", "XY", '+'}, {"Xlf Xhf Yhf", "X", ' '}, {"Xlf Ylf Yhf", "XY", '+'}, {"Xlf Xhf Ylf Yhf", "XY", '+'},
    {"Xhf", "", '|'},           {"Xhf Ylf", "Y", '+'},     {"Xhf Yhf", "", '+'},       {"Xhf Ylf Yhf", "Y", '+'},
    {"Ylf", "Y", '-'},          {"Ylf Yhf", "Y", '-'},     {"Yhf", "", '-'},
};

/// A position graph on the double, shown when a test says so.
class ShownGraphXY : public QObject
{
    Q_OBJECT

protected:
    std::unique_ptr<World> world;
    std::unique_ptr<WidgetGraphXY> graph;
    QCustomPlot* plot = nullptr;

    void show(int bpm)
    {
        graph = std::make_unique<WidgetGraphXY>(bpm, nullptr);
        plot = operate::find<QCustomPlot>(graph.get(), "graph");
        graph->resize(500, 500);
        graph->show();
        QVERIFY(QTest::qWaitForWindowExposed(graph.get()));
        plot->xAxis->setRange(-100, 100);
        plot->yAxis->setRange(-50, 50);
        plot->replot();
        operate::press(operate::find<QPushButton>(graph.get(), "targetEnable"));
        userLevel = 2;
        koralink_double::clearCalls();
    }

    /// Clicks the pixel nearest to a place. @return the place of that pixel
    QPointF click(double x, double y)
    {
        const QPoint pixel(qRound(plot->xAxis->coordToPixel(x)), qRound(plot->yAxis->coordToPixel(y)));
        QTest::mouseClick(plot, Qt::LeftButton, Qt::NoModifier, pixel);
        return QPointF(plot->xAxis->pixelToCoord(pixel.x()), plot->yAxis->pixelToCoord(pixel.y()));
    }

    static void setSelectors(int selectors)
    {
        bpmSelXlf = selectors & 1;
        bpmSelXhf = selectors >> 1 & 1;
        bpmSelYlf = selectors >> 2 & 1;
        bpmSelYhf = selectors >> 3 & 1;
    }

    static std::vector<koralink_double::Call> setpointCalls()
    {
        std::vector<koralink_double::Call> found;
        for (const koralink_double::Call& call : koralink_double::calls()) {
            if (call.name == "setSetpoint")
                found.push_back(call);
        }
        return found;
    }

private slots:
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
        configFile->writeROI(0, 80, 40, 0.0, 1e12, 50);
        configFile->writeROI(1, 20, 10, 0.0, 1e12, 25);
    }
    void cleanup()
    {
        graph.reset();
        world.reset();
    }
};
