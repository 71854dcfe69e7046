#include "app/TabOrder.h"

#include <QWidget>

namespace {

/// What takes the focus by the Tab key in a panel, in the panel's own order.
QVector<QWidget*> fieldsInTabOrder(const QWidget* panel)
{
    QVector<QWidget*> fields;
    for (QWidget* widget = panel->nextInFocusChain(); widget != panel; widget = widget->nextInFocusChain()) {
        if (panel->isAncestorOf(widget) && (widget->focusPolicy() & Qt::TabFocus) && !widget->focusProxy())
            fields.append(widget);
    }
    return fields;
}

} // namespace

void orderTabKey(const QVector<QWidget*>& panels)
{
    QVector<QWidget*> fields;
    for (const QWidget* panel : panels)
        fields += fieldsInTabOrder(panel);
    for (int i = 1; i < fields.size(); ++i)
        QWidget::setTabOrder(fields[i - 1], fields[i]);
}
