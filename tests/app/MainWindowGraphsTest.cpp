#include "BuiltMainWindow.h"

#include "hardware/MailboxComm.h"
#include "stream/Updater.h"
#include "support/PaintingMarker.h"

#include <QCheckBox>
#include <QSignalSpy>
#include <QStatusBar>

#include <qcustomplot.h>

using namespace koralink_double;
using operate::find;

/// The graphs in their docks: their traces, their labels, and what one second of the stream does to them.
class MainWindowGraphsTest : public BuiltMainWindow
{
    Q_OBJECT

private slots:
    void everyTraceIsRegistered()
    {
        build();
        for (int bpm = 0; bpm < 2; ++bpm) {
            QVERIFY(updater->dataXY[bpm]);
            QVERIFY(updater->dataInt[bpm]);
        }
        QVERIFY(updater->dataFFT);
        for (int channel = 0; channel < 4; ++channel) {
            QVERIFY(updater->dataCurrents[0][channel]);
            QVERIFY(updater->dataCurrents[1][channel]);
            QVERIFY(updater->dataDAC[channel]);
            QVERIFY(updater->dataPosX[channel]);
            QVERIFY(updater->dataPosY[channel]);
        }
        auto* plot = find<QCustomPlot>(content("Graph Currents BPM2"), "graph");
        QCOMPARE(plot->graph(2)->data().data(), updater->dataCurrents[1][2]);
    }

    void timeGraphsCarryTheirLabels_data()
    {
        QTest::addColumn<QString>("yLabel");
        QTest::addColumn<QStringList>("names");
        const auto four = [](const char* a, const char* b, const char* c, const char* d) {
            return QStringList({QLatin1String(a), QLatin1String(b), QLatin1String(c), QLatin1String(d)});
        };
        QTest::newRow("Graph Currents BPM1")
            << QStringLiteral("Current [A]") << four("Ionbar Ch1", "Ionbar Ch2", "Ionbar Ch3", "Ionbar Ch4");
        QTest::newRow("Graph Currents BPM2")
            << QStringLiteral("Current [A]") << four("Ionbar2 Ch1", "Ionbar2 Ch2", "Ionbar2 Ch3", "Ionbar Ch4");
        QTest::newRow("Graph DAC") << QStringLiteral("Voltage [V]") << four("DAC Ch1", "DAC Ch2", "DAC Ch3", "DAC Ch4");
        QTest::newRow("Graph Position X")
            << QStringLiteral("Position [um]") << four("X (BPM1)", "X (BPM2)", "X (LF)", "X (HF)");
        QTest::newRow("Graph Position Y")
            << QStringLiteral("Position [um]") << four("Y (BPM1)", "Y (BPM2)", "Y (LF)", "Y (HF)");
        QTest::newRow("Graph Intensity") << QStringLiteral("Intensity [A]")
                                         << QStringList({QStringLiteral("Int BPM1"), QStringLiteral("Int BPM2")});
    }

    void timeGraphsCarryTheirLabels()
    {
        QFETCH(QString, yLabel);
        QFETCH(QStringList, names);
        build();
        auto* plot = find<QCustomPlot>(content(QTest::currentDataTag()), "graph");
        QCOMPARE(plot->xAxis->label(), QStringLiteral("Time [s]"));
        QCOMPARE(plot->yAxis->label(), yLabel);
        QStringList found;
        for (int i = 0; i < plot->graphCount(); ++i)
            found.append(plot->graph(i)->name());
        QCOMPARE(found, names);
    }

    void unselectedPositionTracesStartInvisible()
    {
        mailbox->nrIonBars = 3;
        build();
        auto* plot = find<QCustomPlot>(content("Graph Position X"), "graph");
        QVERIFY(plot->graph(0)->visible());
        QVERIFY(plot->graph(1)->visible());
        QVERIFY(!plot->graph(2)->visible());
        QVERIFY(!plot->graph(3)->visible());
    }

    void secondIntensityIsDrawnUntilTheFirstToggle()
    {
        build();
        auto* plot = find<QCustomPlot>(content("Graph Intensity"), "graph");
        QVERIFY(plot->graph(1)->visible());
        auto* first = find<QCheckBox>(content("Graph Intensity"), "CheckCh1");
        first->toggle();
        first->toggle();
        QVERIFY(!plot->graph(1)->visible());
    }

    void oneTickReachesEveryGraph()
    {
        answers().fillBlock = [](DisplayRecord* block, int count) {
            for (int i = 0; i < count; ++i) {
                block[i].dac[2] = i;
                block[i].cur2[3] = 1e-6 * i;
            }
        };
        build();
        updater->updateGraphs();
        QCOMPARE(updater->dataDAC[2]->size(), 14336);
        QCOMPARE(updater->dataDAC[2]->at(77)->value, 77.0);
        auto* plot = find<QCustomPlot>(content("Graph DAC"), "graph");
        QCOMPARE(plot->yAxis->range().upper, 14335.0);
    }

    void oneTickScalesEveryGraph_data()
    {
        QTest::addColumn<double>("lastKey");
        for (const char* title : {"Graph Currents BPM1", "Graph Currents BPM2", "Graph DAC", "Graph Position X",
                                  "Graph Position Y", "Graph Intensity"})
            QTest::newRow(title) << double(14335.0f / 1000.0f);
        QTest::newRow("Graph FFT") << 500.0;
    }

    void oneTickScalesEveryGraph()
    {
        QFETCH(double, lastKey);
        mailbox->nrIonBars = 3;
        build();
        answers().fillBlock = [](DisplayRecord* block, int count) {
            auto* values = reinterpret_cast<double*>(block);
            for (int i = 0; i < count * slotsPerRecord; ++i)
                values[i] = i / slotsPerRecord % 2 ? 8000.0 : -8000.0;
        };
        auto* plot = find<QCustomPlot>(content(QTest::currentDataTag()), "graph");
        QVERIFY(plot->xAxis->range().upper != lastKey);
        updater->updateGraphs();
        QCOMPARE(plot->xAxis->range().upper, lastKey);
        // The line of the spectrum, alone on a logarithmic axis, gets room on both sides.
        QVERIFY(plot->yAxis->range().contains(8000.0));
    }

    void oneTickRedrawsBothClouds()
    {
        mailbox->nrIonBars = 3;
        build();
        window->resize(1800, 980);
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        auto* marker = new PaintingMarker(window.get());
        window->statusBar()->addWidget(marker);
        QVERIFY(marker->settle());
        QSignalSpy first(find<QCustomPlot>(content("Graph XY"), "graph"), SIGNAL(afterReplot()));
        QSignalSpy second(find<QCustomPlot>(content("Graph XY 2"), "graph"), SIGNAL(afterReplot()));
        updater->updateGraphs();
        QTRY_COMPARE(first.count(), 1);
        QTRY_COMPARE(second.count(), 1);
    }
};

QTEST_MAIN(MainWindowGraphsTest)
#include "MainWindowGraphsTest.moc"
