#include "tools/WindowRocking3D.h"
#include "double/KoralinkDouble.h"
#include "support/DrivenPause.h"
#include "support/FileDialogs.h"
#include "support/MessageBoxes.h"
#include "support/Operator.h"
#include "support/World.h"
#include "tools/Graph3D.h"
#include "tools/SurfacePlot.h"
#include "tools/SurfaceWalk.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFile>
#include <QHostInfo>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <cmath>
#include <fcntl.h>
#include <memory>

using namespace koralink_double;
using operate::find;
using operate::press;

namespace {

constexpr std::size_t pausesPerPoint = 12;

CurrentRecord evenly(double sum)
{
    return {{sum / 4, sum / 4, sum / 4, sum / 4}};
}

} // namespace

/// Most walks run with the window hidden, so that no surface is painted.
class WindowRocking3DTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<World> world;
    std::unique_ptr<WindowRocking3D> window;
    QTemporaryDir folder;

    QDoubleSpinBox* box(const char* name) { return find<QDoubleSpinBox>(window.get(), name); }
    QPushButton* button(const char* name) { return find<QPushButton>(window.get(), name); }
    void setRange(double xMin, double xMax, double yMin, double yMax)
    {
        box("xMinBox")->setValue(xMin);
        box("xMaxBox")->setValue(xMax);
        box("yMinBox")->setValue(yMin);
        box("yMaxBox")->setValue(yMax);
    }
    /// Lets the slot run when the walk serves events after so many points.
    void afterPoints(std::size_t points, QObject* receiver, const char* slot)
    {
        driven_pause::setAction([=](unsigned long) {
            if (driven_pause::pauses().size() == points * pausesPerPoint)
                QTimer::singleShot(0, receiver, slot);
        });
    }
    static std::size_t pointsWalked() { return driven_pause::pauses().size() / pausesPerPoint; }
    static QStringList outputsWritten()
    {
        return operate::lines(callsOf("ioctl")).filter(QStringLiteral("anvolt"));
    }
    const std::vector<Quad>& shownCells()
    {
        auto* surface = find<Graph3D>(window.get(), "graph3D")->findChild<SurfacePlot*>();
        if (!surface)
            qFatal("no surface");
        return surface->quads();
    }
    QString savedPath() const { return folder.filePath(QStringLiteral("rock.csv")); }
    QByteArray saved() const
    {
        QFile file(savedPath());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }
    QList<QByteArray> savedRows() const { return saved().split('\n').mid(6, surface_walk::points); }
    void save()
    {
        FileDialogs dialogs(savedPath());
        press(button("saveButton"));
        QCOMPARE(dialogs.dialogs().size(), 1);
    }

public:
    /// As the program does: its windows are raster windows, and OpenGL draws the surface alone.
    static void initMain() { QCoreApplication::setAttribute(Qt::AA_ForceRasterWidgets); }

private slots:
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
        window = std::make_unique<WindowRocking3D>();
        QFile::remove(savedPath());
        clearCalls();
    }
    void cleanup()
    {
        driven_pause::clear();
        window.reset();
        world.reset();
        QCOMPARE(openDescriptors(), 0);
    }

    void formHasTheStatedFieldsAndDefaults()
    {
        QCOMPARE(window->windowTitle(), QStringLiteral("3D Rocking Curve"));
        const QVector<QPair<const char*, double>> volts = {
            {"xMinBox", 4.0}, {"xMaxBox", 6.0}, {"yMinBox", 4.0}, {"yMaxBox", 6.0}};
        for (const auto& field : volts) {
            QCOMPARE(box(field.first)->minimum(), -20.0);
            QCOMPARE(box(field.first)->maximum(), 99.99);
            QCOMPARE(box(field.first)->value(), field.second);
            QCOMPARE(box(field.first)->suffix(), QStringLiteral(" V"));
        }
        QCOMPARE(box("timeBox")->minimum(), 1.0);
        QCOMPARE(box("timeBox")->maximum(), 1000.0);
        QCOMPARE(box("timeBox")->decimals(), 0);
        QCOMPARE(box("timeBox")->value(), 10.0);
        QCOMPARE(box("timeBox")->suffix(), QStringLiteral(" ms"));
        QCOMPARE(button("saveButton")->text(), QStringLiteral("Save Data"));
        QCOMPARE(button("goButton")->text(), QStringLiteral("Go"));
        QCOMPARE(button("stopButton")->text(), QStringLiteral("Stop"));
        QVERIFY(find<QDialogButtonBox>(window.get(), "buttonBox")->button(QDialogButtonBox::Close));
        QVERIFY(find<Graph3D>(window.get(), "graph3D"));
        QStringList labels;
        for (const QLabel* label : window->findChildren<QLabel*>())
            labels.append(label->text());
        labels.sort();
        QCOMPARE(labels, QStringList({QStringLiteral("Step time: "), QStringLiteral("X max: "),
                                      QStringLiteral("X min:"), QStringLiteral("Y max: "),
                                      QStringLiteral("Y min:")}));
    }

    void walkCallsEverythingInOrder()
    {
        afterPoints(1, window.get(), SLOT(stopMeasurement()));
        press(button("goButton"));
        const QString flags = QString::number(O_RDWR | O_SYNC);
        QStringList expected = {QStringLiteral("open(/dev/kora_ionbar0, %1)").arg(flags),
                                QStringLiteral("open(/dev/kora_anvolt0, %1)").arg(flags),
                                QStringLiteral("setFBenable(0)"), QStringLiteral("setOutputMux(0)"),
                                QStringLiteral("ioctl(/dev/kora_anvolt0, 4, 4, 0, 0, 1)")};
        for (int reading = 0; reading < 10; ++reading)
            expected.append(QStringLiteral("ioctl(/dev/kora_ionbar0, %1)").arg(requestCurrents));
        expected.append(QStringLiteral("setOutputMux(1)"));
        QStringList lines;
        for (const Call& call : calls())
            lines.append(QString::fromStdString(call.text()));
        QCOMPARE(lines.mid(0, lines.size() - 2), expected);
        const QStringList closes = lines.mid(lines.size() - 2);
        QVERIFY(closes.contains(QStringLiteral("close(/dev/kora_ionbar0)")));
        QVERIFY(closes.contains(QStringLiteral("close(/dev/kora_anvolt0)")));
    }

    void pausesOfAPointFollowTheStepTime()
    {
        box("timeBox")->setValue(1);
        std::vector<std::size_t> readsAtPause;
        driven_pause::setAction([&](unsigned long) {
            readsAtPause.push_back(callsOf("ioctl").size() - 1);
            if (readsAtPause.size() == pausesPerPoint)
                QTimer::singleShot(0, window.get(), SLOT(stopMeasurement()));
        });
        press(button("goButton"));
        std::vector<unsigned long> expected(pausesPerPoint, 100);
        expected.front() = 1000;
        expected.back() = 1000;
        QCOMPARE(driven_pause::pauses(), expected);
        QCOMPARE(readsAtPause, (std::vector<std::size_t>{0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
    }

    void wholeWalkCoversTheGridAndLeavesTheOutputsAtItsEnd()
    {
        setRange(0, 63, -10, 53);
        press(button("goButton"));
        const QStringList written = outputsWritten();
        QCOMPARE(written.size(), 4096);
        QCOMPARE(written.at(0), QStringLiteral("ioctl(/dev/kora_anvolt0, 0, -10, 0, 0, 1)"));
        QCOMPARE(written.at(1), QStringLiteral("ioctl(/dev/kora_anvolt0, 0, -9, 0, 0, 1)"));
        QCOMPARE(written.at(64), QStringLiteral("ioctl(/dev/kora_anvolt0, 1, -10, 0, 0, 1)"));
        QCOMPARE(written.at(4095), QStringLiteral("ioctl(/dev/kora_anvolt0, 63, 53, 0, 0, 1)"));
        QCOMPARE(operate::lines(commands()).last(), QStringLiteral("setOutputMux(1)"));
        QCOMPARE(answers().lastOutputs.volts[1], 53.0);
    }

    void walkRunsDownwardWhereTheMinimumIsAboveTheMaximum()
    {
        setRange(63, 0, 10, 10);
        afterPoints(65, window.get(), SLOT(stopMeasurement()));
        press(button("goButton"));
        QCOMPARE(outputsWritten().at(0), QStringLiteral("ioctl(/dev/kora_anvolt0, 63, 10, 0, 0, 1)"));
        QCOMPARE(outputsWritten().at(64), QStringLiteral("ioctl(/dev/kora_anvolt0, 62, 10, 0, 0, 1)"));
    }

    void savedFileHasExactHeaderAndRows()
    {
        setRange(4, 6, -1, 1);
        answers().currents = [](int, const OutputRecord& outputs) {
            return evenly(1e-7 * outputs.volts[0] + 1e-9 * outputs.volts[1]);
        };
        press(button("goButton"));
        const QDateTime before = QDateTime::currentDateTime();
        save();
        const QList<QByteArray> lines = saved().split('\n');
        QCOMPARE(lines.size(), 6 + 4096 + 1);
        QCOMPARE(lines.at(0), QByteArray("Zenthic KORA\r"));
        QCOMPARE(lines.at(1), QByteArray("Kinetic Orbit Rectification Array\r"));
        QCOMPARE(lines.at(2), QByteArray("\r"));
        // The two letters DD stand where a day would.
        const QRegularExpression date(QStringLiteral("^Time and Date: \\d\\d:\\d\\d:\\d\\d DD\\.%1\r$")
                                          .arg(before.toString(QStringLiteral("MM\\.yyyy"))));
        QVERIFY2(date.match(QString::fromLatin1(lines.at(3))).hasMatch(), lines.at(3).constData());
        QCOMPARE(lines.at(4), "Host Name: " + QHostInfo::localHostName().toLatin1() + "\r");
        QCOMPARE(lines.at(5), QByteArray("ch0,ch1,I0\r"));
        QCOMPARE(lines.last(), QByteArray());
        QCOMPARE(lines.at(6), QByteArray("4,-1,3.99e-07\r"));
        QCOMPARE(lines.at(7), QByteArray("4,-0.968254,3.99032e-07\r"));
        QCOMPARE(lines.at(6 + 64), QByteArray("4.03175,-1,4.02175e-07\r"));
        QCOMPARE(lines.at(6 + 4095), QByteArray("6,1,6.01e-07\r"));
        int carriageReturns = 0;
        for (const QByteArray& line : lines)
            carriageReturns += line.count('\r');
        QCOMPARE(carriageReturns, 6 + 4096);
    }

    void dialogProposesANameWithTheTime()
    {
        FileDialogs dialogs{QString()};
        press(button("saveButton"));
        QCOMPARE(dialogs.dialogs().size(), 1);
        const FileDialogs::Dialog asked = dialogs.dialogs().first();
        QCOMPARE(asked.caption, QStringLiteral("DialogTitle"));
        QCOMPARE(asked.nameFilters, QStringList(QStringLiteral("CSV files (*.csv)")));
        const QRegularExpression name(
            QStringLiteral("^KORA_rock3D_\\d{4}-\\d\\d-\\d\\d_\\d\\d-\\d\\d-\\d\\d\\.csv$"));
        QVERIFY2(name.match(asked.proposedName).hasMatch(), qPrintable(asked.proposedName));
    }

    void cancelledSaveWritesNothing()
    {
        // The proposed name is relative to the working directory.
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(folder.path()));
        const FileDialogs dialogs{QString()};
        const MessageBoxes boxes;
        press(button("saveButton"));
        const QStringList written = QDir(folder.path()).entryList(QDir::Files);
        QVERIFY(QDir::setCurrent(before));
        QCOMPARE(written, QStringList());
        QCOMPARE(dialogs.dialogs().size(), 1);
        QCOMPARE(boxes.count(), 0);
    }

    void folderAsPathIsRefusedWithoutAWord()
    {
        const QString older = folder.filePath(QStringLiteral("folder.csv"));
        QVERIFY(QDir().mkdir(older));
        const FileDialogs dialogs(older);
        const MessageBoxes boxes;
        press(button("saveButton"));
        QCOMPARE(dialogs.dialogs().size(), 1);
        QCOMPARE(boxes.count(), 0);
        QVERIFY(QDir().rmdir(older));
    }

    void saveOverwritesAnOlderFile()
    {
        QFile old(savedPath());
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write(QByteArray(1 << 20, 'x'));
        old.close();
        save();
        QVERIFY(saved().startsWith("Zenthic KORA\r\n"));
        QCOMPARE(saved().count('x'), 0);
    }

    void saveBeforeAnyWalkHasOnlyZeros()
    {
        save();
        QCOMPARE(savedRows().first(), QByteArray("0,0,0\r"));
        QCOMPARE(savedRows().last(), QByteArray("0,0,0\r"));
    }

    void fullDiskIsNoCrash()
    {
        FileDialogs dialogs(QStringLiteral("/dev/full"));
        press(button("saveButton"));
        QCOMPARE(dialogs.dialogs().size(), 1);
    }

    void saveDuringTheWalkWritesThePointsSoFar()
    {
        answers().currents = [](int, const OutputRecord&) { return evenly(0.25); };
        FileDialogs dialogs(savedPath());
        driven_pause::setAction([this](unsigned long) {
            if (driven_pause::pauses().size() == 3 * pausesPerPoint)
                QTimer::singleShot(0, button("saveButton"), SLOT(click()));
            if (driven_pause::pauses().size() == 5 * pausesPerPoint)
                QTimer::singleShot(0, window.get(), SLOT(stopMeasurement()));
        });
        press(button("goButton"));
        QCOMPARE(pointsWalked(), std::size_t(5));
        const QList<QByteArray> rows = savedRows();
        QVERIFY(rows.at(2).endsWith(",0.25\r"));
        QVERIFY(rows.at(3).endsWith(",0\r"));
        QVERIFY(rows.at(4095).endsWith(",0\r"));
    }

    void firstPointLeavesTheSurfaceFlatButForItsCell()
    {
        answers().currents = [](int, const OutputRecord&) { return evenly(3e-6); };
        afterPoints(1, window.get(), SLOT(stopMeasurement()));
        press(button("goButton"));
        const std::vector<Quad>& cells = shownCells();
        QCOMPARE(cells.size(), std::size_t(63 * 63));
        QCOMPARE(cells.front().corners[0][2], 1.0f);
        for (const Quad& cell : cells) {
            for (const auto& corner : cell.corners)
                QVERIFY(&corner == &cells.front().corners[0] || corner[2] == 0.0f);
        }
    }

    void drawnXAxisIsTheYOutput()
    {
        answers().currents = [](int, const OutputRecord& outputs) { return evenly(outputs.volts[1]); };
        setRange(4, 6, 0, 63);
        afterPoints(3, window.get(), SLOT(stopMeasurement()));
        press(button("goButton"));
        // Three points along Y at 0, 1 and 2 V: the heights rise along the first axis of the surface.
        const std::vector<Quad>& cells = shownCells();
        QCOMPARE(cells.at(0).corners[1][0], float(1 / 63.0));
        QCOMPARE(cells.at(0).corners[1][2], 0.5f);
        QCOMPARE(cells.at(1).corners[1][2], 1.0f);
        QCOMPARE(cells.at(63).corners[0][2], 0.0f);
    }

    void currentIsTheMeanOfTenSums()
    {
        int reading = 0;
        answers().currents = [&reading](int, const OutputRecord&) { return evenly(++reading); };
        afterPoints(1, window.get(), SLOT(stopMeasurement()));
        press(button("goButton"));
        save();
        QVERIFY(savedRows().first().endsWith(",5.5\r"));
    }

    void currentsAreAddedInDoubleAndRoundedToFloatEachTime()
    {
        // A little more than half of the last place of the sum: lost if it is rounded to a float first.
        const double little = std::ldexp(1.0, -24) + std::ldexp(1.0, -50);
        bool first = true;
        answers().currents = [&](int, const OutputRecord&) {
            const double base = first ? 1.000003 : little;
            first = false;
            return CurrentRecord{{base, little, little, little}};
        };
        afterPoints(1, window.get(), SLOT(stopMeasurement()));
        press(button("goButton"));
        save();
        QVERIFY2(savedRows().first().endsWith(",0.100001\r"), savedRows().first().constData());
    }

    void newWalkForgetsTheOldOne()
    {
        answers().currents = [](int, const OutputRecord&) { return evenly(1); };
        afterPoints(100, window.get(), SLOT(stopMeasurement()));
        press(button("goButton"));
        driven_pause::clear();
        afterPoints(1, window.get(), SLOT(stopMeasurement()));
        press(button("goButton"));
        save();
        QVERIFY(savedRows().at(0).endsWith(",1\r"));
        QVERIFY(savedRows().at(1).endsWith(",0\r"));
    }

    void walkEndsAtThePointWhereItIsTold_data()
    {
        QTest::addColumn<QString>("how");
        for (const char* how : {"Stop", "Close", "closing the window", "Escape"})
            QTest::newRow(how) << QString::fromLatin1(how);
    }
    void walkEndsAtThePointWhereItIsTold()
    {
        QFETCH(QString, how);
        if (how == QStringLiteral("Stop"))
            afterPoints(7, button("stopButton"), SLOT(click()));
        else if (how == QStringLiteral("Close"))
            afterPoints(7, find<QDialogButtonBox>(window.get(), "buttonBox")->button(QDialogButtonBox::Close),
                        SLOT(click()));
        else
            afterPoints(7, window.get(), how == QStringLiteral("Escape") ? SLOT(reject()) : SLOT(close()));
        window->show();
        press(button("goButton"));
        QCOMPARE(pointsWalked(), std::size_t(7));
        QCOMPARE(operate::lines(commands()).last(), QStringLiteral("setOutputMux(1)"));
        QCOMPARE(window->isVisible(), how == QStringLiteral("Stop"));
        QCOMPARE(openDescriptors(), 0);
    }

    void stopBeforeGoDoesNotStopTheNextWalk()
    {
        press(button("stopButton"));
        afterPoints(3, window.get(), SLOT(stopMeasurement()));
        press(button("goButton"));
        QCOMPARE(pointsWalked(), std::size_t(3));
    }

    void secondGoIsRefusedWhileAWalkRuns()
    {
        driven_pause::setAction([this](unsigned long) {
            if (driven_pause::pauses().size() == 2 * pausesPerPoint) {
                box("xMinBox")->setValue(-5);
                QTimer::singleShot(0, button("goButton"), SLOT(click()));
            }
            if (driven_pause::pauses().size() == 5 * pausesPerPoint)
                QTimer::singleShot(0, window.get(), SLOT(stopMeasurement()));
        });
        press(button("goButton"));
        QCOMPARE(pointsWalked(), std::size_t(5));
        QCOMPARE(callsOf("setFBenable").size(), std::size_t(1));
        QVERIFY(outputsWritten().last().startsWith(QStringLiteral("ioctl(/dev/kora_anvolt0, 4, ")));
        // The door is open again afterwards.
        driven_pause::clear();
        afterPoints(1, window.get(), SLOT(stopMeasurement()));
        press(button("goButton"));
        QVERIFY(outputsWritten().last().startsWith(QStringLiteral("ioctl(/dev/kora_anvolt0, -5, ")));
    }

    void missingDevicesGiveZerosAndNoCrash()
    {
        setDevicePresent("/dev/kora_ionbar0", false);
        setDevicePresent("/dev/kora_anvolt0", false);
        window->show();
        afterPoints(3, window.get(), SLOT(stopMeasurement()));
        press(button("goButton"));
        QCoreApplication::processEvents();
        save();
        QVERIFY(savedRows().first().endsWith(",0\r"));
    }

    void destroyedWindowEndsTheWalkInOrder()
    {
        driven_pause::setAction([this](unsigned long) {
            if (driven_pause::pauses().size() == 4 * pausesPerPoint)
                QTimer::singleShot(0, qApp, [this] { window.reset(); });
        });
        window->show();
        press(button("goButton"));
        QVERIFY(!window);
        QCOMPARE(pointsWalked(), std::size_t(4));
        QCOMPARE(operate::lines(commands()).last(), QStringLiteral("setOutputMux(1)"));
    }

    void quittingProgramEndsTheWalkInOrder()
    {
        afterPoints(9, qApp, SLOT(quit()));
        QTimer::singleShot(0, button("goButton"), SLOT(click()));
        QCOMPARE(QCoreApplication::exec(), 0);
        QVERIFY(pointsWalked() <= 10);
        QCOMPARE(operate::lines(commands()).last(), QStringLiteral("setOutputMux(1)"));
        QCOMPARE(openDescriptors(), 0);
    }

    void windowDestroyedBeneathItsFileDialogIsSurvived()
    {
        const FileDialogs dialogs(savedPath());
        QTimer::singleShot(0, this, [this] { window.reset(); });
        press(button("saveButton"));
        QVERIFY(!window);
        QVERIFY(!QFile::exists(savedPath()));
    }

    void surfaceIsSeenInTheShownWindow()
    {
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        auto* graph = find<Graph3D>(window.get(), "graph3D");
        const auto seen = [graph] { return graph->screen()->grabWindow(graph->winId()).toImage(); };
        const auto holds = [&seen](const QColor& colour) {
            const QImage image = seen();
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x) {
                    if (image.pixelColor(x, y) == colour)
                        return true;
                }
            }
            return false;
        };
        QTRY_COMPARE(seen().pixelColor(2, 2), QColor(Qt::white));
        QVERIFY(!holds(Qt::red));
        const float plateau[4] = {1, 1, 1, 1};
        graph->setData(plateau, 2, 2);
        graph->update();
        QTRY_VERIFY(holds(Qt::red));
        QCOMPARE(seen().pixelColor(2, 2), QColor(Qt::white));
    }

    void normalisedValuesReachFromZeroToOne()
    {
        std::vector<float> raw(surface_walk::points, 0.0f);
        std::vector<float> normalised(surface_walk::points, -1.0f);
        raw[17] = 4e-6f;
        raw[4095] = 1e-6f;
        surface_walk::normalise(raw.data(), normalised.data());
        QCOMPARE(normalised[0], 0.0f);
        QCOMPARE(normalised[17], 1.0f);
        QCOMPARE(normalised[4095], 0.25f);
    }

    void negativeCurrentsAreNormalisedToo()
    {
        std::vector<float> raw(surface_walk::points, -3.0f);
        std::vector<float> normalised(surface_walk::points);
        raw[64] = -5.0f;
        raw[65] = -4.0f;
        surface_walk::normalise(raw.data(), normalised.data());
        QCOMPARE(normalised[0], 1.0f);
        QCOMPARE(normalised[64], 0.0f);
        QCOMPARE(normalised[65], 0.5f);
    }

    void equalCurrentsAreNoNumbersAfterNormalisation()
    {
        const std::vector<float> raw(surface_walk::points, 2.0f);
        std::vector<float> normalised(surface_walk::points);
        surface_walk::normalise(raw.data(), normalised.data());
        QVERIFY(std::isnan(normalised[0]));
        QVERIFY(std::isnan(normalised[4095]));
    }
};

QTEST_MAIN(WindowRocking3DTest)
#include "WindowRocking3DTest.moc"
