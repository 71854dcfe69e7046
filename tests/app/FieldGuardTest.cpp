// What an operator does in passing: the wheel over a field, and the Enter key in it, in every window.

#include "app/EveryWindow.h"
#include "app/SimulatedSession.h"
#include "support/MessageBoxes.h"
#include "support/Operator.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDockWidget>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QToolBox>
#include <QWheelEvent>
#include <QtTest>

using operate::find;

namespace {

bool isWheelField(const QWidget* widget)
{
    return qobject_cast<const QAbstractSpinBox*>(widget) || qobject_cast<const QComboBox*>(widget) ||
           (qobject_cast<const QAbstractSlider*>(widget) && !qobject_cast<const QScrollBar*>(widget));
}

QVariant valueOf(const QWidget* field)
{
    const auto* list = qobject_cast<const QComboBox*>(field);
    return list ? QVariant(list->currentIndex()) : field->property("value");
}

/// A list with one item stands still anyway.
bool canChange(const QWidget* field)
{
    const auto* list = qobject_cast<const QComboBox*>(field);
    return !list || list->count() > 1;
}

/// Windows that only show something keep the default button of their box.
bool hasInputFields(const QWidget* window)
{
    for (const QWidget* widget : window->findChildren<QWidget*>()) {
        const auto* line = qobject_cast<const QLineEdit*>(widget);
        if (isWheelField(widget) || (line && line->isEnabled() && !line->isReadOnly()))
            return true;
    }
    return false;
}

void turnWheel(QWidget* widget)
{
    for (const int degrees : {-120, 120}) {
        const QPointF centre = widget->rect().center();
        QWheelEvent event(centre, widget->mapToGlobal(centre.toPoint()), QPoint(), QPoint(0, degrees), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        // As from the mouse: others are not passed on, and give no focus.
        QSpontaneKeyEvent::setSpontaneous(&event);
        qApp->notify(widget, &event);
    }
}

QString nameOf(const OperatorWindow& window, const QWidget* field)
{
    return window.className + QLatin1Char(' ') + field->objectName();
}

} // namespace

class FieldGuardTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SimulatedSession> session;

    static void bringForward(QWidget* widget)
    {
        for (QWidget* parent = widget->parentWidget(); parent; parent = parent->parentWidget()) {
            if (auto* dock = qobject_cast<QDockWidget*>(parent))
                dock->raise();
        }
        QApplication::setActiveWindow(widget->window());
        QCoreApplication::processEvents();
    }
    static void leaveFields()
    {
        if (QWidget* focus = QApplication::focusWidget())
            focus->clearFocus();
    }

private slots:
    void init()
    {
        session = std::make_unique<SimulatedSession>();
        session->logIn(QStringLiteral("admin"), QStringLiteral("admin"));
        find<QToolBox>(session->widgetOf("WidgetFeedbackControl"), "toolBox")->setCurrentIndex(1);
    }
    void cleanup() { session.reset(); }

    void wheelChangesNoFieldThatHasNoFocus()
    {
        QStringList changed;
        int fields = 0;
        for (const OperatorWindow& window : everyWindow(*session)) {
            bringForward(window.widget);
            for (QWidget* field : window.widget->findChildren<QWidget*>()) {
                if (!isWheelField(field) || !field->isVisible() || !field->isEnabled())
                    continue;
                ++fields;
                leaveFields();
                const QVariant before = valueOf(field);
                turnWheel(field);
                // The middle of a number is its line.
                for (QLineEdit* inner : field->findChildren<QLineEdit*>())
                    turnWheel(inner);
                if (valueOf(field) != before || field->hasFocus())
                    changed.append(nameOf(window, field));
            }
        }
        QVERIFY2(changed.isEmpty(), qPrintable(changed.join(QLatin1Char('\n'))));
        QVERIFY2(fields > 70, qPrintable(QString::number(fields)));
    }

    void wheelTurnsTheFieldThatHasTheFocus()
    {
        QStringList still;
        for (const OperatorWindow& window : everyWindow(*session)) {
            bringForward(window.widget);
            for (QWidget* field : window.widget->findChildren<QWidget*>()) {
                if (!isWheelField(field) || !field->isVisible() || !field->isEnabled() || !canChange(field))
                    continue;
                field->setFocus(Qt::TabFocusReason);
                const auto* list = qobject_cast<const QComboBox*>(field);
                QSignalSpy turned(field, list                                ? SIGNAL(currentIndexChanged(int))
                                         : field->inherits("QDoubleSpinBox") ? SIGNAL(valueChanged(double))
                                                                             : SIGNAL(valueChanged(int)));
                turnWheel(field);
                if (turned.isEmpty())
                    still.append(nameOf(window, field));
            }
        }
        QVERIFY2(still.isEmpty(), qPrintable(still.join(QLatin1Char('\n'))));
    }

    void enterInAFieldPressesNoButtonAndClosesNoWindow()
    {
        const MessageBoxes boxes;
        QStringList pressed;
        int fields = 0;
        for (const OperatorWindow& window : everyWindow(*session)) {
            if (!hasInputFields(window.widget))
                continue;
            bringForward(window.widget);
            std::vector<std::unique_ptr<QSignalSpy>> spies;
            for (const QAbstractButton* button : window.widget->findChildren<QAbstractButton*>()) {
                if (!button->isCheckable())
                    spies.push_back(std::make_unique<QSignalSpy>(button, SIGNAL(clicked())));
            }
            for (QWidget* field : window.widget->findChildren<QWidget*>()) {
                if (!(field->focusPolicy() & Qt::TabFocus) || !field->isVisible() || !field->isEnabled() ||
                    qobject_cast<QPushButton*>(field))
                    continue;
                ++fields;
                field->setFocus(Qt::TabFocusReason);
                for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter})
                    QTest::keyClick(field, key);
                bool any = !window.widget->isVisible();
                for (const auto& spy : spies)
                    any = any || !spy->isEmpty();
                if (any)
                    pressed.append(nameOf(window, field));
                for (const auto& spy : spies)
                    spy->clear();
                window.widget->show();
            }
        }
        QVERIFY2(pressed.isEmpty(), qPrintable(pressed.join(QLatin1Char('\n'))));
        QCOMPARE(boxes.count(), 0);
        QVERIFY2(fields > 120, qPrintable(QString::number(fields)));
    }

    void noButtonLooksAsIfEnterPressedIt()
    {
        for (int opening = 0; opening < 2; ++opening) {
            for (const OperatorWindow& window : everyWindow(*session)) {
                if (!hasInputFields(window.widget))
                    continue;
                for (const QPushButton* button : window.widget->findChildren<QPushButton*>())
                    QVERIFY2(!button->isDefault() && !button->autoDefault(), qPrintable(nameOf(window, button)));
                if (qobject_cast<QDialog*>(window.widget))
                    window.widget->close();
            }
        }
    }

    void enterPressesTheButtonThatHasTheFocus()
    {
        session->trigger("action_Beamline_Settings");
        QWidget* beamline = session->widgetOf("WindowBeamlineConf");
        bringForward(beamline);
        auto* voltage = find<QDoubleSpinBox>(find<QWidget>(beamline, "boxBPM1"), "biasVoltageDoubleSpinBox");
        voltage->setFocus();
        QTest::keyClicks(voltage, QStringLiteral("100"));
        QTest::keyClick(voltage, Qt::Key_Return);
        QVERIFY(beamline->isVisible());
        find<QDialogButtonBox>(beamline, "buttonBox")->button(QDialogButtonBox::Save)->setFocus(Qt::TabFocusReason);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Enter);
        QVERIFY(!beamline->isVisible());
    }
};

QTEST_MAIN(FieldGuardTest)
#include "FieldGuardTest.moc"
