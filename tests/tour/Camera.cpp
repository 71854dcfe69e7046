#include "tour/Camera.h"

#include <QCoreApplication>
#include <QPixmap>
#include <QScreen>
#include <QWidget>
#include <QWindow>

#include <poll.h>

namespace {

/// The screen shows a window some moments after it was asked to. Those are real moments, also where the clock
/// of the program is driven: poll() without descriptors waits by the kernel's clock.
void letTheScreenFollow(const QWidget* window)
{
    constexpr int attempts = 200;
    constexpr int settled = 10;
    constexpr int intervalMs = 10;
    for (int attempt = 0, exposed = 0; attempt < attempts && exposed < settled; ++attempt) {
        ::poll(nullptr, 0, intervalMs);
        QCoreApplication::processEvents();
        if (window->windowHandle() && window->windowHandle()->isExposed())
            ++exposed;
    }
}

} // namespace

Camera::Camera(const QString& folder) : path(folder) {}

void Camera::take(QWidget* widget, const QString& name)
{
    QWidget* window = widget->window();
    window->raise();
    letTheScreenFollow(window);
    const QRect place(widget->mapTo(window, QPoint(0, 0)), widget->size());
    const QPixmap picture =
        window->screen()->grabWindow(window->winId(), place.x(), place.y(), place.width(), place.height());
    const bool written = !picture.isNull() && picture.save(path + QLatin1Char('/') + name + QStringLiteral(".png"));
    ++(written ? saved : failed);
}
