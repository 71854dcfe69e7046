#include "tour/Camera.h"

#include <QCoreApplication>
#include <QPixmap>
#include <QScreen>
#include <QWidget>
#include <QWindow>

#include <poll.h>

namespace {

struct NamedHue
{
    const char* name;
    int from; ///< degrees
    int to;
};
constexpr NamedHue namedHues[] = {{"red", 0, 20}, {"yellow", 40, 65}, {"green", 90, 150}, {"purple", 260, 300}};
/// A colour of less saturation is a grey; of 255.
constexpr int leastSaturation = 60;

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

/// A widget as it stands on the screen, its window in front.
QPixmap shownOnScreen(QWidget* widget)
{
    QWidget* window = widget->window();
    window->raise();
    letTheScreenFollow(window);
    const QRect place(widget->mapTo(window, QPoint(0, 0)), widget->size());
    return window->screen()->grabWindow(window->winId(), place.x(), place.y(), place.width(), place.height());
}

} // namespace

Camera::Camera(const QString& folder) : path(folder) {}

QString Camera::colourOf(QWidget* widget) const
{
    const QImage picture = shownOnScreen(widget).toImage();
    if (picture.isNull())
        return QStringLiteral("no");
    const QColor colour = picture.pixelColor(picture.rect().center());
    if (colour.hsvSaturation() < leastSaturation)
        return QStringLiteral("grey");
    for (const NamedHue& hue : namedHues) {
        if (colour.hsvHue() >= hue.from && colour.hsvHue() <= hue.to)
            return QLatin1String(hue.name);
    }
    return QString::number(colour.hsvHue());
}

void Camera::take(QWidget* widget, const QString& name)
{
    const QPixmap picture = shownOnScreen(widget);
    const bool written = !picture.isNull() && picture.save(path + QLatin1Char('/') + name + QStringLiteral(".png"));
    ++(written ? saved : failed);
}
