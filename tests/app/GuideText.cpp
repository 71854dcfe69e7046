#include "app/GuideText.h"

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>

namespace {

/// Heading of the chapter that describes a window.
struct Chapter
{
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

} // namespace

QStringList guide_text::windowChapters()
{
    QStringList headings;
    for (const Chapter& chapter : chapters)
        headings.append(QLatin1String(chapter.heading));
    return headings;
}

QString guide_text::partOfGuide(const QString& heading, int depth)
{
    static const QString guide = textOf(QStringLiteral("docs/operator-guide.md"));
    const QString mark = QLatin1Char('\n') + QString(depth, QLatin1Char('#')) + QLatin1Char(' ');
    const int start = guide.indexOf(mark + heading + QLatin1Char('\n'));
    if (start < 0)
        return QString();
    const int end = guide.indexOf(mark, start + 1);
    return guide.mid(start, end < 0 ? -1 : end - start);
}

QString guide_text::chapterOf(const QString& className)
{
    for (const Chapter& chapter : chapters) {
        if (className == QLatin1String(chapter.className))
            return partOfGuide(QLatin1String(chapter.heading));
    }
    return QString();
}

QStringList guide_text::tableRows(const QString& chapter)
{
    return chapter.split(QLatin1Char('\n')).filter(QRegularExpression(QStringLiteral("^\\|")));
}

QString guide_text::firstCells(const QString& chapter)
{
    QStringList cells;
    for (const QString& row : tableRows(chapter))
        cells.append(row.section(QLatin1Char('|'), 1, 1));
    return cells.join(QLatin1Char('\n'));
}

QStringList guide_text::messageLines()
{
    static const QRegularExpression call(
        QStringLiteral("(?:QMessageBox::(?:warning|information|critical)\\(|refuse\\(|constexpr Refusal)[^;]*;"));
    static const QRegularExpression literal(QStringLiteral("\"((?:[^\"\\\\]|\\\\.)*)\""));
    static const QRegularExpression separator(QStringLiteral("\\\\n|%[12]"));
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
