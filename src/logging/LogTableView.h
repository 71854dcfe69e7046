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

    /// To be called before a line is inserted: shows the end of the table, that line included, if `follow`.
    void followNextRow(bool follow);

    int sizeHintForRow(int row) const override;

protected:
    void changeEvent(QEvent* event) override;

protected slots:
    void rowsInserted(const QModelIndex& parent, int start, int end) override;
    void updateGeometries() override;

private:
    mutable int plainRowHeight = 0; ///< px; 0 while unknown
    bool followsNextRow = false;
    bool endWanted = false; ///< at the next layout
};

} // namespace QsLogging
