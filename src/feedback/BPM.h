#pragma once

#include <QGroupBox>

#include <memory>

class QComboBox;

namespace Ui {
class BPM;
}

/// Panel of one beam position monitor: orientation, wiring, scale and offset, and the bias high voltage of
/// its amplifier. Geometry is only shown and edited here, WindowBeamlineConf stores and sends it; the
/// high-voltage buttons act at once. GUI thread only.
class BPM : public QGroupBox
{
    Q_OBJECT

public:
    explicit BPM(QWidget* parent = nullptr);
    ~BPM() override;

    /// 1 for 90 degrees, 0 for 45 degrees.
    int orientation() const;
    /// Any other value leaves the selection as it is.
    void setOrientation(int value);
    /// Channel numbers 0 to 3 of the electrodes, of the orientation that is shown.
    void channels(int* top, int* right, int* bottom, int* left) const;
    void setChannels(int top, int right, int bottom, int left);
    /// Micrometres.
    void scale(double* x, double* y) const;
    /// Also fills the offsets, from the settings file, and the encoder settings that follow from both.
    void setScale(double x, double y);
    /// Micrometres.
    void offset(double* x, double* y) const;
    /// Older firmware knows no offsets.
    void showOffsets(bool visible);
    /// @param code state of the high voltage; one without a name shows none
    void setHVstatus(int code, double volts, double microamps);
    /// Greys what the amplifier no longer reports.
    void setHVstatusOld(bool old);
    /// Shows the encoder settings in place of the high voltage when true.
    void showHVpanel(bool hideHV);

    /// BPM and amplifier, 0 or 1.
    unsigned char bpmIndex = 0;
    /// State that was last sent; the amplifier is not asked.
    unsigned char hvEnabled = 0;

private slots:
    void changeBPMorient(QString str);
    void HVenable();
    void HVsetV();
    void checkConfiguration();
    void encoderSetPressed();

private:
    /// The four channel boxes of the orientation that is shown: top, right, bottom, left.
    struct ChannelBoxes
    {
        QComboBox* box[4];
    };
    ChannelBoxes channelBoxes() const;

    std::unique_ptr<Ui::BPM> ui;
};
