#include <QDir>
#include <QDirIterator>
#include <QRegularExpression>
#include <QtTest>

namespace {

/// The floors of the program, from the ground. A file includes only from its own floor or below.
enum Floor
{
    Ground,
    Records,
    HardwareAccess,
    Widgets,
    Windows,
    Board,
    Start
};

QString folderOf(const QString& path)
{
    return path.section(QLatin1Char('/'), 0, -2);
}

/// Name of a file without its suffixes.
QString unitOf(const QString& path)
{
    return path.section(QLatin1Char('/'), -1).section(QLatin1Char('.'), 0, 0);
}

/// The log window and its parts stand in the logger's folder.
Floor floorInLogging(const QString& unit)
{
    static const QRegularExpression partOfTheWindow(
        QStringLiteral("^(Log(TableView|RowHeader|WindowModel)|WindowLogFilterProxyModel)$"));
    if (unit.contains(partOfTheWindow))
        return Widgets;
    return unit == QLatin1String("LogWindow") ? Windows : Ground;
}

/// What the hardware gives and takes, in its own form and as plain tables; the rest of these folders are the
/// objects that reach it, and their parts.
Floor floorAtTheHardware(const QString& unit)
{
    static const QRegularExpression record(
        QStringLiteral("^(DisplayRecord|DeviceRecords|DeviceFile|PlotData|koralink|PidStatus|VersionText|SettingsPath|"
                       "LoopConfiguration|stub)$"));
    return unit.contains(record) ? Records : HardwareAccess;
}

/// Floor of a file by its path below src/.
Floor floorOf(const QString& path)
{
    static const QRegularExpression window(QStringLiteral("^(Window.*|DialogLogin|about)$"));
    const QString folder = folderOf(path);
    const QString unit = unitOf(path);
    if (folder == QLatin1String("logging"))
        return floorInLogging(unit);
    if (folder == QLatin1String("hardware") || folder == QLatin1String("stream"))
        return floorAtTheHardware(unit);
    if (path == QLatin1String("app/main.cpp"))
        return Start;
    if (unit == QLatin1String("MainWindow"))
        return Board;
    if (unit == QLatin1String("Globals"))
        return Ground;
    if (unit.contains(window))
        return Windows;
    // What a panel or a window is made of: graphs, panels, and the units of arithmetic and procedure beside
    // them.
    return Widgets;
}

bool mayIncludeTheBoard(const QString& path)
{
    return path == QLatin1String("app/main.cpp") || path.startsWith(QLatin1String("app/MainWindow."));
}

/// What is wrong with one file of the program that takes another, as a line for the reader; empty if nothing
/// is.
QString complaint(const QString& path, const QString& included)
{
    if (included == QLatin1String("app/MainWindow.h") && !mayIncludeTheBoard(path))
        return QStringLiteral("%1 includes the main window").arg(path);
    if (floorOf(included) > floorOf(path))
        return QStringLiteral("%1 includes %2 from a floor above").arg(path, included);
    return QString();
}

QString sourceFolder()
{
    return QStringLiteral(KORA_SOURCE_FOLDER "/src/");
}

QString textOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// Paths that a text takes by the expression's first group.
QStringList captures(const QString& text, const QRegularExpression& expression)
{
    QStringList found;
    for (auto match = expression.globalMatch(text); match.hasNext();)
        found.append(match.next().captured(1));
    return found;
}

QStringList quotedIncludes(const QString& text)
{
    static const QRegularExpression include(QStringLiteral("^[ \\t]*#[ \\t]*include[ \\t]*\"([^\"]+)\""),
                                            QRegularExpression::MultilineOption);
    return captures(text, include);
}

/// Headers of the widgets that a form places.
QStringList promotedHeaders(const QString& form)
{
    static const QRegularExpression header(QStringLiteral("<header[^>]*>([^<]+)</header>"));
    return captures(form, header);
}

QStringList sourceFiles()
{
    QStringList files;
    QDirIterator iterator(sourceFolder(), {QStringLiteral("*.h"), QStringLiteral("*.cpp")}, QDir::Files,
                          QDirIterator::Subdirectories);
    while (iterator.hasNext())
        files.append(QDir(sourceFolder()).relativeFilePath(iterator.next()));
    return files;
}

/// Header of the class that a form belongs to, which has its name.
QString ownerOf(const QString& form)
{
    const QString header = unitOf(form) + QStringLiteral(".h");
    for (const QString& path : sourceFiles()) {
        if (path.endsWith(QLatin1Char('/') + header))
            return path;
    }
    return QString();
}

bool isGenerated(const QString& included)
{
    return included.startsWith(QLatin1String("ui_")) || included.endsWith(QLatin1String(".moc"));
}

} // namespace

class IncludeFloorsTest : public QObject
{
    Q_OBJECT

private slots:
    void noFileIncludesFromAFloorAbove()
    {
        QStringList complaints;
        int includes = 0;
        for (const QString& path : sourceFiles()) {
            for (const QString& included : quotedIncludes(textOf(sourceFolder() + path))) {
                ++includes;
                if (!isGenerated(included))
                    complaints.append(complaint(path, included));
            }
        }
        complaints.removeAll(QString());
        QVERIFY2(complaints.isEmpty(), qPrintable(complaints.join(QLatin1Char('\n'))));
        QVERIFY(includes > 100);
    }

    void everyIncludeIsAFileOfTheProgram()
    {
        QStringList strangers;
        for (const QString& path : sourceFiles()) {
            for (const QString& included : quotedIncludes(textOf(sourceFolder() + path))) {
                if (!isGenerated(included) && !QFile::exists(sourceFolder() + included))
                    strangers.append(path + QLatin1String(" includes ") + included);
            }
        }
        QVERIFY2(strangers.isEmpty(), qPrintable(strangers.join(QLatin1Char('\n'))));
    }

    void formsPlaceOnlyWidgetsFromBelow()
    {
        const QDir forms(QStringLiteral(KORA_SOURCE_FOLDER "/forms"));
        QStringList complaints;
        for (const QString& form : forms.entryList({QStringLiteral("*.ui")})) {
            const QString owner = ownerOf(form);
            QVERIFY2(!owner.isEmpty(), qPrintable(form + QLatin1String(" belongs to no class")));
            for (const QString& header : promotedHeaders(textOf(forms.filePath(form)))) {
                if (QFile::exists(sourceFolder() + header))
                    complaints.append(complaint(owner, header));
            }
        }
        complaints.removeAll(QString());
        QVERIFY2(complaints.isEmpty(), qPrintable(complaints.join(QLatin1Char('\n'))));
    }

    void floorsAreToldApart_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<int>("floor");
        QTest::newRow("logger") << "logging/Logger.cpp" << int(Ground);
        QTest::newRow("globals") << "app/Globals.h" << int(Ground);
        QTest::newRow("record") << "stream/DisplayRecord.h" << int(Records);
        QTest::newRow("library") << "hardware/koralink.h" << int(Records);
        QTest::newRow("gateway") << "hardware/MailboxComm.cpp" << int(HardwareAccess);
        QTest::newRow("decoder") << "stream/Updater.h" << int(HardwareAccess);
        QTest::newRow("part of the decoder") << "stream/TraceDecoder.h" << int(HardwareAccess);
        QTest::newRow("graph") << "graphs/WidgetGraphXY.cpp" << int(Widgets);
        QTest::newRow("panel") << "support/WidgetPico.h" << int(Widgets);
        QTest::newRow("window") << "support/WindowPico.h" << int(Windows);
        QTest::newRow("part of the log window") << "logging/window/LogTableView.h" << int(Widgets);
        QTest::newRow("log window") << "logging/LogWindow.h" << int(Windows);
        QTest::newRow("login") << "support/DialogLogin.h" << int(Windows);
        QTest::newRow("board") << "app/MainWindow.cpp" << int(Board);
        QTest::newRow("main") << "app/main.cpp" << int(Start);
    }
    void floorsAreToldApart()
    {
        QFETCH(QString, path);
        QTEST(int(floorOf(path)), "floor");
    }

    void aStepUpIsComplainedOf_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("included");
        QTest::addColumn<bool>("allowed");
        QTest::newRow("widget of a window") << "support/WidgetPico.cpp"
                                            << "support/WindowPico.h" << false;
        QTest::newRow("window of a widget") << "support/WindowPico.cpp"
                                            << "support/WidgetPico.h" << true;
        QTest::newRow("record of the gateway") << "stream/DeviceRecords.h"
                                               << "hardware/MailboxComm.h" << false;
        QTest::newRow("logger of a record") << "logging/Logger.cpp"
                                            << "stream/DisplayRecord.h" << false;
        QTest::newRow("own floor") << "feedback/WindowROC_ROI.cpp"
                                   << "feedback/WindowBeamlineConf.h" << true;
        QTest::newRow("main window of a window") << "support/DialogLogin.cpp"
                                                 << "app/MainWindow.h" << false;
        QTest::newRow("main window of the logger") << "logging/Logger.cpp"
                                                   << "app/MainWindow.h" << false;
        QTest::newRow("main window of main") << "app/main.cpp"
                                             << "app/MainWindow.h" << true;
        QTest::newRow("main window of itself") << "app/MainWindow.cpp"
                                               << "app/MainWindow.h" << true;
    }
    void aStepUpIsComplainedOf()
    {
        QFETCH(QString, path);
        QFETCH(QString, included);
        QTEST(complaint(path, included).isEmpty(), "allowed");
    }

    void includesAreReadWhateverTheirBlanks()
    {
        const QString text = QStringLiteral("#include \"a/b.h\"\n  # include  \"c.h\" // why\n#include <QDir>\n"
                                            "// #include \"d.h\"\n");
        QCOMPARE(quotedIncludes(text), QStringList({QStringLiteral("a/b.h"), QStringLiteral("c.h")}));
    }
};

QTEST_APPLESS_MAIN(IncludeFloorsTest)
#include "IncludeFloorsTest.moc"
