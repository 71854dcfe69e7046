// The operator's guide and the windows say the same.

#include "app/EveryWindow.h"
#include "app/SimulatedSession.h"
#include "support/Operator.h"

#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabBar>
#include <QToolButton>
#include <QtTest>

using operate::find;

namespace {

/// Windows whose fields say by their labels alone what they are: name and password, and three version texts.
bool isPlain(const QString& className)
{
    return className == QLatin1String("DialogLogin") || className == QLatin1String("about");
}

/// What an operator sets or reads, but for the buttons that every dialog has and for parts of other fields.
bool needsTooltip(const QWidget* widget)
{
    if (qobject_cast<const QDialogButtonBox*>(widget->parentWidget()) ||
        qobject_cast<const QTabBar*>(widget->parentWidget()) ||
        qobject_cast<const QAbstractSpinBox*>(widget->parentWidget()))
        return false;
    return qobject_cast<const QAbstractSpinBox*>(widget) || qobject_cast<const QComboBox*>(widget) ||
           qobject_cast<const QLineEdit*>(widget) || qobject_cast<const QPlainTextEdit*>(widget) ||
           qobject_cast<const QCheckBox*>(widget) || qobject_cast<const QRadioButton*>(widget) ||
           qobject_cast<const QPushButton*>(widget) || qobject_cast<const QToolButton*>(widget) ||
           (qobject_cast<const QAbstractSlider*>(widget) && !widget->inherits("QScrollBar"));
}

} // namespace

class OperatorGuideTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SimulatedSession> session;

private slots:
    void init() { session = std::make_unique<SimulatedSession>(); }
    void cleanup() { session.reset(); }

    void everyFieldAndButtonHasATooltip()
    {
        int fields = 0;
        QStringList without;
        for (const OperatorWindow& window : everyWindow(*session)) {
            if (isPlain(window.className))
                continue;
            for (const QWidget* widget : window.widget->findChildren<QWidget*>()) {
                if (!needsTooltip(widget))
                    continue;
                ++fields;
                if (widget->toolTip().isEmpty())
                    without.append(window.className + QLatin1Char(' ') + widget->objectName());
            }
        }
        QVERIFY2(without.isEmpty(), qPrintable(without.join(QLatin1Char('\n'))));
        QVERIFY2(fields > 250, qPrintable(QString::number(fields)));
    }

    void aTooltipIsOneShortLine()
    {
        for (const OperatorWindow& window : everyWindow(*session)) {
            for (const QWidget* widget : window.widget->findChildren<QWidget*>()) {
                const QString text = widget->toolTip();
                QVERIFY2(text.size() <= 100 && !text.contains(QLatin1Char('\n')) && text == text.trimmed(),
                         qPrintable(text));
            }
        }
    }

    void theTimeBetweenTwoPointsIsToldByItsLabelToo()
    {
        everyWindow(*session);
        QWidget* window = session->widgetOf("WindowRockingCurve");
        QCOMPARE(find<QLabel>(window, "labelTimePoint")->toolTip(), QStringLiteral("Time between two points"));
    }
};

QTEST_MAIN(OperatorGuideTest)
#include "OperatorGuideTest.moc"
