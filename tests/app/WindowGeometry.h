#pragma once

#include <QStringList>

class QWidget;

/// How the widgets of a window stand in it, as one who looks at it would judge.
namespace window_geometry {

/// What is cut, covered or out of reach among all visible widgets of a window, one line each; nothing if all is well.
QStringList complaints(QWidget* window);

} // namespace window_geometry
