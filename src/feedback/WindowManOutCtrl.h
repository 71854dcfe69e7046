#pragma once

#include "stream/DeviceFile.h"

#include <QDialog>

#include <memory>

class QDoubleSpinBox;
class QSlider;

namespace Ui {
class WindowManOutCtrl;
}

/// Drives the four analogue outputs by hand. Every change of a slider or a box writes all four voltages to
/// the output device; they reach the outputs only while the source is set to manual, and stay there when the
/// window is closed. A device that cannot be opened is silent. GUI thread only.
class WindowManOutCtrl : public QDialog
{
    Q_OBJECT

public:
    explicit WindowManOutCtrl(QWidget* parent);
    ~WindowManOutCtrl() override;

    /// Shows the window with the check box as the hardware has the source at present.
    void showWindow();

private slots:
    void enableMan_changed(bool enable);
    void sliders_changed();
    void boxes_changed();

private:
    static constexpr int channelCount = 4;

    void writeOutputs();

    std::unique_ptr<Ui::WindowManOutCtrl> ui;
    QSlider* sliders[channelCount];
    QDoubleSpinBox* boxes[channelCount];
    DeviceFile fd;
};
