#pragma once

#include <QObject>

class QWidget;

/// Draws a frame around a widget that has the keyboard focus where the style draws none. A child of the widget. GUI
/// thread.
class FocusMark : public QObject
{
    Q_OBJECT

public:
    explicit FocusMark(QWidget* widget);

    bool eventFilter(QObject* object, QEvent* event) override;

private:
    QWidget* widget;
};
