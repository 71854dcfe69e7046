// The windows as one who leaves the mouse alone meets them: mnemonics, and the order of the Tab key.

#include "app/EveryWindow.h"
#include "app/ReadingOrder.h"
#include "app/SimulatedSession.h"
#include "logging/Level.h"
#include "logging/LogMessage.h"
#include "support/Operator.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDockWidget>
#include <QMenu>
#include <QMenuBar>
#include <QTabWidget>
#include <QToolBox>
#include <QtTest>

using operate::find;

namespace {

QString nameOf(const QWidget* widget)
{
    if (!widget)
        return QStringLiteral("nothing");
    const auto* button = qobject_cast<const QAbstractButton*>(widget);
    return QStringLiteral("%1 %2%3").arg(QLatin1String(widget->metaObject()->className()), widget->objectName(),
                                         button ? QStringLiteral(" \"%1\"").arg(button->text()) : QString());
}

QStringList namesOf(const QVector<QWidget*>& widgets)
{
    QStringList names;
    for (const QWidget* widget : widgets)
        names.append(nameOf(widget));
    return names;
}

/// The first place where two orders part, or nothing.
QString firstDifference(const QVector<QWidget*>& expected, const QVector<QWidget*>& found)
{
    for (int i = 0; i < std::max(expected.size(), found.size()); ++i) {
        if (expected.value(i) != found.value(i))
            return QStringLiteral("place %1: %2 by its position, %3 by the Tab key\n%4")
                .arg(i + 1)
                .arg(nameOf(expected.value(i)), nameOf(found.value(i)), namesOf(found).join(QLatin1Char('\n')));
    }
    return QString();
}

/// What the Tab key, or Shift and Tab, comes to from the first field on, until it is back there.
QVector<QWidget*> walk(QWidget* first, Qt::Key key)
{
    constexpr int longestWalk = 200;
    first->setFocus(Qt::TabFocusReason);
    QVector<QWidget*> met;
    for (int i = 0; i < longestWalk; ++i) {
        QWidget* focus = QApplication::focusWidget();
        if (!focus || met.contains(focus))
            break;
        met.append(focus);
        QTest::keyClick(focus, key);
    }
    return met;
}

QVector<QWidget*> enabledOf(const QVector<QWidget*>& widgets)
{
    QVector<QWidget*> enabled;
    std::copy_if(widgets.begin(), widgets.end(), std::back_inserter(enabled),
                 [](const QWidget* widget) { return widget->isEnabled(); });
    return enabled;
}

/// Object names of actions and what their texts must be, mnemonics included.
struct ActionText
{
    const char* action;
    const char* text;
};

constexpr ActionText actionTexts[] = {{"action_Exit", "&Exit"},
                                      {"action_Display_Settings", "&Display Settings"},
                                      {"actionPico_Amp", "Pico&Amp"},
                                      {"action_Beamline_Settings", "&Beamline "},
                                      {"action_PID_Parameters", "&PID Parameters"},
                                      {"action_ROC_ROI", "&ROC/ROI"},
                                      {"actionSFP_info", "SFP &Info"},
                                      {"action_Login", "&Login"},
                                      {"action_Rocking_Curve", "&Rocking Curve"},
                                      {"actionRocking_Curve_3D", "Rocking Curve &3D"},
                                      {"actionStep_Response", "Step &Response (beta version)"},
                                      {"action_Save_Data", "&Save Data"},
                                      {"action_Log", "&Log"},
                                      {"action_About", "&About"},
                                      {"actionNew_Currents_Window", "New &Currents Window"},
                                      {"actionNew_FFT_Window", "New &FFT Window"},
                                      {"actionNew_XY_Window", "New &XY Window"}};

constexpr const char* logButtons[][2] = {{"toolButtonPause", "&Pause"},
                                         {"toolButtonSave", "&Save"},
                                         {"toolButtonClear", "C&lear"},
                                         {"toolButtonCopy", "&Copy"},
                                         {"checkBoxAutoScroll", "&Auto scroll"}};

} // namespace

class KeyboardTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SimulatedSession> session;

    /// Brings a panel behind the tabs of the docks to the front, or a dialog to the keyboard.
    static void bringForward(QWidget* widget)
    {
        for (QWidget* parent = widget->parentWidget(); parent; parent = parent->parentWidget()) {
            if (auto* dock = qobject_cast<QDockWidget*>(parent))
                dock->raise();
        }
        QApplication::setActiveWindow(widget->window());
        QCoreApplication::processEvents();
    }

private slots:
    void init()
    {
        session = std::make_unique<SimulatedSession>();
        session->logIn(QStringLiteral("admin"), QStringLiteral("admin"));
    }
    void cleanup() { session.reset(); }

    void menusAndActionsHaveTheirMnemonics()
    {
        QStringList titles;
        for (const QAction* action : session->window().menuBar()->actions())
            titles.append(action->menu()->title());
        QCOMPARE(titles, QStringList({QStringLiteral("&File"), QStringLiteral("&Settings"), QStringLiteral("&Tools"),
                                      QStringLiteral("&Help")}));
        for (const ActionText& row : actionTexts)
            QCOMPARE(find<QAction>(&session->window(), row.action)->text(), QString::fromLatin1(row.text));
    }

    void aMnemonicOpensTheWindowOfItsEntry()
    {
        bringForward(&session->window());
        QTest::keyClick(&session->window(), Qt::Key_S, Qt::AltModifier);
        QWidget* menu = QApplication::activePopupWidget();
        QCOMPARE(menu, static_cast<QWidget*>(find<QMenu>(&session->window(), "menu_Tools")));
        QTest::keyClick(menu, Qt::Key_I);
        QVERIFY(session->widgetOf("WindowSFPstatus")->isVisible());
    }

    void buttonsOfTheLogWindowHaveTheirMnemonics()
    {
        session->trigger("action_Log");
        QWidget* log = session->widgetOf("QsLogging::Window");
        for (const auto& row : logButtons)
            QCOMPARE(find<QAbstractButton>(log, row[0])->text(), QString::fromLatin1(row[1]));
        bringForward(log);
        QTest::keyClick(log, Qt::Key_P, Qt::AltModifier);
        // A button that is pressed by its mnemonic stays down for a moment.
        QTRY_COMPARE(find<QAbstractButton>(log, "toolButtonPause")->text(), QStringLiteral("&Resume"));
        QTest::keyClick(log, Qt::Key_R, Qt::AltModifier);
        QTRY_COMPARE(find<QAbstractButton>(log, "toolButtonPause")->text(), QStringLiteral("&Pause"));
    }

    void tabOrderIsReadingOrderInEveryWindow()
    {
        for (const OperatorWindow& window : everyWindow(*session)) {
            bringForward(window.widget);
            const QVector<QWidget*> expected = reading_order::byPosition(window.widget);
            const QString difference = firstDifference(expected, reading_order::byTabKey(window.widget));
            QVERIFY2(difference.isEmpty(), qPrintable(window.className + QLatin1String(", ") + difference));
            QVERIFY2(!expected.isEmpty() || window.className == QLatin1String("WindowPIDparams"),
                     qPrintable(window.className));
        }
    }

    void tabOrderOfTheBoardIsReadingOrderWhicheverGraphIsInFront()
    {
        for (QDockWidget* dock : session->window().findChildren<QDockWidget*>()) {
            dock->raise();
            QCoreApplication::processEvents();
            const QVector<QWidget*> expected = reading_order::byPosition(&session->window());
            const QString difference = firstDifference(expected, reading_order::byTabKey(&session->window()));
            QVERIFY2(difference.isEmpty(), qPrintable(dock->windowTitle() + QLatin1String(", ") + difference));
            QVERIFY(expected.size() > 20);
        }
    }

    void tabOrderIsReadingOrderOnThePagesThatAreNotInFrontAtFirst()
    {
        QWidget* feedback = session->widgetOf("WidgetFeedbackControl");
        find<QToolBox>(feedback, "toolBox")->setCurrentIndex(1);
        session->trigger("action_Beamline_Settings");
        QWidget* beamline = session->widgetOf("WindowBeamlineConf");
        for (QComboBox* orientation : beamline->findChildren<QComboBox*>(QStringLiteral("BPMorientation")))
            orientation->setCurrentText(QStringLiteral("45°"));
        QWidget* pid = session->widgetOf("WidgetPidCtrl");
        find<QTabWidget>(pid, "verticalTabWidget")->setCurrentIndex(3);
        QCoreApplication::processEvents();
        const QPair<QWidget*, int> windows[] = {{feedback, 20}, {beamline, 24}, {pid, 13}};
        for (const auto& window : windows) {
            const QVector<QWidget*> expected = reading_order::byPosition(window.first);
            QVERIFY2(expected.size() >= window.second, qPrintable(QString::number(expected.size())));
            const QString difference = firstDifference(expected, reading_order::byTabKey(window.first));
            QVERIFY2(difference.isEmpty(), qPrintable(difference));
        }
    }

    void thePagesOfTheFeedbackPanelOpenByTheKeyboard()
    {
        QWidget* feedback = session->widgetOf("WidgetFeedbackControl");
        auto* pages = find<QToolBox>(feedback, "toolBox");
        bringForward(feedback);
        for (const int page : {1, 0}) {
            QAbstractButton* title = nullptr;
            for (QWidget* field : enabledOf(reading_order::byPosition(&session->window()))) {
                auto* button = qobject_cast<QAbstractButton*>(field);
                if (button && button->text() == pages->itemText(page))
                    title = button;
            }
            QVERIFY(title);
            title->setFocus(Qt::TabFocusReason);
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
            QCOMPARE(pages->currentIndex(), page);
        }
    }

    void theTabKeyComesToEveryEnabledFieldAndBack()
    {
        QVector<OperatorWindow> windows = everyWindow(*session);
        // A table with lines has cells to wander through.
        for (const char* text : {"first", "second"}) {
            const QsLogging::LogMessage line(QString::fromLatin1(text), QDateTime::currentDateTimeUtc(),
                                             QsLogging::WarnLevel);
            QVERIFY(QMetaObject::invokeMethod(session->window().logWindow(), "addLogMessage",
                                              Q_ARG(QsLogging::LogMessage, line)));
        }
        windows.append({QStringLiteral("MainWindow"), &session->window()});
        for (const OperatorWindow& window : windows) {
            if (!window.widget->isWindow())
                continue;
            bringForward(window.widget);
            QVector<QWidget*> expected = enabledOf(reading_order::byPosition(window.widget));
            if (expected.isEmpty())
                continue;
            QString difference = firstDifference(expected, walk(expected.first(), Qt::Key_Tab));
            QVERIFY2(difference.isEmpty(), qPrintable(window.className + QLatin1String(", ") + difference));
            std::reverse(expected.begin(), expected.end());
            difference = firstDifference(expected, walk(expected.first(), Qt::Key_Backtab));
            QVERIFY2(difference.isEmpty(), qPrintable(window.className + QLatin1String(", back, ") + difference));
        }
    }
};

QTEST_MAIN(KeyboardTest)
#include "KeyboardTest.moc"
