// The real windows on the simulated installation: what the graphs show is what the plant does.

#include "app/Globals.h"
#include "app/SimulatedSession.h"
#include "app/TraceExtent.h"
#include "hardware/MailboxComm.h"
#include "stream/Updater.h"

#include <QDockWidget>
#include <QtTest>

#include <qcustomplot.h>

#include <cmath>

namespace {

/// How many times wider than its neighbours need it a trace may make an axis. At ten times their noise is still dozens
/// of pixels high.
constexpr double largestShareOfOneTrace = 10;

/// What the value axis has to span for all visible traces but one.
QCPRange rangeOfVisibleTraces(const QCustomPlot* plot, const QCPGraph* without)
{
    QCPRange range;
    bool first = true;
    for (int channel = 0; channel < plot->graphCount(); ++channel) {
        const QCPGraph* trace = plot->graph(channel);
        bool found = false;
        const QCPRange own = trace->getValueRange(found);
        if (trace == without || !trace->visible() || !found)
            continue;
        range = first ? own : range.expanded(own);
        first = false;
    }
    return range;
}

} // namespace

class LiveDisplayTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SimulatedSession> session;

private slots:
    void init() { session = std::make_unique<SimulatedSession>(); }
    void cleanup() { session.reset(); }

    void bothAmplifiersAreSeenAndTheFirmwareHasAVariableRate()
    {
        QCOMPARE(mailbox->nrIonBars, 3);
        QVERIFY(session->window().findChild<QAction*>(QStringLiteral("action_Display_Settings"))->isVisible());
    }

    void everyTraceShowsALivingBeam()
    {
        session->tick(15);
        for (int amplifier = 0; amplifier < 2; ++amplifier) {
            for (QCPDataMap* map : updater->dataCurrents[amplifier]) {
                QCOMPARE(map->size(), 14336);
                const TraceExtent current(*map);
                QVERIFY(current.mean > 1e-9 && current.mean < 1e-3);
                QVERIFY(current.deviation > 0);
            }
            QVERIFY(TraceExtent(*updater->dataInt[amplifier]).mean > 1e-9);
        }
        for (QCPDataMap* map :
             {updater->dataPosX[0], updater->dataPosX[1], updater->dataPosY[0], updater->dataPosY[1]}) {
            const TraceExtent position(*map);
            QVERIFY(position.deviation > 0.01 && position.deviation < 100);
            QVERIFY(std::abs(position.mean) < 1000);
        }
    }

    void tracesThatAreShownFromTheStartLeaveEachOtherReadable_data()
    {
        QTest::addColumn<QString>("dock");
        for (const char* dock : {"Graph Currents BPM1", "Graph Currents BPM2", "Graph DAC", "Graph Position X",
                                 "Graph Position Y", "Graph Intensity"})
            QTest::newRow(dock) << QString::fromLatin1(dock);
    }
    void tracesThatAreShownFromTheStartLeaveEachOtherReadable()
    {
        QFETCH(QString, dock);
        session->tick(15);
        const QCustomPlot* plot = session->plotOf(dock);
        int shown = 0;
        for (int channel = 0; channel < plot->graphCount(); ++channel) {
            if (!plot->graph(channel)->visible())
                continue;
            ++shown;
            const double all = rangeOfVisibleTraces(plot, nullptr).size();
            const double others = rangeOfVisibleTraces(plot, plot->graph(channel)).size();
            QVERIFY2(others == 0 || all < largestShareOfOneTrace * others,
                     qPrintable(QStringLiteral("%1 spreads the axis over %2, the others need %3")
                                    .arg(plot->graph(channel)->name())
                                    .arg(all)
                                    .arg(others)));
        }
        QVERIFY(shown >= 2);
    }

    void theNextSecondShowsOtherData()
    {
        session->tick(15);
        const QCPDataMap before = *updater->dataPosX[0];
        session->tick(1);
        // One second at 1 kHz later the same records stand a thousand places nearer to the start.
        QCOMPARE(updater->dataPosX[0]->at(5000)->value, before.at(6000)->value);
        QVERIFY(updater->dataPosX[0]->at(14335)->value != before.at(14335)->value);
    }

    void aKickShowsOnThePositionGraph()
    {
        session->plant().quietBeam();
        session->tick(20);
        const double before = updater->dataPosX[0]->at(14335)->value;
        session->plant().kick(5, 0);
        session->tick(0.01);
        const double after = updater->dataPosX[0]->at(14335)->value;
        QVERIFY2(std::abs(after - before - 5) < 1, qPrintable(QString::number(after - before)));
    }

    void aBeamThatIsOffShowsNoIntensity()
    {
        session->tick(1);
        const double before = updater->dataInt[0]->at(14335)->value;
        session->plant().setBeamOn(false);
        session->tick(1);
        QVERIFY(std::abs(updater->dataInt[0]->at(14335)->value) < before / 100);
    }

    void anUnpluggedAmplifierLeavesTheBoard()
    {
        QVERIFY(!session->dock(QStringLiteral("Graph XY 2"))->isHidden());
        session->plant().plug(1, 0);
        session->tick();
        QVERIFY(session->dock(QStringLiteral("Graph XY 2"))->isHidden());
        session->plant().plug(1, 0x2101);
        session->tick();
        QVERIFY(!session->dock(QStringLiteral("Graph XY 2"))->isHidden());
    }

    void garbageOfTheStreamLeavesTheGraphsUsable()
    {
        session->plant().setGarbageBlocks(true);
        for (QDockWidget* dock : session->window().findChildren<QDockWidget*>()) {
            dock->raise();
            session->tick();
        }
        session->plant().setGarbageBlocks(false);
        session->tick(15);
        QCustomPlot* plot = session->plotOf(QStringLiteral("Graph DAC"));
        QVERIFY(std::isfinite(plot->xAxis->range().size()));
        QVERIFY(plot->xAxis->range().contains(7.0));
    }
};

QTEST_MAIN(LiveDisplayTest)
#include "LiveDisplayTest.moc"
