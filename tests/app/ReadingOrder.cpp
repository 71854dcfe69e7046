#include "app/ReadingOrder.h"

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QBoxLayout>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QLineEdit>
#include <QMainWindow>
#include <QScrollArea>
#include <QTabBar>

#include <algorithm>

namespace {

/// A widget, or a layout within another.
struct Part
{
    QRect place; ///< in the coordinates of the parent widget
    QWidget* widget;
    QLayout* layout;
};

using Parts = QVector<Part>;

/// Not behind another tab of the docks: the main window keeps such a dock beyond its edges.
bool isOnWindow(const QWidget* widget)
{
    const QRect place(widget->mapTo(widget->window(), QPoint(0, 0)), widget->size());
    return widget->isVisible() && widget->window()->rect().intersects(place);
}

bool takesTab(const QWidget* widget)
{
    return isOnWindow(widget) && (widget->focusPolicy() & Qt::TabFocus) && !widget->focusProxy();
}

/// What is one field to the operator, whatever it is made of.
bool isField(const QWidget* widget)
{
    return qobject_cast<const QAbstractSpinBox*>(widget) || qobject_cast<const QComboBox*>(widget) ||
           qobject_cast<const QAbstractSlider*>(widget) || qobject_cast<const QAbstractButton*>(widget) ||
           qobject_cast<const QLineEdit*>(widget) || qobject_cast<const QTabBar*>(widget) ||
           (qobject_cast<const QAbstractScrollArea*>(widget) && !qobject_cast<const QScrollArea*>(widget));
}

bool isPartOfField(const QWidget* widget, const QWidget* window)
{
    for (const QWidget* parent = widget->parentWidget(); parent && widget != window; parent = parent->parentWidget()) {
        if (isField(parent))
            return true;
        if (parent == window)
            break;
    }
    return false;
}

/// The grids whose columns belong together: the devices of the save window, and limits and checks of a BPM.
bool isOfColumns(const QLayout* layout)
{
    return layout->objectName() == QLatin1String("channelLayout") ||
           layout->objectName() == QLatin1String("limitLayout");
}

enum class Direction
{
    Down,
    Right,
    Rows,
    Columns
};

Direction directionOf(const QLayout* layout)
{
    if (const auto* box = qobject_cast<const QBoxLayout*>(layout)) {
        const bool down = box->direction() == QBoxLayout::TopToBottom || box->direction() == QBoxLayout::BottomToTop;
        return down ? Direction::Down : Direction::Right;
    }
    return isOfColumns(layout) ? Direction::Columns : Direction::Rows;
}

void sortInto(Parts& parts, Direction direction)
{
    const auto byTop = [](const Part& a, const Part& b) { return a.place.top() < b.place.top(); };
    const auto byLeft = [](const Part& a, const Part& b) { return a.place.left() < b.place.left(); };
    std::stable_sort(parts.begin(), parts.end(), byLeft);
    if (direction == Direction::Right)
        return;
    if (direction == Direction::Columns) {
        std::stable_sort(parts.begin(), parts.end(), byTop);
        std::stable_sort(parts.begin(), parts.end(), byLeft);
        return;
    }
    std::stable_sort(parts.begin(), parts.end(), byTop);
    if (direction == Direction::Down)
        return;
    for (auto first = parts.begin(); first != parts.end();) {
        const int middle = first->place.center().y();
        const auto next = std::find_if(first, parts.end(), [&](const Part& part) { return part.place.top() > middle; });
        std::stable_sort(first, next, byLeft);
        first = next;
    }
}

void readWidget(QWidget* widget, QVector<QWidget*>& order);

void readParts(Parts parts, Direction direction, QVector<QWidget*>& order);

void readLayout(const QLayout* layout, QVector<QWidget*>& order)
{
    Parts parts;
    for (int i = 0; i < layout->count(); ++i) {
        QLayoutItem* item = layout->itemAt(i);
        if (item->widget() && item->widget()->isVisible())
            parts.append({item->widget()->geometry(), item->widget(), nullptr});
        else if (item->layout() && !item->isEmpty())
            parts.append({item->geometry(), nullptr, item->layout()});
    }
    readParts(parts, directionOf(layout), order);
}

void readParts(Parts parts, Direction direction, QVector<QWidget*>& order)
{
    sortInto(parts, direction);
    for (const Part& part : parts) {
        if (part.layout)
            readLayout(part.layout, order);
        else
            readWidget(part.widget, order);
    }
}

void readWidget(QWidget* widget, QVector<QWidget*>& order)
{
    if (isField(widget)) {
        if (takesTab(widget))
            order.append(widget);
        return;
    }
    if (takesTab(widget))
        order.append(widget);
    // The main window lays its docks out with parts of its own that have no place.
    if (widget->layout() && !qobject_cast<QMainWindow*>(widget)) {
        readLayout(widget->layout(), order);
        return;
    }
    Parts parts;
    for (QObject* child : widget->children()) {
        auto* part = qobject_cast<QWidget*>(child);
        if (part && !part->isWindow() && isOnWindow(part))
            parts.append({part->geometry(), part, nullptr});
    }
    readParts(parts, Direction::Rows, order);
}

} // namespace

QVector<QWidget*> reading_order::byPosition(QWidget* window)
{
    QVector<QWidget*> order;
    readWidget(window, order);
    return order;
}

QVector<QWidget*> reading_order::byTabKey(QWidget* window)
{
    QVector<QWidget*> order;
    QWidget* widget = window;
    do {
        if (takesTab(widget) && (widget == window || window->isAncestorOf(widget)) && !isPartOfField(widget, window))
            order.append(widget);
        widget = widget->nextInFocusChain();
    } while (widget != window);
    return order;
}
