#include "feedback/WindowBeamlineConf.h"

#include "app/Globals.h"
#include "double/KoralinkDouble.h"
#include "feedback/BPM.h"
#include "hardware/MailboxComm.h"
#include "stream/Updater.h"
#include "support/LogLines.h"
#include "support/Operator.h"
#include "support/ScratchSettings.h"
#include "support/World.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>
#include <QtTest>

#include <cmath>
#include <limits>
#include <memory>

using namespace koralink_double;
using operate::find;

namespace {

void storeMonitor(const char* group, int orientation, double scale, double offset,
                  std::array<int, 4> channels)
{
    const auto store = [group](const char* key, const QVariant& value) {
        scratch_settings::setValue(QByteArray(group).append('/').append(key).constData(), value);
    };
    store("Orient", orientation);
    store("Scale_X", scale);
    store("Scale_Y", scale + 1);
    store("Offset_X", offset);
    store("Offset_Y", offset + 1);
    const char* const keys[4] = {"Top", "Right", "Bottom", "Left"};
    for (std::size_t i = 0; i < 4; ++i)
        store(keys[i], channels[i]);
}

AmplifierStatus highVoltage(std::uint32_t word, float volts, float microamps)
{
    AmplifierStatus status = {};
    status.setField(12, microamps);
    status.setField(16, volts);
    status.setField(20, word);
    return status;
}

} // namespace

class WindowBeamlineConfTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<World> world;
    std::unique_ptr<WindowBeamlineConf> window;

    void makeWindow(int mask)
    {
        mailbox->nrIonBars = mask;
        window = std::make_unique<WindowBeamlineConf>(nullptr);
        clearCalls();
    }
    void showAtLevel(int level)
    {
        userLevel = level;
        window->showAndRefresh();
    }
    BPM* panel(int bpm) { return find<BPM>(window.get(), bpm == 0 ? "boxBPM1" : "boxBPM2"); }
    QDoubleSpinBox* box(int bpm, const char* name) { return find<QDoubleSpinBox>(panel(bpm), name); }
    QComboBox* combo(int bpm, const char* name) { return find<QComboBox>(panel(bpm), name); }
    QSpinBox* counts(int bpm, const char* name) { return find<QSpinBox>(panel(bpm), name); }
    bool isShown(int bpm, const char* name) { return !find<QWidget>(panel(bpm), name)->isHidden(); }
    void press(const char* text)
    {
        operate::press(find<QDialogButtonBox>(window.get(), "buttonBox"), QString::fromLatin1(text));
    }
    void pressPanel(int bpm, const char* name) { operate::press(find<QPushButton>(panel(bpm), name)); }
    QString text(int bpm, const char* name) { return find<QLineEdit>(panel(bpm), name)->text(); }
    QString status(int bpm) { return find<QLabel>(panel(bpm), "statusLabel")->text(); }
    void chooseChannels(int bpm, const char* group, std::array<int, 4> indices)
    {
        const char* const places[4] = {"_top", "_right", "_bottom", "_left"};
        for (std::size_t i = 0; i < 4; ++i)
            combo(bpm, QByteArray(group).append(places[i]).constData())->setCurrentIndex(indices[i]);
    }

private slots:
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
        swVersionText = QStringLiteral("1.0.03");
        makeWindow(3);
    }
    void cleanup()
    {
        window.reset();
        world.reset();
    }

    void formHasAPanelPerMonitor()
    {
        QCOMPARE(window->windowTitle(), QStringLiteral("Beamline Configuration"));
        QCOMPARE(panel(0)->title(), QStringLiteral("BPM 1"));
        QCOMPARE(panel(1)->title(), QStringLiteral("BPM 2"));
        for (int bpm = 0; bpm < 2; ++bpm) {
            QCOMPARE(combo(bpm, "BPMorientation")->itemText(0), QStringLiteral("90°"));
            QCOMPARE(combo(bpm, "BPMorientation")->itemText(1), QStringLiteral("45°"));
            for (const char* name : {"BPM90_top", "BPM90_right", "BPM90_bottom", "BPM90_left", "BPM45_top",
                                     "BPM45_right", "BPM45_bottom", "BPM45_left"}) {
                QCOMPARE(combo(bpm, name)->count(), 4);
                QCOMPARE(combo(bpm, name)->itemText(3), QStringLiteral("Ch 4"));
            }
            for (const char* name : {"xGain", "yGain", "xOffset", "yOffset"}) {
                QCOMPARE(box(bpm, name)->suffix(), QStringLiteral(" µm"));
                QCOMPARE(box(bpm, name)->decimals(), 3);
                QCOMPARE(box(bpm, name)->maximum(), 1e8);
            }
            QCOMPARE(box(bpm, "xGain")->singleStep(), 0.01);
            QCOMPARE(box(bpm, "yGain")->value(), 1.0);
            QCOMPARE(box(bpm, "xOffset")->minimum(), -10000.0);
            QCOMPARE(box(bpm, "biasVoltageDoubleSpinBox")->maximum(), 6000.0);
            QVERIFY(!find<QLineEdit>(panel(bpm), "voltageReadoutLineEdit")->isEnabled());
            QVERIFY(!find<QLineEdit>(panel(bpm), "currentReadoutLineEdit")->isEnabled());
            QCOMPARE(find<QLabel>(panel(bpm), "textInvalidConf")->text(),
                     QStringLiteral("Invalid BPM configuration"));
            for (const char* name : {"BPM90_image", "BPM45_image"})
                QVERIFY(!find<QLabel>(panel(bpm), name)->pixmap(Qt::ReturnByValue).isNull());
        }
    }

    void labelOfTheVerticalCountsRepeatsTheWordHor()
    {
        QWidget* const field = counts(0, "vertOffsetCountsSpinBox");
        auto* layout = qobject_cast<QFormLayout*>(field->parentWidget()->layout());
        QVERIFY(layout);
        QCOMPARE(qobject_cast<QLabel*>(layout->labelForField(field))->text(),
                 QStringLiteral("Hor offset [counts]"));
        QCOMPARE(counts(0, "vertOffsetCountsSpinBox")->maximum(), 999999999);
        QCOMPARE(counts(0, "horOffsetCountsSpinBox")->maximum(), 999999999);
        QCOMPARE(find<QPushButton>(panel(0), "encoderSetButton")->text(), QStringLiteral("↑ Set ↑"));
    }

    void saveSendsAndStoresStepByStep()
    {
        makeWindow(1);
        showAtLevel(2);
        combo(0, "BPMorientation")->setCurrentIndex(1);
        box(0, "xGain")->setValue(1500.5);
        box(0, "yGain")->setValue(1600.25);
        box(0, "xOffset")->setValue(-12.125);
        box(0, "yOffset")->setValue(3.5);
        chooseChannels(0, "BPM45", {3, 2, 1, 0});
        QSignalSpy changes(window.get(), SIGNAL(BPMscaleChanged()));
        clearCalls();
        press("Save");
        QVERIFY(!window->isVisible());
        const QStringList expected = {
            QStringLiteral("setBPMorient(0, 0)"), QStringLiteral("setBPMscale(0, 1500.5, 1600.25)"),
            QStringLiteral("setBPMoffset(0, -12.125, 3.5)"), QStringLiteral("setCrossBar(0, 3, 2, 1, 0)")};
        QCOMPARE(operate::lines(commands()), expected);
        QCOMPARE(changes.count(), 1);
        QCOMPARE(bpmScaleX[0], 1500.5);
        QCOMPARE(bpmScaleY[0], 1600.25);
        QCOMPARE(bpmScaleX[1], 1.0);
        QCOMPARE(scratch_settings::value("BPM1/Orient").toString(), QStringLiteral("0"));
        QCOMPARE(scratch_settings::value("BPM1/Scale_X").toDouble(), 1500.5);
        QCOMPARE(scratch_settings::value("BPM1/Scale_Y").toDouble(), 1600.25);
        QCOMPARE(scratch_settings::value("BPM1/Offset_X").toDouble(), -12.125);
        QCOMPARE(scratch_settings::value("BPM1/Offset_Y").toDouble(), 3.5);
        QCOMPARE(scratch_settings::value("BPM1/Top").toInt(), 3);
        QCOMPARE(scratch_settings::value("BPM1/Right").toInt(), 2);
        QCOMPARE(scratch_settings::value("BPM1/Bottom").toInt(), 1);
        QCOMPARE(scratch_settings::value("BPM1/Left").toInt(), 0);
        QVERIFY(scratch_settings::value("BPM2/Scale_X").isNull());
    }

    void hiddenFirstMonitorIsSavedAndTheSecondToo()
    {
        storeMonitor("BPM1", 1, 100.0, 1.0, {0, 1, 2, 3});
        storeMonitor("BPM2", 0, 200.0, 2.0, {3, 2, 1, 0});
        makeWindow(2);
        showAtLevel(2);
        QVERIFY(!panel(0)->isVisible());
        QVERIFY(panel(1)->isVisible());
        QSignalSpy changes(window.get(), SIGNAL(BPMscaleChanged()));
        press("Save");
        const QStringList expected = {
            QStringLiteral("setBPMorient(0, 1)"),    QStringLiteral("setBPMscale(0, 100, 101)"),
            QStringLiteral("setBPMoffset(0, 1, 2)"), QStringLiteral("setCrossBar(0, 0, 1, 2, 3)"),
            QStringLiteral("setBPMorient(1, 0)"),    QStringLiteral("setBPMscale(1, 200, 201)"),
            QStringLiteral("setBPMoffset(1, 2, 3)"), QStringLiteral("setCrossBar(1, 3, 2, 1, 0)")};
        QCOMPARE(operate::lines(commands()), expected);
        QCOMPARE(changes.count(), 1);
        QCOMPARE(bpmScaleY[1], 201.0);
    }

    void maskDecidesWhichPanelsShow()
    {
        showAtLevel(2);
        const struct
        {
            int mask;
            bool first, second;
        } rows[] = {{1, true, false}, {2, false, true}, {3, true, true}, {0, true, true}};
        for (const auto& row : rows) {
            window->nr_ionbars_changed(row.mask);
            QCOMPARE(panel(0)->isVisible(), row.first);
            QCOMPARE(panel(1)->isVisible(), row.second);
        }
    }

    void secondMonitorAppearsWithTheDevicesPresentAtShow()
    {
        makeWindow(1);
        showAtLevel(2);
        QVERIFY(!panel(1)->isVisible());
        mailbox->nrIonBars = 3;
        window->showAndRefresh();
        QVERIFY(panel(1)->isVisible());
    }

    void cancelAndOtherTextsDoNothing()
    {
        showAtLevel(2);
        QSignalSpy changes(window.get(), SIGNAL(BPMscaleChanged()));
        box(0, "xGain")->setValue(77.0);
        press("Cancel");
        QVERIFY(!window->isVisible());
        QPushButton* const save =
            find<QDialogButtonBox>(window.get(), "buttonBox")->button(QDialogButtonBox::Save);
        save->setText(QStringLiteral("Speichern"));
        operate::press(save);
        QVERIFY(commands().empty());
        QCOMPARE(changes.count(), 0);
        QVERIFY(scratch_settings::value("BPM1/Scale_X").isNull());
        save->setText(QStringLiteral("&Save"));
        operate::press(save);
        QCOMPARE(changes.count(), 1);
    }

    void cancelledValuesDoNotSurvive()
    {
        storeMonitor("BPM1", 1, 100.0, 5.0, {0, 1, 2, 3});
        showAtLevel(2);
        box(0, "xGain")->setValue(77.0);
        box(0, "yOffset")->setValue(78.0);
        combo(0, "BPMorientation")->setCurrentIndex(1);
        combo(0, "BPM90_top")->setCurrentIndex(2);
        press("Cancel");
        window->showAndRefresh();
        QCOMPARE(box(0, "xGain")->value(), 100.0);
        QCOMPARE(box(0, "yOffset")->value(), 6.0);
        QCOMPARE(combo(0, "BPMorientation")->currentText(), QStringLiteral("90°"));
        QCOMPARE(combo(0, "BPM90_top")->currentIndex(), 0);
    }

    void levelRulesHoldAtShowAndOnTheSignal()
    {
        const auto enabled = [this](bool expected) {
            QCOMPARE(panel(0)->isEnabled(), expected);
            QCOMPARE(panel(1)->isEnabled(), expected);
            QVERIFY(find<QDialogButtonBox>(window.get(), "buttonBox")->isEnabled());
        };
        enabled(true);
        const auto announce = [this](int level) {
            userLevel = level;
            QMetaObject::invokeMethod(window.get(), "checkUserLevel");
        };
        showAtLevel(0);
        enabled(false);
        announce(2);
        enabled(true);
        announce(3);
        enabled(true);
        announce(1);
        enabled(false);
        announce(3);
        enabled(false);
        showAtLevel(2);
        enabled(true);
    }

    void saveAtALowLevelRewritesTheUnchangedValues()
    {
        storeMonitor("BPM1", 1, 100.0, 5.0, {0, 1, 2, 3});
        makeWindow(1);
        showAtLevel(0);
        press("Save");
        const QStringList expected = {
            QStringLiteral("setBPMorient(0, 1)"), QStringLiteral("setBPMscale(0, 100, 101)"),
            QStringLiteral("setBPMoffset(0, 5, 6)"), QStringLiteral("setCrossBar(0, 0, 1, 2, 3)")};
        QCOMPARE(operate::lines(commands()), expected);
    }

    void sameChannelTwiceWarnsAtOnceAndIsSavedAllTheSame()
    {
        storeMonitor("BPM1", 1, 100.0, 5.0, {0, 1, 2, 3});
        makeWindow(1);
        QVERIFY(isShown(0, "textInvalidConf"));
        showAtLevel(2);
        QVERIFY(!isShown(0, "textInvalidConf"));
        combo(0, "BPM90_left")->setCurrentIndex(1);
        QVERIFY(isShown(0, "textInvalidConf"));
        press("Save");
        QCOMPARE(callsOf("setCrossBar").at(0), std::string("setCrossBar(0, 0, 1, 2, 1)"));
        QCOMPARE(scratch_settings::value("BPM1/Left").toInt(), 1);
    }

    void orientationSwitchesTheGroupsAndKeepsTheWarning()
    {
        storeMonitor("BPM1", 1, 100.0, 5.0, {0, 1, 2, 3});
        showAtLevel(2);
        QVERIFY(isShown(0, "BPMvisual90"));
        QVERIFY(!isShown(0, "BPMvisual45"));
        combo(0, "BPMorientation")->setCurrentIndex(1);
        QVERIFY(!isShown(0, "BPMvisual90"));
        QVERIFY(isShown(0, "BPMvisual45"));
        // All four of the other group stand at the first channel, but only a change of a channel looks.
        QVERIFY(!isShown(0, "textInvalidConf"));
        combo(0, "BPM45_top")->setCurrentIndex(3);
        QVERIFY(isShown(0, "textInvalidConf"));
    }

    void unknownOrientationLeavesTheSelection()
    {
        storeMonitor("BPM1", 7, 100.0, 5.0, {3, 2, 1, 0});
        combo(0, "BPMorientation")->setCurrentIndex(1);
        showAtLevel(2);
        QCOMPARE(combo(0, "BPMorientation")->currentIndex(), 1);
        QVERIFY(isShown(0, "BPMvisual45"));
        QCOMPARE(combo(0, "BPM45_top")->currentIndex(), 3);
        combo(0, "BPMorientation")->setCurrentIndex(0);
        window->showAndRefresh();
        QCOMPARE(combo(0, "BPMorientation")->currentIndex(), 0);
        QVERIFY(isShown(0, "BPMvisual90"));
        QCOMPARE(combo(0, "BPM90_top")->currentIndex(), 3);
    }

    void offsetsShowByTheTextOfTheVersion_data()
    {
        QTest::addColumn<QString>("version");
        QTest::addColumn<bool>("shown");
        QTest::newRow("exactly") << QStringLiteral("1.0.02") << false;
        QTest::newRow("newer") << QStringLiteral("1.0.03") << true;
        QTest::newRow("short") << QStringLiteral("2") << true;
        QTest::newRow("by characters") << QStringLiteral("1.0.1") << true;
        QTest::newRow("older") << QStringLiteral("1.0.0") << false;
        QTest::newRow("none") << QString() << false;
    }
    void offsetsShowByTheTextOfTheVersion()
    {
        QFETCH(QString, version);
        QFETCH(bool, shown);
        storeMonitor("BPM1", 1, 100.0, 5.0, {0, 1, 2, 3});
        swVersionText = version;
        makeWindow(3);
        showAtLevel(2);
        for (int bpm = 0; bpm < 2; ++bpm) {
            for (const char* name : {"labelOffsetX", "xOffset", "labelOffsetY", "yOffset"})
                QCOMPARE(isShown(bpm, name), shown);
        }
        press("Save");
        QCOMPARE(callsOf("setBPMoffset").at(0), std::string("setBPMoffset(0, 5, 6)"));
    }

    void highVoltageButtonTogglesItsOwnMemory()
    {
        showAtLevel(2);
        pressPanel(0, "enableHVbutton");
        pressPanel(1, "enableHVbutton");
        pressPanel(0, "enableHVbutton");
        QCOMPARE(find<QPushButton>(panel(0), "enableHVbutton")->text(), QStringLiteral("Enable HV"));
        press("Cancel");
        window->showAndRefresh();
        pressPanel(1, "enableHVbutton");
        const QStringList expected = {
            QStringLiteral("ionbarHVenable(1, 0)"), QStringLiteral("ionbarHVenable(1, 1)"),
            QStringLiteral("ionbarHVenable(0, 0)"), QStringLiteral("ionbarHVenable(0, 1)")};
        QCOMPARE(operate::lines(commands()), expected);
    }

    void biasVoltageGoesOutInSinglePrecision()
    {
        showAtLevel(2);
        box(1, "biasVoltageDoubleSpinBox")->setValue(123.45);
        pressPanel(1, "setHVbutton");
        const std::vector<Call> sent = calls();
        QCOMPARE(sent.back().name, std::string("ionbarHVSetVoltage"));
        QCOMPARE(sent.back().arguments, std::vector<double>({1.0, double(123.45f)}));
    }

    void readoutsFollowTheAmplifierStatus()
    {
        showAtLevel(2);
        auto* timer = find<QTimer>(window.get(), "");
        QCOMPARE(timer->interval(), 770);
        QVERIFY(timer->isActive());
        updater->ionbarStatus[0] = highVoltage(0xabc1, 1234.567f, -0.126f);
        updater->ionbarStatus[1] = highVoltage(0x3, 50.0f, 2.0f);
        operate::fire(timer);
        QCOMPARE(text(0, "voltageReadoutLineEdit"), QStringLiteral("1234.57V"));
        QCOMPARE(text(0, "currentReadoutLineEdit"), QStringLiteral("-0.13uA"));
        QCOMPARE(status(0), QStringLiteral("HV ON"));
        QCOMPARE(text(1, "voltageReadoutLineEdit"), QStringLiteral("50.00V"));
        QCOMPARE(status(1), QStringLiteral("HV rising"));
    }

    void statusHasATextForFourCodes()
    {
        const char* const expected[16] = {"HV OFF", "HV ON", "", "HV rising", "", "HV falling"};
        for (std::uint32_t code = 0; code < 16; ++code) {
            updater->ionbarStatus[0] = highVoltage(code, 0, 0);
            operate::fireTimers(window.get());
            QCOMPARE(status(0), QString::fromLatin1(expected[code]));
        }
    }

    void readoutsRunWhileTheWindowIsClosedAndSkipAHiddenSecondMonitor()
    {
        makeWindow(1);
        updater->ionbarStatus[0] = highVoltage(1, 10.0f, 1.0f);
        updater->ionbarStatus[1] = highVoltage(1, 20.0f, 2.0f);
        operate::fireTimers(window.get());
        QCOMPARE(text(0, "voltageReadoutLineEdit"), QStringLiteral("10.00V"));
        showAtLevel(2);
        operate::fireTimers(window.get());
        QCOMPARE(text(1, "voltageReadoutLineEdit"), QString());
        window->nr_ionbars_changed(3);
        operate::fireTimers(window.get());
        QCOMPARE(text(1, "voltageReadoutLineEdit"), QStringLiteral("20.00V"));
    }

    void encoderPanelIsNeverShown()
    {
        mailbox->cogtrakPresent = 1;
        for (int mask : {0, 1, 2, 3}) {
            makeWindow(mask);
            showAtLevel(2);
            for (int bpm = 0; bpm < 2; ++bpm) {
                QVERIFY(!isShown(bpm, "encoderWidget"));
                QVERIFY(!isShown(bpm, "label_2"));
                QVERIFY(isShown(bpm, "hv_widget"));
            }
        }
        panel(0)->showHVpanel(true);
        QVERIFY(isShown(0, "encoderWidget"));
        QVERIFY(isShown(0, "label_2"));
        QVERIFY(!isShown(0, "hv_widget"));
    }

    void encoderSettingsFollowFromScaleAndOffset()
    {
        // The zero at a quarter of the range: half a scale from the centre.
        storeMonitor("BPM1", 1, 4294.967, 0.0, {0, 1, 2, 3});
        scratch_settings::setValue("BPM1/Offset_X", 4294.967 * 0.75);
        scratch_settings::setValue("BPM1/Offset_Y", 10.0);
        showAtLevel(2);
        QVERIFY(std::fabs(box(0, "horNradCountDoubleSpinBox")->value() - 4294.967 / 2147483.648) < 1e-9);
        const double shownOffset = box(0, "xOffset")->value();
        const double counted = 0.5 * (4294967296.0 - shownOffset * 4294967296.0 / 4294.967);
        QCOMPARE(counts(0, "horOffsetCountsSpinBox")->value(), int(counted));
        QVERIFY(std::fabs(counted - 536870912.0) < 1e6);
        // Beyond what the field holds, and beyond int.
        QCOMPARE(counts(0, "vertOffsetCountsSpinBox")->value(), 999999999);
    }

    void countsBeyondAnIntegerShowTheUpperLimit()
    {
        storeMonitor("BPM1", 1, 1000.0, 0.0, {0, 1, 2, 3});
        storeMonitor("BPM2", 1, 1000.0, -900.0, {0, 1, 2, 3});
        showAtLevel(2);
        // 2^31 at the centre, nearly 2^32 towards the upper end, below nothing beyond the lower end.
        for (int bpm = 0; bpm < 2; ++bpm)
            QCOMPARE(counts(bpm, "horOffsetCountsSpinBox")->value(), 999999999);
        storeMonitor("BPM1", 1, 1000.0, 5000.0, {0, 1, 2, 3});
        window->showAndRefresh();
        QCOMPARE(counts(0, "horOffsetCountsSpinBox")->value(), 0);
    }

    void countsShowTheirLimitsForAScaleOfZero()
    {
        scratch_settings::setValue("BPM1/Offset_X", 1.0);
        scratch_settings::setValue("BPM1/Offset_Y", -1.0);
        showAtLevel(2);
        QCOMPARE(box(0, "xGain")->value(), 0.0);
        QCOMPARE(counts(0, "horOffsetCountsSpinBox")->value(), 0);
        QCOMPARE(counts(0, "vertOffsetCountsSpinBox")->value(), 999999999);
        // Neither offset nor scale: no number at all.
        QCOMPARE(counts(1, "horOffsetCountsSpinBox")->value(), 0);
    }

    void encoderButtonFillsScaleAndOffset()
    {
        box(0, "horNradCountDoubleSpinBox")->setValue(0.5);
        counts(0, "horOffsetCountsSpinBox")->setValue(999999999);
        box(0, "vertNradCountDoubleSpinBox")->setValue(0.001);
        counts(0, "vertOffsetCountsSpinBox")->setValue(500000000);
        panel(0)->setEnabled(true);
        pressPanel(0, "encoderSetButton");
        const double sx = 0.5 * 2147483.648;
        QVERIFY(std::fabs(box(0, "xGain")->value() - sx) < 1e-3);
        QVERIFY(std::fabs(box(0, "xOffset")->value() - sx * (1 - 2 * 999999999.0 / 4294967296.0)) < 1e-3);
        const double sy = 0.001 * 2147483.648;
        QVERIFY(std::fabs(box(0, "yGain")->value() - sy) < 1e-3);
        QVERIFY(std::fabs(box(0, "yOffset")->value() - sy * (1 - 2 * 500000000.0 / 4294967296.0)) < 1e-3);
    }

    void encoderButtonWithZeroNanoradiansGivesAScaleOfZero()
    {
        box(0, "horNradCountDoubleSpinBox")->setValue(0.0);
        box(0, "vertNradCountDoubleSpinBox")->setValue(0.0);
        box(0, "xOffset")->setValue(5.0);
        pressPanel(0, "encoderSetButton");
        QCOMPARE(box(0, "xGain")->value(), 0.0);
        QCOMPARE(box(0, "yGain")->value(), 0.0);
        QCOMPARE(box(0, "xOffset")->value(), 0.0);
    }

    void failuresAreLoggedAndTheNewValuesStay()
    {
        makeWindow(1);
        showAtLevel(2);
        for (const char* function : {"setBPMorient", "setBPMscale", "setBPMoffset", "setCrossBar",
                                     "ionbarHVenable", "ionbarHVSetVoltage"})
            fail(function);
        box(0, "xGain")->setValue(42.0);
        LogLines log(3);
        pressPanel(0, "enableHVbutton");
        pressPanel(0, "setHVbutton");
        press("Save");
        const QStringList lines = log.lines();
        for (const char* words :
             {"setBPMorient() failed", "setBPMscale() failed", "setBPMoffset() failed",
              "setCrossBar() failed", "ionbarHVenable() failed", "ionbarHVSetVoltage() failed"})
            QCOMPARE(lines.filter(QString::fromLatin1(words)).size(), 1);
        QCOMPARE(bpmScaleX[0], 42.0);
        QCOMPARE(scratch_settings::value("BPM1/Scale_X").toDouble(), 42.0);
        QVERIFY(!scratch_settings::value("BPM1/Left").isNull());
    }
};

QTEST_MAIN(WindowBeamlineConfTest)
#include "WindowBeamlineConfTest.moc"
