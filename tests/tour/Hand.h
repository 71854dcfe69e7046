#pragma once

#include <QPoint>
#include <QString>

class QAbstractButton;
class QAbstractSpinBox;
class QComboBox;
class QCustomPlot;
class QDialogButtonBox;
class QDockWidget;
class QLineEdit;
class QWidget;

/// The operator's hand and eye on the windows of the running program, which it knows from outside alone: by
/// class names, object names and texts. What is not there ends the program with a message, since then the
/// tour makes no sense; what is there but cannot be used is told by the return value.
class Hand
{
public:
    explicit Hand(QWidget* mainWindow);

    QWidget* mainWindow() const { return window; }
    /// The newest window or panel of this class.
    QWidget* widget(const char* className) const;
    QDockWidget* dock(const QString& title) const;
    QCustomPlot* plot(const QString& dockTitle) const;
    /// Opens a page of the feedback panel by its title.
    void turnTo(QWidget* panel, const QString& page) const;
    /// Brings a tabbed dock to the front.
    void show(const QString& dockTitle) const;

    /// Triggers a menu entry that is visible and enabled.
    /// @return whether it could be triggered
    bool choose(const char* action) const;
    /// Opens a tool whose menu entry is closed to every level, as the engineer who commissions the
    /// installation does.
    void openClosedTool(const char* slot) const;
    /// Clicks a button with the mouse.
    /// @return whether it is visible and enabled
    bool press(QAbstractButton* button) const;
    bool press(QDialogButtonBox* box, const QString& text) const;
    /// Clicks boxes until they have this state.
    void tick(QAbstractButton* box, bool ticked) const;
    /// Replaces what a field shows, key by key, and leaves it by Tab.
    void type(QLineEdit* field, const QString& text) const;
    void type(QAbstractSpinBox* field, const QString& text) const;
    void select(QComboBox* list, const QString& text) const;
    /// Clicks the place of a plot that has these coordinates.
    void click(QCustomPlot* plot, double x, double y) const;
    void close(QWidget* widget) const;

    /// Lets the program run.
    void wait(double seconds) const;

    /// The number at the start of a field such as "0.123 um"; NaN where there is none, so that an
    /// empty field is not taken for a zero.
    double number(const QLineEdit* field) const;

private:
    QWidget* window;
};
