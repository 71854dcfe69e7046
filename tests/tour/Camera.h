#pragma once

#include <QString>

class QWidget;

/// Takes pictures of windows as they stand on the screen.
class Camera
{
public:
    /// @param folder must exist
    explicit Camera(const QString& folder);

    /// The window, or the panel of a window, as folder/name.png.
    void take(QWidget* widget, const QString& name);

    /// Colour of the middle of a widget as the screen shows it, by its usual name: "grey", "red", "yellow", "green" or
    /// "purple"; any other hue in degrees.
    QString colourOf(QWidget* widget) const;

    const QString& folder() const { return path; }
    /// Pictures that were saved.
    int count() const { return saved; }
    /// Pictures that could not be saved.
    int failures() const { return failed; }

private:
    QString path;
    int saved = 0;
    int failed = 0;
};
