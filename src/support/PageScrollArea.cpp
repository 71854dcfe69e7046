#include "support/PageScrollArea.h"

#include <QEvent>
#include <QScrollBar>

#include <algorithm>

namespace {

constexpr int fewestLines = 4;

} // namespace

PageScrollArea::PageScrollArea(QWidget* parent) : QScrollArea(parent)
{
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // The Tab key goes from field to field and brings each into sight.
    setFocusPolicy(Qt::NoFocus);
}

QSize PageScrollArea::sizeHint() const
{
    return widget() ? widget()->sizeHint() : QScrollArea::sizeHint();
}

QSize PageScrollArea::minimumSizeHint() const
{
    if (!widget())
        return QScrollArea::minimumSizeHint();
    const QSize page = widget()->minimumSizeHint();
    return QSize(page.width() + verticalScrollBar()->sizeHint().width(),
                 std::min(page.height(), fewestLines * fontMetrics().lineSpacing()));
}

bool PageScrollArea::eventFilter(QObject* object, QEvent* event)
{
    // What the page needs has changed, and so has what this asks for.
    if (object == widget() && event->type() == QEvent::LayoutRequest)
        updateGeometry();
    return QScrollArea::eventFilter(object, event);
}
