#pragma once

#include <QString>

class Dice;
class QComboBox;
class QLineEdit;
class QMenu;
class QPoint;
class QWidget;

/// One hand of an operator without a plan: does something with whatever it is put on. What it may press blocks for
/// as long as the program's own slot does.
class RandomHand
{
public:
    explicit RandomHand(Dice& dice) : dice(dice) {}

    /// Does something that the widget is made for. @return what it did, for the trace
    QString touch(QWidget* widget);
    /// Takes an entry of the menu, or leaves it.
    void answerMenu(QMenu* menu);
    /// A text that fits a field now and then.
    QString text();
    void pressAnyKey(QWidget* widget);

private:
    QPoint spotOn(const QWidget* widget);
    Qt::KeyboardModifiers modifiers();
    Qt::MouseButton mouseButton();
    void turnWheel(QWidget* widget);
    void drag(QWidget* widget);
    void fill(QLineEdit* field);
    void choose(QComboBox* box);
    void touchWithMouse(QWidget* widget);

    Dice& dice;
};
