#include "Rocking3DTool.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QScreen>

#include <fcntl.h>

using namespace koralink_double;
using operate::find;
using operate::press;

namespace {

/// Paint events of the widget that it filters.
class PaintCounter : public QObject
{
public:
    bool eventFilter(QObject*, QEvent* event) override
    {
        paints += event->type() == QEvent::Paint;
        return false;
    }
    int paints = 0;
};

} // namespace

/// The form, the walk and the surface that is shown meanwhile.
class WindowRocking3DTest : public Rocking3DTool
{
    Q_OBJECT

private slots:
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
                                      QStringLiteral("X min:"), QStringLiteral("Y max: "), QStringLiteral("Y min:")}));
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

    void quickWalkPaintsSeldomAndItsEndAlways()
    {
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        PaintCounter counter;
        find<Graph3D>(window.get(), "graph3D")->installEventFilter(&counter);
        QElapsedTimer timer;
        timer.start();
        afterPoints(300, window.get(), SLOT(stopMeasurement()));
        press(button("goButton"));
        QCOMPARE(pointsWalked(), std::size_t(300));
        QVERIFY2(counter.paints <= 2 + timer.elapsed() / Graph3D::restMs, qPrintable(QString::number(counter.paints)));
        counter.paints = 0;
        QTRY_COMPARE(counter.paints, 1);
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
};

QTEST_MAIN(WindowRocking3DTest)
#include "WindowRocking3DTest.moc"
