#pragma once

#include "stream/DisplayRecord.h"
#include "stream/PlotData.h"

#include <vector>

/// Turns a block of display records into the data of plots. Functions on plain values; the maps are rewritten in
/// place where they keep their length.

/// Records that an XY cloud shows at most.
constexpr int cloudRecords = 1000;

/// A trace to be filled.
struct TraceTarget
{
    QCPDataMap* map;
    int slot; ///< of the record
    double factor;
};

/// Fills traces against time. The key of record i is float(i) / float(rate), in seconds, computed in single
/// precision. With a rate of zero or less the keys are what that division gives, ordered as a map orders them.
/// @param rate records per second
void decodeTimeTraces(const DisplayRecord* block, int count, int rate, const std::vector<TraceTarget>& targets);

/// Fills the cloud of one monitor from the newest records: key X, value Y, ordered by X.
/// @param slotX, slotY of the record; @param factorX, factorY to micrometres
void decodeCloud(const DisplayRecord* block, int count, int slotX, int slotY, double factorX, double factorY,
                 QCPDataMap* map);
