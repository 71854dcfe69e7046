#include "feedback/WindowROC_ROI.h"

#include "app/Globals.h"
#include "feedback/DialogButtons.h"
#include "feedback/WidgetRoc.h"
#include "graphs/WidgetGraphXY.h"
#include "hardware/ConfigFile.h"
#include "hardware/MailboxComm.h"
#include "support/FieldGuard.h"
#include "ui_WidgetRoc.h"
#include "ui_WindowROC_ROI.h"

namespace {

constexpr int limitsPerBpm = 3;
constexpr double lowestIntensity = 0.0;
constexpr double highestIntensity = 1e12;
constexpr double ampsPerMicroamp = 1e-06;

/// Threshold in microamperes out of what the field shows. The number ends at the unit "uA"; a decimal comma
/// counts as a point, so that no locale plays a part. Text without a number gives 0.
double shownMicroamps(const QString& text)
{
    return text.section(QLatin1Char('u'), 0, 0).replace(QLatin1Char(','), QLatin1Char('.')).toDouble();
}

} // namespace

WindowROC_ROI::WindowROC_ROI(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::WindowROC_ROI>())
{
    ui->setupUi(this);
    new FieldGuard(this);
    connect(ui->buttonBox, SIGNAL(clicked(QAbstractButton*)), this, SLOT(sendROCconf(QAbstractButton*)));
    ui->rocWidget0->ui->bpmLabel->setText(QStringLiteral("BPM 1"));
    ui->rocWidget1->ui->bpmLabel->setText(QStringLiteral("BPM 2"));

    bool x[2];
    bool y[2];
    bool beamOff[2];
    for (int bpm = 0; bpm < 2; ++bpm)
        configFile->readROCenable(&x[bpm], &y[bpm], &beamOff[bpm], bpm);
    mailbox->setROCenable(x[0], y[0], beamOff[0], x[1], y[1], beamOff[1]);
    for (int bpm = 0; bpm < 2; ++bpm) {
        const Ui::WidgetRoc* fields = rocWidget(bpm)->ui.get();
        fields->enableROCXCheckBox->setChecked(x[bpm]);
        fields->enableROCYCheckBox->setChecked(y[bpm]);
        fields->enableBeamOffCheckBox->setChecked(beamOff[bpm]);
        double microamps = 0.0;
        configFile->readBeamOffTh(&microamps, bpm);
        fields->beamOffTh->setValue(microamps);
    }
}

WindowROC_ROI::~WindowROC_ROI() = default;

void WindowROC_ROI::setUpdater(Updater* displayUpdater)
{
    updater = displayUpdater;
}

void WindowROC_ROI::setBeamlineWindow(WindowBeamlineConf* window)
{
    beamlineWindow = window;
}

void WindowROC_ROI::setGraph(WidgetGraphXY* graph, int bpm)
{
    graphXY[bpm] = graph;
}

void WindowROC_ROI::showWindow()
{
    checkUserLevel();
    loadRegions();
    show();
}

WidgetRoc* WindowROC_ROI::rocWidget(int bpm) const
{
    return bpm == 0 ? ui->rocWidget0 : ui->rocWidget1;
}

void WindowROC_ROI::loadRegions()
{
    for (int bpm = 0; bpm < 2; ++bpm) {
        double x = 0.0;
        double y = 0.0;
        double intensityMin = 0.0;
        double intensityMax = 0.0;
        double percent = 0.0;
        configFile->readROI(&x, &y, &intensityMin, &intensityMax, &percent, bpm);
        const Ui::WidgetRoc* fields = rocWidget(bpm)->ui.get();
        fields->roiXDoubleSpinBox->setValue(x);
        fields->roiYDoubleSpinBox->setValue(y);
        fields->rocFactorBox->setValue(percent);
    }
}

void WindowROC_ROI::checkUserLevel()
{
    if (userLevel > 2)
        return;
    const bool enable = userLevel == 2;
    for (int bpm = 0; bpm < 2; ++bpm) {
        const Ui::WidgetRoc* fields = rocWidget(bpm)->ui.get();
        // The threshold is left out: it can be typed at every level, though only OK at level 2 makes it act.
        fields->roiXDoubleSpinBox->setEnabled(enable);
        fields->roiYDoubleSpinBox->setEnabled(enable);
        fields->rocFactorBox->setEnabled(enable);
        fields->enableROCXCheckBox->setEnabled(enable);
        fields->enableROCYCheckBox->setEnabled(enable);
        fields->enableBeamOffCheckBox->setEnabled(enable);
    }
}

void WindowROC_ROI::nrIonbarChanged(int mask)
{
    ui->rocWidget1->setVisible(mask != 1);
    nrIonBars = mask;
}

void WindowROC_ROI::sendROCconf(QAbstractButton* button)
{
    if (!isOkOrApply(button) || userLevel != 2)
        return;
    sendRocLimits(0);
    // Exactly 2: the limits of BPM2 go out while its amplifier alone is present, not with both.
    if (nrIonBars == 2)
        sendRocLimits(1);
    sendRocEnables();
}

void WindowROC_ROI::sendRocLimits(int bpm)
{
    const Ui::WidgetRoc* fields = rocWidget(bpm)->ui.get();
    const double x = fields->roiXDoubleSpinBox->value();
    const double y = fields->roiYDoubleSpinBox->value();
    const double percent = fields->rocFactorBox->value();
    const double ratio = percent / 100.0;
    const int limit = limitsPerBpm * bpm;

    // A window that was never shown has no graphs yet; its limits are as good as others.
    if (WidgetGraphXY* const graph = graphXY[bpm]) {
        graph->setLimits(x, y, ratio);
        // At once, also while the display is paused and no tick redraws.
        graph->replot();
    }
    // The hardware compares raw positions. A scale of 0 gives an infinite limit, which goes out as it is.
    mailbox->setROClimits(limit, 0.0, x * ratio / bpmScaleX[bpm]);
    mailbox->setROClimits(limit + 1, 0.0, ratio * y / bpmScaleY[bpm]);
    configFile->writeROI(bpm, x, y, lowestIntensity, highestIntensity, percent);

    const double microamps = shownMicroamps(fields->beamOffTh->text());
    configFile->writeBeamOffTh(bpm, microamps);
    mailbox->setROClimits(limit + 2, 0.0, microamps * ampsPerMicroamp);
}

void WindowROC_ROI::sendRocEnables()
{
    bool x[2];
    bool y[2];
    bool beamOff[2];
    for (int bpm = 0; bpm < 2; ++bpm) {
        const Ui::WidgetRoc* fields = rocWidget(bpm)->ui.get();
        x[bpm] = fields->enableROCXCheckBox->isChecked();
        y[bpm] = fields->enableROCYCheckBox->isChecked();
        beamOff[bpm] = fields->enableBeamOffCheckBox->isChecked();
    }
    mailbox->setROCenable(x[0], y[0], beamOff[0], x[1], y[1], beamOff[1]);
    for (int bpm = 0; bpm < 2; ++bpm)
        configFile->writeROCenable(x[bpm], y[bpm], beamOff[bpm], bpm);
}
