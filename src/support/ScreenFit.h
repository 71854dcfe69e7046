#pragma once

#include <QObject>

class QWidget;

/// Lets a window open with everything in it in sight where the screen has room for that, and no larger than the screen.
/// Later sizes are the operator's. A child of the window. GUI thread.
class ScreenFit : public QObject
{
    Q_OBJECT

public:
    explicit ScreenFit(QWidget* window);

    bool eventFilter(QObject* object, QEvent* event) override;

private:
    QWidget* window;
};
