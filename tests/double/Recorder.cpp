// Makes the double a control library of its own for tests of the whole program: every call is written to the file
// that KORA_RECORDER_FILE names, and once the first window of the stream was fetched the program is driven as
// KORA_RECORDER_ACTION says:
//
//   exit    triggers the menu entry Exit
//   close   closes the main window
//   short   has delivered one record too few, and closes the message box
//   save    logs in, changes a setting, presses every button that saves settings, and goes on as report
//   report  writes at the second window what the program shows: "title ", "maximised ", "style " and one "log " for
//           each line of the log window; then as exit
//   statistics  has a beam at both monitors, writes the mean positions that the panel shows as "FIELD TEXT" once it
//           shows them, and goes on as exit
//   hang    lets the next poll never return from the library, and closes the main window
//   none    leaves the program alone

#include "double/DoubleInternals.h"
#include "support/Operator.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTableView>
#include <QTimer>
#include <QWidget>

#include <cstdlib>
#include <fstream>
#include <unistd.h>

namespace {

std::string environment(const char* name)
{
    const char* value = std::getenv(name);
    return value ? value : "";
}

std::string oneLine(const QString& text)
{
    return text.simplified().toStdString();
}

/// What the program shows, line by line, into the record.
void report(std::ostream& record)
{
    const std::lock_guard<std::recursive_mutex> lock(koralink_double::Double::instance().mutex);
    record << "style " << oneLine(qApp->styleSheet()) << std::endl;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->inherits("MainWindow")) {
            record << "title " << oneLine(widget->windowTitle()) << std::endl;
            record << "maximised " << widget->isVisible() << widget->isMaximized() << std::endl;
        }
        if (!widget->inherits("QsLogging::Window"))
            continue;
        widget->findChild<QComboBox*>(QStringLiteral("comboBoxLevel"))->setCurrentIndex(0);
        const QAbstractItemModel* lines = widget->findChild<QTableView*>()->model();
        for (int row = 0; row < lines->rowCount(); ++row)
            record << "log " << oneLine(lines->index(row, 1).data().toString()) << ": "
                   << oneLine(lines->index(row, 2).data().toString()) << std::endl;
    }
}

QWidget* shownMainWindow()
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->inherits("MainWindow"))
            return widget;
    }
    qFatal("no main window");
}

void trigger(const char* action)
{
    operate::find<QAction>(shownMainWindow(), action)->trigger();
}

/// A window or panel by its class; the dialogs are children of the main window.
QWidget* widgetOf(const char* className)
{
    for (QWidget* widget : shownMainWindow()->findChildren<QWidget*>()) {
        if (widget->inherits(className))
            return widget;
    }
    qFatal("no %s", className);
}

void pressInBox(const char* className, const char* text)
{
    operate::press(operate::find<QDialogButtonBox>(widgetOf(className), "buttonBox"), QLatin1String(text));
}

void saveAllSettings()
{
    trigger("action_Login");
    for (const char* field : {"usernameLineEdit", "passwordLineEdit"})
        operate::find<QLineEdit>(widgetOf("DialogLogin"), field)->setText(QStringLiteral("admin"));
    operate::press(operate::find<QPushButton>(widgetOf("DialogLogin"), "logIn"));

    trigger("action_Beamline_Settings");
    pressInBox("WindowBeamlineConf", "Save");
    trigger("actionPosition_Filter_Settings");
    operate::find<QDoubleSpinBox>(widgetOf("WindowFiltparams"), "doubleSpinBoxXlfLow")->setValue(20);
    pressInBox("WindowFiltparams", "OK");
    trigger("action_ROC_ROI");
    pressInBox("WindowROC_ROI", "OK");
    operate::press(operate::find<QPushButton>(widgetOf("WidgetPidCtrl"), "pushButtonUpdate"));
    operate::press(operate::find<QPushButton>(widgetOf("WidgetFeedbackControl"), "updateConfButton"));
}

/// Mean positions of both monitors, by the panel's fields.
constexpr const char* meanFields[] = {"posXMeanLineEdit", "posYMeanLineEdit", "posXMeanLineEdit_2",
                                      "posYMeanLineEdit_2"};

void deliverABeamAtBothMonitors(koralink_double::Answers& answers)
{
    constexpr std::uint16_t amplifierCode = 0x2101;
    answers.sfp[0].deviceId = answers.sfp[1].deviceId = amplifierCode;
    answers.stats.bpm[0].posXMean = 1;
    answers.stats.bpm[0].posYMean = 2;
    answers.stats.bpm[1].posXMean = 3;
    answers.stats.bpm[1].posYMean = 4;
}

/// Tries again until poll and panel have brought every field.
void writeStatistics(std::ostream& record)
{
    constexpr int retryMs = 50;
    QStringList lines;
    for (const char* name : meanFields) {
        const QString text = operate::find<QLineEdit>(widgetOf("WidgetFeedbackControl"), name)->text();
        if (text.isEmpty() || text.startsWith(QLatin1String("0.0"))) {
            QTimer::singleShot(retryMs, qApp, [&record] { writeStatistics(record); });
            return;
        }
        lines.append(QLatin1String(name) + QLatin1Char(' ') + text);
    }
    const std::lock_guard<std::recursive_mutex> lock(koralink_double::Double::instance().mutex);
    record << lines.join(QLatin1Char('\n')).toStdString() << std::endl;
    trigger("action_Exit");
}

void drive(const std::string& action, std::ostream& record)
{
    if (action == "statistics") {
        writeStatistics(record);
        return;
    }
    const bool reports = action == "report" || action == "save";
    if (action == "save")
        saveAllSettings();
    if (reports)
        report(record);
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* box = qobject_cast<QMessageBox*>(widget)) {
            box->accept();
        } else if (widget->inherits("MainWindow") && (reports || action == "exit")) {
            widget->findChild<QAction*>(QStringLiteral("action_Exit"))->trigger();
        } else if (widget->inherits("MainWindow") && action == "close") {
            widget->close();
        }
    }
}

struct Recorder
{
    std::ofstream file;
    std::string action;
    int windowsToWait = 1;

    Recorder() : file(environment("KORA_RECORDER_FILE")), action(environment("KORA_RECORDER_ACTION"))
    {
        koralink_double::Double& self = koralink_double::Double::instance();
        if (action == "short")
            self.answers.deliveredRecords = 14335;
        if (action == "statistics")
            deliverABeamAtBothMonitors(self.answers);
        if (action == "report" || action == "save")
            windowsToWait = 2;
        self.onCall = [this](const koralink_double::Call& call) { take(call); };
    }

    /// On the worker, which does not come back; the rest of the program goes on with the library.
    [[noreturn]] void hang()
    {
        QTimer::singleShot(0, qApp, [this] { drive("close", file); });
        koralink_double::Double::instance().mutex.unlock();
        for (;;)
            ::pause();
    }

    void take(const koralink_double::Call& call)
    {
        file << call.text() << std::endl;
        if (action == "hang" && windowsToWait == 0 && call.name == "getPIDstatus")
            hang();
        if (call.name != "getBuffer" || windowsToWait == 0 || --windowsToWait != 0)
            return;
        QTimer::singleShot(0, qApp, [this] { drive(action, file); });
    }
};

Recorder recorder;

} // namespace
