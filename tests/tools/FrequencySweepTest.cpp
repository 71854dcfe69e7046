#include "FrequencyTool.h"

#include "app/Globals.h"
#include "logging/Log.h"
#include "support/DrivenPause.h"
#include "support/LogLines.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QtTest>
#include <fcntl.h>

#include <cmath>

using namespace koralink_double;
using operate::find;
using operate::lines;

class FrequencySweepTest : public FrequencyTool
{
    Q_OBJECT

private slots:
    void sweepCallsTheHardwareInOrder()
    {
        answers().outSel[0] = 2;
        answers().fillBlock = [](DisplayRecord* block, int) { block[0].dac[2] = 1.5; };
        window->showTool();
        QCOMPARE(line("offsetspinBox")->text(), QStringLiteral("1,5"));
        setSweep("5", "20", "2", "lin");
        find<QDoubleSpinBox>(window.get(), "amplspinBox")->setValue(0.25);
        SAMP_FREQ = 2500;
        clearCalls();
        start();
        QStringList order;
        for (const Call& call : calls())
            order.append(QString::fromStdString(call.text()));
        const QStringList expected = {QStringLiteral("open(/dev/kora_anvolt0, %1)").arg(O_RDWR | O_SYNC),
                                      QStringLiteral("open(/dev/kora_dma_displ, 0)"),
                                      QStringLiteral("getPIDoutSel()"),
                                      QStringLiteral("getBPMselector()"),
                                      QStringLiteral("setDisplayFreq(1000, 0)"),
                                      QStringLiteral("funcGenConfig(0, 0, 0.25, 0, 0, 0, 1.5, 0, 5)"),
                                      QStringLiteral("funcGenEnable(4)"),
                                      QStringLiteral("read(/dev/kora_dma_displ, 3670016)"),
                                      QStringLiteral("funcGenEnable(0)"),
                                      QStringLiteral("setDisplayFreq(10000, 0)"),
                                      QStringLiteral("funcGenConfig(0, 0, 0.25, 0, 0, 0, 1.5, 0, 20)"),
                                      QStringLiteral("funcGenEnable(4)"),
                                      QStringLiteral("read(/dev/kora_dma_displ, 3670016)"),
                                      QStringLiteral("funcGenEnable(0)"),
                                      QStringLiteral("setDisplayFreq(2500, 0)"),
                                      QStringLiteral("close(/dev/kora_anvolt0)")};
        QCOMPARE(order, expected);
        QCOMPARE(SAMP_FREQ, 2500);
        QCOMPARE(progress(), 100);
        QVERIFY(button("StartSweepPushButton")->isEnabled());
    }

    void waitFollowsTheIntegerPartOfTheFrequency_data()
    {
        QTest::addColumn<QByteArray>("hertz");
        QTest::addColumn<int>("milliseconds");
        QTest::addColumn<int>("rate");
        QTest::newRow("0.1: one period, 12 s") << QByteArray("0.1") << 12000 << 1000;
        QTest::newRow("0.99") << QByteArray("0.99") << 3010 << 1000;
        QTest::newRow("1") << QByteArray("1") << 6500 << 1000;
        QTest::newRow("9.99: still five periods") << QByteArray("9.99") << 2000 << 1000;
        QTest::newRow("10: ten periods") << QByteArray("10") << 2000 << 10000;
        QTest::newRow("30") << QByteArray("30") << 1333 << 10000;
        // 10 / 500 in single precision lies below 0.02.
        QTest::newRow("500: truncated") << QByteArray("500") << 1019 << 10000;
    }
    void waitFollowsTheIntegerPartOfTheFrequency()
    {
        QFETCH(QByteArray, hertz);
        QFETCH(int, milliseconds);
        QFETCH(int, rate);
        setSweep(hertz.constData(), "600", "2", "lin");
        int rateInPause = 0;
        inPause(1, [&] {
            rateInPause = SAMP_FREQ;
            stop();
        });
        start();
        QCOMPARE(driven_pause::pauses().size(), std::size_t(1));
        QCOMPARE(int(driven_pause::pauses().front()), milliseconds * 1000);
        QCOMPARE(rateInPause, rate);
    }

    void rateGoesThroughTheWrapperAndAFailureIsLogged()
    {
        fail("setDisplayFreq");
        setSweep("10", "20", "2");
        LogLines log(QsLogging::InfoLevel);
        start();
        QCOMPARE(log.lines(), QStringList({QStringLiteral("3 setDisplayFreq() failed "),
                                           QStringLiteral("3 setDisplayFreq() failed "),
                                           QStringLiteral("3 setDisplayFreq() failed ")}));
        QCOMPARE(keys(0).size(), std::size_t(2));
        QCOMPARE(SAMP_FREQ, 1000);
    }

    void demodulationFollowsTheFormulas()
    {
        bpmScaleX[1] = 250;
        answers().bpmSel[0] = 1;
        std::vector<double> input(usedRecords);
        std::vector<double> a(usedRecords);
        std::vector<double> b(usedRecords);
        answers().fillBlock = [&](DisplayRecord* block, int count) {
            QCOMPARE(count, blockRecords);
            for (int i = 0; i < count; ++i) {
                block[i].xLf = 0.7 + 0.013 * std::sin(0.037 * i + 0.4) + 0.002 * std::cos(1.1 * i);
                block[i].funcGenRefA = float(4 * std::sin(0.037 * i));
                block[i].funcGenRefB = float(4 * std::cos(0.037 * i));
                if (i < usedRecords) {
                    input[std::size_t(i)] = block[i].xLf * 250;
                    a[std::size_t(i)] = double(block[i].funcGenRefA);
                    b[std::size_t(i)] = double(block[i].funcGenRefB);
                }
            }
            // The last record enters no result.
            block[count - 1].xLf = 1e9;
        };
        setSweep("10", "20", "2");
        find<QDoubleSpinBox>(window.get(), "amplspinBox")->setValue(0.3);
        start();
        long double mean = 0;
        for (double value : input)
            mean += value;
        mean /= usedRecords;
        long double inPhase = 0;
        long double quadrature = 0;
        for (std::size_t i = 0; i < input.size(); ++i) {
            inPhase += (input[i] - mean) * a[i];
            quadrature += (input[i] - mean) * b[i];
        }
        inPhase /= usedRecords;
        quadrature /= usedRecords;
        const double magnitude = double(std::sqrt(inPhase * inPhase + quadrature * quadrature)) / double(0.3F);
        const double phase = double(std::atan2(quadrature, inPhase)) * 180 / M_PI;
        const double found = values(magnitudePlot(), 0).at(0);
        QVERIFY2(std::fabs(found / magnitude - 1) < 1e-10, qPrintable(QString::number(found / magnitude - 1)));
        QVERIFY(std::fabs(values(phasePlot(), 0).at(0) - phase) < 1e-8);
    }

    void inputAndItsFactorFollowTheBoxes()
    {
        bpmScaleX[0] = 10;
        bpmScaleY[0] = 20;
        bpmScaleY[1] = 100;
        answers().bpmSel[2] = 1;
        answers().fillBlock = KnownResponse();
        setSweep("10", "20", "2");
        find<QDoubleSpinBox>(window.get(), "amplspinBox")->setValue(0.5);
        start();
        const auto magnitude = [this](int plot) { return values(magnitudePlot(), plot).at(0); };
        QVERIFY(std::fabs(magnitude(0) - 10 * 2 / 0.5) < 1e-3);
        combo("inputChComboBox")->setCurrentText(QStringLiteral("y"));
        start();
        QVERIFY(std::fabs(magnitude(1) - 100 * 3 * 2 / 0.5) < 1e-2);
        find<QCheckBox>(window.get(), "useBPMscalingCheckBox")->setChecked(false);
        start();
        QVERIFY(std::fabs(magnitude(2) - 3 * 2 / 0.5) < 1e-4);
        QCOMPARE(tree()->topLevelItem(0)->text(0), QStringLiteral("plot_x_x_0"));
        QCOMPARE(tree()->topLevelItem(1)->text(0), QStringLiteral("plot_x_y_1"));
    }

    void scalingBoxTakesEffectAtTheNextPoint()
    {
        bpmScaleX[0] = 10;
        answers().fillBlock = KnownResponse();
        setSweep("10", "20", "2");
        inPause(2, [this] { find<QCheckBox>(window.get(), "useBPMscalingCheckBox")->setChecked(false); });
        start();
        const std::vector<double> magnitudes = values(magnitudePlot(), 0);
        QVERIFY(std::fabs(magnitudes.at(0) / magnitudes.at(1) - 10) < 1e-6);
    }

    void phaseIsUnwrappedInTheOrderOfMeasuring()
    {
        KnownResponse response;
        response.phaseDeg = [](double hertz) { return -100.0 * (hertz - 10) / 10; };
        answers().fillBlock = response;
        setSweep("10", "60", "6", "lin");
        start();
        const std::vector<double> up = values(phasePlot(), 0);
        for (std::size_t i = 0; i < 6; ++i)
            QVERIFY2(std::fabs(up[i] + 100.0 * i) < 0.01, qPrintable(QString::number(up[i])));

        // Downward the first point measured, 60 Hz at -500 degrees, is wrapped and the others follow it.
        setSweep("60", "10", "6", "lin");
        start();
        const std::vector<double> down = values(phasePlot(), 1);
        QCOMPARE(keys(1).front(), 10.0);
        for (std::size_t i = 0; i < 6; ++i)
            QVERIFY2(std::fabs(down[i] - (360 - 100.0 * i)) < 0.01, qPrintable(QString::number(down[i])));
    }

    void progressIsTruncatedInSinglePrecision()
    {
        setSweep("10", "20", "100");
        QVector<int> shown;
        driven_pause::setAction([&](unsigned long) { shown.append(progress()); });
        start();
        QCOMPARE(shown.at(0), 0);
        // 29 / 100 in single precision lies below 0.29.
        QCOMPARE(shown.at(29), 28);
        QCOMPARE(shown.at(30), 30);
        QCOMPARE(progress(), 100);
        shown.clear();
        setSweep("10", "20", "3");
        start();
        QCOMPARE(shown, (QVector<int>{0, 33, 66}));
    }

    void selectorOutOfRangeMeansTheSecondMonitor()
    {
        bpmScaleX[1] = 7;
        answers().bpmSel[0] = 12;
        answers().fillBlock = KnownResponse();
        find<QDoubleSpinBox>(window.get(), "amplspinBox")->setValue(1);
        start();
        QVERIFY(std::fabs(values(magnitudePlot(), 0).at(0) - 2 * 7) < 1e-4);
    }
};

QTEST_MAIN(FrequencySweepTest)
#include "FrequencySweepTest.moc"
