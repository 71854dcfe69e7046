#pragma once

#include <QVector>

class QWidget;

/// The order in which the eye meets the fields of a window, told by where they stand, and the order in which
/// the Tab key does.
///
/// The rule. A window is read from its top to its bottom and from its left to its right:
/// - a column of parts (vertical box) downwards, a row of parts (horizontal box) to the right, a part being
/// read whole
///   before the next one; group boxes, panels, pages and docks are parts;
/// - a grid, a form and whatever has no layout, row by row, a row being what stands beside the middle of its
/// first
///   part; only the check boxes of the save window, a column for each device, and the limits of a BPM beside
///   its checks are read column by column.
/// Only what is seen and takes the focus by the Tab key counts, whether the level enables it or not.
namespace reading_order {

QVector<QWidget*> byPosition(QWidget* window);
QVector<QWidget*> byTabKey(QWidget* window);

} // namespace reading_order
