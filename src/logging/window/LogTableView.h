#pragma once

#include <QPointer>
#include <QTableView>

namespace QsLogging {

class WindowLogFilterProxyModel;

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
    /// The column of levels has room for every name, also for that of a line far away.
    int sizeHintForColumn(int column) const override;

protected:
    void changeEvent(QEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;

private slots:
    void stayAtEnd();

private:
    void measureLines();

    QPointer<WindowLogFilterProxyModel> log; ///< the model, if it is one
    mutable int plainRowHeight = 0;          ///< px; 0 while unknown
    int levelWidth = 0;                      ///< px
    bool following = false;
};

} // namespace QsLogging
