#pragma once

#include "stream/PlotData.h"

/// Rewriting the data of a trace where they lie: a container that keeps its length costs no memory traffic but the
/// points themselves.

/// @return the points of the map for writing, count of them; what they hold before is of no meaning
QCPGraphData* pointsForWriting(QCPDataMap* map, int count);

/// Gives points that were written one behind another the content of a map into which they were inserted in this
/// order: ordered by key, a later point replaces an earlier one of the same key. A key that is NaN has no
/// place in an order; its point is left out.
void orderAsMap(QCPDataMap* map);
