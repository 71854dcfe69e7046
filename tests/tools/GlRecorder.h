#pragma once

#include <QStringList>

/// Takes the place of the OpenGL calls that the surface view makes, and keeps them in order as texts:
/// "glVertex3f(0, 1, 0.5)"; named constants by their names.
namespace gl_recorder {

const QStringList& calls();
void clear();

} // namespace gl_recorder
