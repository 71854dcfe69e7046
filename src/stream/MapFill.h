#pragma once

#include "stream/PlotData.h"

#include <QVector>

/// Replaces the content of a map by points that are inserted in this order: ordered by key, a later point replaces
/// an earlier one of the same key. A key that is not a number has no place in an order; its point is left out.
void fillAsMap(QCPDataMap* map, QVector<QCPGraphData> points);
