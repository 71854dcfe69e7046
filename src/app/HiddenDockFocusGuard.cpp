#include "app/HiddenDockFocusGuard.h"

#include <QDockWidget>

HiddenDockFocusGuard::HiddenDockFocusGuard(QDockWidget* dock) : QObject(dock)
{
    for (QWidget* widget : dock->widget()->findChildren<QWidget*>()) {
        if (widget->focusPolicy() & Qt::TabFocus)
            fields.append(widget);
    }
    connect(dock, SIGNAL(visibilityChanged(bool)), this, SLOT(setReachable(bool)));
}

void HiddenDockFocusGuard::setReachable(bool reachable)
{
    for (QWidget* field : fields) {
        const int policy = field->focusPolicy();
        field->setFocusPolicy(Qt::FocusPolicy(reachable ? policy | Qt::TabFocus : policy & ~Qt::TabFocus));
    }
}
