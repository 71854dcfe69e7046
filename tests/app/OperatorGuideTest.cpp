// The operator's guide and the windows say the same.

#include "app/EveryWindow.h"
#include "app/GuideText.h"
#include "app/SimulatedSession.h"
#include "support/Operator.h"

#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
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

/// What is written on a field, without mnemonics, units and the sign that ends it.
QString caption(QString text)
{
    static const QRegularExpression ending(QStringLiteral("\\s*(\\[[^\\]]*\\])?\\s*[:=]?\\s*$"));
    return text.remove(QLatin1Char('&')).remove(ending).replace(QLatin1Char('\n'), QLatin1Char(' '));
}

/// The captions of a window: of its buttons, and of labels that belong to a field.
QStringList captionsOf(const QWidget* window)
{
    QStringList captions;
    for (const QAbstractButton* button : window->findChildren<QAbstractButton*>()) {
        if (needsTooltip(button))
            captions.append(caption(button->text()));
    }
    for (const QLabel* label : window->findChildren<QLabel*>()) {
        if (label->buddy())
            captions.append(caption(label->text()));
    }
    captions.removeAll(QString());
    return captions;
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

    void theGuideTellsEveryTooltipWordForWordInTheTableOfItsWindow()
    {
        QStringList missing;
        for (const OperatorWindow& window : everyWindow(*session)) {
            const QString table =
                guide_text::tableRows(guide_text::chapterOf(window.className)).join(QLatin1Char('\n'));
            QVERIFY2(!table.isEmpty(), qPrintable(window.className));
            for (const QWidget* widget : window.widget->findChildren<QWidget*>()) {
                if (!table.contains(widget->toolTip()))
                    missing.append(window.className + QStringLiteral(": ") + widget->toolTip());
            }
        }
        QVERIFY2(missing.isEmpty(), qPrintable(missing.join(QLatin1Char('\n'))));
    }

    void theGuideNamesEveryFieldAndButton()
    {
        QStringList missing;
        int captions = 0;
        for (const OperatorWindow& window : everyWindow(*session)) {
            const QString fields = guide_text::firstCells(guide_text::chapterOf(window.className));
            for (const QString& text : captionsOf(window.widget)) {
                ++captions;
                if (!fields.contains(text))
                    missing.append(window.className + QStringLiteral(": ") + text);
            }
        }
        QVERIFY2(missing.isEmpty(), qPrintable(missing.join(QLatin1Char('\n'))));
        QVERIFY2(captions > 150, qPrintable(QString::number(captions)));
    }

    void theGuideGivesTheRangeOfEveryNumber()
    {
        static const QRegularExpression step(QStringLiteral("steps of ([0-9.]+)"));
        int numbers = 0;
        for (const OperatorWindow& window : everyWindow(*session)) {
            const QStringList rows = guide_text::tableRows(guide_text::chapterOf(window.className));
            for (const QDoubleSpinBox* box : window.widget->findChildren<QDoubleSpinBox*>()) {
                ++numbers;
                const QString range = QStringLiteral("| %1 to %2").arg(box->minimum()).arg(box->maximum(), 0, 'g', 10);
                const QStringList told = rows.filter(box->toolTip()).filter(range);
                const QString where =
                    window.className + QLatin1Char(' ') + box->objectName() + QLatin1Char(' ') + range;
                QVERIFY2(!told.isEmpty(), qPrintable(where));
                const auto size = step.match(told.first());
                QVERIFY2(!size.hasMatch() || size.captured(1).toDouble() == box->singleStep(), qPrintable(where));
            }
        }
        QVERIFY2(numbers > 70, qPrintable(QString::number(numbers)));
    }

    void everyChapterShowsItsWindow()
    {
        for (const QString& heading : guide_text::windowChapters())
            QVERIFY2(guide_text::partOfGuide(heading).contains(QLatin1String("\n![")), qPrintable(heading));
        QVERIFY(guide_text::partOfGuide(QStringLiteral("Main window")).contains(QLatin1String("\n![")));
    }

    void theGuideTellsEveryMenuEntry()
    {
        const QString levels = guide_text::partOfGuide(QStringLiteral("User levels"), 3);
        int entries = 0;
        for (const QAction* menu : session->window().menuBar()->actions()) {
            for (const QAction* entry : menu->menu()->actions()) {
                if (entry->isSeparator())
                    continue;
                ++entries;
                QVERIFY2(levels.contains(caption(entry->text())), qPrintable(entry->text()));
            }
        }
        QCOMPARE(entries, 17);
    }

    void theGuideTellsEveryMessageToTheLetter()
    {
        const QString messages = guide_text::partOfGuide(QStringLiteral("Messages"), 3);
        const QStringList lines = guide_text::messageLines();
        for (const QString& line : lines)
            QVERIFY2(messages.contains(line), qPrintable(line));
        QVERIFY2(lines.size() > 25, qPrintable(QString::number(lines.size())));
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
