#include "BeamlineWindow.h"

#include "stream/Updater.h"
#include "support/Contrast.h"

#include <QTimer>

using namespace koralink_double;
using operate::find;

namespace {

AmplifierStatus highVoltage(std::uint32_t word, float volts, float microamps)
{
    AmplifierStatus status = {};
    status.setField(12, microamps);
    status.setField(16, volts);
    status.setField(20, word);
    return status;
}

} // namespace

/// What the panels of the monitors show and compute: offsets, high voltage, encoder.
class BeamlineReadoutsTest : public BeamlineWindow
{
    Q_OBJECT

private slots:
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
        const QStringList expected = {QStringLiteral("ionbarHVenable(1, 0)"), QStringLiteral("ionbarHVenable(1, 1)"),
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

    void eachAxisOfTheEncoderGoesByItsOwnScale()
    {
        scratch_settings::setValue("BPM2/Scale_X", 4000.0);
        scratch_settings::setValue("BPM2/Offset_X", 3000.0);
        scratch_settings::setValue("BPM2/Scale_Y", 2000.0);
        scratch_settings::setValue("BPM2/Offset_Y", 1600.0);
        showAtLevel(2);
        QVERIFY(std::fabs(box(1, "horNradCountDoubleSpinBox")->value() - 4000 / 2147483.648) < 1e-9);
        QVERIFY(std::fabs(box(1, "vertNradCountDoubleSpinBox")->value() - 2000 / 2147483.648) < 1e-9);
        // An eighth and a tenth of the full range.
        QCOMPARE(counts(1, "horOffsetCountsSpinBox")->value(), 536870912);
        QCOMPARE(counts(1, "vertOffsetCountsSpinBox")->value(), 429496729);
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
        // Neither offset nor scale: NaN.
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

    void readoutsThatAreNoLongerReadAreGrey()
    {
        showAtLevel(0);
        updater->ionbarStatus[0] = highVoltage(1, 10.0f, 1.0f);
        operate::fireTimers(window.get());
        QWidget* const shown[] = {find<QLineEdit>(panel(0), "voltageReadoutLineEdit"),
                                  find<QLineEdit>(panel(0), "currentReadoutLineEdit")};
        auto* state = find<QLabel>(panel(0), "statusLabel");
        for (QWidget* field : shown)
            QVERIFY(contrast::ofPicture(field) > 7);
        const QColor live = state->palette().color(QPalette::Disabled, QPalette::WindowText);
        setDevicePresent(amplifierDevicePath[0], false);
        updater->updateIonBars();
        operate::fireTimers(window.get());
        for (QWidget* field : shown)
            QVERIFY(contrast::ofPicture(field) < 3);
        QVERIFY(state->palette().color(QPalette::Disabled, QPalette::WindowText) != live);
        // Unplugged, though the driver still answers.
        setDevicePresent(amplifierDevicePath[0], true);
        updater->updateIonBars();
        mailbox->nrIonBars = 0;
        operate::fireTimers(window.get());
        for (QWidget* field : shown)
            QVERIFY(contrast::ofPicture(field) < 3);
        mailbox->nrIonBars = 3;
        operate::fireTimers(window.get());
        for (QWidget* field : shown)
            QVERIFY(contrast::ofPicture(field) > 7);
    }
};

QTEST_MAIN(BeamlineReadoutsTest)
#include "BeamlineReadoutsTest.moc"
