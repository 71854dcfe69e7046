#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

#include <string>
#include <vector>

class QAbstractButton;
class QDialogButtonBox;
class QTimer;
class QWidget;

/// What an operator, and the clock, do to the windows.
namespace operate {

/// A widget or object by its object name; ends the test program with a message if there is none.
template <typename T>
T* find(const QObject* root, const char* name);

/// Presses and releases a button, as a click on it does; nothing happens on a disabled one.
void press(QAbstractButton* button);
/// Presses the button of a box that shows this text, mnemonics ignored.
void press(QDialogButtonBox* box, const QString& text);

/// Delivers one timeout of the timer now.
void fire(QTimer* timer);
/// Delivers one timeout of every running timer that belongs to the object or to its children.
void fireTimers(QObject* root);

/// For comparisons of recorded calls.
QStringList lines(const std::vector<std::string>& texts);

[[noreturn]] void missing(const QObject* root, const char* name);

template <typename T>
T* find(const QObject* root, const char* name)
{
    T* found = root->findChild<T*>(QString::fromLatin1(name));
    if (!found)
        missing(root, name);
    return found;
}

} // namespace operate
