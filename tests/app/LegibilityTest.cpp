// What an operator reads in the windows: numbers in fields that are locked, and a display that is paused.

#include "app/EveryWindow.h"
#include "app/SimulatedSession.h"
#include "support/Contrast.h"
#include "support/Operator.h"

#include <QAbstractSpinBox>
#include <QCheckBox>
#include <QDockWidget>
#include <QLineEdit>
#include <QtTest>
#include <qcustomplot.h>

using operate::find;

class LegibilityTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SimulatedSession> session;

    QVector<QWidget*> pausedMarks()
    {
        QVector<QWidget*> marks;
        for (const QDockWidget* dock : session->window().findChildren<QDockWidget*>()) {
            for (const QCustomPlot* plot : dock->findChildren<QCustomPlot*>()) {
                for (QWidget* mark : plot->findChildren<QWidget*>()) {
                    if (mark->accessibleName() == QLatin1String("paused"))
                        marks.append(mark);
                }
            }
        }
        return marks;
    }

private slots:
    void init() { session = std::make_unique<SimulatedSession>(); }
    void cleanup() { session.reset(); }

    void everyNumberThatCannotBeEditedIsLegible_data()
    {
        QTest::addColumn<QString>("level");
        QTest::newRow("cruise") << QStringLiteral("cruise");
        QTest::newRow("admin") << QStringLiteral("admin");
    }
    void everyNumberThatCannotBeEditedIsLegible()
    {
        QFETCH(QString, level);
        session->logIn(level, level);
        int fields = 0;
        for (const OperatorWindow& window : everyWindow(*session)) {
            for (QLineEdit* field : window.widget->findChildren<QLineEdit*>()) {
                if ((field->isEnabled() && !field->isReadOnly()) || field->text().isEmpty())
                    continue;
                const double seen = contrast::ofPicture(field);
                QVERIFY2(seen >= 4.5, qPrintable(QStringLiteral("%1 %2 \"%3\": %4")
                                                     .arg(window.className, field->objectName(), field->text())
                                                     .arg(seen)));
                ++fields;
            }
        }
        QVERIFY2(fields > 30, qPrintable(QString::number(fields)));
    }

    void aLockedSettingStillLooksLocked()
    {
        session->logIn(QStringLiteral("cruise"), QStringLiteral("cruise"));
        QWidget* box = find<QWidget>(session->widgetOf("WidgetPidCtrl"), "boxKp");
        const double locked = contrast::ofPicture(box->findChild<QLineEdit*>());
        session->logIn(QStringLiteral("admin"), QStringLiteral("admin"));
        QVERIFY(contrast::ofPicture(box->findChild<QLineEdit*>()) > 1.5 * locked);
    }

    void aPausedDisplaySaysSoInEveryPlotUntilItGoesOn()
    {
        const QVector<QWidget*> marks = pausedMarks();
        QCOMPARE(marks.size(), 9);
        session->trigger("action_Display_Settings");
        auto* pause = find<QCheckBox>(session->widgetOf("WindowDisplaySettings"), "pauseCheckBox");
        for (const QWidget* mark : marks)
            QVERIFY(mark->isHidden());
        pause->setChecked(true);
        session->tick();
        for (const QWidget* mark : marks) {
            QVERIFY(!mark->isHidden());
            QVERIFY(mark->parentWidget()->rect().contains(mark->geometry()));
        }
        session->window().resize(1300, 760);
        QCoreApplication::processEvents();
        QWidget* seen = marks.first();
        const QPoint off = seen->geometry().center() - seen->parentWidget()->rect().center();
        QVERIFY(std::abs(off.x()) <= 2 && std::abs(off.y()) <= 2);
        QVERIFY(contrast::ofPicture(seen) > 4.5);
        pause->setChecked(false);
        for (const QWidget* mark : marks)
            QVERIFY(mark->isHidden());
    }
};

QTEST_MAIN(LegibilityTest)
#include "LegibilityTest.moc"
