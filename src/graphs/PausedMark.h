#pragma once

#include <QWidget>

/// Says "paused" in a plot while the display is paused, so that a frozen picture is not taken for the beam of this
/// moment. A child of the plot, in whose middle it stays. GUI thread.
class PausedMark : public QWidget
{
    Q_OBJECT

public:
    explicit PausedMark(QWidget* plot);

    /// Shows or hides the marks of all plots after the display was paused, or goes on: Updater's flag tells nobody.
    static void refreshAll();

    QSize sizeHint() const override;
    bool eventFilter(QObject* object, QEvent* event) override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void refresh();
    void place();
};
