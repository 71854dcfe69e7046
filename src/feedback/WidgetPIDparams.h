#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class WidgetPIDparams;
}

/// The parameters of one control loop. They are plain numbers that go to the control library as they stand.
/// GUI thread.
class WidgetPIDparams : public QWidget
{
    Q_OBJECT

public:
    explicit WidgetPIDparams(QWidget* parent = nullptr);
    ~WidgetPIDparams() override;

    /// Requested rate of the loop, Hz.
    double freq() const;
    void setFreq(double freq);
    /// Length of the loop's averaging window: samples of the loop rate in one period of the requested rate,
    /// rounded to the nearest.
    int divider() const;

    double Kp() const;
    double Ki() const;
    double Kd() const;
    double emin() const;
    double Imax() const;
    double Omin() const;
    double Omax() const;
    double Ogain() const;
    double offset() const;
    void setParams(double Kp, double Ki, double Kd, double emin, double Imax, double Omin, double Omax, double Ogain,
                   double offset);

private slots:
    void calcRealFreq(double val);

private:
    std::unique_ptr<Ui::WidgetPIDparams> ui;
};
