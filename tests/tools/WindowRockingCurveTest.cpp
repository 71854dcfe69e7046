#include "tools/WindowRockingCurve.h"
#include "double/KoralinkDouble.h"
#include "support/DrivenPause.h"
#include "support/Operator.h"
#include "support/ScratchSettings.h"
#include "support/World.h"

#include <qcustomplot.h>

#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

#include <fcntl.h>
#include <memory>

using namespace koralink_double;
using operate::find;
using operate::press;

namespace {

/// Currents of channels 0 to 3, of which each tells its channel and the first two outputs.
CurrentRecord tellingCurrents(const OutputRecord& outputs)
{
    CurrentRecord record;
    for (int channel = 0; channel < 4; ++channel)
        record.amps[3 - channel] = 1e-6 * (channel + 1) + 1e-8 * outputs.volts[0] + 1e-10 * outputs.volts[1];
    return record;
}

QVector<QPair<double, double>> pointsOf(const QCPGraph* graph)
{
    QVector<QPair<double, double>> points;
    for (const QCPGraphData& point : *graph->data())
        points.append({point.key, point.value});
    return points;
}

QStringList namesOf(const QCustomPlot* plot)
{
    QStringList names;
    for (int i = 0; i < plot->graphCount(); ++i)
        names.append(plot->graph(i)->name());
    return names;
}

} // namespace

class WindowRockingCurveTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<World> world;
    std::unique_ptr<WindowRockingCurve> window;
    QCustomPlot* plot = nullptr;
    QPushButton* start = nullptr;

    QDoubleSpinBox* box(const char* name) { return find<QDoubleSpinBox>(window.get(), name); }
    QSpinBox* boxN() { return find<QSpinBox>(window.get(), "boxN"); }
    QProgressBar* progress() { return find<QProgressBar>(window.get(), "progressBar"); }
    void choose(const char* direction)
    {
        find<QComboBox>(window.get(), "chSel")->setCurrentText(QLatin1String(direction));
    }
    void setRange(double from, double to, int points)
    {
        box("boxStart")->setValue(from);
        box("boxStop")->setValue(to);
        boxN()->setValue(points);
    }

private slots:
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
        scratch_settings::setValue("BPM1/Top", 2);
        scratch_settings::setValue("BPM1/Right", 1);
        scratch_settings::setValue("BPM1/Bottom", 0);
        scratch_settings::setValue("BPM1/Left", 3);
        scratch_settings::setValue("PID_Xlf/Offset", 3.5);
        scratch_settings::setValue("PID_Ylf/Offset", 4.5);
        answers().currents = [](int, const OutputRecord& outputs) { return tellingCurrents(outputs); };
        window = std::make_unique<WindowRockingCurve>();
        plot = find<QCustomPlot>(window.get(), "graph");
        start = find<QPushButton>(window.get(), "buttonStart");
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        QCoreApplication::processEvents();
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
        QCOMPARE(window->windowTitle(), QStringLiteral("Rocking Curve"));
        QCOMPARE(box("boxStart")->minimum(), -30.0);
        QCOMPARE(box("boxStart")->maximum(), 30.0);
        QCOMPARE(box("boxStart")->value(), 4.0);
        QCOMPARE(box("boxStart")->suffix(), QStringLiteral(" V"));
        QCOMPARE(box("boxStop")->minimum(), -10.0);
        QCOMPARE(box("boxStop")->maximum(), 99.99);
        QCOMPARE(box("boxStop")->value(), 6.0);
        QCOMPARE(box("boxStop")->suffix(), QStringLiteral(" V"));
        QCOMPARE(boxN()->maximum(), 10000);
        QCOMPARE(boxN()->value(), 1000);
        QCOMPARE(box("boxTimePoint")->minimum(), 0.01);
        QCOMPARE(box("boxTimePoint")->maximum(), 100.0);
        QCOMPARE(box("boxTimePoint")->singleStep(), 0.1);
        QCOMPARE(box("boxTimePoint")->value(), 1.0);
        QCOMPARE(box("boxTimePoint")->suffix(), QStringLiteral(" ms"));
        const auto* direction = find<QComboBox>(window.get(), "chSel");
        QCOMPARE(direction->count(), 2);
        QCOMPARE(direction->itemText(0), QStringLiteral("posX"));
        QCOMPARE(direction->itemText(1), QStringLiteral("posY"));
        QCOMPARE(start->text(), QStringLiteral("Start"));
        QCOMPARE(progress()->value(), 0);
        QStringList labels;
        for (const QLabel* label : window->findChildren<QLabel*>()) {
            labels.append(label->text());
            if (label->text() == QStringLiteral("Tpoint: "))
                QCOMPARE(label->toolTip(), QStringLiteral("Time between two points"));
        }
        labels.sort();
        QCOMPARE(labels, QStringList({QStringLiteral("Direction: "), QStringLiteral("N:"), QStringLiteral("Start:"),
                                      QStringLiteral("Stop:"), QStringLiteral("Tpoint: ")}));
    }

    void plotHasTheStatedLook()
    {
        QCOMPARE(plot->graphCount(), 3);
        QCOMPARE(plot->toPixmap(300, 300).toImage().pixelColor(0, 0), QColor(Qt::darkGray));
        QCOMPARE(plot->xAxis->label(), QStringLiteral(" Output voltage [V] "));
        QCOMPARE(plot->yAxis->label(), QStringLiteral(" Input current [A] "));
        QCOMPARE(plot->xAxis->range(), QCPRange(4, 6));
        QCOMPARE(plot->yAxis->range(), QCPRange(-0.00015, 0.00015));
        QCOMPARE(int(plot->interactions()), 3);
        QVERIFY(plot->legend->visible());
        QCOMPARE(plot->legend->textColor(), QColor(Qt::white));
        QCOMPARE(plot->legend->brush().color(), QColor(10, 10, 10));
        QCOMPARE(namesOf(plot), QStringList({QStringLiteral("first electrode"), QStringLiteral("second electrode"),
                                             QStringLiteral("sum")}));
        QCOMPARE(plot->graph(0)->pen().color(), QColor(250, 250, 135, 240));
        QCOMPARE(plot->graph(1)->pen().color(), QColor(255, 120, 255, 240));
        QCOMPARE(plot->graph(2)->pen().color(), QColor(240, 240, 240, 240));
        QCOMPARE(plot->graph(0)->pen().widthF(), 2.0);
        QCOMPARE(plot->graph(1)->pen().widthF(), 2.0);
        QCOMPARE(plot->graph(2)->pen().widthF(), 3.0);
    }

    void changedRangeMovesTheVoltageAxis()
    {
        QSignalSpy redraws(plot, SIGNAL(afterReplot()));
        box("boxStart")->setValue(-2.0);
        QCOMPARE(plot->xAxis->range(), QCPRange(-2, 6));
        box("boxStop")->setValue(3.0);
        QCOMPARE(plot->xAxis->range(), QCPRange(-2, 3));
        QCOMPARE(redraws.count(), 2);
    }

    void scanCallsEverythingInOrder()
    {
        setRange(4, 6, 2);
        press(start);
        const QString flags = QString::number(O_RDWR | O_SYNC);
        const QString read = QStringLiteral("ioctl(/dev/kora_ionbar0, %1)").arg(requestCurrents);
        QStringList lines;
        for (const Call& call : calls())
            lines.append(QString::fromStdString(call.text()));
        const QStringList closes = lines.mid(lines.size() - 2);
        QCOMPARE(
            lines.mid(0, lines.size() - 2),
            QStringList({QStringLiteral("open(/dev/kora_ionbar0, %1)").arg(flags),
                         QStringLiteral("open(/dev/kora_anvolt0, %1)").arg(flags), QStringLiteral("setFBenable(0)"),
                         QStringLiteral("setOutputMux(0)"), QStringLiteral("ioctl(/dev/kora_anvolt0, 4, 4.5, 0, 0, 1)"),
                         read, QStringLiteral("ioctl(/dev/kora_anvolt0, 5, 4.5, 0, 0, 1)"), read,
                         QStringLiteral("setOutputMux(1)")}));
        QVERIFY(closes.contains(QStringLiteral("close(/dev/kora_ionbar0)")));
        QVERIFY(closes.contains(QStringLiteral("close(/dev/kora_anvolt0)")));
    }

    void sweepOfXReadsLeftAndRightAndHoldsTheOtherOutput()
    {
        setRange(4, 6, 4);
        press(start);
        QCOMPARE(operate::lines(callsOf("ioctl")).filter(QStringLiteral("anvolt")),
                 QStringList({QStringLiteral("ioctl(/dev/kora_anvolt0, 4, 4.5, 0, 0, 1)"),
                              QStringLiteral("ioctl(/dev/kora_anvolt0, 4.5, 4.5, 0, 0, 1)"),
                              QStringLiteral("ioctl(/dev/kora_anvolt0, 5, 4.5, 0, 0, 1)"),
                              QStringLiteral("ioctl(/dev/kora_anvolt0, 5.5, 4.5, 0, 0, 1)")}));
        for (int i = 0; i < 4; ++i) {
            const double volts = 4 + 0.5 * i;
            const CurrentRecord read = tellingCurrents({{volts, 4.5, 0, 0}, 1});
            QCOMPARE(pointsOf(plot->graph(0)).at(i), qMakePair(volts, read.channel(3)));
            QCOMPARE(pointsOf(plot->graph(1)).at(i), qMakePair(volts, read.channel(1)));
            QCOMPARE(pointsOf(plot->graph(2)).at(i), qMakePair(volts, read.channel(3) + read.channel(1)));
        }
        QCOMPARE(namesOf(plot), QStringList({QStringLiteral("left (ch 4)"), QStringLiteral("right (ch 2)"),
                                             QStringLiteral("sum (left+right)")}));
        QCOMPARE(plot->graph(0)->pen(), QPen(QBrush(QColor(130, 210, 250)), 2.0));
        QCOMPARE(plot->graph(1)->pen(), QPen(QBrush(QColor(255, 130, 255)), 2.0));
        QCOMPARE(plot->graph(2)->pen().color(), QColor(240, 240, 240, 240));
        QCOMPARE(plot->graph(2)->pen().widthF(), 3.0);
        QCOMPARE(progress()->value(), 100);
    }

    void sweepOfYReadsRecordPositionsOneAndThree()
    {
        choose("posY");
        setRange(1, 2, 1);
        answers().currents = [](int, const OutputRecord&) { return CurrentRecord{{10, 20, 30, 40}}; };
        press(start);
        // Top is channel 2, at position 1; bottom is channel 0, at position 3.
        QCOMPARE(pointsOf(plot->graph(0)), (QVector<QPair<double, double>>{{1.0, 20.0}}));
        QCOMPARE(pointsOf(plot->graph(1)), (QVector<QPair<double, double>>{{1.0, 40.0}}));
        QCOMPARE(pointsOf(plot->graph(2)), (QVector<QPair<double, double>>{{1.0, 60.0}}));
        QCOMPARE(namesOf(plot), QStringList({QStringLiteral("top (ch 3)"), QStringLiteral("bottom (ch 1)"),
                                             QStringLiteral("sum (top+bottom)")}));
        QCOMPARE(plot->graph(0)->pen(), QPen(QBrush(QColor(130, 255, 130)), 2.0));
        QCOMPARE(plot->graph(1)->pen(), QPen(QBrush(QColor(255, 255, 135)), 2.0));
        QVERIFY(operate::lines(commands()).contains(QStringLiteral("ioctl(/dev/kora_anvolt0, 3.5, 1, 0, 0, 1)")));
    }

    void namesFollowTheDirectionAtEachStart()
    {
        setRange(4, 6, 1);
        press(start);
        choose("posY");
        QCOMPARE(namesOf(plot).at(0), QStringLiteral("left (ch 4)"));
        press(start);
        QCOMPARE(namesOf(plot).at(0), QStringLiteral("top (ch 3)"));
        choose("posX");
        press(start);
        QCOMPARE(namesOf(plot).at(0), QStringLiteral("left (ch 4)"));
    }

    void outputsTwoAndThreeStayAtZeroWhateverIsConfigured()
    {
        scratch_settings::setValue("Beamline/DAC_posXlf", 2);
        scratch_settings::setValue("Beamline/DAC_posXhf", 3);
        setRange(4, 6, 1);
        press(start);
        QVERIFY(operate::lines(commands()).contains(QStringLiteral("ioctl(/dev/kora_anvolt0, 0, 0, 0, 0, 1)")));
    }

    void numbersOutsideTheHardwareAreHarmless()
    {
        scratch_settings::setValue("Beamline/DAC_posXlf", 7);
        scratch_settings::setValue("Beamline/DAC_posXhf", -1);
        scratch_settings::setValue("BPM1/Left", 9);
        scratch_settings::setValue("BPM1/Right", -4);
        setRange(4, 6, 1);
        press(start);
        QVERIFY(operate::lines(commands()).contains(QStringLiteral("ioctl(/dev/kora_anvolt0, 0, 0, 0, 0, 1)")));
        QCOMPARE(namesOf(plot).at(0), QStringLiteral("left (ch 4)"));
        QCOMPARE(namesOf(plot).at(1), QStringLiteral("right (ch 1)"));
    }

    void swappedOutputsSwapWhatIsSweptAndWhatIsHeld()
    {
        scratch_settings::setValue("Beamline/DAC_posXlf", 1);
        scratch_settings::setValue("Beamline/DAC_posXhf", 0);
        setRange(4, 6, 1);
        press(start);
        QVERIFY(operate::lines(commands()).contains(QStringLiteral("ioctl(/dev/kora_anvolt0, 4.5, 4, 0, 0, 1)")));
    }

    void downwardScanLeavesThePointsSorted()
    {
        setRange(6, 4, 4);
        press(start);
        QVector<double> keys;
        for (const auto& point : pointsOf(plot->graph(0)))
            keys.append(point.first);
        QCOMPARE(keys, (QVector<double>{4.5, 5, 5.5, 6}));
        QVERIFY(operate::lines(commands()).at(2).startsWith(QStringLiteral("ioctl(/dev/kora_anvolt0, 6, ")));
        QCOMPARE(pointsOf(plot->graph(0)).at(0).second, tellingCurrents({{4.5, 4.5, 0, 0}, 1}).channel(3));
    }

    void equalVoltagesLeaveOnePointWithTheLastValues()
    {
        setRange(5, 5, 10);
        int reads = 0;
        answers().currents = [&reads](int, const OutputRecord&) {
            const double amps = ++reads;
            return CurrentRecord{{amps, amps, amps, amps}};
        };
        press(start);
        QCOMPARE(reads, 10);
        QCOMPARE(pointsOf(plot->graph(0)), (QVector<QPair<double, double>>{{5.0, 10.0}}));
        QCOMPARE(pointsOf(plot->graph(1)), (QVector<QPair<double, double>>{{5.0, 10.0}}));
        QCOMPARE(pointsOf(plot->graph(2)), (QVector<QPair<double, double>>{{5.0, 20.0}}));
    }

    void noPointTogglesFeedbackAndMultiplexerOnly()
    {
        boxN()->setValue(0);
        press(start);
        QCOMPARE(operate::lines(commands()),
                 QStringList({QStringLiteral("setFBenable(0)"), QStringLiteral("setOutputMux(0)"),
                              QStringLiteral("setOutputMux(1)")}));
        QVERIFY(driven_pause::pauses().empty());
        QCOMPARE(plot->graph(0)->dataCount(), 0);
    }

    void eachPointSleepsTwiceAndRedrawsOnce()
    {
        box("boxTimePoint")->setValue(0.29);
        setRange(4, 6, 5);
        QSignalSpy redraws(plot, SIGNAL(afterReplot()));
        press(start);
        QCOMPARE(driven_pause::pauses(), std::vector<unsigned long>(10, 290));
        // Clearing the plot draws it once more.
        QCOMPARE(redraws.count(), 6);
    }

    void outputIsSetBeforeTheFirstPauseAndReadBetweenTheTwo()
    {
        setRange(4, 6, 1);
        std::vector<std::size_t> callsAtPause;
        driven_pause::setAction([&](unsigned long) { callsAtPause.push_back(callsOf("ioctl").size()); });
        press(start);
        QCOMPARE(callsAtPause, (std::vector<std::size_t>{1, 2}));
    }

    void axesHoldAllPoints()
    {
        setRange(4, 6, 4);
        press(start);
        QCOMPARE(plot->xAxis->range(), QCPRange(4, 5.5));
        QCOMPARE(plot->yAxis->range().lower, pointsOf(plot->graph(1)).first().second);
        QCOMPARE(plot->yAxis->range().upper, pointsOf(plot->graph(2)).last().second);
    }

    void newScanClearsTheOldTraces()
    {
        setRange(0, 1, 8);
        press(start);
        setRange(4, 6, 2);
        press(start);
        for (int i = 0; i < 3; ++i)
            QCOMPARE(plot->graph(i)->dataCount(), 2);
    }

    void changedFieldsActOnTheRunningScan()
    {
        setRange(0, 8, 8);
        driven_pause::setAction([this](unsigned long) {
            if (driven_pause::pauses().size() == 4) {
                boxN()->setValue(4);
                box("boxStart")->setValue(2);
                box("boxStop")->setValue(10);
            }
        });
        press(start);
        QVector<double> keys;
        for (const auto& point : pointsOf(plot->graph(0)))
            keys.append(point.first);
        QCOMPARE(keys, (QVector<double>{0, 1, 6, 8}));
        QCOMPARE(progress()->value(), 100);
    }

    void secondStartNestsAScan()
    {
        setRange(0, 3, 3);
        QTimer::singleShot(0, start, SLOT(click()));
        press(start);
        const QStringList sent = operate::lines(commands());
        QStringList order;
        for (const QString& line : sent)
            order.append(line.section(QLatin1Char(','), 0, 1));
        const QString zero = QStringLiteral("ioctl(/dev/kora_anvolt0, 0");
        const QString one = QStringLiteral("ioctl(/dev/kora_anvolt0, 1");
        const QString two = QStringLiteral("ioctl(/dev/kora_anvolt0, 2");
        const QString off = QStringLiteral("setFBenable(0)");
        QCOMPARE(order, QStringList({off, QStringLiteral("setOutputMux(0)"), zero, off,
                                     QStringLiteral("setOutputMux(0)"), zero, one, two,
                                     QStringLiteral("setOutputMux(1)"), one, two, QStringLiteral("setOutputMux(1)")}));
        QCOMPARE(plot->graph(0)->dataCount(), 3);
    }

    void missingDevicesGiveACurveOfZeros()
    {
        setDevicePresent("/dev/kora_ionbar0", false);
        setDevicePresent("/dev/kora_anvolt0", false);
        setRange(4, 6, 2);
        press(start);
        QCOMPARE(pointsOf(plot->graph(2)), (QVector<QPair<double, double>>{{4.0, 0.0}, {5.0, 0.0}}));
        QCOMPARE(operate::lines(commands()).last(), QStringLiteral("setOutputMux(1)"));
    }

    void closedWindowScansToTheEnd()
    {
        setRange(4, 6, 10);
        QTimer::singleShot(0, window.get(), SLOT(close()));
        press(start);
        QVERIFY(!window->isVisible());
        QCOMPARE(plot->graph(0)->dataCount(), 10);
    }

    void destroyedWindowEndsTheScanInOrder()
    {
        setRange(4, 6, 100);
        driven_pause::setAction([this](unsigned long) {
            if (driven_pause::pauses().size() == 6)
                QTimer::singleShot(0, qApp, [this] { window.reset(); });
        });
        press(start);
        QVERIFY(!window);
        QCOMPARE(driven_pause::pauses().size(), std::size_t(6));
        QCOMPARE(operate::lines(commands()).last(), QStringLiteral("setOutputMux(1)"));
        QCOMPARE(openDescriptors(), 0);
    }

    void quittingProgramEndsTheScanInOrder_data()
    {
        QTest::addColumn<bool>("byLastWindow");
        QTest::newRow("the last window closes") << true;
        QTest::newRow("the event loop is told to exit") << false;
    }
    void quittingProgramEndsTheScanInOrder()
    {
        QFETCH(bool, byLastWindow);
        setRange(4, 6, 10000);
        driven_pause::setAction([&](unsigned long) {
            if (driven_pause::pauses().size() != 20)
                return;
            if (byLastWindow)
                QTimer::singleShot(0, window.get(), SLOT(close()));
            else
                QTimer::singleShot(0, qApp, SLOT(quit()));
        });
        QTimer::singleShot(0, start, SLOT(click()));
        QCOMPARE(QCoreApplication::exec(), 0);
        // One or two points more, until the end is known.
        QVERIFY(driven_pause::pauses().size() <= 24);
        QCOMPARE(operate::lines(commands()).last(), QStringLiteral("setOutputMux(1)"));
        QCOMPARE(openDescriptors(), 0);
    }

    void scanUnderARunningEventLoopIsComplete()
    {
        setRange(4, 6, 50);
        QEventLoop turn;
        QTimer::singleShot(0, start, SLOT(click()));
        QTimer::singleShot(0, &turn, SLOT(quit()));
        turn.exec();
        QCOMPARE(plot->graph(0)->dataCount(), 50);
    }

    void enterInAFieldStartsNothing()
    {
        QTest::keyClick(boxN(), Qt::Key_Return);
        QVERIFY(window->isVisible());
        QVERIFY(commands().empty());
    }
};

QTEST_MAIN(WindowRockingCurveTest)
#include "WindowRockingCurveTest.moc"
