#include "app/WindowGeometry.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QDockWidget>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTabBar>
#include <QTabWidget>
#include <QToolBox>

namespace {

QString nameOf(const QWidget* widget)
{
    QString text;
    if (const auto* button = qobject_cast<const QAbstractButton*>(widget))
        text = button->text();
    else if (const auto* label = qobject_cast<const QLabel*>(widget))
        text = label->text();
    return QStringLiteral("%1 %2 \"%3\"")
        .arg(QLatin1String(widget->metaObject()->className()), widget->objectName(), text);
}

/// The main window keeps docks behind other tabs beyond its edges.
bool isOnWindow(const QWidget* widget)
{
    const QRect place(widget->mapTo(widget->window(), QPoint(0, 0)), widget->size());
    return widget->isVisible() && widget->window()->rect().intersects(place);
}

/// One thing to the operator, whose parts the style arranges.
bool isOfOnePiece(const QWidget* widget)
{
    return qobject_cast<const QAbstractSpinBox*>(widget) || qobject_cast<const QComboBox*>(widget) ||
           qobject_cast<const QAbstractItemView*>(widget) || qobject_cast<const QTabBar*>(widget) ||
           qobject_cast<const QMenuBar*>(widget) || qobject_cast<const QLineEdit*>(widget) ||
           qobject_cast<const QScrollBar*>(widget) || widget->inherits("QCustomPlot");
}

/// Moved within its parent on purpose: the page of a scroll area.
bool isScrolled(const QWidget* widget)
{
    const auto* area =
        widget->parentWidget() ? qobject_cast<QScrollArea*>(widget->parentWidget()->parentWidget()) : nullptr;
    return area && area->widget() == widget;
}

bool hasText(const QWidget* widget)
{
    if (const auto* label = qobject_cast<const QLabel*>(widget))
        return !label->text().isEmpty();
    if (const auto* button = qobject_cast<const QAbstractButton*>(widget))
        return !button->text().isEmpty();
    return qobject_cast<const QComboBox*>(widget) || qobject_cast<const QLineEdit*>(widget) ||
           qobject_cast<const QAbstractSpinBox*>(widget) || qobject_cast<const QProgressBar*>(widget);
}

/// What a style draws around a text at least, pixels.
constexpr int frame = 8;

class Walk
{
public:
    explicit Walk(QWidget* window) : window(window) {}

    QStringList run()
    {
        const QSize room = window->screen()->availableSize();
        if (window->width() > room.width() || window->height() > room.height())
            complain(window,
                     QStringLiteral("%1x%2 is more than the screen").arg(window->width()).arg(window->height()));
        visit(window);
        return found;
    }

private:
    void complain(const QWidget* widget, const QString& what)
    {
        found.append(
            QStringLiteral("%1: %2 %3").arg(QLatin1String(window->metaObject()->className()), nameOf(widget), what));
    }

    void visit(QWidget* parent)
    {
        QVector<QWidget*> seen;
        for (QObject* child : parent->children()) {
            auto* widget = qobject_cast<QWidget*>(child);
            if (!widget || widget->isWindow() || !isVisibleHere(widget))
                continue;
            checkPlace(widget, parent);
            checkSize(widget);
            // The frame of a tab widget lies under its tabs, and what is at the edges of the board moves by itself.
            if (!qobject_cast<QTabWidget*>(parent) && !widget->inherits("QWidgetResizeHandler"))
                checkOverlap(widget, seen);
            seen.append(widget);
            if (!isOfOnePiece(widget))
                visit(widget);
        }
    }

    /// Scrolled out of sight is still visible; behind a tab is not.
    static bool isVisibleHere(const QWidget* widget)
    {
        if (!widget->isVisible())
            return false;
        return !qobject_cast<const QDockWidget*>(widget) || isOnWindow(widget);
    }

    void checkPlace(QWidget* widget, const QWidget* parent)
    {
        if (isScrolled(widget)) {
            if (widget->width() > parent->width())
                complain(widget, QStringLiteral("is cut at the side"));
            const auto* area = static_cast<QScrollArea*>(parent->parentWidget());
            if (widget->height() > parent->height() && !area->verticalScrollBar()->isVisible())
                complain(widget, QStringLiteral("has no scroll bar"));
            return;
        }
        if (!parent->rect().contains(widget->geometry()))
            complain(widget, QStringLiteral("reaches out of its parent"));
    }

    void checkSize(QWidget* widget)
    {
        if (!hasText(widget))
            return;
        QSize needed = widget->minimumSizeHint();
        const auto* label = qobject_cast<QLabel*>(widget);
        if (label && label->wordWrap())
            needed = QSize(0, label->heightForWidth(label->width()));
        // The style makes push buttons wider than their texts.
        if (const auto* button = qobject_cast<QPushButton*>(widget))
            needed.setWidth(button->fontMetrics().size(Qt::TextShowMnemonic, button->text()).width() + frame);
        if (const auto* box = qobject_cast<QComboBox*>(widget))
            needed.setWidth(std::max(needed.width(), box->fontMetrics().horizontalAdvance(box->currentText())));
        if (widget->width() < needed.width() || widget->height() < needed.height())
            complain(widget, QStringLiteral("has %1x%2 and needs %3x%4")
                                 .arg(widget->width())
                                 .arg(widget->height())
                                 .arg(needed.width())
                                 .arg(needed.height()));
    }

    void checkOverlap(const QWidget* widget, const QVector<QWidget*>& others)
    {
        for (const QWidget* other : others) {
            if (widget->geometry().intersects(other->geometry()))
                complain(widget, QStringLiteral("overlaps %1").arg(nameOf(other)));
        }
    }

    QWidget* window;
    QStringList found;
};

} // namespace

QStringList window_geometry::complaints(QWidget* window)
{
    return Walk(window).run();
}
