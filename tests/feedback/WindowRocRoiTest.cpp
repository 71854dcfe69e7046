#include "app/Globals.h"
#include "double/KoralinkDouble.h"
#include "feedback/WindowROC_ROI.h"
#include "graphs/WidgetGraphXY.h"
#include "support/LogLines.h"
#include "support/Operator.h"
#include "support/ScratchSettings.h"
#include "support/World.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QPushButton>
#include <QtTest>

#include <cmath>
#include <memory>

using namespace koralink_double;
using operate::find;

class WindowRocRoiTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<World> world;
    std::unique_ptr<WidgetGraphXY> graphs[2];
    std::unique_ptr<WindowROC_ROI> window;

    void makeWindow()
    {
        window = std::make_unique<WindowROC_ROI>(nullptr);
        window->setUpdater(updater);
        window->setBeamlineWindow(nullptr);
        for (int bpm = 0; bpm < 2; ++bpm)
            window->setGraph(graphs[bpm].get(), bpm);
        clearCalls();
    }
    void showAtLevel(int level)
    {
        userLevel = level;
        window->showWindow();
    }
    void announce(int mask) { QMetaObject::invokeMethod(window.get(), "nrIonbarChanged", Q_ARG(int, mask)); }
    void announceLevel(int level)
    {
        userLevel = level;
        QMetaObject::invokeMethod(window.get(), "checkUserLevel");
    }
    QWidget* panel(int bpm) { return find<QWidget>(window.get(), bpm == 0 ? "rocWidget0" : "rocWidget1"); }
    QDoubleSpinBox* box(int bpm, const char* name) { return find<QDoubleSpinBox>(panel(bpm), name); }
    QCheckBox* check(int bpm, const char* name) { return find<QCheckBox>(panel(bpm), name); }
    void setLimits(int bpm, double x, double y, double percent)
    {
        box(bpm, "roiXDoubleSpinBox")->setValue(x);
        box(bpm, "roiYDoubleSpinBox")->setValue(y);
        box(bpm, "rocFactorBox")->setValue(percent);
    }
    void press(const char* text)
    {
        operate::press(find<QDialogButtonBox>(window.get(), "buttonBox"), QString::fromLatin1(text));
    }
    static QVector<double> halfWidths(const WidgetGraphXY* graph)
    {
        QVector<double> widths;
        for (const auto* rectangle : graph->findChildren<QCPItemRect*>())
            widths << std::fabs(rectangle->topLeft->coords().x()) << std::fabs(rectangle->topLeft->coords().y());
        std::sort(widths.begin(), widths.end());
        return widths;
    }

private slots:
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
        for (int bpm = 0; bpm < 2; ++bpm)
            graphs[bpm] = std::make_unique<WidgetGraphXY>(bpm, nullptr);
        makeWindow();
    }
    void cleanup()
    {
        QLocale::setDefault(QLocale::c());
        window.reset();
        for (auto& graph : graphs)
            graph.reset();
        world.reset();
    }

    void formHasTheFieldsOfBothMonitors()
    {
        QCOMPARE(window->windowTitle(), QStringLiteral("ROC/ROI Settings"));
        auto* hint = find<QLabel>(window.get(), "label");
        QVERIFY(hint->wordWrap());
        QCOMPARE(hint->text(), QStringLiteral("This values use parameters X and Y Scaling from Beamline Settings "
                                              "window. Make sure they are correct."));
        QCOMPARE(find<QLabel>(panel(0), "bpmLabel")->text(), QStringLiteral("BPM 1"));
        QCOMPARE(find<QLabel>(panel(1), "bpmLabel")->text(), QStringLiteral("BPM 2"));
        for (int bpm = 0; bpm < 2; ++bpm) {
            for (const char* name : {"roiXDoubleSpinBox", "roiYDoubleSpinBox"}) {
                QCOMPARE(box(bpm, name)->suffix(), QStringLiteral(" µm"));
                QCOMPARE(box(bpm, name)->decimals(), 2);
                QCOMPARE(box(bpm, name)->minimum(), 0.0);
                QCOMPARE(box(bpm, name)->maximum(), 1000.0);
                QCOMPARE(box(bpm, name)->singleStep(), 0.1);
            }
            QCOMPARE(box(bpm, "roiXDoubleSpinBox")->value(), 0.0);
            QCOMPARE(box(bpm, "roiYDoubleSpinBox")->value(), 1.0);
            QCOMPARE(box(bpm, "rocFactorBox")->decimals(), 0);
            QCOMPARE(box(bpm, "rocFactorBox")->minimum(), 100.0);
            QCOMPARE(box(bpm, "rocFactorBox")->maximum(), 1000.0);
            QCOMPARE(box(bpm, "rocFactorBox")->value(), 110.0);
            QCOMPARE(box(bpm, "beamOffTh")->suffix(), QStringLiteral(" uA"));
            QCOMPARE(box(bpm, "beamOffTh")->decimals(), 3);
            QCOMPARE(box(bpm, "beamOffTh")->maximum(), 10000000.0);
            QCOMPARE(check(bpm, "enableROCXCheckBox")->text(), QStringLiteral("Enable ROC X check"));
            QCOMPARE(check(bpm, "enableROCYCheckBox")->text(), QStringLiteral("Enable ROC Y check"));
            QCOMPARE(check(bpm, "enableBeamOffCheckBox")->text(), QStringLiteral("Enable Beam Off check"));
        }
    }

    void constructionSendsTheStoredEnablesAndNothingElse()
    {
        scratch_settings::setValue("ROCandROI/RocXenable", true);
        scratch_settings::setValue("ROCandROI/BeamOffEnable", true);
        scratch_settings::setValue("ROCandROI2/RocYenable", true);
        scratch_settings::setValue("ROCandROI2/BeamOffTh", 2.5);
        clearCalls();
        WindowROC_ROI fresh(nullptr);
        QCOMPARE(operate::lines(commands()), QStringList{QStringLiteral("setROCenable(1, 0, 1, 0, 1, 0)")});
        auto* first = find<QWidget>(&fresh, "rocWidget0");
        auto* second = find<QWidget>(&fresh, "rocWidget1");
        QVERIFY(find<QCheckBox>(first, "enableROCXCheckBox")->isChecked());
        QVERIFY(!find<QCheckBox>(first, "enableROCYCheckBox")->isChecked());
        QVERIFY(find<QCheckBox>(first, "enableBeamOffCheckBox")->isChecked());
        QVERIFY(find<QCheckBox>(second, "enableROCYCheckBox")->isChecked());
        QVERIFY(!find<QCheckBox>(second, "enableBeamOffCheckBox")->isChecked());
        QCOMPARE(find<QDoubleSpinBox>(second, "beamOffTh")->value(), 2.5);
        // The default of a missing threshold is smaller than the field can show.
        QCOMPARE(find<QDoubleSpinBox>(first, "beamOffTh")->text(), QStringLiteral("0.000 uA"));
    }

    void showReloadsTheRegionsButNeitherChecksNorThreshold()
    {
        scratch_settings::setValue("ROCandROI/RoiX", 12.5);
        scratch_settings::setValue("ROCandROI/RoiY", 25.0);
        scratch_settings::setValue("ROCandROI/Roc", 150);
        scratch_settings::setValue("ROCandROI2/RoiX", 3.0);
        showAtLevel(2);
        QCOMPARE(box(0, "roiXDoubleSpinBox")->value(), 12.5);
        QCOMPARE(box(0, "roiYDoubleSpinBox")->value(), 25.0);
        QCOMPARE(box(0, "rocFactorBox")->value(), 150.0);
        QCOMPARE(box(1, "roiXDoubleSpinBox")->value(), 3.0);
        QCOMPARE(box(1, "roiYDoubleSpinBox")->value(), 0.0);
        QCOMPARE(box(1, "rocFactorBox")->value(), 100.0);

        setLimits(0, 99.0, 98.0, 500);
        box(0, "beamOffTh")->setValue(7.0);
        check(0, "enableROCXCheckBox")->setChecked(true);
        press("Cancel");
        QVERIFY(!window->isVisible());
        QVERIFY(commands().empty());
        QCOMPARE(box(0, "roiXDoubleSpinBox")->value(), 99.0);
        window->showWindow();
        QCOMPARE(box(0, "roiXDoubleSpinBox")->value(), 12.5);
        QCOMPARE(box(0, "rocFactorBox")->value(), 150.0);
        QCOMPARE(box(0, "beamOffTh")->value(), 7.0);
        QVERIFY(check(0, "enableROCXCheckBox")->isChecked());
    }

    void levelRulesHoldAtShowAndOnTheSignal()
    {
        const auto enabled = [this](bool expected) {
            for (int bpm = 0; bpm < 2; ++bpm) {
                for (const char* name : {"roiXDoubleSpinBox", "roiYDoubleSpinBox", "rocFactorBox"})
                    QCOMPARE(box(bpm, name)->isEnabled(), expected);
                for (const char* name : {"enableROCXCheckBox", "enableROCYCheckBox", "enableBeamOffCheckBox"})
                    QCOMPARE(check(bpm, name)->isEnabled(), expected);
                QVERIFY(box(bpm, "beamOffTh")->isEnabled());
            }
        };
        showAtLevel(0);
        enabled(false);
        announceLevel(2);
        enabled(true);
        announceLevel(3);
        enabled(true);
        announceLevel(1);
        enabled(false);
        announceLevel(3);
        enabled(false);
        showAtLevel(2);
        enabled(true);
    }

    void maskOfOneHidesTheSecondMonitor()
    {
        showAtLevel(2);
        QVERIFY(panel(1)->isVisible());
        announce(1);
        QVERIFY(!panel(1)->isVisible());
        for (int mask : {3, 2, 0}) {
            announce(mask);
            QVERIFY(panel(1)->isVisible());
            QVERIFY(panel(0)->isVisible());
            announce(1);
        }
    }

    void limitsAreSentAsRawPositionsInOrder()
    {
        bpmScaleX[0] = 2.0;
        bpmScaleY[0] = 4.0;
        showAtLevel(2);
        setLimits(0, 100.0, 50.0, 110);
        box(0, "beamOffTh")->setValue(10.0);
        check(0, "enableROCYCheckBox")->setChecked(true);
        check(1, "enableBeamOffCheckBox")->setChecked(true);
        press("Apply");
        QVERIFY(window->isVisible());
        const QStringList expected = {
            QStringLiteral("setROClimits(0, 0, 55)"), QStringLiteral("setROClimits(1, 0, 13.75)"),
            QStringLiteral("setROClimits(2, 0, 1e-05)"), QStringLiteral("setROCenable(0, 1, 0, 0, 0, 1)")};
        QCOMPARE(operate::lines(commands()), expected);
        QCOMPARE(scratch_settings::value("ROCandROI/RoiX").toDouble(), 100.0);
        QCOMPARE(scratch_settings::value("ROCandROI/RoiY").toDouble(), 50.0);
        QCOMPARE(scratch_settings::value("ROCandROI/RoiI0min").toDouble(), 0.0);
        QCOMPARE(scratch_settings::value("ROCandROI/RoiI0max").toDouble(), 1e12);
        QCOMPARE(scratch_settings::value("ROCandROI/Roc").toDouble(), 110.0);
        QCOMPARE(scratch_settings::value("ROCandROI/BeamOffTh").toDouble(), 10.0);
        QCOMPARE(scratch_settings::value("ROCandROI/RocYenable").toBool(), true);
        QCOMPARE(scratch_settings::value("ROCandROI/RocXenable").toBool(), false);
        QCOMPARE(scratch_settings::value("ROCandROI2/BeamOffEnable").toBool(), true);
        QVERIFY(scratch_settings::value("ROCandROI2/RoiX").isNull());
    }

    void limitsMoveTheRectanglesOfTheGraph()
    {
        announce(2);
        showAtLevel(2);
        setLimits(0, 100.0, 50.0, 150);
        setLimits(1, 10.0, 20.0, 200);
        press("OK");
        QVERIFY(!window->isVisible());
        QCOMPARE(halfWidths(graphs[0].get()), QVector<double>({50.0, 75.0, 100.0, 150.0}));
        QCOMPARE(halfWidths(graphs[1].get()), QVector<double>({10.0, 20.0, 20.0, 40.0}));
    }

    void limitsOfTheSecondMonitorAreSentOnlyWithAMaskOfTwo()
    {
        showAtLevel(2);
        for (int mask : {0, 1, 3}) {
            announce(mask);
            clearCalls();
            press("Apply");
            QCOMPARE(callsOf("setROClimits").size(), std::size_t(3));
            QCOMPARE(callsOf("setROCenable").size(), std::size_t(1));
            QVERIFY(scratch_settings::value("ROCandROI2/RoiX").isNull());
            QVERIFY(!scratch_settings::value("ROCandROI2/RocXenable").isNull());
        }
        announce(2);
        bpmScaleX[1] = 0.5;
        setLimits(1, 30.0, 40.0, 100);
        box(1, "beamOffTh")->setValue(1.5);
        clearCalls();
        press("Apply");
        const QStringList sent = operate::lines(callsOf("setROClimits"));
        QCOMPARE(sent.mid(3),
                 QStringList({QStringLiteral("setROClimits(3, 0, 60)"), QStringLiteral("setROClimits(4, 0, 40)"),
                              QStringLiteral("setROClimits(5, 0, 1.5e-06)")}));
        QCOMPARE(scratch_settings::value("ROCandROI2/RoiY").toDouble(), 40.0);
        QCOMPARE(scratch_settings::value("ROCandROI2/BeamOffTh").toDouble(), 1.5);
    }

    void thresholdIsReadRightInEveryLocale_data()
    {
        QTest::addColumn<QLocale>("locale");
        QTest::addColumn<QString>("shown");
        QTest::newRow("C") << QLocale::c() << QStringLiteral("1234567.125 uA");
        QTest::newRow("German") << QLocale(QLocale::German, QLocale::Germany) << QStringLiteral("1234567,125 uA");
        QTest::newRow("Slovenian") << QLocale(QLocale::Slovenian, QLocale::Slovenia)
                                   << QStringLiteral("1234567,125 uA");
    }
    void thresholdIsReadRightInEveryLocale()
    {
        QFETCH(QLocale, locale);
        QFETCH(QString, shown);
        QLocale::setDefault(locale);
        makeWindow();
        showAtLevel(2);
        box(0, "beamOffTh")->setValue(1234567.125);
        QCOMPARE(box(0, "beamOffTh")->text(), shown);
        press("Apply");
        QCOMPARE(scratch_settings::value("ROCandROI/BeamOffTh").toDouble(), 1234567.125);
        QCOMPARE(callsOf("setROClimits").at(2), std::string("setROClimits(2, 0, 1.234567125)"));
        box(0, "beamOffTh")->setValue(10.0);
        clearCalls();
        press("Apply");
        QCOMPARE(scratch_settings::value("ROCandROI/BeamOffTh").toDouble(), 10.0);
        QCOMPARE(callsOf("setROClimits").at(2), std::string("setROClimits(2, 0, 1e-05)"));
    }

    void scaleOfZeroSendsAnInfiniteLimit()
    {
        bpmScaleX[0] = 0.0;
        showAtLevel(2);
        setLimits(0, 100.0, 50.0, 110);
        press("Apply");
        for (const Call& call : calls()) {
            if (call.name == "setROClimits" && call.arguments[0] == 0)
                QCOMPARE(call.arguments[2], std::numeric_limits<double>::infinity());
        }
        QCOMPARE(callsOf("setROClimits").size(), std::size_t(3));
    }

    void limitsAreSentBeforeTheFirstShowToo()
    {
        userLevel = 2;
        WindowROC_ROI fresh(nullptr);
        find<QDoubleSpinBox>(find<QWidget>(&fresh, "rocWidget0"), "roiXDoubleSpinBox")->setValue(10.0);
        clearCalls();
        operate::press(find<QDialogButtonBox>(&fresh, "buttonBox"), QStringLiteral("Apply"));
        QCOMPARE(callsOf("setROClimits").at(0), std::string("setROClimits(0, 0, 11)"));
        QCOMPARE(scratch_settings::value("ROCandROI/RoiX").toDouble(), 10.0);
    }

    void pressBelowLevelTwoClosesWithoutSendingOrSaving()
    {
        for (int level : {0, 1, 3}) {
            showAtLevel(2);
            userLevel = level;
            press("Apply");
            QVERIFY(window->isVisible());
            press("OK");
            QVERIFY(!window->isVisible());
            QVERIFY(commands().empty());
            QVERIFY(scratch_settings::value("ROCandROI/RoiX").isNull());
            QVERIFY(scratch_settings::value("ROCandROI/RocXenable").isNull());
        }
    }

    void buttonsAreToldApartByTheirText()
    {
        showAtLevel(2);
        QPushButton* const button = find<QDialogButtonBox>(window.get(), "buttonBox")->button(QDialogButtonBox::Apply);
        button->setText(QStringLiteral("Uporabi"));
        operate::press(button);
        QVERIFY(commands().empty());
        button->setText(QStringLiteral("&Apply"));
        operate::press(button);
        QCOMPARE(commands().size(), std::size_t(4));
    }

    void failuresAreLoggedAndDoNotStopTheRest()
    {
        fail("setROClimits");
        fail("setROCenable");
        showAtLevel(2);
        LogLines log(3);
        press("Apply");
        QCOMPARE(commands().size(), std::size_t(4));
        QCOMPARE(log.lines().filter(QStringLiteral("setROClimits() failed")).size(), 3);
        QCOMPARE(log.lines().filter(QStringLiteral("setROCenable() failed")).size(), 1);
        QVERIFY(!scratch_settings::value("ROCandROI/RoiX").isNull());
        QVERIFY(!scratch_settings::value("ROCandROI/BeamOffTh").isNull());
        QVERIFY(!scratch_settings::value("ROCandROI/RocXenable").isNull());
    }
};

QTEST_MAIN(WindowRocRoiTest)
#include "WindowRocRoiTest.moc"
