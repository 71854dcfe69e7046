#include "BeamlineWindow.h"

#include "support/LogLines.h"

#include <QFormLayout>
#include <QSignalSpy>

using namespace koralink_double;
using operate::find;

/// The form, its levels, and what saving sends and stores.
class WindowBeamlineConfTest : public BeamlineWindow
{
    Q_OBJECT

private:
    void chooseChannels(int bpm, const char* group, std::array<int, 4> indices)
    {
        const char* const places[4] = {"_top", "_right", "_bottom", "_left"};
        for (std::size_t i = 0; i < 4; ++i)
            combo(bpm, QByteArray(group).append(places[i]).constData())->setCurrentIndex(indices[i]);
    }

private slots:
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
            QCOMPARE(find<QLabel>(panel(bpm), "textInvalidConf")->text(), QStringLiteral("Invalid BPM configuration"));
            for (const char* name : {"BPM90_image", "BPM45_image"})
                QVERIFY(QFile::exists(find<SvgPicture>(panel(bpm), name)->file()));
        }
    }

    void labelOfTheVerticalCountsRepeatsTheWordHor()
    {
        QWidget* const field = counts(0, "vertOffsetCountsSpinBox");
        auto* layout = qobject_cast<QFormLayout*>(field->parentWidget()->layout());
        QVERIFY(layout);
        QCOMPARE(qobject_cast<QLabel*>(layout->labelForField(field))->text(), QStringLiteral("Hor offset [counts]"));
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
        QPushButton* const save = find<QDialogButtonBox>(window.get(), "buttonBox")->button(QDialogButtonBox::Save);
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
        const QStringList expected = {QStringLiteral("setBPMorient(0, 1)"), QStringLiteral("setBPMscale(0, 100, 101)"),
                                      QStringLiteral("setBPMoffset(0, 5, 6)"),
                                      QStringLiteral("setCrossBar(0, 0, 1, 2, 3)")};
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

    void failuresAreLoggedAndTheNewValuesStay()
    {
        makeWindow(1);
        showAtLevel(2);
        for (const char* function :
             {"setBPMorient", "setBPMscale", "setBPMoffset", "setCrossBar", "ionbarHVenable", "ionbarHVSetVoltage"})
            fail(function);
        box(0, "xGain")->setValue(42.0);
        LogLines log(3);
        pressPanel(0, "enableHVbutton");
        pressPanel(0, "setHVbutton");
        press("Save");
        const QStringList lines = log.lines();
        for (const char* words : {"setBPMorient() failed", "setBPMscale() failed", "setBPMoffset() failed",
                                  "setCrossBar() failed", "ionbarHVenable() failed", "ionbarHVSetVoltage() failed"})
            QCOMPARE(lines.filter(QString::fromLatin1(words)).size(), 1);
        QCOMPARE(bpmScaleX[0], 42.0);
        QCOMPARE(scratch_settings::value("BPM1/Scale_X").toDouble(), 42.0);
        QVERIFY(!scratch_settings::value("BPM1/Left").isNull());
    }
};

QTEST_MAIN(WindowBeamlineConfTest)
#include "WindowBeamlineConfTest.moc"
