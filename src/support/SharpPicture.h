#pragma once

#include <QPixmap>

/// A picture of the resources in twice the resolution where the screen can show it.
/// @param path of a PNG file beside which there is another one, whose name ends in "@2x"
/// @param ratio pixels of the screen in one of the window
QPixmap sharpPicture(const QString& path, qreal ratio);
