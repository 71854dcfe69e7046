#include "logging/window/LogRowHeader.h"

#include <QEvent>

namespace QsLogging {

LogRowHeader::LogRowHeader(QWidget* parent) : QHeaderView(Qt::Vertical, parent)
{
    setSectionsClickable(true);
    setHighlightSections(true);
}

QSize LogRowHeader::sectionSizeFromContents(int section) const
{
    // The table may outlive its model for a moment when their window is deleted.
    if (!model())
        return QHeaderView::sectionSizeFromContents(section);
    int digits = 0;
    for (int number = model()->headerData(section, Qt::Vertical).toInt(); number > 0; number /= 10)
        ++digits;
    if (sizes.size() <= digits)
        sizes.resize(digits + 1);
    QSize& size = sizes[digits];
    if (!size.isValid())
        size = QHeaderView::sectionSizeFromContents(section);
    return size;
}

void LogRowHeader::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        sizes.clear();
    QHeaderView::changeEvent(event);
}

} // namespace QsLogging
