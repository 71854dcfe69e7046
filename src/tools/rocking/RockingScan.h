#pragma once

#include "stream/DeviceRecords.h"

#include <QString>

/// Arithmetic of the rocking curve: voltages, output records, electrodes and names of the traces.
namespace rocking_scan {

/// Items of the direction box, in order.
enum Direction
{
    PosX = 0,
    PosY = 1
};

/// Amplifier channel, 0 to 3, that each electrode is wired to.
struct Electrodes
{
    int top;
    int right;
    int bottom;
    int left;
};

/// The two opposite electrodes of a direction, and the names of their traces and of the sum.
struct Traces
{
    int channel[2];
    QString names[3];
};

/// Voltage of point i of n. The last point lies one step short of the stop value, since i / n never
/// reaches 1.
double pointVolts(double start, double stop, int i, int n);

/// Record with one output swept and another one held. Outputs 2 and 3 are at 0 V whatever the numbers say,
/// since the scan is meant for outputs 0 and 1; a number that is no output of the unit sets nothing.
OutputRecord outputs(int swept, double sweptVolts, int held, double heldVolts);

/// Left and right for PosX, top and bottom for PosY. A channel number outside 0 to 3 counts as the nearest
/// channel, in the name too, so that the name always tells which channel is read.
Traces traces(Direction direction, const Electrodes& electrodes);

} // namespace rocking_scan
