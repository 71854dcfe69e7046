#pragma once

#include "simulation/SimulationControl.h"
#include "tour/Camera.h"
#include "tour/Findings.h"
#include "tour/Hand.h"

/// What a chapter of the tour needs: the hand on the windows, the camera, the trainer's hold on the simulated
/// installation, and the table that it fills.
struct Stage
{
    Hand& hand;
    Camera& camera;
    Findings& findings;
    kora::simulation::SimulationControl& plant;

    /// Opens a window by its menu entry, which must be open to the operator.
    QWidget* open(const char* action, const char* className) const;
    /// A field of the panel "Statistics", in the unit that it shows.
    double statistic(const char* field) const;
    /// Status of the feedback panel: its text, and the colour of the lamp that the screen shows beside it, as in
    /// "Feedback ON, green lamp".
    QString heartbeat() const;
};
