#pragma once

#include <QObject>

class QWidget;

/// Keeps what an operator does in passing from changing a field or pressing a button of a window or panel:
///
/// - A number, list or slider follows the mouse wheel only while it has the focus, and the wheel alone does not give it
///   the focus. Otherwise the wheel goes on to the page that the field stands on.
/// - In a dialog the Enter key in a field presses nothing: a measurement starts, a value is sent and a window closes
///   only when a button is meant. On a button that has the focus it presses that button; no other one is the default.
///
/// Made by the constructor of the window, after its fields; a child of the window. GUI thread.
class FieldGuard : public QObject
{
    Q_OBJECT

public:
    explicit FieldGuard(QWidget* window);

    bool eventFilter(QObject* object, QEvent* event) override;

private:
    void takeDefaultsAway();
    /// The Enter key as it reaches the dialog, which is when the field has not used it.
    void pressFocusedButton() const;

    QWidget* window;
};
