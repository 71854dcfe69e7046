#include "graphs/PausedMark.h"

#include "app/Globals.h"
#include "stream/Updater.h"

#include <QApplication>
#include <QEvent>
#include <QPainter>

PausedMark::PausedMark(QWidget* plot) : QWidget(plot)
{
    setAccessibleName(QStringLiteral("paused"));
    QFont large;
    large.setBold(true);
    large.setPointSizeF(font().pointSizeF() * 1.5);
    setFont(large);
    // Clicks and drags are the plot's.
    setAttribute(Qt::WA_TransparentForMouseEvents);
    plot->installEventFilter(this);
    refresh();
}

QSize PausedMark::sizeHint() const
{
    const int margin = fontMetrics().descent();
    return fontMetrics().size(0, accessibleName()) + QSize(4 * margin, 2 * margin);
}

bool PausedMark::eventFilter(QObject* object, QEvent* event)
{
    if (event->type() == QEvent::Resize)
        place();
    return QWidget::eventFilter(object, event);
}

void PausedMark::refreshAll()
{
    for (QWidget* widget : QApplication::allWidgets()) {
        if (auto* mark = qobject_cast<PausedMark*>(widget))
            mark->refresh();
    }
}

void PausedMark::refresh()
{
    place();
    setVisible(updater->paused);
}

void PausedMark::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), QColor(10, 10, 10));
    painter.setPen(Qt::white);
    painter.drawText(rect(), Qt::AlignCenter, accessibleName());
}

void PausedMark::place()
{
    resize(sizeHint());
    move((parentWidget()->width() - width()) / 2, (parentWidget()->height() - height()) / 2);
}
