#include "support/FieldGuard.h"

#include <QAbstractSpinBox>
#include <QComboBox>
#include <QDialog>
#include <QKeyEvent>
#include <QPushButton>
#include <QScrollBar>

namespace {

bool followsTheWheel(const QWidget* widget)
{
    return qobject_cast<const QAbstractSpinBox*>(widget) || qobject_cast<const QComboBox*>(widget) ||
           (qobject_cast<const QAbstractSlider*>(widget) && !qobject_cast<const QScrollBar*>(widget));
}

bool isEnter(const QEvent* event)
{
    if (event->type() != QEvent::KeyPress)
        return false;
    const int key = static_cast<const QKeyEvent*>(event)->key();
    return key == Qt::Key_Return || key == Qt::Key_Enter;
}

} // namespace

FieldGuard::FieldGuard(QWidget* window) : QObject(window), window(window)
{
    for (QWidget* field : window->findChildren<QWidget*>()) {
        if (!followsTheWheel(field))
            continue;
        field->setFocusPolicy(Qt::StrongFocus);
        field->installEventFilter(this);
    }
    if (qobject_cast<QDialog*>(window)) {
        takeDefaultsAway();
        window->installEventFilter(this);
    }
}

bool FieldGuard::eventFilter(QObject* object, QEvent* event)
{
    if (object == window) {
        // A box of buttons chooses a default each time that it is shown, which is before its window is.
        if (event->type() == QEvent::Show)
            takeDefaultsAway();
        if (!isEnter(event))
            return QObject::eventFilter(object, event);
        if (!static_cast<const QKeyEvent*>(event)->isAutoRepeat())
            pressFocusedButton();
        return true;
    }
    if (event->type() != QEvent::Wheel || static_cast<const QWidget*>(object)->hasFocus())
        return QObject::eventFilter(object, event);
    // On to the page.
    event->ignore();
    return true;
}

void FieldGuard::takeDefaultsAway()
{
    for (QPushButton* button : window->findChildren<QPushButton*>()) {
        button->setAutoDefault(false);
        button->setDefault(false);
    }
}

void FieldGuard::pressFocusedButton() const
{
    if (auto* button = qobject_cast<QPushButton*>(window->focusWidget()))
        button->click();
}
