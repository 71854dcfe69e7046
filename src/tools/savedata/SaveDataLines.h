#pragma once

#include "stream/SignalTable.h"

#include <QString>

/// Lines of a saved data file, each with its CR LF. Positions are scaled with bpmScaleX and bpmScaleY as they are at
/// the moment of the call. GUI thread.
namespace save_data {

/// Signals that can be saved. In arrays they stand in the order of signalTable, which is that of the check boxes.
constexpr int channelCount = savedSignalCount();

/// Titles of the enabled channels behind "Nr" and "Rel. time".
QString columnHeader(const bool (&enabled)[channelCount]);

/// Number, time behind the first record in seconds (index / rateHz in single precision) and the enabled
/// channels, six significant digits each.
QString dataRow(const DisplayRecord& record, int index, int rateHz, const bool (&enabled)[channelCount]);

} // namespace save_data
