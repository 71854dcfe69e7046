#include "feedback/WheelNeedsFocus.h"

#include <QEvent>
#include <QWidget>

WheelNeedsFocus::WheelNeedsFocus(QWidget* field) : QObject(field), field(field)
{
    // The wheel alone must not give the focus either.
    field->setFocusPolicy(Qt::StrongFocus);
    field->installEventFilter(this);
}

bool WheelNeedsFocus::eventFilter(QObject* object, QEvent* event)
{
    if (event->type() != QEvent::Wheel || field->hasFocus())
        return QObject::eventFilter(object, event);
    // On to the page.
    event->ignore();
    return true;
}
