#pragma once

#include <QDialog>

#include <memory>

class QAbstractButton;
class Updater;
class WidgetGraphXY;
class WidgetRoc;
class WindowBeamlineConf;

namespace Ui {
class WindowROC_ROI;
}

/// Edits the regions of interest and of confidence and the beam-off thresholds of both BPMs, draws them on
/// the XY graphs and loads them into the hardware. Limits reach the hardware only by OK or Apply; the six
/// enable flags also at construction, from the settings file. GUI thread only.
class WindowROC_ROI : public QDialog
{
    Q_OBJECT

public:
    explicit WindowROC_ROI(QWidget* parent);
    ~WindowROC_ROI() override;

    void setUpdater(Updater* displayUpdater);
    void setBeamlineWindow(WindowBeamlineConf* window);
    /// @param bpm 0 or 1
    void setGraph(WidgetGraphXY* graph, int bpm);

    /// Brings level and regions up to date and shows the window. Check boxes and thresholds stay as they are.
    void showWindow();

private slots:
    void sendROCconf(QAbstractButton* button);
    void checkUserLevel();
    void nrIonbarChanged(int nrIonBars);

private:
    WidgetRoc* rocWidget(int bpm) const;
    void loadRegions();
    /// Draws, sends and stores the limits of one BPM.
    void sendRocLimits(int bpm);
    /// Sends and stores the check boxes of both BPMs.
    void sendRocEnables();

    std::unique_ptr<Ui::WindowROC_ROI> ui;
    /// Presence mask as last announced; 1 before.
    int nrIonBars = 1;
    Updater* updater = nullptr;
    WindowBeamlineConf* beamlineWindow = nullptr;
    WidgetGraphXY* graphXY[2] = {nullptr, nullptr};
};
