// The whole set of windows on an installation at fault: an operator goes through all of it, and the program
// lives on.

#include "app/Globals.h"
#include "app/StartedWindows.h"
#include "double/KoralinkDouble.h"
#include "hardware/MailboxComm.h"
#include "hardware/SettingsPath.h"
#include "logging/Level.h"
#include "stream/Updater.h"
#include "support/DialogLogin.h"
#include "support/LogLines.h"
#include "support/MessageBoxes.h"
#include "support/OddNumbers.h"
#include "support/Operator.h"
#include "support/ScratchSettings.h"
#include "support/World.h"

#include <QAction>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDockWidget>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <climits>
#include <cmath>
#include <memory>

using namespace koralink_double;
using operate::find;

namespace {

/// Status that the tour ends with, unless the program has asked to end before.
constexpr int tourIsOver = 7;

/// A function of the control library and the distinct warnings that it leaves when it fails.
struct Function
{
    const char* name;
    std::vector<const char*> warnings;
};

const std::vector<Function>& functions()
{
    static const std::vector<Function> table = {
        {"setFBenable", {"setFBenable() failed "}},
        {"setCtrlReset", {"setCtrlReset() failed "}},
        {"setPIDconf", {"setPIDconf() failed "}},
        {"getPIDconf", {"getPIDconf() failed "}},
        {"setPIDparams", {"setPIDparams() failed "}},
        {"setOffset", {"setOffset() failed "}},
        {"setWindAvg", {"setWindAvg() failed "}},
        {"setSetpoint",
         {"setSetpoint(Xlf) failed ", "setSetpoint(Xhf) failed ", "setSetpoint(Ylf) failed ",
          "setSetpoint(Yhf) failed "}},
        {"getSetpoint",
         {"getSetpoint(Xlf) failed ", "getSetpoint(Xhf) failed ", "getSetpoint(Ylf) failed ",
          "getSetpoint(Yhf) failed "}},
        {"setPIDoutSel", {"setPIDoutSel() failed "}},
        {"getPIDoutSel", {}},
        {"setBPMselector", {"setBPMselector() failed "}},
        {"getBPMselector", {"getBPMselector() failed "}},
        {"setOutputMux", {"setOutputMux( 0 ) failed ", "setOutputMux( 1 ) failed "}},
        {"getOutputMux", {"getOutputMux() failed "}},
        {"setBPMorient", {"setBPMorient() failed "}},
        {"setBPMscale", {"setBPMscale() failed "}},
        {"setBPMoffset", {"setBPMoffset() failed "}},
        {"setCrossBar", {"setCrossBar() failed "}},
        {"setROCenable", {"setROCenable() failed "}},
        {"getROCenable", {"getROCenable() failed "}},
        {"setROClimits", {"setROClimits() failed "}},
        {"ionbarHVenable", {"ionbarHVenable() failed "}},
        {"ionbarHVSetVoltage", {"ionbarHVSetVoltage() failed "}},
        {"ionbarSetRange", {"ionbarSetRange() failed "}},
        {"setDisplayFreq", {"setDisplayFreq() failed "}},
        {"getDisplayFreq", {"getDisplayFreq() failed "}},
        {"getBuffer", {}},
        {"setFiltControl", {}},
        {"setFiltCoef", {}},
        {"commitFiltCoef", {}},
        {"funcGenConfig", {}},
        {"funcGenEnable", {}},
        {"getPIDstatus", {}},
        {"getBPMStats", {}},
        {"getSFPinfo",
         {"getSFPinfo( 0 ) failed ", "getSFPinfo( 1 ) failed ", "getSFPinfo( 2 ) failed ", "getSFPinfo( 3 ) failed "}},
        {"getSystemVersion", {"getSystemVersion() failed "}},
        {"getLock", {}},
    };
    return table;
}

/// Every key of the settings file with its text, one a line.
using Settings = QStringList;

Settings allSettings()
{
    const QSettings file(settingsPath(), QSettings::IniFormat);
    Settings all;
    for (const QString& key : file.allKeys())
        all.append(key + QLatin1Char('=') + file.value(key).toString());
    return all;
}

QStringList sorted(QStringList texts)
{
    texts.removeDuplicates();
    texts.sort();
    return texts;
}

} // namespace

class InstallationFaultsTest : public QObject
{
    Q_OBJECT

public slots:
    void walk()
    {
        window = startWindows();
        live();
        logIn();
        configureFeedback();
        configureBeamline();
        measure();
        live();
        // In a turn of its own, which does not come when the program has asked to end.
        endOfTour.start(0);
    }
    void end() { QCoreApplication::exit(tourIsOver); }

private:
    std::unique_ptr<World> world;
    std::unique_ptr<MainWindow> window;
    QTimer endOfTour;
    Settings settingsAfterGoodTour;

    QWidget* widgetOf(const char* className)
    {
        for (QWidget* widget : window->findChildren<QWidget*>()) {
            if (QLatin1String(widget->metaObject()->className()) == QLatin1String(className))
                return widget;
        }
        qFatal("no %s", className);
    }
    void pressIn(const char* className, const char* button)
    {
        operate::press(find<QPushButton>(widgetOf(className), button));
    }
    void pressInBox(const char* className, const char* text)
    {
        operate::press(find<QDialogButtonBox>(widgetOf(className), "buttonBox"), QLatin1String(text));
    }
    void enter(const char* className, const char* field, const char* text)
    {
        find<QLineEdit>(widgetOf(className), field)->setText(QLatin1String(text));
    }
    void trigger(const char* action) { find<QAction>(window.get(), action)->trigger(); }

    /// One second of everything, and each graph in sight once.
    void live()
    {
        mailbox->refreshData();
        updater->updateGraphs();
        operate::fireTimers(window.get());
        for (QDockWidget* dock : window->findChildren<QDockWidget*>()) {
            dock->raise();
            QCoreApplication::processEvents();
        }
    }

    void logIn()
    {
        trigger("action_Login");
        enter("DialogLogin", "usernameLineEdit", "admin");
        enter("DialogLogin", "passwordLineEdit", "admin");
        pressIn("DialogLogin", "logIn");
    }

    void configureFeedback()
    {
        for (const char* button : {"buttonUpdate", "updateConfButton", "resetPIDbutton", "buttonFdbk", "buttonFdbk"})
            pressIn("WidgetFeedbackControl", button);
        pressIn("WidgetPidCtrl", "pushButtonUpdate");
        trigger("action_PID_Parameters");

        trigger("actionPosition_Filter_Settings");
        auto* type = find<QComboBox>(widgetOf("WindowFiltparams"), "comboBoxFilterXlf");
        type->setCurrentIndex(1);
        type->setCurrentIndex(0);
        find<QDoubleSpinBox>(widgetOf("WindowFiltparams"), "doubleSpinBoxXlfLow")->setValue(120);
        pressInBox("WindowFiltparams", "OK");

        trigger("action_ROC_ROI");
        pressInBox("WindowROC_ROI", "OK");
    }

    void configureBeamline()
    {
        trigger("action_Beamline_Settings");
        pressIn("BPM", "enableHVbutton");
        pressIn("BPM", "setHVbutton");
        pressInBox("WindowBeamlineConf", "Save");
        trigger("actionPico_Amp");
        pressIn("WidgetPico", "saveButton");
        trigger("actionSFP_info");
        trigger("action_Display_Settings");
        pressInBox("WindowDisplaySettings", "OK");
    }

    void measure()
    {
        trigger("actionManual_Output_Control");
        auto* byHand = find<QCheckBox>(widgetOf("WindowManOutCtrl"), "checboxEnableMan");
        byHand->setChecked(true);
        byHand->setChecked(false);

        trigger("actionFrequency_Analysis");
        enter("WindowFrequencyAnalysis", "lengthLineEdit", "2");
        pressIn("WindowFrequencyAnalysis", "StartSweepPushButton");

        unsigned char enabled[6];
        mailbox->getROCenable(enabled, enabled + 1, enabled + 2, enabled + 3, enabled + 4, enabled + 5);
    }

    /// Goes through the program from its start, inside an event loop. @return what the loop ended with
    int tour()
    {
        QTimer::singleShot(0, this, SLOT(walk()));
        const int status = QCoreApplication::exec();
        endOfTour.stop();
        return status;
    }

    static void useTrainingSettings() { QVERIFY(QFile::copy(QStringLiteral(KORA_TRAINING_SETTINGS), settingsPath())); }

    QStringList warnings(LogLines& log)
    {
        return sorted(log.lines().filter(QRegularExpression(QStringLiteral("^[3-5] "))));
    }

    void verifyThatTheNextSecondIsGood()
    {
        SAMP_FREQ = 1000;
        dispBufferBytes = 0x380000;
        answers().fillBlock = [](DisplayRecord* block, int count) {
            for (int record = 0; record < count; ++record)
                block[record].dac[1] = record;
        };
        live();
        QCOMPARE(updater->dataDAC[1]->size(), 14336);
        QCOMPARE(updater->dataDAC[1]->at(1000)->key, 1.0);
        QCOMPARE(updater->dataDAC[1]->at(1000)->value, 1000.0);
    }

private slots:
    void initTestCase()
    {
        connect(&endOfTour, SIGNAL(timeout()), this, SLOT(end()));
        init();
        useTrainingSettings();
        const Settings settingsBefore = allSettings();
        QCOMPARE(tour(), tourIsOver);
        settingsAfterGoodTour = allSettings();
        QVERIFY(settingsAfterGoodTour != settingsBefore);
        cleanup();
    }
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
        for (SFPinfo& port : answers().sfp)
            port.deviceId = 0x2101;
    }
    void cleanup()
    {
        window.reset();
        loginDialog = nullptr;
        world.reset();
    }

    void theTourMeetsEveryFunctionOnceAtLeastAndWarnsOfNothing()
    {
        MessageBoxes boxes;
        LogLines log(QsLogging::InfoLevel);
        QCOMPARE(tour(), tourIsOver);
        QCOMPARE(int(functions().size()), 38);
        for (const Function& function : functions())
            QVERIFY2(!callsOf(function.name).empty(), function.name);
        QCOMPARE(warnings(log), QStringList());
        QCOMPARE(boxes.count(), 0);
    }

    void eachFunctionMayFail_data()
    {
        QTest::addColumn<int>("row");
        for (std::size_t row = 0; row < functions().size(); ++row)
            QTest::newRow(functions()[row].name) << int(row);
    }
    void eachFunctionMayFail()
    {
        QFETCH(int, row);
        const Function& function = functions()[std::size_t(row)];
        const QLatin1String name(function.name);
        fail(function.name);
        // These two return data, so that a failure has no mark but the same number.
        answers().lock = [failing = name == QLatin1String("getLock")](const std::string&, const std::string&) {
            return failing ? -1 : 2;
        };
        if (name == QLatin1String("getPIDstatus"))
            answers().pidStatus = PID_Status_Type(-1);
        useTrainingSettings();
        const Settings settingsBefore = allSettings();

        MessageBoxes boxes;
        LogLines log(QsLogging::InfoLevel);
        // Only a stream that fails ends the program.
        QCOMPARE(tour(), name == QLatin1String("getBuffer") ? 0 : tourIsOver);
        QVERIFY(!callsOf(function.name).empty());
        QStringList expected;
        for (const char* warning : function.warnings)
            expected.append(QStringLiteral("3 ") + QLatin1String(warning));
        QCOMPARE(warnings(log), sorted(expected));
        // Settings are written whatever the hardware answers; without an answer to the password nobody may write any.
        QCOMPARE(allSettings(), name == QLatin1String("getLock") ? settingsBefore : settingsAfterGoodTour);

        fail(function.name, 0);
        verifyThatTheNextSecondIsGood();
    }

    void allFunctionsButTheStreamMayFailAtOnce()
    {
        for (const Function& function : functions()) {
            if (QLatin1String(function.name) != QLatin1String("getBuffer"))
                fail(function.name);
        }
        useTrainingSettings();
        MessageBoxes boxes;
        QCOMPARE(tour(), tourIsOver);
        QCOMPARE(allSettings(), settingsAfterGoodTour);
        verifyThatTheNextSecondIsGood();
    }

    void anyDisplayRateIsSurvived_data()
    {
        QTest::addColumn<int>("rate");
        for (int rate : {0, -1, 1, 50000, INT_MAX, INT_MIN})
            QTest::newRow(qPrintable(QString::number(rate))) << rate;
    }
    void anyDisplayRateIsSurvived()
    {
        QFETCH(int, rate);
        answers().displayFreq = rate;
        MessageBoxes boxes;
        QCOMPARE(tour(), tourIsOver);
        SAMP_FREQ = rate;
        live();
        for (const QCustomPlot* plot : window->findChildren<QCustomPlot*>()) {
            for (const QCPAxis* axis : {plot->xAxis, plot->yAxis})
                QVERIFY(std::isfinite(axis->range().lower) && std::isfinite(axis->range().upper));
        }
        verifyThatTheNextSecondIsGood();
    }

    void anyNumbersInTheStreamAreSurvived_data() { addOddNumbers(); }
    void anyNumbersInTheStreamAreSurvived()
    {
        QFETCH(double, number);
        answers().fillBlock = [number](DisplayRecord* block, int count) {
            auto* values = reinterpret_cast<double*>(block);
            for (int i = 0; i < count * slotsPerRecord; ++i)
                values[i] = i % 3 ? number : 1.0;
        };
        for (int channel = 0; channel < 4; ++channel) {
            answers().amplifierStatus[0].setField(28 + 8 * std::size_t(channel), number);
            answers().stats.bpm[0].posXMean = number;
        }
        MessageBoxes boxes;
        QCOMPARE(tour(), tourIsOver);
        for (const QCustomPlot* plot : window->findChildren<QCustomPlot*>()) {
            for (const QCPAxis* axis : {plot->xAxis, plot->yAxis})
                QVERIFY(std::isfinite(axis->range().lower) && std::isfinite(axis->range().upper));
        }
        verifyThatTheNextSecondIsGood();
    }

    void aSettingsFileAtFaultIsSurvived_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char* kind : {"missing", "directory", "below a file", "binary garbage", "texts for numbers"})
            QTest::newRow(kind) << QString::fromLatin1(kind);
    }
    void aSettingsFileAtFaultIsSurvived()
    {
        QFETCH(QString, kind);
        const QTemporaryDir folder;
        if (kind == QLatin1String("directory"))
            scratch_settings::setPath(folder.path());
        if (kind == QLatin1String("below a file"))
            scratch_settings::setPath(QStringLiteral("/dev/null/config_koralink.ini"));
        if (kind == QLatin1String("binary garbage")) {
            QFile file(settingsPath());
            QVERIFY(file.open(QIODevice::WriteOnly));
            for (int i = 0; i < 65536; ++i)
                file.putChar(char(i * 7919 + (i >> 3)));
        }
        if (kind == QLatin1String("texts for numbers")) {
            for (const char* key : {"BPM1/Scale_X", "BPM1/Top", "BPM2/Orient", "ROCandROI/RoiX", "ROCandROI/BeamOffTh",
                                    "PID_Xlf/Freq", "PID_Yhf/Omax", "Beamline/DAC_posXlf", "PositionFilters/XlfFilter"})
                scratch_settings::setValue(key, QStringLiteral("nan of your business"));
        }
        MessageBoxes boxes;
        LogLines log(QsLogging::InfoLevel);
        QCOMPARE(tour(), tourIsOver);
        QCOMPARE(warnings(log), QStringList());
        verifyThatTheNextSecondIsGood();
    }
};

QTEST_MAIN(InstallationFaultsTest)
#include "InstallationFaultsTest.moc"
