#pragma once

#include "double/KoralinkDouble.h"
#include "support/DrivenPause.h"
#include "support/Operator.h"
#include "support/World.h"
#include "tools/WindowStepResponse.h"

#include <qcustomplot.h>

#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QRadioButton>
#include <QtTest>

#include <memory>

/// The tool on the double, anew for every test.
class StepResponseTool : public QObject
{
    Q_OBJECT

protected:
    std::unique_ptr<World> world;
    std::unique_ptr<WindowStepResponse> window;
    QCustomPlot* plot = nullptr;

    QDoubleSpinBox* box(const char* name) { return operate::find<QDoubleSpinBox>(window.get(), name); }
    QRadioButton* radio(const char* name) { return operate::find<QRadioButton>(window.get(), name); }
    QString text(const char* label) { return operate::find<QLabel>(window.get(), label)->text(); }
    QPushButton* runButton()
    {
        return operate::find<QDialogButtonBox>(window.get(), "buttonBox")->button(QDialogButtonBox::Apply);
    }
    void run() { operate::press(runButton()); }

private slots:
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
        window = std::make_unique<WindowStepResponse>();
        plot = operate::find<QCustomPlot>(window.get(), "graph");
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
