// The operator's guide and the windows say the same.

#include "app/EveryWindow.h"
#include "app/SimulatedSession.h"
#include "support/Operator.h"

#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QDirIterator>
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

/// Heading of the chapter that describes a window.
struct Chapter {
    const char* className;
    const char* heading;
};

constexpr Chapter chapters[] = {{"WidgetGraphXY", "XY graph"},
                                {"WidgetFeedbackControl", "Feedback control panel"},
                                {"WidgetGraphFFT", "FFT graph"},
                                {"WidgetPidCtrl", "PID parameters"},
                                {"WindowPIDparams", "PID parameters"},
                                {"WidgetGraphCurrents", "Time graphs"},
                                {"WidgetGraphPos", "Time graphs"},
                                {"WidgetGraphInt", "Time graphs"},
                                {"WindowFiltparams", "Position filters"},
                                {"WindowROC_ROI", "ROC and ROI"},
                                {"WindowBeamlineConf", "Beamline and BPM configuration"},
                                {"WindowPico", "Current amplifiers"},
                                {"WindowDisplaySettings", "Display settings"},
                                {"WindowSFPstatus", "SFP status"},
                                {"DialogLogin", "Login"},
                                {"WindowManOutCtrl", "Manual outputs"},
                                {"WindowFrequencyAnalysis", "Frequency analysis"},
                                {"WindowSaveData", "Save data"},
                                {"WindowRockingCurve", "Rocking curve"},
                                {"WindowRocking3D", "3D rocking curve"},
                                {"WindowStepResponse", "Step response"},
                                {"QsLogging::Window", "Log window"},
                                {"about", "About"}};

QString textOf(const QString& path)
{
    QFile file(QStringLiteral(KORA_SOURCE_FOLDER "/") + path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// The guide from a heading of any depth to the next one of that depth.
QString partOfGuide(const QString& heading, int depth = 2)
{
    static const QString guide = textOf(QStringLiteral("docs/operator-guide.md"));
    const QString mark = QLatin1Char('\n') + QString(depth, QLatin1Char('#')) + QLatin1Char(' ');
    const int start = guide.indexOf(mark + heading + QLatin1Char('\n'));
    if (start < 0)
        return QString();
    const int end = guide.indexOf(mark, start + 1);
    return guide.mid(start, end < 0 ? -1 : end - start);
}

QString chapterOf(const QString& className)
{
    for (const Chapter& chapter : chapters) {
        if (className == QLatin1String(chapter.className))
            return partOfGuide(QLatin1String(chapter.heading));
    }
    return QString();
}

QStringList tableRows(const QString& chapter)
{
    return chapter.split(QLatin1Char('\n')).filter(QRegularExpression(QStringLiteral("^\\|")));
}

QString firstCells(const QString& chapter)
{
    QStringList cells;
    for (const QString& row : tableRows(chapter))
        cells.append(row.section(QLatin1Char('|'), 1, 1));
    return cells.join(QLatin1Char('\n'));
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

/// The literals of all message boxes in the sources, line by line.
QStringList messageLines()
{
    static const QRegularExpression call(
        QStringLiteral("(?:QMessageBox::(?:warning|information|critical)\\(|refuse\\(|constexpr Refusal)[^;]*;"));
    static const QRegularExpression literal(QStringLiteral("\"((?:[^\"\\\\]|\\\\.)*)\""));
    static const QRegularExpression separator(QStringLiteral("\\\\n|%1"));
    QString sources;
    QDirIterator files(QStringLiteral(KORA_SOURCE_FOLDER "/src"), {QStringLiteral("*.cpp")}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        if (file.open(QIODevice::ReadOnly))
            sources += QString::fromUtf8(file.readAll());
    }
    QStringList lines;
    for (auto found = call.globalMatch(sources); found.hasNext();) {
        QString joined = found.next().captured();
        // Neighbouring literals are one.
        static const QRegularExpression seam(QStringLiteral("\"\\s*\""));
        joined.remove(seam);
        for (auto text = literal.globalMatch(joined); text.hasNext();) {
            for (const QString& line : text.next().captured(1).split(separator))
                lines.append(line.trimmed());
        }
    }
    lines.removeAll(QString());
    return lines;
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
            const QString table = tableRows(chapterOf(window.className)).join(QLatin1Char('\n'));
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
            const QString fields = firstCells(chapterOf(window.className));
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
            const QStringList rows = tableRows(chapterOf(window.className));
            for (const QDoubleSpinBox* box : window.widget->findChildren<QDoubleSpinBox*>()) {
                ++numbers;
                const QString range = QStringLiteral("| %1 to %2").arg(box->minimum()).arg(box->maximum(), 0, 'g', 10);
                const QStringList told = rows.filter(box->toolTip()).filter(range);
                const QString where = window.className + QLatin1Char(' ') + box->objectName() + QLatin1Char(' ') + range;
                QVERIFY2(!told.isEmpty(), qPrintable(where));
                const auto size = step.match(told.first());
                QVERIFY2(!size.hasMatch() || size.captured(1).toDouble() == box->singleStep(), qPrintable(where));
            }
        }
        QVERIFY2(numbers > 70, qPrintable(QString::number(numbers)));
    }

    void everyChapterShowsItsWindow()
    {
        for (const Chapter& chapter : chapters)
            QVERIFY2(partOfGuide(QLatin1String(chapter.heading)).contains(QLatin1String("\n![")), chapter.heading);
        QVERIFY(partOfGuide(QStringLiteral("Main window")).contains(QLatin1String("\n![")));
    }

    void theGuideTellsEveryMenuEntry()
    {
        const QString levels = partOfGuide(QStringLiteral("User levels"), 3);
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
        const QString messages = partOfGuide(QStringLiteral("Messages"), 3);
        const QStringList lines = messageLines();
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
