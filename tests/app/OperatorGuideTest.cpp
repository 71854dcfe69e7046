// The operator's guide and the windows say the same.

#include "app/EveryWindow.h"
#include "app/Globals.h"
#include "app/GuideText.h"
#include "app/SimulatedSession.h"
#include "hardware/LoopConfiguration.h"
#include "hardware/MailboxComm.h"
#include "stream/Spectrum.h"
#include "stream/Updater.h"
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
#include <QSlider>
#include <QTabBar>
#include <QToolButton>
#include <QtTest>

#include <qcustomplot.h>

#include <cmath>
#include <vector>

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

/// Loops as the guide names them: "X (LF) and X (HF)", "X (LF), X (HF) and Y (HF)".
QString guideNameOf(const LoopConfiguration& configuration)
{
    QStringList names;
    for (const int loop : {LoopXlf, LoopXhf, LoopYlf, LoopYhf}) {
        const QString name = QLatin1String(loopNames[loop]);
        if (configuration.runs(loop))
            names.append(QStringLiteral("%1 (%2)").arg(name.at(0)).arg(name.mid(1).toUpper()));
    }
    const QString last = names.takeLast();
    return names.isEmpty() ? last : names.join(QStringLiteral(", ")) + QStringLiteral(" and ") + last;
}

/// The row whose first cell lists exactly these loops, or that of any others.
QString rowOfLoops(const QStringList& rows, const QString& loops)
{
    for (const QString& row : rows) {
        if (row.section(QLatin1Char('|'), 1, 1).trimmed().split(QStringLiteral("; ")).contains(loops))
            return row;
    }
    return rows.filter(QStringLiteral("| any others |")).join(QLatin1Char('\n'));
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

    void theGuideTellsTheMarkOfEveryChoiceOfLoops()
    {
        const QStringList rows = guide_text::tableRows(guide_text::chapterOf(QStringLiteral("WidgetGraphXY")));
        QWidget* graph = session->widgetOf("WidgetGraphXY");
        const QCPDataMap& mark = *find<QCustomPlot>(graph, "graph")->graph(1)->data();
        for (int code = 0; loopConfiguration(code); ++code) {
            mailbox->setPIDconf(static_cast<signed char>(code));
            QVERIFY(QMetaObject::invokeMethod(graph, "updateGraphXY"));
            QString drawn = QStringLiteral("none");
            if (mark.size() == 1)
                drawn = QStringLiteral("a cross");
            else if (mark.size() == 2)
                drawn = mark.at(0)->key == mark.at(1)->key ? QStringLiteral("a vertical line")
                                                           : QStringLiteral("a horizontal line");
            const QString told = rowOfLoops(rows, guideNameOf(*loopConfiguration(code)));
            QVERIFY2(told.contains(drawn),
                     qPrintable(QStringLiteral("code %1: %2, told: %3").arg(code).arg(drawn, told)));
        }
    }

    void theGuideTellsWhichBinOfAHertzIsShown()
    {
        // Two bins a hertz; a line in the first one of 125 Hz, which is left out.
        constexpr int length = 8192;
        constexpr double pi = 3.14159265358979323846;
        std::vector<DisplayRecord> block(length);
        for (int i = 0; i < length; ++i)
            block[std::size_t(i)].pos1X = std::sin(2 * pi * 250 * i / length);
        QCPDataMap spectrum;
        computeSpectrum(block.data(), length, {length, SlotPos1X, 1.0, false, length / 2}, &spectrum);
        const auto bin = spectrum.findBegin(125, false);
        QCOMPARE(bin->key, 125.0);
        const bool last = bin->value < 1e-6;
        const QString chapter = guide_text::chapterOf(QStringLiteral("WidgetGraphFFT"));
        QCOMPARE(chapter.contains(QLatin1String("the last one within that hertz is shown, not the\nlargest")), last);
    }

    void theGuideTellsWhatActsOnAfterALogOut()
    {
        session->logIn(QStringLiteral("admin"), QStringLiteral("admin"));
        for (const char* action : {"actionManual_Output_Control", "actionPosition_Filter_Settings", "action_ROC_ROI",
                                   "action_Beamline_Settings"})
            session->trigger(action);
        session->logIn(QStringLiteral("cruise"), QStringLiteral("cruise"));
        const struct
        {
            const char* className;
            const char* field;
            const char* name;
        } fields[] = {{"WindowManOutCtrl", "ch1slider", "- Manual Output Control:"},
                      {"WindowFiltparams", "comboBoxFilterXlf", "- Position Filter Settings:"},
                      {"WindowROC_ROI", "roiXDoubleSpinBox", "- ROC/ROI"},
                      {"WindowBeamlineConf", "BPMorientation", "- Beamline"}};
        const QString chapter = guide_text::chapterOf(QStringLiteral("DialogLogin"));
        const QString listed = chapter.mid(chapter.indexOf(QLatin1String("**What stays open.**")));
        QVERIFY(listed.startsWith(QLatin1String("**What")));
        for (const auto& each : fields) {
            QWidget* window = session->widgetOf(each.className);
            QVERIFY(window->isVisible());
            QVERIFY2(find<QWidget>(window, each.field)->isEnabled() == listed.contains(QLatin1String(each.name)),
                     each.name);
        }
        // And the outputs do follow.
        find<QCheckBox>(session->widgetOf("WindowManOutCtrl"), "checboxEnableMan")->setChecked(true);
        find<QSlider>(session->widgetOf("WindowManOutCtrl"), "ch1slider")->setValue(7);
        session->tick(2);
        const QCPDataMap& output = *updater->dataDAC[0];
        QCOMPARE(output.at(output.size() - 1)->value, 7.0);
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
