#pragma once

#include <QTableView>

namespace QsLogging {

/// The table of the log window: a table that sizes its rows to their contents and still takes 100000 of them.
/// It remembers how high a plain line is instead of laying out each cell at each change, and it moves to a
/// new line when the view is laid out anyway instead of laying out once more for each line.
class LogTableView : public QTableView
{
    Q_OBJECT

public:
    explicit LogTableView(QWidget* parent = nullptr);

    /// From the next layout on shows the end of the table, if `follow`, until the operator scrolls away.
    void follow(bool follow);

    void setModel(QAbstractItemModel* model) override;
    int sizeHintForRow(int row) const override;

protected:
    void changeEvent(QEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;

private slots:
    void stayAtEnd();

private:
    void forgetRowHeight();

    mutable int plainRowHeight = 0; ///< px; 0 while unknown
    bool following = false;
};

} // namespace QsLogging
