#pragma once

#include <QObject>

class QAbstractButton;
class QDockWidget;

/// Draws the buttons in the title of a dock so that they are seen on the grey of the title: a cross that closes it, and
/// two windows that make it float. A child of the dock. GUI thread.
class DockTitleButtons : public QObject
{
    Q_OBJECT

public:
    explicit DockTitleButtons(QDockWidget* dock);

    bool eventFilter(QObject* object, QEvent* event) override;

private:
    void draw(QAbstractButton* button) const;
};
