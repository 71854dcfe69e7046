#include "support/ScreenFit.h"

#include <QEvent>
#include <QScreen>
#include <QStyle>
#include <QWidget>

namespace {

/// Room for the frame that the desktop puts around a window, which is not known before the window is shown.
QSize frameOf(const QWidget* window)
{
    const int edge = window->style()->pixelMetric(QStyle::PM_MdiSubWindowFrameWidth);
    return QSize(2 * edge, window->style()->pixelMetric(QStyle::PM_TitleBarHeight) + 2 * edge);
}

} // namespace

ScreenFit::ScreenFit(QWidget* window) : QObject(window), window(window)
{
    window->installEventFilter(this);
}

bool ScreenFit::eventFilter(QObject* object, QEvent* event)
{
    if (event->type() == QEvent::Show && !event->spontaneous()) {
        const QSize room = window->screen()->availableSize() - frameOf(window);
        window->resize(window->sizeHint().expandedTo(window->size()).boundedTo(room));
        window->removeEventFilter(this);
    }
    return QObject::eventFilter(object, event);
}
