#include "app/DockTabFocus.h"

#include <QDockWidget>

DockTabFocus::DockTabFocus(QDockWidget* dock) : QObject(dock)
{
    for (QWidget* widget : dock->widget()->findChildren<QWidget*>()) {
        if (widget->focusPolicy() & Qt::TabFocus)
            fields.append(widget);
    }
    connect(dock, SIGNAL(visibilityChanged(bool)), this, SLOT(setReachable(bool)));
}

void DockTabFocus::setReachable(bool reachable)
{
    for (QWidget* field : fields) {
        const int policy = field->focusPolicy();
        field->setFocusPolicy(Qt::FocusPolicy(reachable ? policy | Qt::TabFocus : policy & ~Qt::TabFocus));
    }
}
