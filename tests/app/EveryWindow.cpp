#include "app/EveryWindow.h"

#include "app/SimulatedSession.h"

#include <QApplication>
#include <QDialog>
#include <QMetaObject>

namespace {

const char* const panels[] = {"WidgetGraphXY",       "WidgetFeedbackControl", "WidgetGraphFFT", "WidgetPidCtrl",
                              "WidgetGraphCurrents", "WidgetGraphPos",        "WidgetGraphInt"};

/// The tools that no level opens are opened by their slots.
const char* const closedTools[] = {"showRockCurve", "showRockCurve3D", "showStepResponse"};

const char* const openers[] = {"action_Display_Settings",
                               "actionPico_Amp",
                               "action_Beamline_Settings",
                               "action_PID_Parameters",
                               "actionPosition_Filter_Settings",
                               "action_ROC_ROI",
                               "actionSFP_info",
                               "action_Login",
                               "action_Save_Data",
                               "actionFrequency_Analysis",
                               "actionManual_Output_Control",
                               "action_Log",
                               "action_About"};

bool isOfClass(const QWidget* widget, const char* className)
{
    return QLatin1String(widget->metaObject()->className()) == QLatin1String(className);
}

} // namespace

QVector<OperatorWindow> everyWindow(SimulatedSession& session)
{
    for (const char* action : openers)
        session.trigger(action);
    for (const char* slot : closedTools)
        QMetaObject::invokeMethod(&session.window(), slot, Qt::DirectConnection);
    session.tick();

    QVector<OperatorWindow> windows;
    for (const char* panel : panels) {
        for (QWidget* widget : session.window().findChildren<QWidget*>()) {
            if (isOfClass(widget, panel))
                windows.append({QLatin1String(panel), widget});
        }
    }
    for (QWidget* dialog : QApplication::topLevelWidgets()) {
        if (dialog->isVisible() && qobject_cast<QDialog*>(dialog))
            windows.append({QLatin1String(dialog->metaObject()->className()), dialog});
    }
    return windows;
}
