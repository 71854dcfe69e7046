#pragma once

#include <QString>
#include <QVector>

class QWidget;
class SimulatedSession;

/// A window or panel as the operator knows it.
struct OperatorWindow
{
    QString className;
    QWidget* widget;
};

/// Opens every window of the program and gives them all, the panels of the main window first. Where there are
/// several of a class, each of them.
QVector<OperatorWindow> everyWindow(SimulatedSession& session);
