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
