#include "feedback/SetpointSpinBox.h"

#include <QLineEdit>

#include <cmath>

SetpointSpinBox::SetpointSpinBox(QWidget* parent) : QDoubleSpinBox(parent)
{
    connect(lineEdit(), SIGNAL(textEdited(QString)), this, SLOT(keepEntry()));
}

void SetpointSpinBox::showSetpoint(double setpoint)
{
    if (std::isnan(setpoint))
        return;
    // The hardware gives a set-point back in steps of its own: it has not moved while the field would show
    // the same.
    const bool moved = !(std::abs(setpoint - known) < std::pow(10.0, -decimals()));
    known = setpoint;
    if (entered && !moved)
        return;
    entered = false;
    setValue(setpoint);
}

void SetpointSpinBox::markSent()
{
    entered = false;
    known = value();
}

void SetpointSpinBox::stepBy(int steps)
{
    keepEntry();
    QDoubleSpinBox::stepBy(steps);
}

void SetpointSpinBox::keepEntry()
{
    entered = true;
}
