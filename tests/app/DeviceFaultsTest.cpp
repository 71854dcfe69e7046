// Device files that are missing, vanish and appear, short blocks, settings and resources at fault, against the whole
// set of windows: an operator works through all of them, the program lives on, and no setting is lost.

#include "app/Globals.h"
#include "app/SimulatedSession.h"
#include "hardware/SettingsPath.h"
#include "logging/Level.h"
#include "stream/DeviceRecords.h"
#include "stream/DisplayRecord.h"
#include "stream/Updater.h"
#include "support/DrivenPause.h"
#include "support/FileDialogs.h"
#include "support/FullDisk.h"
#include "support/LogLines.h"
#include "support/MessageBoxes.h"
#include "support/Operator.h"

#include <QAction>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QSpinBox>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <qcustomplot.h>

#include <memory>

using operate::find;
using operate::press;

/// Takes pictures, style and device table away from the program, as if they could not be read.
static void dropResources()
{
    Q_CLEANUP_RESOURCE(images);
    Q_CLEANUP_RESOURCE(product_data);
    Q_CLEANUP_RESOURCE(QsLogWindow);
    Q_CLEANUP_RESOURCE(qss);
    Q_CLEANUP_RESOURCE(resources);
}

static void bringResourcesBack()
{
    Q_INIT_RESOURCE(images);
    Q_INIT_RESOURCE(product_data);
    Q_INIT_RESOURCE(QsLogWindow);
    Q_INIT_RESOURCE(qss);
    Q_INIT_RESOURCE(resources);
}

namespace {

/// Status that a day's work ends with, unless the program has asked to end before.
constexpr int workIsDone = 7;

constexpr const char* devicePaths[] = {streamDevicePath, amplifierDevicePath[0], amplifierDevicePath[1],
                                       outputDevicePath};

const QString cannotOpen = QStringLiteral("System file /dev/kora_dma_displ could not be opened.\n\n"
                                          "Please check if KORA driver is loaded.\n"
                                          "Application will now quit.\n");

QByteArray settingsBytes()
{
    QFile file(settingsPath());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void addDevices()
{
    QTest::addColumn<QString>("path");
    for (const char* path : devicePaths)
        QTest::newRow(path) << QString::fromLatin1(path);
}

} // namespace

class DeviceFaultsTest : public QObject
{
    Q_OBJECT

public slots:
    /// Everything that touches a device file.
    void workWithAllDevices()
    {
        session->tick();
        session->trigger("action_Beamline_Settings");
        session->trigger("actionPico_Amp");
        session->trigger("actionSFP_info");
        driveByHand();
        scan();
        save();
        for (const char* tool : {"actionFrequency_Analysis", "actionStep_Response"})
            session->trigger(tool);
        press(find<QDialogButtonBox>(session->widgetOf("WindowStepResponse"), "buttonBox"), QStringLiteral("Run"));
        find<QLineEdit>(session->widgetOf("WindowFrequencyAnalysis"), "lengthLineEdit")->setText(QStringLiteral("4"));
        press(find<QPushButton>(session->widgetOf("WindowFrequencyAnalysis"), "StartSweepPushButton"));
        session->tick();
        QTimer::singleShot(0, this, SLOT(endOfWork()));
    }
    void tickOnce()
    {
        session->tick();
        QTimer::singleShot(0, this, SLOT(endOfWork()));
    }
    void saveAllSettings()
    {
        session->logIn(QStringLiteral("admin"), QStringLiteral("admin"));
        session->trigger("action_Beamline_Settings");
        press(find<QDialogButtonBox>(session->widgetOf("WindowBeamlineConf"), "buttonBox"), QStringLiteral("Save"));
        session->trigger("actionPosition_Filter_Settings");
        press(find<QDialogButtonBox>(session->widgetOf("WindowFiltparams"), "buttonBox"), QStringLiteral("OK"));
        session->trigger("action_ROC_ROI");
        press(find<QDialogButtonBox>(session->widgetOf("WindowROC_ROI"), "buttonBox"), QStringLiteral("OK"));
        press(find<QPushButton>(session->widgetOf("WidgetPidCtrl"), "pushButtonUpdate"));
        press(find<QPushButton>(session->widgetOf("WidgetFeedbackControl"), "updateConfButton"));
        QTimer::singleShot(0, this, SLOT(endOfWork()));
    }
    /// Not reached once the program has asked to end.
    void endOfWork() { QCoreApplication::exit(workIsDone); }

private:
    std::unique_ptr<SimulatedSession> session;
    QTemporaryDir folder;
    int pauses = 0;

    void driveByHand()
    {
        session->trigger("actionManual_Output_Control");
        QWidget* byHand = session->widgetOf("WindowManOutCtrl");
        find<QCheckBox>(byHand, "checboxEnableMan")->setChecked(true);
        find<QDoubleSpinBox>(byHand, "boxCh1")->setValue(find<QDoubleSpinBox>(byHand, "boxCh1")->value() + 1);
        find<QCheckBox>(byHand, "checboxEnableMan")->setChecked(false);
    }
    void scan()
    {
        for (const char* tool : {"action_Rocking_Curve", "actionRocking_Curve_3D"}) {
            find<QAction>(&session->window(), tool)->setEnabled(true);
            session->trigger(tool);
        }
        find<QAction>(&session->window(), "actionStep_Response")->setEnabled(true);
        find<QSpinBox>(session->widgetOf("WindowRockingCurve"), "boxN")->setValue(5);
        press(find<QPushButton>(session->widgetOf("WindowRockingCurve"), "buttonStart"));
        // Of the surface one point is enough.
        QMetaObject::invokeMethod(find<QPushButton>(session->widgetOf("WindowRocking3D"), "stopButton"), "click",
                                  Qt::QueuedConnection);
        press(find<QPushButton>(session->widgetOf("WindowRocking3D"), "goButton"));
    }
    void save()
    {
        session->trigger("action_Save_Data");
        QWidget* window = session->widgetOf("WindowSaveData");
        find<QLineEdit>(window, "pathLineEdit")->setText(folder.filePath(QStringLiteral("measured.csv")));
        press(find<QDialogButtonBox>(window, "buttonBox"), QStringLiteral("Save"));
    }

    /// Runs a slot of this inside an event loop, as the program does. @return what the loop ended with
    int run(const char* slot)
    {
        QTimer::singleShot(0, this, slot);
        const int status = QCoreApplication::exec();
        QCoreApplication::removePostedEvents(this);
        return status;
    }
    static QStringList warnings(LogLines& log)
    {
        return log.lines().filter(QRegularExpression(QStringLiteral("^[3-5] ")));
    }
    void verifyThatTheNextSecondIsGood()
    {
        SAMP_FREQ = 1000;
        session->tick(20);
        for (int amplifier = 0; amplifier < 2; ++amplifier) {
            QCOMPARE(updater->dataCurrents[amplifier][3]->size(), largestBlockRecords);
            QVERIFY(updater->dataCurrents[amplifier][3]->at(14000)->value != 0);
            const double before = updater->ionbarStatus[amplifier].current(0);
            session->tick();
            QVERIFY(updater->ionbarStatus[amplifier].current(0) != before);
        }
    }

private slots:
    void init()
    {
        session = std::make_unique<SimulatedSession>();
        pauses = 0;
        QFile::remove(folder.filePath(QStringLiteral("measured.csv")));
    }
    void cleanup()
    {
        driven_pause::clear();
        session.reset();
    }

    void aDeviceFileMayBeMissingAndComeBack_data() { addDevices(); }
    void aDeviceFileMayBeMissingAndComeBack()
    {
        QFETCH(QString, path);
        const bool isStream = path == QLatin1String(streamDevicePath);
        session->plant().setDevicePresent(qPrintable(path), false);
        const QByteArray settingsBefore = settingsBytes();
        MessageBoxes boxes;
        LogLines log(QsLogging::InfoLevel);
        // The two tools that cannot do without the stream end the program, and nothing else does.
        QCOMPARE(run(SLOT(workWithAllDevices())), isStream ? 0 : workIsDone);
        QCOMPARE(boxes.count(), isStream ? 2 : 0);
        for (const MessageBoxes::Box& box : boxes.boxes())
            QCOMPARE(box.text, cannotOpen);
        QCOMPARE(warnings(log), QStringList());
        QCOMPARE(settingsBytes(), settingsBefore);

        session->plant().setDevicePresent(qPrintable(path), true);
        verifyThatTheNextSecondIsGood();
        QFile::remove(folder.filePath(QStringLiteral("measured.csv")));
        QCOMPARE(run(SLOT(workWithAllDevices())), workIsDone);
    }

    void aDeviceFileMayVanishAndAppearWhileToolsMeasure_data() { addDevices(); }
    void aDeviceFileMayVanishAndAppearWhileToolsMeasure()
    {
        QFETCH(QString, path);
        const QByteArray settingsBefore = settingsBytes();
        // Present where a tool opens it, since that is the first pause of none.
        driven_pause::setAction(
            [&](unsigned long) { session->plant().setDevicePresent(qPrintable(path), ++pauses % 3 == 0); });
        FileDialogs dialogs{QString()};
        MessageBoxes boxes;
        LogLines log(QsLogging::InfoLevel);
        const int status = run(SLOT(workWithAllDevices()));
        // Only the stream may have been away when a tool opened it.
        QVERIFY(status == workIsDone || path == QLatin1String(streamDevicePath));
        QCOMPARE(warnings(log), QStringList());
        QCOMPARE(settingsBytes(), settingsBefore);
        QVERIFY(pauses > 10);

        driven_pause::clear();
        session->plant().setDevicePresent(qPrintable(path), true);
        verifyThatTheNextSecondIsGood();
    }

    void aStreamThatIsShortOfOneRecordEndsTheProgramWithAWord()
    {
        session->plant().truncateBlocks(1);
        const QByteArray settingsBefore = settingsBytes();
        MessageBoxes boxes;
        LogLines log(QsLogging::InfoLevel);
        QCOMPARE(run(SLOT(tickOnce())), 0);
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(boxes.boxes().first().title, QStringLiteral("Cannot open file"));
        QCOMPARE(boxes.boxes().first().text, cannotOpen);
        QCOMPARE(warnings(log), QStringList());
        QCOMPARE(settingsBytes(), settingsBefore);
        session->plant().truncateBlocks(0);
        QCOMPARE(run(SLOT(tickOnce())), workIsDone);
        verifyThatTheNextSecondIsGood();
    }

    void toolsStandAStreamThatIsShort()
    {
        session->tick(20);
        session->plant().truncateBlocks(largestBlockRecords);
        const QByteArray settingsBefore = settingsBytes();
        MessageBoxes boxes;
        LogLines log(QsLogging::InfoLevel);
        // The display's second ends the program with a message; the tools go on until then.
        QCOMPARE(run(SLOT(workWithAllDevices())), 0);
        QCOMPARE(warnings(log), QStringList());
        QCOMPARE(settingsBytes(), settingsBefore);
        session->plant().truncateBlocks(0);
        verifyThatTheNextSecondIsGood();
    }

    void aFullDiskLosesNoSetting()
    {
        const QByteArray settingsBefore = settingsBytes();
        QVERIFY(!settingsBefore.isEmpty());
        MessageBoxes boxes;
        LogLines log(QsLogging::InfoLevel);
        {
            const FullDisk disk;
            QCOMPARE(run(SLOT(saveAllSettings())), workIsDone);
        }
        QCOMPARE(warnings(log), QStringList());
        QCOMPARE(settingsBytes(), settingsBefore);
        QCOMPARE(run(SLOT(saveAllSettings())), workIsDone);
        QVERIFY(settingsBytes() != settingsBefore);
    }

    void aSettingsFileThatCannotBeOpenedLosesNothing()
    {
        // A folder of this name can neither be read as a file nor replaced by one.
        QVERIFY(QFile::rename(settingsPath(), folder.filePath(QStringLiteral("kept.ini"))));
        QVERIFY(QDir().mkpath(settingsPath()));
        MessageBoxes boxes;
        LogLines log(QsLogging::InfoLevel);
        QCOMPARE(run(SLOT(saveAllSettings())), workIsDone);
        QVERIFY(QDir().rmdir(settingsPath()));
        QVERIFY(QFile::rename(folder.filePath(QStringLiteral("kept.ini")), settingsPath()));
        // Limits that cannot be read are zero, and the installation refuses a range without room.
        QCOMPARE(warnings(log),
                 QStringList({QStringLiteral("3 setROClimits() failed "), QStringLiteral("3 setROClimits() failed ")}));
        verifyThatTheNextSecondIsGood();
    }

    void resourcesThatCannotBeReadAreDoneWithout()
    {
        session.reset();
        dropResources();
        QVERIFY(!QFile::exists(QStringLiteral(":/product_data/devices.xml")));
        session = std::make_unique<SimulatedSession>();
        const QByteArray settingsBefore = settingsBytes();
        MessageBoxes boxes;
        LogLines log(QsLogging::InfoLevel);
        const int status = run(SLOT(workWithAllDevices()));
        const QStringList warned = warnings(log);
        const QByteArray settingsAfter = settingsBytes();
        const auto* ports = find<QTableWidget>(session->widgetOf("WindowSFPstatus"), "SFPsTable");
        const QString name = ports->item(1, 0) ? ports->item(1, 0)->text() : QStringLiteral("no item");
        session.reset();
        bringResourcesBack();
        QCOMPARE(status, workIsDone);
        QCOMPARE(name, QString());
        QCOMPARE(warned, QStringList());
        QCOMPARE(settingsAfter, settingsBefore);

        session = std::make_unique<SimulatedSession>();
        session->trigger("actionSFP_info");
        session->tick();
        ports = find<QTableWidget>(session->widgetOf("WindowSFPstatus"), "SFPsTable");
        QCOMPARE(ports->item(1, 0)->text(), QStringLiteral("Ionbar"));
        verifyThatTheNextSecondIsGood();
    }

    void savingIntoAMalformedFileKeepsTheValuesThatCouldBeRead()
    {
        QFile file(settingsPath());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("no section and no value\n[[[\n\x01\x02=\n[BPM2]\nScale_X=321\nOther=kept\n]]]\n=\n");
        file.close();
        MessageBoxes boxes;
        QCOMPARE(run(SLOT(saveAllSettings())), workIsDone);
        const QSettings settings(settingsPath(), QSettings::IniFormat);
        QCOMPARE(settings.value(QStringLiteral("BPM2/Other")).toString(), QStringLiteral("kept"));
        QCOMPARE(settings.value(QStringLiteral("BPM2/Scale_X")).toDouble(), 321.0);
    }
};

QTEST_MAIN(DeviceFaultsTest)
#include "DeviceFaultsTest.moc"
