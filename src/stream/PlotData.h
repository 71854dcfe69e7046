#pragma once

#include <qcustomplot.h>

/// Data of one trace, shared without a copy between the graph that draws it, which owns it, and its writer.
/// The container itself keeps equal keys and does not order keys that are NaN; who fills it gives it the
/// semantics of a map: ordered by key, a later point replaces an earlier one of the same key.
using QCPDataMap = QCPGraphDataContainer;
