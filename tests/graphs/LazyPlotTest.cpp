#include "app/Globals.h"
#include "double/KoralinkDouble.h"
#include "graphs/WidgetGraphCurrents.h"
#include "graphs/WidgetGraphFFT.h"
#include "graphs/WidgetGraphXY.h"
#include "stream/Updater.h"
#include "support/Operator.h"
#include "support/PaintingMarker.h"
#include "support/World.h"

#include <QDockWidget>
#include <QMainWindow>
#include <QSignalSpy>
#include <QStatusBar>
#include <QtTest>
#include <qcustomplot.h>

#include <memory>

namespace {

QCustomPlot* plotOf(const QWidget* widget)
{
    return operate::find<QCustomPlot>(widget, "graph");
}

} // namespace

class LazyPlotTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<World> world;
    std::unique_ptr<QMainWindow> board;
    PaintingMarker* marker = nullptr;
    WidgetGraphCurrents* currents = nullptr;
    WidgetGraphCurrents* outputs = nullptr;
    QDockWidget* docks[2] = {};

    void connectToStream(WidgetGraphCurrents* graph, int kind)
    {
        for (int channel = 0; channel < 4; ++channel)
            updater->setGraphData(kind, channel, graph->dataMap(channel));
        QObject::connect(updater, SIGNAL(replotGraphs()), graph, SLOT(replot()));
    }

    void settle() { QVERIFY(marker->settle()); }

    static void streamOf(double value)
    {
        koralink_double::answers().fillBlock = [value](DisplayRecord* block, int count) {
            for (int record = 0; record < count; ++record)
                block[record].cur1[0] = block[record].dac[0] = record % 2 ? value : -value;
        };
    }

private slots:
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
        board = std::make_unique<QMainWindow>();
        board->setAnimated(false);
        marker = new PaintingMarker(board.get());
        board->statusBar()->addWidget(marker);
        currents = new WidgetGraphCurrents(board.get(), 4);
        outputs = new WidgetGraphCurrents(board.get(), 4);
        WidgetGraphCurrents* const graphs[2] = {currents, outputs};
        for (int i = 0; i < 2; ++i) {
            docks[i] = new QDockWidget(board.get());
            docks[i]->setWidget(graphs[i]);
            board->addDockWidget(Qt::BottomDockWidgetArea, docks[i]);
        }
        board->tabifyDockWidget(docks[0], docks[1]);
        docks[0]->raise();
        connectToStream(currents, KindCurrents1);
        connectToStream(outputs, KindDAC);
        board->resize(800, 500);
        board->show();
        QVERIFY(QTest::qWaitForWindowExposed(board.get()));
        settle();
    }
    void cleanup()
    {
        board.reset();
        world.reset();
    }

    void oneUpdateDrawsAVisiblePlotOnceAndAPlotBehindATabNever()
    {
        QSignalSpy seen(plotOf(currents), SIGNAL(afterReplot()));
        QSignalSpy unseen(plotOf(outputs), SIGNAL(afterReplot()));
        updater->updateGraphs();
        QTRY_COMPARE(seen.count(), 1);
        updater->updateGraphs();
        QTRY_COMPARE(seen.count(), 2);
        settle();
        QCOMPARE(seen.count(), 2);
        QCOMPARE(unseen.count(), 0);
    }

    void severalRequestsOfOneTurnEndInOneRedraw()
    {
        QSignalSpy seen(plotOf(currents), SIGNAL(afterReplot()));
        for (int request = 0; request < 5; ++request)
            updater->updateGraphs();
        QTRY_COMPARE(seen.count(), 1);
        settle();
        QCOMPARE(seen.count(), 1);
    }

    void changesOfSizeAreDrawnWhenTheyArePainted()
    {
        QSignalSpy drawn(plotOf(currents), SIGNAL(afterReplot()));
        board->resize(900, 600);
        board->resize(1000, 560);
        QCOMPARE(drawn.count(), 0);
        settle();
        QVERIFY(drawn.count() >= 1);
        const QImage shown = plotOf(currents)->grab().toImage();
        plotOf(currents)->replot();
        QCOMPARE(shown, plotOf(currents)->grab().toImage());
    }

    void placesOfAResizedPlotHoldBeforeItIsDrawn()
    {
        QCustomPlot* const plot = plotOf(currents);
        board->resize(1000, 700);
        QVERIFY(plot->width() > 900);
        QCOMPARE(plot->axisRect()->outerRect(), plot->rect());
        QCOMPARE(plot->xAxis->coordToPixel(plot->xAxis->range().upper), double(plot->axisRect()->right() + 1));
        QVERIFY(plot->axisRect()->right() > 900);
    }

    void aNewPlotThatNobodySeesIsLaidOutButNotDrawn()
    {
        WidgetGraphCurrents unseen(nullptr, 4);
        QSignalSpy drawn(plotOf(&unseen), SIGNAL(afterReplot()));
        QCOMPARE(plotOf(&unseen)->axisRect()->width(), 0);
        settle();
        QVERIFY(plotOf(&unseen)->axisRect()->width() > 0);
        QCOMPARE(drawn.count(), 0);
    }

    void axesBehindATabFollowAtOnce()
    {
        streamOf(7);
        updater->updateGraphs();
        QCOMPARE(plotOf(outputs)->yAxis->range().upper, 7.0);
        QCOMPARE(plotOf(outputs)->yAxis->range().lower, -7.0);
    }

    void aPlotThatComesIntoSightShowsTheNewestDataAtOnce()
    {
        QSignalSpy unseen(plotOf(outputs), SIGNAL(afterReplot()));
        streamOf(7);
        updater->updateGraphs();
        streamOf(9);
        updater->updateGraphs();
        settle();
        QCOMPARE(unseen.count(), 0);
        docks[1]->raise();
        QTRY_VERIFY(unseen.count() >= 1);
        settle();
        const QImage shown = plotOf(outputs)->grab().toImage();
        plotOf(outputs)->replot();
        QCOMPARE(shown, plotOf(outputs)->grab().toImage());
        QCOMPARE(plotOf(outputs)->yAxis->range().upper, 9.0);
    }

    void aClosedDockIsNotDrawn()
    {
        docks[0]->hide();
        docks[1]->hide();
        settle();
        QSignalSpy first(plotOf(currents), SIGNAL(afterReplot()));
        QSignalSpy second(plotOf(outputs), SIGNAL(afterReplot()));
        updater->updateGraphs();
        settle();
        QCOMPARE(first.count() + second.count(), 0);
        docks[0]->show();
        QTRY_VERIFY(first.count() + second.count() >= 1);
    }

    void xyAndSpectrumAreDrawnOnlyInSightToo()
    {
        WidgetGraphXY cloud(0, nullptr);
        WidgetGraphFFT spectrum(nullptr);
        QObject::connect(updater, SIGNAL(replotGraphs()), &cloud, SLOT(replot()));
        QObject::connect(updater, SIGNAL(replotGraphs()), &spectrum, SLOT(replot()));
        settle();
        QSignalSpy clouds(plotOf(&cloud), SIGNAL(afterReplot()));
        QSignalSpy spectra(plotOf(&spectrum), SIGNAL(afterReplot()));
        updater->updateGraphs();
        settle();
        QCOMPARE(clouds.count(), 0);
        QCOMPARE(spectra.count(), 0);
        cloud.show();
        spectrum.show();
        QVERIFY(QTest::qWaitForWindowExposed(&cloud));
        QVERIFY(QTest::qWaitForWindowExposed(&spectrum));
        settle();
        clouds.clear();
        spectra.clear();
        updater->updateGraphs();
        QTRY_COMPARE(clouds.count(), 1);
        QTRY_COMPARE(spectra.count(), 1);
        settle();
        QCOMPARE(clouds.count(), 1);
        QCOMPARE(spectra.count(), 1);
    }
};

QTEST_MAIN(LazyPlotTest)
#include "LazyPlotTest.moc"
