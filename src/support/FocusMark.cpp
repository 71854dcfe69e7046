#include "support/FocusMark.h"

#include <QEvent>
#include <QPainter>
#include <QWidget>

FocusMark::FocusMark(QWidget* widget) : QObject(widget), widget(widget)
{
    widget->installEventFilter(this);
}

bool FocusMark::eventFilter(QObject* object, QEvent* event)
{
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut)
        widget->update();
    if (event->type() != QEvent::Paint || !widget->hasFocus())
        return QObject::eventFilter(object, event);
    // Its own picture first, by the handler that this filter stands before.
    object->event(event);
    QPainter painter(widget);
    painter.setPen(QPen(widget->palette().color(QPalette::Highlight), 2));
    painter.drawRect(widget->rect().adjusted(1, 1, -1, -1));
    return true;
}
