#pragma once

#include <QDoubleSpinBox>

#include <limits>

/// A set-point field. What the operator enters stays in it until it is sent: reading the set-points back,
/// because one was placed elsewhere, replaces an entry only where the set-point itself has moved. GUI thread.
class SetpointSpinBox : public QDoubleSpinBox
{
    Q_OBJECT

public:
    explicit SetpointSpinBox(QWidget* parent = nullptr);

    /// Shows the set-point in force.
    /// @param setpoint um; not a number when it could not be read, and the field stays as it is
    void showSetpoint(double setpoint);
    /// The present value was sent and is no longer an entry of the operator.
    void markSent();

    /// Steps come from keys, wheel and arrows alone: an entry as well.
    void stepBy(int steps) override;

private slots:
    void keepEntry();

private:
    bool entered = false;
    /// The set-point in force as far as the field knows, um.
    double known = std::numeric_limits<double>::quiet_NaN();
};
