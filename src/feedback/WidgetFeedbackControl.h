#pragma once

#include "hardware/PidStatusMetaType.h"
#include "support/QLed.h"

#include <QWidget>

#include <memory>

class QCheckBox;
class QComboBox;
class ReadoutLineEdit;
class UnsentFields;

namespace Ui {
class WidgetFeedbackControl;
}

/// The permanent panel of the feedback: beam statistics, state of the loops, and which loops regulate from
/// which monitor onto which output to which set-point. It shows what the mailbox has cached, once a second,
/// and sends what the operator confirms; it keeps no copy of the hardware's state. GUI thread.
class WidgetFeedbackControl : public QWidget
{
    Q_OBJECT

public:
    explicit WidgetFeedbackControl(QWidget* parent = nullptr);
    ~WidgetFeedbackControl() override;

    QSize minimumSizeHint() const override;

signals:
    void somethingChanged();
    void BPMselectorChanged();

public slots:
    /// Puts the low-frequency set-points, in um, into the two fields.
    void updateXYfields();
    void updateHeartbeat(PID_Status_Type PID_Status);
    /// Shows a configuration. One that names no loops disables both set-points and leaves the ticks.
    /// @param item code of the control library
    void confChanged(int item);
    void checkUserLevel();
    /// @param mask presence mask of the acquisition devices
    void nr_ionbars_changed(int mask);

private slots:
    void fdbkStatusChanged(bool enable);
    void sendNewSetpoint();
    void updateButtonPressed();
    void refreshFields();
    void resetPIDControllerPressed();

private:
    static constexpr int loops = 4;
    static constexpr int statistics = 9;

    void findFields();
    void showStoredOutputs();
    void showStatistics();
    void showStatistics(int bpm);
    void showLamp(QLed::ledColor color);
    void markUnsentFields();
    void showFeedbackButton();
    /// Stores and sends the outputs of the four loops. @return negative when two of them are the same
    int sendOutputs();

    std::unique_ptr<Ui::WidgetFeedbackControl> ui;
    // By loop index
    QCheckBox* regulated[loops];
    QComboBox* outputs[loops];
    QComboBox* sources[loops];
    ReadoutLineEdit* statisticsFields[2][statistics];
    UnsentFields* unsentConfiguration;
    UnsentFields* unsentSetpoints;
    bool fdbkEnabled = false;
    bool outputsUnique = false;
};
