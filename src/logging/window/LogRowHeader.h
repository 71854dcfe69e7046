#pragma once

#include <QHeaderView>
#include <QVector>

namespace QsLogging {

/// Row numbers of the log. All of the same number of digits are of one size, which is remembered. A new row of the
/// default height at the end joins without a look at the others: a header that sizes its sections to their contents
/// would measure every one of them.
class LogRowHeader : public QHeaderView
{
    Q_OBJECT

public:
    explicit LogRowHeader(QWidget* parent);

protected:
    QSize sectionSizeFromContents(int section) const override;
    void changeEvent(QEvent* event) override;

protected slots:
    /// In place of the base class's slot, which the header connects to its model by this name.
    void sectionsInserted(const QModelIndex& parent, int first, int last);

private:
    bool isOfDefaultHeight(int row) const;

    mutable QVector<QSize> sizes; ///< by the number of digits; invalid while unknown
};

} // namespace QsLogging
