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

void LogRowHeader::sectionsInserted(const QModelIndex& parent, int first, int last)
{
    bool simple = !parent.isValid() && first == count();
    for (int row = first; simple && row <= last; ++row)
        simple = isOfDefaultHeight(row);
    if (simple)
        initializeSections(first, last);
    else
        QHeaderView::sectionsInserted(parent, first, last);
}

bool LogRowHeader::isOfDefaultHeight(int row) const
{
    const auto* table = static_cast<const QAbstractItemView*>(parentWidget());
    const int wanted = qMax(table->sizeHintForRow(row), sectionSizeFromContents(row).height());
    return qBound(minimumSectionSize(), wanted, maximumSectionSize()) == defaultSectionSize();
}

} // namespace QsLogging
