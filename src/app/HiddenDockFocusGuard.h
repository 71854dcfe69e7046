#pragma once

#include <QObject>
#include <QVector>

class QDockWidget;
class QWidget;

/// Takes the fields of a dock out of the order of the Tab key while the dock lies behind another one's tab.
/// The main window keeps such a dock shown, beyond its own edges, so that the focus would otherwise wander
/// through fields that nobody sees. GUI thread only; a child of the dock.
class HiddenDockFocusGuard : public QObject
{
    Q_OBJECT

public:
    /// @param dock has its content already, and keeps it
    explicit HiddenDockFocusGuard(QDockWidget* dock);

private slots:
    void setReachable(bool reachable);

private:
    QVector<QWidget*> fields;
};
