#pragma once

#include <QWidget>

#include <memory>

class QHBoxLayout;
class QProgressBar;
class QSlider;

namespace Ui {
class Slider;
}

/// A horizontal slider merged with a level bar and a printed scale. GUI thread.
class Slider : public QWidget
{
    Q_OBJECT

public:
    explicit Slider(QWidget* parent = nullptr);
    ~Slider() override;

    /// Prints a scale from min to max in so many steps; without a positive number only its end.
    void setScale(int ticks, float min, float max);
    /// Shows a level of the scale on the bar, not on the slider.
    void setBarValue(float value);
    /// Moves the slider to the integer part of value * 100 / (max - min) - min. The inverse of
    /// valueChanged(float) only where the scale begins at 0.
    void setSliderPosition(float value);

signals:
    /// In units of the scale. The slider ends one hundredth below the scale's end.
    void valueChanged(float value);

    // In this order: a program that calls by number finds them by it.
private slots:
    void signalSender(int val);

public slots:
    /// Shows a level on a scale of its own: from 0 to b to the tenth power, b being the decimal logarithm of
    /// the level, rounded up.
    void setValue(float value);

private:
    std::unique_ptr<Ui::Slider> ui;
    QProgressBar* bar;
    QSlider* slider;
    QHBoxLayout* labelRow;
    QHBoxLayout* tickRow;
    float minValue = 0.0F;
    float maxValue = 1.0F;
};
