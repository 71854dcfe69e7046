#pragma once

#include <QDialog>

#include <memory>

class BPM;
class QAbstractButton;

namespace Ui {
class WindowBeamlineConf;
}

/// Geometry and wiring of the two beam position monitors and the high voltage of their detectors. Save writes
/// to the settings file, to bpmScaleX and bpmScaleY and to the hardware, whatever the hardware answers. GUI
/// thread only.
class WindowBeamlineConf : public QDialog
{
    Q_OBJECT

public:
    explicit WindowBeamlineConf(QWidget* parent);
    ~WindowBeamlineConf() override;

    /// Fills every field from the settings file and shows the window.
    void showAndRefresh();

signals:
    void BPMscaleChanged();

public slots:
    /// @param mask presence of the devices: 1 shows BPM1 alone, 2 BPM2 alone, any other value both
    void nr_ionbars_changed(int mask);

private slots:
    void sendSettings(QAbstractButton* button);
    void refreshFields();
    void checkUserLevel();

private:
    BPM* panel(int bpm) const;
    void loadBPM(int bpm);
    void saveBPM(int bpm);
    void refreshHighVoltage(int bpm);

    std::unique_ptr<Ui::WindowBeamlineConf> ui;
};
