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

    /// Shows the end of the table, now and as lines that have just come are laid out. A change of the height, or the
    /// operator's scrolling, ends that.
    void showEnd();
    /// Ends that too, once what has come is laid out: what changes next leaves the view where it is.
    void stay();

    void setModel(QAbstractItemModel* model) override;
    int sizeHintForRow(int row) const override;
    /// The column of levels has room for every name, also for that of a line far away.
    int sizeHintForColumn(int column) const override;

protected:
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
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
