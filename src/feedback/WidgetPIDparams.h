#pragma once

#include <QWidget>

#include <memory>

struct LoopParameters;

namespace Ui {
class WidgetPIDparams;
}

/// The ten parameters of one control loop. They are plain numbers that go to the control library as they stand.
/// GUI thread.
class WidgetPIDparams : public QWidget
{
    Q_OBJECT

public:
    explicit WidgetPIDparams(QWidget* parent = nullptr);
    ~WidgetPIDparams() override;

    /// Requested rate of the loop, Hz.
    double freq() const;
    /// Length of the loop's averaging window: samples of the loop rate in one period of the requested rate,
    /// rounded to the nearest.
    int divider() const;

    LoopParameters parameters() const;
    void setParameters(const LoopParameters& parameters);

private slots:
    void calcRealFreq(double val);

private:
    std::unique_ptr<Ui::WidgetPIDparams> ui;
};
