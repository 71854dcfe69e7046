#pragma once

#include <QHeaderView>
#include <QVector>

namespace QsLogging {

/// Row numbers of the log. All of the same number of digits are of one size, which is remembered.
class LogRowHeader : public QHeaderView
{
    Q_OBJECT

public:
    explicit LogRowHeader(QWidget* parent);

protected:
    QSize sectionSizeFromContents(int section) const override;
    void changeEvent(QEvent* event) override;

private:
    mutable QVector<QSize> sizes; ///< by the number of digits; invalid while unknown
};

} // namespace QsLogging
