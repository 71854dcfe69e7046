#include "app/Globals.h"
#include "double/KoralinkDouble.h"
#include "graphs/PlotLook.h"
#include "graphs/WidgetGraphCurrents.h"
#include "graphs/WidgetGraphInt.h"
#include "graphs/WidgetGraphPos.h"
#include "hardware/MailboxComm.h"
#include "support/Operator.h"
#include "support/World.h"

#include <QCheckBox>
#include <QSignalSpy>
#include <QtTest>
#include <qcustomplot.h>

#include <cmath>
#include <memory>

using operate::find;

namespace {

QCustomPlot* plotOf(const QWidget& widget)
{
    return find<QCustomPlot>(&widget, "graph");
}

QCheckBox* box(const QWidget& widget, int number)
{
    return find<QCheckBox>(&widget, qPrintable(QStringLiteral("CheckCh%1").arg(number)));
}

QString drawn(const QWidget& widget)
{
    QString traces;
    for (int trace = 0; trace < plotOf(widget)->graphCount(); ++trace)
        traces += QLatin1Char(plotOf(widget)->graph(trace)->visible() ? '1' : '0');
    return traces;
}

/// Times from 0 to 1 s and these values.
void fill(QCPDataMap* map, std::initializer_list<double> values)
{
    map->clear();
    int i = 0;
    for (double value : values)
        map->add(QCPGraphData(double(i++) / (double(values.size()) - 1), value));
}

void compareRange(const QCPAxis* axis, double lower, double upper)
{
    QCOMPARE(axis->range().lower, lower);
    QCOMPARE(axis->range().upper, upper);
}

QColor colour(int red, int green, int blue)
{
    return QColor(red, green, blue);
}

} // namespace

class TimeGraphsTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<World> world;

    void compareLook(const QWidget& widget, const QVector<QColor>& colours)
    {
        QCustomPlot* plot = plotOf(widget);
        QCOMPARE(plot->graphCount(), colours.size());
        for (int trace = 0; trace < colours.size(); ++trace) {
            QCOMPARE(plot->graph(trace)->pen().color(), colours.at(trace));
            QCOMPARE(plot->graph(trace)->pen().widthF(), 1.0);
            QVERIFY(!plot->graph(trace)->antialiased());
        }
        compareRange(plot->yAxis, -5e-5, 5e-5);
        compareRange(plot->xAxis, 0, 14);
        QVERIFY(plot->noAntialiasingOnDrag());
        QVERIFY(plot->legend->visible());
        QCOMPARE(plot->legend->textColor(), QColor(Qt::white));
        QCOMPARE(plot->legend->brush().color(), QColor(10, 10, 10));
        QCOMPARE(int(plot->interactions()), 59);
        QCOMPARE(plot->axisRect()->rangeZoom(), Qt::Orientations(Qt::Vertical));
        QCOMPARE(plot->yAxis->numberFormat(), QStringLiteral("e"));
        QCOMPARE(plot->yAxis->numberPrecision(), 5);
        QCOMPARE(plot->xAxis->label(), QStringLiteral("xLabel"));
        QCOMPARE(plot->yAxis->label(), QStringLiteral("yLabel"));
        QVERIFY(plot_look::isWhite(plot->xAxis) && plot_look::isWhite(plot->yAxis));
        QVERIFY(find<QCheckBox>(&widget, "buttonAutoscale")->isChecked());
        QCOMPARE(find<QCheckBox>(&widget, "buttonAutoscale")->text(), QStringLiteral("Autoscale"));
    }

private slots:
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
    }
    void cleanup() { world.reset(); }

    void currentsStartWithFourCheckedTraces()
    {
        const WidgetGraphCurrents graph(nullptr, 4);
        compareLook(graph,
                    {colour(255, 255, 135), colour(255, 130, 255), colour(130, 255, 130), colour(130, 210, 250)});
        for (int number = 1; number <= 4; ++number) {
            QCOMPARE(box(graph, number)->text(), QStringLiteral("Channel %1").arg(number));
            QVERIFY(box(graph, number)->isChecked());
            QVERIFY(!box(graph, number)->isHidden());
        }
    }

    void positionsStartWithTheMonitorsCheckedAndThePathsNot_data()
    {
        QTest::addColumn<int>("axis");
        QTest::addColumn<QString>("letter");
        QTest::newRow("X") << 0 << QStringLiteral("X");
        QTest::newRow("Y") << 1 << QStringLiteral("Y");
    }
    void positionsStartWithTheMonitorsCheckedAndThePathsNot()
    {
        QFETCH(int, axis);
        QFETCH(QString, letter);
        const WidgetGraphPos graph(nullptr, axis, 4);
        compareLook(graph, {colour(255, 255, 135), colour(255, 130, 255), colour(130, 255, 130), colour(255, 153, 51)});
        const QStringList sources = {QStringLiteral("BPM1"), QStringLiteral("BPM2"), QStringLiteral("LF"),
                                     QStringLiteral("HF")};
        for (int i = 0; i < 4; ++i) {
            QCOMPARE(box(graph, i + 1)->text(), QStringLiteral("Pos %1 (%2)").arg(letter, sources.at(i)));
            QCOMPARE(box(graph, i + 1)->isChecked(), i < 2);
        }
    }

    void intensityOfBpm2StartsUncheckedAndHiddenButDrawn()
    {
        const WidgetGraphInt graph(nullptr, 2);
        compareLook(graph, {colour(255, 255, 135), colour(255, 130, 255)});
        QCOMPARE(box(graph, 1)->text(), QStringLiteral("Intensity BPM1"));
        QCOMPARE(box(graph, 2)->text(), QStringLiteral("Intensity BPM2"));
        QVERIFY(box(graph, 1)->isChecked());
        QVERIFY(!box(graph, 2)->isChecked());
        QVERIFY(!box(graph, 1)->isHidden());
        QVERIFY(box(graph, 2)->isHidden());
        QVERIFY(!graph.findChild<QCheckBox*>(QStringLiteral("CheckCh3")));
        QCOMPARE(drawn(graph), QStringLiteral("11"));
        box(graph, 1)->setChecked(false);
        QCOMPARE(drawn(graph), QStringLiteral("00"));
    }

    void labelsNameAxesAndTraces()
    {
        WidgetGraphCurrents graph(nullptr, 4);
        graph.setLabels(QStringLiteral("Time [s]"), QStringLiteral("Current [A]"),
                        {QStringLiteral("Ionbar2 Ch1"), QStringLiteral("Ionbar2 Ch2"), QStringLiteral("Ionbar2 Ch3"),
                         QStringLiteral("Ionbar Ch4")});
        QCOMPARE(plotOf(graph)->xAxis->label(), QStringLiteral("Time [s]"));
        QCOMPARE(plotOf(graph)->yAxis->label(), QStringLiteral("Current [A]"));
        QCOMPARE(plotOf(graph)->graph(0)->name(), QStringLiteral("Ionbar2 Ch1"));
        QCOMPARE(plotOf(graph)->graph(3)->name(), QStringLiteral("Ionbar Ch4"));
        graph.setLabels(QString(), QString(), {QStringLiteral("one")});
        graph.setLabels(QString(), QString(), {QString(), QString(), QString(), QString(), QStringLiteral("five")});
    }

    void thePlotDrawsTheVeryDataThatAreRegistered()
    {
        const WidgetGraphPos graph(nullptr, 0, 4);
        for (int channel = 0; channel < 4; ++channel)
            QVERIFY(plotOf(graph)->graph(channel)->data().data() == graph.dataMap(channel));
    }

    void theFirstTimeRangeIsInWholeSeconds()
    {
        SAMP_FREQ = 5000;
        compareRange(plotOf(WidgetGraphInt(nullptr, 2))->xAxis, 0, 2);
    }

    void withoutATimeRangeThePlotKeepsItsOwn_data()
    {
        QTest::addColumn<int>("rate");
        QTest::newRow("zero") << 0;
        QTest::newRow("negative") << -1000;
        QTest::newRow("less than a second") << 50000;
    }
    void withoutATimeRangeThePlotKeepsItsOwn()
    {
        QFETCH(int, rate);
        SAMP_FREQ = rate;
        const WidgetGraphInt graph(nullptr, 2);
        compareRange(plotOf(graph)->xAxis, 0, 5);
    }

    void autoscaleFollowsTheDrawnTraces()
    {
        WidgetGraphCurrents graph(nullptr, 4);
        fill(graph.dataMap(0), {-1, 2, 1});
        fill(graph.dataMap(1), {-10, 20, 10});
        graph.replot();
        compareRange(plotOf(graph)->yAxis, -10, 20);
        compareRange(plotOf(graph)->xAxis, 0, 1);
        box(graph, 2)->setChecked(false);
        graph.replot();
        compareRange(plotOf(graph)->yAxis, -1, 2);
    }

    void withoutAutoscaleTheViewStays()
    {
        WidgetGraphCurrents graph(nullptr, 4);
        find<QCheckBox>(&graph, "buttonAutoscale")->setChecked(false);
        plotOf(graph)->yAxis->setRange(3, 4);
        plotOf(graph)->xAxis->setRange(5, 6);
        fill(graph.dataMap(0), {-1, 2, 1});
        graph.replot();
        compareRange(plotOf(graph)->yAxis, 3, 4);
        compareRange(plotOf(graph)->xAxis, 5, 6);
    }

    void withAllTracesOffTheAxesKeepTheirRange()
    {
        WidgetGraphCurrents graph(nullptr, 4);
        fill(graph.dataMap(0), {-1, 2, 1});
        graph.replot();
        for (int number = 1; number <= 4; ++number)
            box(graph, number)->setChecked(false);
        QCOMPARE(drawn(graph), QStringLiteral("0000"));
        fill(graph.dataMap(0), {-100, 200, 100});
        graph.replot();
        compareRange(plotOf(graph)->yAxis, -1, 2);
        compareRange(plotOf(graph)->xAxis, 0, 1);
    }

    void hiddenTracesReturnWithTheirBoxes()
    {
        WidgetGraphCurrents graph(nullptr, 4);
        box(graph, 3)->setChecked(false);
        QCOMPARE(drawn(graph), QStringLiteral("1101"));
        box(graph, 3)->setChecked(true);
        QCOMPARE(drawn(graph), QStringLiteral("1111"));
    }

    void positionTracesObeyBoxesAndDevices_data()
    {
        QTest::addColumn<int>("mask");
        QTest::addColumn<QString>("withAllBoxes");
        QTest::newRow("both") << 3 << QStringLiteral("1111");
        QTest::newRow("second") << 2 << QStringLiteral("0111");
        QTest::newRow("first") << 1 << QStringLiteral("1011");
        QTest::newRow("none") << 0 << QStringLiteral("0000");
        QTest::newRow("unknown") << 4 << QStringLiteral("0000");
        QTest::newRow("negative") << -1 << QStringLiteral("0000");
    }
    void positionTracesObeyBoxesAndDevices()
    {
        QFETCH(int, mask);
        QFETCH(QString, withAllBoxes);
        WidgetGraphPos graph(nullptr, 0, 4);
        mailbox->nrIonBars = mask;
        box(graph, 3)->setChecked(true);
        box(graph, 4)->setChecked(true);
        QCOMPARE(drawn(graph), withAllBoxes);
        for (int number = 1; number <= 4; ++number) {
            box(graph, number)->setChecked(false);
            QString expected = withAllBoxes;
            expected[number - 1] = QLatin1Char('0');
            QCOMPARE(drawn(graph), expected);
            box(graph, number)->setChecked(true);
        }
    }

    void aChangeOfDevicesAloneLeavesTheTraces()
    {
        WidgetGraphPos graph(nullptr, 1, 4);
        mailbox->nrIonBars = 3;
        graph.chEnablesChanged();
        QCOMPARE(drawn(graph), QStringLiteral("1100"));
        mailbox->nrIonBars = 1;
        graph.setChannelHidden(false, true);
        graph.replot();
        QVERIFY(box(graph, 2)->isHidden());
        QCOMPARE(drawn(graph), QStringLiteral("1100"));
        box(graph, 3)->setChecked(true);
        QCOMPARE(drawn(graph), QStringLiteral("1010"));
    }

    void boxesOfIntensitiesHideOneByOne()
    {
        WidgetGraphInt graph(nullptr, 2);
        graph.setChannelHidden(true, false);
        QVERIFY(box(graph, 1)->isHidden());
        QVERIFY(!box(graph, 2)->isHidden());
        QCOMPARE(drawn(graph), QStringLiteral("11"));
    }

    void theBackgroundFollowsTheHeight()
    {
        WidgetGraphCurrents graph(nullptr, 4);
        graph.resize(500, 150);
        graph.show();
        QVERIFY(QTest::qWaitForWindowExposed(&graph));
        for (int height : {700, 300}) {
            graph.resize(500, height);
            QTRY_COMPARE(graph.height(), height);
            const QImage picture = plotOf(graph)->grab().toImage();
            const auto grey = [&](int y) { return qGray(picture.pixel(0, y)); };
            QVERIFY(std::abs(grey(0) - 100) <= 1);
            QVERIFY(std::abs(grey(picture.height() / 2) - 65) <= 1);
            QVERIFY(std::abs(grey(picture.height() - 1) - 30) <= 1);
        }
    }

    void valuesThatAreNoneDoNotSpoilTheScale()
    {
        WidgetGraphCurrents graph(nullptr, 4);
        graph.show();
        QVERIFY(QTest::qWaitForWindowExposed(&graph));
        const double infinite = HUGE_VAL;
        fill(graph.dataMap(0), {std::nan(""), 1, infinite, -infinite, 2, 5e-324, 1});
        fill(graph.dataMap(1), {std::nan(""), std::nan("")});
        fill(graph.dataMap(2), {infinite, 1e300, -1e300});
        graph.dataMap(3)->add(QCPGraphData(infinite, 1.5));
        QSignalSpy redraws(plotOf(graph), SIGNAL(afterReplot()));
        graph.replot();
        compareRange(plotOf(graph)->yAxis, 0, 2);
        compareRange(plotOf(graph)->xAxis, 0, 1);
        QTRY_COMPARE(redraws.count(), 1);
    }

    void valuesOfOneSignFarApartAreScaledWithZeroAsTheNearEnd()
    {
        // A graph of its own each: a range that the axis refuses would take the size of the one before.
        WidgetGraphCurrents above(nullptr, 4);
        fill(above.dataMap(0), {1e240, 1e-80, 1});
        above.replot();
        compareRange(plotOf(above)->yAxis, 0, 1e240);
        WidgetGraphCurrents below(nullptr, 4);
        fill(below.dataMap(0), {-1e-80, -1, -1e240});
        below.replot();
        compareRange(plotOf(below)->yAxis, -1e240, 0);
    }

    void aRateOfZeroLeavesTheGraphUsable()
    {
        WidgetGraphCurrents graph(nullptr, 4);
        graph.show();
        QVERIFY(QTest::qWaitForWindowExposed(&graph));
        graph.dataMap(0)->add(QCPGraphData(HUGE_VAL, 3));
        graph.replot();
        QTest::qWait(0);
        QVERIFY(std::isfinite(plotOf(graph)->xAxis->range().upper));
        fill(graph.dataMap(0), {-1, 2, 1});
        graph.replot();
        compareRange(plotOf(graph)->yAxis, -1, 2);
        compareRange(plotOf(graph)->xAxis, 0, 1);
    }

    void theLegendStandsTopLeftAndListsTheVisibleTracesAlone()
    {
        WidgetGraphCurrents graph(nullptr, 4);
        graph.resize(700, 400);
        graph.show();
        QVERIFY(QTest::qWaitForWindowExposed(&graph));
        graph.setLabels(QStringLiteral("t"), QStringLiteral("I"),
                        {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c"), QStringLiteral("d")});
        const auto listed = [&graph] {
            plotOf(graph)->replot();
            QString names;
            for (int item = 0; item < plotOf(graph)->legend->itemCount(); ++item)
                names += qobject_cast<QCPPlottableLegendItem*>(plotOf(graph)->legend->item(item))->plottable()->name();
            return names;
        };
        QCOMPARE(listed(), QStringLiteral("abcd"));
        const QRect legend = plotOf(graph)->legend->outerRect();
        const QRect axes = plotOf(graph)->axisRect()->rect();
        QVERIFY(legend.right() < axes.center().x());
        QVERIFY(legend.top() - axes.top() < axes.bottom() - legend.bottom());

        box(graph, 2)->setChecked(false);
        QCOMPARE(listed(), QStringLiteral("acd"));
        QVERIFY(plotOf(graph)->legend->outerRect().height() < legend.height());
        box(graph, 2)->setChecked(true);
        QCOMPARE(listed(), QStringLiteral("abcd"));
        for (int number = 1; number <= 4; ++number)
            box(graph, number)->setChecked(false);
        QVERIFY(!plotOf(graph)->legend->visible());
    }
};

QTEST_MAIN(TimeGraphsTest)
#include "TimeGraphsTest.moc"
