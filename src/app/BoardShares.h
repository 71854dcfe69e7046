#pragma once

#include <QObject>
#include <QVector>

class QDockWidget;
class QMainWindow;

/// Shares the board among its docks by ratio, so that they look alike in every size of the window, whichever sizes it
/// had before. What the operator drags becomes the new ratio; a row that he takes apart is left to itself.
/// A child of the board. GUI thread.
class BoardShares : public QObject
{
    Q_OBJECT

public:
    struct Share
    {
        QDockWidget* dock; ///< stands for all docks behind its tabs
        double weight;
    };

    explicit BoardShares(QMainWindow* board);

    /// @param row docks from left to right, or from top to bottom
    void share(Qt::Orientation orientation, const QVector<Share>& row);

    bool eventFilter(QObject* object, QEvent* event) override;

private slots:
    void layOut();

private:
    struct Row
    {
        Qt::Orientation orientation;
        QVector<Share> shares;
    };

    void layOut(const Row& row) const;
    /// The docks of a row that are on the board, each with its present extent in pixels; empty if they stand otherwise.
    QVector<Share> extents(const Row& row) const;
    QDockWidget* seen(QDockWidget* dock) const;
    void keepDraggedSizes();

    QMainWindow* board;
    QVector<Row> rows;
    QVector<QVector<Share>> beforeDrag;
};
