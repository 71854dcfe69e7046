#pragma once

#include <QColor>
#include <QObject>

class QAbstractButton;
class QWidget;

/// Shows that a click into a plot places a set-point: while the button is pressed in, it has this colour, and
/// the pointer over the plot is a cross. A child of the button. GUI thread.
class ArmedTarget : public QObject
{
    Q_OBJECT

public:
    ArmedTarget(QAbstractButton* button, QWidget* plot, const QColor& colour);

private slots:
    void show(bool armed);

private:
    QAbstractButton* button;
    QWidget* plot;
    QColor colour;
};
