#pragma once

#include "tools/rocking/RockingScan.h"

#include <QDialog>

#include <memory>

namespace Ui {
class WindowRockingCurve;
}

/// Scans one analogue output through a voltage range, with the feedback off, and draws the currents of two
/// opposite electrodes of BPM1 and their sum against the voltage.
///
/// The scan runs inside startMeasurement() on the GUI thread and serves events after each point. Controls
/// stay enabled: a changed number of points or range acts at once on the running scan, and a press of Start
/// nests another scan in it. Closing the window does not end a scan; destroying it, or quitting the program,
/// does: the output multiplexer goes back to the loop and the device files are closed.
class WindowRockingCurve : public QDialog
{
    Q_OBJECT

public:
    explicit WindowRockingCurve(QWidget* parent = nullptr);
    ~WindowRockingCurve() override;

private slots:
    void startMeasurement();
    void minMaxChanged();
    void clearGraph();

private:
    void dressPlot();
    void dressTraces(const rocking_scan::Traces& traces);
    void showPoint(double volts, double first, double second);

    std::unique_ptr<Ui::WindowRockingCurve> ui;
};
