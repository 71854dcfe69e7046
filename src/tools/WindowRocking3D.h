#pragma once

#include "tools/rocking/GridScan.h"

#include <QDialog>

#include <memory>

namespace Ui {
class WindowRocking3D;
}

/// Walks outputs 0 and 1 over a grid of 64 by 64 voltage pairs, with the feedback off, and shows the total
/// current of BPM1 at each pair as a surface.
///
/// The walk runs inside measure() on the GUI thread and serves events after each grid point. Save may be
/// pressed meanwhile and writes the points so far. A second Go is refused while a walk runs: a nested walk
/// would hand the outputs back to the loop at its end, and the outer one would then fill the same grid with
/// currents that do not belong to its voltages. The walk ends early by Stop, by closing or destroying the
/// window, or when the program quits; the output multiplexer then goes back to the loop and the device files
/// are closed.
class WindowRocking3D : public QDialog
{
    Q_OBJECT

public:
    explicit WindowRocking3D(QWidget* parent = nullptr);
    ~WindowRocking3D() override;

private slots:
    void startMeasurement();
    void measure();
    void stopMeasurement();
    void saveData();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    /// Header of the saved file with the present time and this machine's name.
    QString fileHeader() const;

    std::unique_ptr<Ui::WindowRocking3D> ui;
    /// Averaged current sums, A, that of the grid lines (i, j) at i * 64 + j.
    float rawCurrent[grid_scan::points] = {};
    /// The same scaled to 0 to 1.
    float normalisedCurrent[grid_scan::points] = {};
    double xStart = 0;
    double xSpan = 0;
    double yStart = 0;
    double ySpan = 0;
    quint64 stepTimeMs = 0;
    bool stopRequested = false;
    bool walking = false;
};
