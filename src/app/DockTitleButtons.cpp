#include "app/DockTitleButtons.h"

#include <QAbstractButton>
#include <QDockWidget>
#include <QEvent>
#include <QPainter>

namespace {

const QLatin1String closeButton("qt_dockwidget_closebutton");
const QLatin1String floatButton("qt_dockwidget_floatbutton");

} // namespace

DockTitleButtons::DockTitleButtons(QDockWidget* dock) : QObject(dock)
{
    for (QAbstractButton* button : dock->findChildren<QAbstractButton*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (button->objectName() == closeButton || button->objectName() == floatButton)
            button->installEventFilter(this);
    }
}

bool DockTitleButtons::eventFilter(QObject* object, QEvent* event)
{
    if (event->type() != QEvent::Paint)
        return QObject::eventFilter(object, event);
    draw(static_cast<QAbstractButton*>(object));
    return true;
}

void DockTitleButtons::draw(QAbstractButton* button) const
{
    QPainter painter(button);
    painter.setRenderHint(QPainter::Antialiasing, true);
    const QRectF place(button->rect());
    if (button->underMouse() || button->hasFocus()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(255, 255, 255, button->isDown() ? 60 : 120));
        painter.drawRoundedRect(place, 2, 2);
    }
    const double side = 0.6 * qMin(place.width(), place.height());
    QRectF symbol(0, 0, side, side);
    symbol.moveCenter(place.center());
    painter.setPen(QPen(Qt::black, side / 6));
    painter.setBrush(Qt::NoBrush);
    if (button->objectName() == closeButton) {
        painter.drawLine(symbol.topLeft(), symbol.bottomRight());
        painter.drawLine(symbol.bottomLeft(), symbol.topRight());
    } else {
        const QPointF step(side / 4, -side / 4);
        painter.drawRect(QRectF(symbol.topLeft() - QPointF(0, step.y()), symbol.bottomRight() - QPointF(step.x(), 0)));
        painter.drawPolyline(
            QPolygonF({symbol.topLeft() + QPointF(step.x(), -step.y()), symbol.topLeft() + QPointF(step.x(), 0),
                       symbol.topRight(), symbol.bottomRight() + QPointF(0, step.y()),
                       symbol.bottomRight() + QPointF(-step.x(), step.y())}));
    }
}
