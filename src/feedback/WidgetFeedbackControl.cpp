#include "feedback/WidgetFeedbackControl.h"

#include "app/Globals.h"
#include "hardware/ConfigFile.h"
#include "hardware/LoopConfiguration.h"
#include "hardware/MailboxComm.h"
#include "hardware/PidStatus.h"
#include "support/FieldGuard.h"
#include "support/FocusMark.h"
#include "support/Legibility.h"
#include "support/ReadoutLineEdit.h"
#include "support/UnsentFields.h"
#include "ui_WidgetFeedbackControl.h"

#include <QMessageBox>
#include <QStyle>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

namespace {

constexpr int refreshIntervalMs = 1000;
constexpr int outputCount = 4;
constexpr int controlPage = 1;

struct StatisticsField
{
    const char* object; ///< of BPM1; that of BPM2 ends in "_2"
    double BPMStatsBlock::*value;
    double* scale; ///< by BPM, null for none
    char format;
    int precision[2]; ///< by BPM; decimals or significant digits
    const char* unit;
};

// The decimals differ between X and Y, and between the monitors, as operators are used to.
constexpr StatisticsField statisticsTable[] = {
    {"posXMeanLineEdit", &BPMStatsBlock::posXMean, bpmScaleX, 'f', {3, 3}, " um"},
    {"posXStdLineEdit", &BPMStatsBlock::posXStd, bpmScaleX, 'f', {6, 6}, " um"},
    {"posXStdFiltLineEdit", &BPMStatsBlock::posXStdFilt, bpmScaleX, 'f', {6, 6}, " um"},
    {"posYMeanLineEdit", &BPMStatsBlock::posYMean, bpmScaleY, 'f', {5, 5}, " um"},
    {"posYStdLineEdit", &BPMStatsBlock::posYStd, bpmScaleY, 'f', {5, 5}, " um"},
    {"posYStdFiltLineEdit", &BPMStatsBlock::posYStdFilt, bpmScaleY, 'f', {6, 6}, " um"},
    {"i0MeanLineEdit", &BPMStatsBlock::i0Mean, nullptr, 'g', {4, 4}, " A"},
    {"i0StdLineEdit", &BPMStatsBlock::i0Std, nullptr, 'g', {4, 4}, " A"},
    {"i0StdFiltLineEdit", &BPMStatsBlock::i0StdFilt, nullptr, 'g', {4, 6}, " A"},
};

constexpr QLed::ledColor statusColours[] = {QLed::Grey, QLed::Red, QLed::Purple, QLed::Green};
static_assert(std::size(statusColours) == std::size(pidStatusTexts));

/// Puts the set-point in force into its field, also over what an operator has entered there and not sent: otherwise the
/// next press would send it to loops that never had it. One that could not be read leaves the field.
void showSetpoint(QDoubleSpinBox* field, double micrometres, UnsentFields* unsent)
{
    if (!std::isfinite(micrometres))
        return;
    field->setValue(micrometres);
    unsent->markSent(field);
}

} // namespace

WidgetFeedbackControl::WidgetFeedbackControl(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::WidgetFeedbackControl>()), unsentConfiguration(new UnsentFields(this)),
      unsentSetpoints(new UnsentFields(this))
{
    ui->setupUi(this);
    findFields();
    showStoredOutputs();
    new FieldGuard(this);
    // The page titles have no mnemonics: let the Tab key come to them.
    for (QAbstractButton* title : ui->toolBox->findChildren<QAbstractButton*>(QString(), Qt::FindDirectChildrenOnly)) {
        title->setFocusPolicy(Qt::TabFocus);
        new FocusMark(title);
    }

    ui->buttonFdbk->setCheckable(true);
    ui->buttonFdbk->setIconSize(QSize(24, 24));
    ui->buttonFdbk->setText(QStringLiteral("Enable Feedback"));
    ui->buttonFdbk->setIcon(style()->standardIcon(QStyle::SP_MediaPlay));
    ui->heartbeatLed->setShape(QLed::Rounded);
    showLamp(ui->heartbeatLed->offColor());
    // The beam is watched at every level: neither its figures nor what they are called fade.
    for (QLabel* caption : ui->pageStatistics->findChildren<QLabel*>())
        caption->setPalette(legibility::liveValue());
    ui->heartbeatLabel->setPalette(legibility::liveValue());
    markUnsentFields();

    connect(ui->buttonFdbk, SIGNAL(toggled(bool)), this, SLOT(fdbkStatusChanged(bool)));
    connect(ui->buttonUpdate, SIGNAL(released()), this, SLOT(sendNewSetpoint()));
    connect(ui->updateConfButton, SIGNAL(released()), this, SLOT(updateButtonPressed()));
    connect(ui->resetPIDbutton, SIGNAL(released()), this, SLOT(resetPIDControllerPressed()));

    auto* timer = new QTimer(this);
    connect(timer, SIGNAL(timeout()), this, SLOT(refreshFields()));
    timer->start(refreshIntervalMs);

    checkUserLevel();
    refreshFields();
}

WidgetFeedbackControl::~WidgetFeedbackControl() = default;

QSize WidgetFeedbackControl::minimumSizeHint() const
{
    // The pages scroll, but only up and down: a figure that is cut at the side reads as another one.
    QSize hint = QWidget::minimumSizeHint();
    int left, right;
    layout()->getContentsMargins(&left, nullptr, &right, nullptr);
    const int frame = left + right + style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    for (const QWidget* page : {ui->pageStatistics, ui->pageControl})
        hint.setWidth(std::max(hint.width(), page->minimumSizeHint().width() + frame));
    return hint;
}

void WidgetFeedbackControl::findFields()
{
    static_assert(loops == loopCount);
    static_assert(statistics == std::size(statisticsTable));
    for (int loop = 0; loop < loops; ++loop) {
        const QString name = QString::fromLatin1(loopNames[loop]);
        regulated[loop] = findChild<QCheckBox*>(QStringLiteral("conf%1checkbox").arg(name));
        outputs[loop] = findChild<QComboBox*>(QStringLiteral("position%1ComboBox").arg(name));
        sources[loop] = findChild<QComboBox*>(QStringLiteral("comboBoxPidSource%1").arg(name));
    }
    for (int i = 0; i < statistics; ++i) {
        const QString name = QString::fromLatin1(statisticsTable[i].object);
        statisticsFields[0][i] = findChild<ReadoutLineEdit*>(name);
        statisticsFields[1][i] = findChild<ReadoutLineEdit*>(name + QStringLiteral("_2"));
    }
}

void WidgetFeedbackControl::showStoredOutputs()
{
    int stored[loops];
    configFile->readDACpos(&stored[LoopXlf], &stored[LoopXhf], &stored[LoopYlf], &stored[LoopYhf]);
    for (int loop = 0; loop < loops; ++loop) {
        // A number that is no output leaves the field as it is: an empty field could be sent.
        if (stored[loop] >= 0 && stored[loop] < outputCount)
            outputs[loop]->setCurrentIndex(stored[loop]);
    }
}

void WidgetFeedbackControl::refreshFields()
{
    showStatistics();
    updateHeartbeat(PID_Status_Type(mailbox->pidStatus));
    showFeedbackButton();
}

void WidgetFeedbackControl::showStatistics()
{
    for (int bpm = 0; bpm < 2; ++bpm) {
        const bool present = mailbox->nrIonBars == 3 || mailbox->nrIonBars == bpm + 1;
        if (present)
            showStatistics(bpm);
        for (ReadoutLineEdit* field : statisticsFields[bpm])
            field->setOld(!present || mailbox->statsResult < 0);
    }
}

void WidgetFeedbackControl::showStatistics(int bpm)
{
    for (int i = 0; i < statistics; ++i) {
        const StatisticsField& field = statisticsTable[i];
        const double scale = field.scale ? field.scale[bpm] : 1.0;
        const double value = mailbox->stats.bpm[bpm].*field.value * scale;
        statisticsFields[bpm][i]->setText(QString::number(value, field.format, field.precision[bpm]) +
                                          QLatin1String(field.unit));
    }
}

void WidgetFeedbackControl::updateHeartbeat(PID_Status_Type PID_Status)
{
    if (PID_Status < 0 || PID_Status >= int(std::size(pidStatusTexts)))
        return;
    showLamp(statusColours[PID_Status]);
    ui->heartbeatLabel->setText(QLatin1String(pidStatusTexts[PID_Status]));
}

void WidgetFeedbackControl::showLamp(QLed::ledColor color)
{
    const bool shown = !ui->toolBox->itemIcon(controlPage).isNull();
    if (shown && ui->heartbeatLed->offColor() == color)
        return;
    ui->heartbeatLed->setOffColor(color);
    // The lamp itself is out of sight behind the statistics.
    ui->toolBox->setItemIcon(controlPage, QLed::icon(ui->heartbeatLed->shape(), color));
}

void WidgetFeedbackControl::markUnsentFields()
{
    for (int loop = 0; loop < loops; ++loop) {
        unsentConfiguration->watch(regulated[loop]);
        unsentConfiguration->watch(outputs[loop]);
        unsentConfiguration->watch(sources[loop]);
    }
    unsentSetpoints->watch(ui->posXDoubleSpinBox);
    unsentSetpoints->watch(ui->posYDoubleSpinBox);
}

void WidgetFeedbackControl::showFeedbackButton()
{
    const bool off = mailbox->pidStatus == PidStatusOff;
    const QString text = off ? QStringLiteral("Enable Feedback") : QStringLiteral("Disable Feedback");
    // A style makes its icon anew each time that it is asked for it.
    if (ui->buttonFdbk->text() == text && !ui->buttonFdbk->icon().isNull())
        return;
    ui->buttonFdbk->setText(text);
    ui->buttonFdbk->setIcon(style()->standardIcon(off ? QStyle::SP_MediaPlay : QStyle::SP_MediaStop));
}

void WidgetFeedbackControl::fdbkStatusChanged(bool enable)
{
    fdbkEnabled = enable;
    mailbox->setFBenable(enable);
}

void WidgetFeedbackControl::sendNewSetpoint()
{
    const double x = ui->posXDoubleSpinBox->value();
    const double y = ui->posYDoubleSpinBox->value();
    mailbox->setSetpoints(x, x, y, y);
    unsentSetpoints->markSent();
    emit somethingChanged();
}

void WidgetFeedbackControl::updateXYfields()
{
    double x = std::numeric_limits<double>::quiet_NaN();
    double y = x;
    mailbox->getSetpoints(&x, nullptr, &y, nullptr);
    showSetpoint(ui->posXDoubleSpinBox, x, unsentSetpoints);
    showSetpoint(ui->posYDoubleSpinBox, y, unsentSetpoints);
}

void WidgetFeedbackControl::updateButtonPressed()
{
    if (pidIsRunning(mailbox->pidStatus)) {
        QMessageBox::warning(nullptr, QStringLiteral("PID running ..."),
                             QStringLiteral("Configuration can be change only if the PID is stopped."),
                             QMessageBox::Ok);
        return;
    }
    if (sendOutputs() < 0)
        return;

    // Sent from here, not from the shared settings: the poll may write those in between.
    int chosen[loops];
    for (int loop = 0; loop < loops; ++loop)
        chosen[loop] = sources[loop]->currentIndex();
    bpmSelXlf = chosen[LoopXlf];
    bpmSelXhf = chosen[LoopXhf];
    bpmSelYlf = chosen[LoopYlf];
    bpmSelYhf = chosen[LoopYhf];
    mailbox->setBPMselector(chosen[LoopXlf], chosen[LoopXhf], chosen[LoopYlf], chosen[LoopYhf]);
    emit BPMselectorChanged();

    int mask = 0;
    for (int loop = 0; loop < loops; ++loop)
        mask |= regulated[loop]->isChecked() ? loopBit(loop) : 0;
    const int item = loopConfigurationCode(mask);
    mailbox->setPIDconf(static_cast<signed char>(item));
    confChanged(item);
    unsentConfiguration->markSent();
    emit somethingChanged();
}

int WidgetFeedbackControl::sendOutputs()
{
    int chosen[loops];
    for (int loop = 0; loop < loops; ++loop)
        chosen[loop] = outputs[loop]->currentIndex();

    int sorted[loops];
    std::copy(std::begin(chosen), std::end(chosen), sorted);
    std::sort(std::begin(sorted), std::end(sorted));
    outputsUnique = std::adjacent_find(std::begin(sorted), std::end(sorted)) == std::end(sorted);
    if (!outputsUnique) {
        QMessageBox::warning(nullptr, QStringLiteral("DAC outputs not unique"),
                             QStringLiteral("DAC outputs must be unique"), QMessageBox::Ok);
        return -1;
    }
    configFile->writeDACpos(chosen[LoopXlf], chosen[LoopXhf], chosen[LoopYlf], chosen[LoopYhf]);
    mailbox->setPIDoutSel(static_cast<unsigned char>(chosen[LoopXlf]), static_cast<unsigned char>(chosen[LoopXhf]),
                          static_cast<unsigned char>(chosen[LoopYlf]), static_cast<unsigned char>(chosen[LoopYhf]));
    return 0;
}

void WidgetFeedbackControl::confChanged(int item)
{
    if (const LoopConfiguration* row = loopConfiguration(item)) {
        for (int loop = 0; loop < loops; ++loop)
            regulated[loop]->setChecked(row->runs(loop));
        ui->posXDoubleSpinBox->setEnabled(row->setpointX);
        ui->posYDoubleSpinBox->setEnabled(row->setpointY);
    } else {
        ui->posXDoubleSpinBox->setEnabled(false);
        ui->posYDoubleSpinBox->setEnabled(false);
    }
    emit somethingChanged();
}

void WidgetFeedbackControl::resetPIDControllerPressed()
{
    mailbox->setCtrlReset();
}

void WidgetFeedbackControl::nr_ionbars_changed(int mask)
{
    ui->BPM2label->setVisible(mask != 1);
    ui->bpm2Table->setVisible(mask != 1);
}

void WidgetFeedbackControl::checkUserLevel()
{
    if (userLevel == 0)
        setEnabled(false);
    else if (userLevel == 1 || userLevel == 2)
        setEnabled(true);
}
