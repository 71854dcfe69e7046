#pragma once

#include <QWidget>

/// Says "paused" in a plot while the display is paused, so that a frozen picture is not taken for the beam of this
/// moment. A child of the plot, in whose middle it stays. GUI thread.
class PausedMark : public QWidget
{
    Q_OBJECT

public:
    explicit PausedMark(QWidget* plot);

    QSize sizeHint() const override;
    bool eventFilter(QObject* object, QEvent* event) override;

private slots:
    void showPaused(bool paused);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void place();
};
