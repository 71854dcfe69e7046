#include "app/SourceTree.h"

#include <QDir>
#include <QRegularExpression>
#include <QtTest>

namespace {

/// The floors of the house, from the ground. A file includes only from its own floor or below. The program and the
/// simulation stand side by side on the hardware boundary: neither includes from the other.
enum Floor
{
    NoFloor,
    Boundary,
    // The program
    Ground,
    Records,
    HardwareAccess,
    Widgets,
    Windows,
    Board,
    Start,
    // The simulation
    SimulatedGround,
    SimulatedBeam,
    SimulatedDetectors,
    SimulatedProcessor,
    SimulatedOutputs,
    SimulatedInstallation,
    SimulatedConsole,
    SimulatedService,
    SimulatedBoundary
};

struct FloorOfUnits
{
    Floor floor;
    const char* folders; ///< regular expression
    const char* units;   ///< regular expression, names without suffix
};

/// Every file belongs to exactly one row. Where a folder has files of several floors, they are named.
const FloorOfUnits floors[] = {
    {Boundary, "src/hardware", "koralink|stub|LoopConfiguration|LoopParameters|PidStatus|StreamRate"},
    {Boundary, "src/stream", "DisplayRecord|DeviceRecords|DeviceFile|StreamSignal|SignalTable"},
    {Ground, "src/logging",
     "\\w*Destination|DestinationMaker|Level|Log|LogMessage|LogStatement|Logger|LoggerThread|MutexLock|"
     "\\w*RotationStrategy|TimeStamp"},
    {Ground, "src/app", "Globals"},
    {Records, "src/hardware", "PidStatusMetaType|VersionText|SettingsPath"},
    {Records, "src/stream", "PlotData|MissingStream"},
    {Records, "src/files", "OutputFile"},
    {HardwareAccess, "src/hardware", "ConfigFile|MailboxComm|SettingsChange|SettingsLock"},
    {HardwareAccess, "src/stream", "Updater|Spectrum|TraceDecoder|GraphDataWriter|BufferWindow"},
    // What a panel or a window is made of: graphs, panels, and the units of arithmetic and procedure beside them.
    {Widgets, "src/logging", "LogWindowModel|WindowLogFilterProxyModel"},
    {Widgets, "src/logging/window|src/graphs|src/tools/\\w+", "\\w+"},
    {Widgets, "src/(feedback|tools|support)", "(?!Window|DialogLogin$|about$)\\w+"},
    {Widgets, "src/files", "FailedSave"},
    {Widgets, "src/app",
     "BoardShares|DockTitleButtons|HiddenDockFocusGuard|ProcessStart|TabOrder|TerminationSignals|WorkerThread"},
    {Windows, "src/logging", "LogWindow"},
    {Windows, "src/(feedback|tools|support)", "Window\\w+|DialogLogin|about"},
    {Board, "src/app", "MainWindow"},
    {Start, "src/app", "main"},
    {SimulatedGround, "simulation", "Accounts|Clock|FixedStepClock|InstallationState|Operations|Rates"},
    {SimulatedBeam, "simulation/beam", "\\w+"},
    {SimulatedDetectors, "simulation/detectors", "\\w+"},
    {SimulatedProcessor, "simulation/processor", "\\w+"},
    {SimulatedOutputs, "simulation/outputs", "\\w+"},
    {SimulatedInstallation, "simulation",
     "AcquisitionBoard|ControlLibrary|Faults|Installation|Plant|PowerOn|SimulationControl|StreamConditions"},
    {SimulatedConsole, "simulation/console", "(?!main$)\\w+"},
    {SimulatedService, "simulation/service", "\\w+"},
    {SimulatedBoundary, "simulation/console", "main"},
    {SimulatedBoundary, "simulation/boundary", "\\w+"},
};

bool matches(const char* expression, const QString& text)
{
    return QRegularExpression(QRegularExpression::anchoredPattern(QLatin1String(expression))).match(text).hasMatch();
}

QVector<Floor> floorsOf(const QString& path)
{
    QVector<Floor> found;
    for (const FloorOfUnits& row : floors) {
        if (matches(row.folders, folderOf(path)) && matches(row.units, nameOf(path)))
            found.append(row.floor);
    }
    return found;
}

/// Floor of a file by its path from the top of the tree.
Floor floorOf(const QString& path)
{
    static QHash<QString, Floor> known;
    const auto found = known.constFind(path);
    if (found != known.constEnd())
        return *found;
    const QVector<Floor> named = floorsOf(path);
    return *known.insert(path, named.size() == 1 ? named.first() : NoFloor);
}

bool isOfTheSimulation(Floor floor)
{
    return floor >= SimulatedGround;
}

bool mayInclude(Floor from, Floor to)
{
    return to == Boundary || (to <= from && isOfTheSimulation(to) == isOfTheSimulation(from));
}

bool mayIncludeTheBoard(const QString& path)
{
    return path == QLatin1String("src/app/main.cpp") || path.startsWith(QLatin1String("src/app/MainWindow."));
}

/// What is wrong with one file that takes another, as a line for the reader; empty if nothing is.
QString complaint(const QString& path, const QString& included)
{
    if (included == QLatin1String("src/app/MainWindow.h") && !mayIncludeTheBoard(path))
        return QStringLiteral("%1 includes the main window").arg(path);
    if (!mayInclude(floorOf(path), floorOf(included)))
        return QStringLiteral("%1 includes %2 from a floor above").arg(path, included);
    return QString();
}

using Includes = QMap<QString, QSet<QString>>;

/// Units that lie on a cycle of includes or between two.
QStringList unitsInCycles(Includes includes)
{
    for (int before = -1; before != includes.size();) {
        before = includes.size();
        QSet<QString> included;
        for (const QSet<QString>& units : qAsConst(includes))
            included += units;
        for (const QString& unit : includes.keys()) {
            if (!included.contains(unit) ||
                !includes[unit].intersects(QSet<QString>(includes.keyBegin(), includes.keyEnd())))
                includes.remove(unit);
        }
    }
    return includes.keys();
}

/// Header of the class that a form belongs to, which has its name.
QString ownerOf(const QString& form)
{
    const QString header = QLatin1Char('/') + nameOf(form) + QStringLiteral(".h");
    for (const QString& path : sourceFiles()) {
        if (path.endsWith(header))
            return path;
    }
    return QString();
}

QString joined(QStringList complaints)
{
    complaints.removeAll(QString());
    return complaints.join(QLatin1Char('\n'));
}

} // namespace

class IncludeFloorsTest : public QObject
{
    Q_OBJECT

private slots:
    void everyFileBelongsToOneFloor()
    {
        QStringList strangers;
        for (const QString& path : sourceFiles()) {
            if (floorsOf(path).size() != 1)
                strangers.append(QStringLiteral("%1 is named by %2 floors").arg(path).arg(floorsOf(path).size()));
        }
        QCOMPARE(joined(strangers), QString());
        QVERIFY(sourceFiles().size() > 100);
    }

    void noFileIncludesFromAFloorAbove()
    {
        QStringList complaints;
        int includes = 0;
        for (const QString& path : sourceFiles()) {
            for (const QString& included : includedPaths(path)) {
                ++includes;
                complaints.append(complaint(path, included));
            }
        }
        QCOMPARE(joined(complaints), QString());
        QVERIFY(includes > 100);
    }

    void noIncludesRunInACircle()
    {
        Includes includes;
        for (const QString& path : sourceFiles()) {
            for (const QString& included : includedPaths(path)) {
                if (unitOf(included) != unitOf(path))
                    includes[unitOf(path)].insert(unitOf(included));
            }
        }
        QCOMPARE(joined(unitsInCycles(includes)), QString());
        QVERIFY(includes.size() > 50);
    }

    void circlesAreFound()
    {
        const Includes circle = {{QStringLiteral("top"), {QStringLiteral("a")}},
                                 {QStringLiteral("a"), {QStringLiteral("b")}},
                                 {QStringLiteral("b"), {QStringLiteral("c"), QStringLiteral("ground")}},
                                 {QStringLiteral("c"), {QStringLiteral("a")}}};
        QCOMPARE(unitsInCycles(circle), QStringList({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}));
        const Includes line = {{QStringLiteral("a"), {QStringLiteral("b"), QStringLiteral("c")}},
                               {QStringLiteral("b"), {QStringLiteral("c")}}};
        QCOMPARE(unitsInCycles(line), QStringList());
    }

    void theBoundaryNeedsNoQt()
    {
        QStringList users;
        for (const QString& path : sourceFiles()) {
            static const QRegularExpression ofQt(QStringLiteral("#include <(Q|qcustomplot)"));
            if (floorOf(path) == Boundary && textOf(path).contains(ofQt))
                users.append(path);
        }
        QCOMPARE(joined(users), QString());
    }

    void everyIncludeIsAFileOfTheTree()
    {
        QStringList strangers;
        for (const QString& path : sourceFiles()) {
            for (const QString& included : includedPaths(path)) {
                if (!QFile::exists(inTree(included)))
                    strangers.append(path + QLatin1String(" includes ") + included);
            }
        }
        QCOMPARE(joined(strangers), QString());
    }

    void formsPlaceOnlyWidgetsFromBelow()
    {
        QStringList complaints;
        for (const QString& form : QDir(inTree(QStringLiteral("forms"))).entryList({QStringLiteral("*.ui")})) {
            const QString owner = ownerOf(form);
            QVERIFY2(!owner.isEmpty(), qPrintable(form + QLatin1String(" belongs to no class")));
            for (const QString& header : promotedHeaders(textOf(QStringLiteral("forms/") + form))) {
                if (QFile::exists(inTree(includedPath(header))))
                    complaints.append(complaint(owner, includedPath(header)));
            }
        }
        QCOMPARE(joined(complaints), QString());
    }

    void floorsAreToldApart_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<int>("floor");
        QTest::newRow("logger") << "src/logging/Logger.cpp" << int(Ground);
        QTest::newRow("globals") << "src/app/Globals.h" << int(Ground);
        QTest::newRow("record") << "src/stream/DisplayRecord.h" << int(Boundary);
        QTest::newRow("library") << "src/hardware/koralink.h" << int(Boundary);
        QTest::newRow("version texts") << "src/hardware/VersionText.cpp" << int(Records);
        QTest::newRow("gateway") << "src/hardware/MailboxComm.cpp" << int(HardwareAccess);
        QTest::newRow("decoder") << "src/stream/Updater.h" << int(HardwareAccess);
        QTest::newRow("part of the decoder") << "src/stream/TraceDecoder.h" << int(HardwareAccess);
        QTest::newRow("written file") << "src/files/OutputFile.h" << int(Records);
        QTest::newRow("message of a failed save") << "src/files/FailedSave.h" << int(Widgets);
        QTest::newRow("graph") << "src/graphs/WidgetGraphXY.cpp" << int(Widgets);
        QTest::newRow("panel") << "src/support/WidgetPico.h" << int(Widgets);
        QTest::newRow("window") << "src/support/WindowPico.h" << int(Windows);
        QTest::newRow("part of the log window") << "src/logging/window/LogTableView.h" << int(Widgets);
        QTest::newRow("log window") << "src/logging/LogWindow.h" << int(Windows);
        QTest::newRow("login") << "src/support/DialogLogin.h" << int(Windows);
        QTest::newRow("board") << "src/app/MainWindow.cpp" << int(Board);
        QTest::newRow("main") << "src/app/main.cpp" << int(Start);
        QTest::newRow("part of a tool") << "src/tools/rocking/GridAxes.h" << int(Widgets);
        QTest::newRow("simulated beam") << "simulation/beam/Beam.cpp" << int(SimulatedBeam);
        QTest::newRow("simulated plant") << "simulation/Plant.h" << int(SimulatedInstallation);
        QTest::newRow("file that no row names") << "src/stream/Newcomer.h" << int(NoFloor);
        QTest::newRow("folder that no row names") << "src/newcomers/Newcomer.h" << int(NoFloor);
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
        QTest::newRow("widget of a window") << "src/support/WidgetPico.cpp"
                                            << "src/support/WindowPico.h" << false;
        QTest::newRow("window of a widget") << "src/support/WindowPico.cpp"
                                            << "src/support/WidgetPico.h" << true;
        QTest::newRow("record of the gateway") << "src/stream/DeviceRecords.h"
                                               << "src/hardware/MailboxComm.h" << false;
        QTest::newRow("logger of the decoder") << "src/logging/Logger.cpp"
                                               << "src/stream/Updater.h" << false;
        QTest::newRow("boundary of the logger") << "src/stream/DeviceFile.cpp"
                                                << "src/logging/Log.h" << false;
        QTest::newRow("simulation of the boundary") << "simulation/processor/DisplayStream.h"
                                                    << "src/stream/DisplayRecord.h" << true;
        QTest::newRow("simulation of the program") << "simulation/Plant.cpp"
                                                   << "src/app/Globals.h" << false;
        QTest::newRow("program of the simulation") << "src/app/main.cpp"
                                                   << "simulation/Clock.h" << false;
        QTest::newRow("detectors of the processor") << "simulation/detectors/QuadrantDetector.h"
                                                    << "simulation/processor/Crossbar.h" << false;
        QTest::newRow("own floor") << "src/feedback/WindowROC_ROI.cpp"
                                   << "src/feedback/WindowBeamlineConf.h" << true;
        QTest::newRow("main window of a window") << "src/support/DialogLogin.cpp"
                                                 << "src/app/MainWindow.h" << false;
        QTest::newRow("main window of the logger") << "src/logging/Logger.cpp"
                                                   << "src/app/MainWindow.h" << false;
        QTest::newRow("main window of main") << "src/app/main.cpp"
                                             << "src/app/MainWindow.h" << true;
        QTest::newRow("main window of itself") << "src/app/MainWindow.cpp"
                                               << "src/app/MainWindow.h" << true;
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
