#pragma once

class QWidget;

/// Serves the waiting events between two points of a measurement that runs inside a slot. GUI thread.
/// @return false when the measurement has to end: the window was destroyed, so that the caller touches no
/// member any more, or the program has been told to quit and waits for the slot to return
bool processPendingEvents(const QWidget* window);
