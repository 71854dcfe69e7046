#include "StepResponseTool.h"

#include "tools/step/StepAnalysis.h"

#include <algorithm>
#include <cmath>
#include <vector>

using namespace koralink_double;
using operate::find;
using operate::press;

namespace {

constexpr int records = 14336;
constexpr int analysed = records - 1;
/// The output steps up behind this record and down behind the other one.
constexpr int stepAt = 2000;
constexpr int returnAt = 7000;
constexpr int deadSamples = 40;
constexpr int riseSamples = 100;

/// 1 while the output is stepped.
double stepped(int i)
{
    return i > stepAt && i <= returnAt ? 1 : 0;
}

/// The answer: a straight rise of 100 samples behind 40 samples of dead time, the same way back.
double answer(int i)
{
    const auto ramp = [i](int edge) { return std::clamp((i - edge - deadSamples) / double(riseSamples), 0.0, 1.0); };
    return ramp(stepAt) - ramp(returnAt);
}

double& slotOf(DisplayRecord& record, int slot)
{
    return *(reinterpret_cast<double*>(&record) + slot);
}

/// Stream in which the slots answer the step of an output.
void answerStep(int stimulusSlot, double bias, double step, int responseSlot, double offset, double gain)
{
    answers().fillBlock = [=](DisplayRecord* block, int count) {
        for (int i = 0; i < count; ++i) {
            slotOf(block[i], stimulusSlot) = bias + step * stepped(i);
            slotOf(block[i], responseSlot) = offset + gain * step * answer(i);
        }
    };
}

} // namespace

/// What a run shows of the answer, and how the figures come of the samples.
class StepResponseFiguresTest : public StepResponseTool
{
    Q_OBJECT

private:
    template <typename Item>
    Item* item(int index)
    {
        auto* found = qobject_cast<Item*>(plot->item(index));
        if (!found)
            qFatal("no item %d of that kind", index);
        return found;
    }

private slots:
    void figuresAreThoseOfTheAnswer_data()
    {
        QTest::addColumn<QString>("selector");
        QTest::addColumn<QString>("stepBox");
        QTest::addColumn<bool>("secondMonitor");
        QTest::addColumn<int>("stimulusSlot");
        QTest::addColumn<int>("responseSlot");
        const auto row = [](const char* name, const char* selector, const char* stepBox, bool second, int stimulus,
                            int response) {
            QTest::newRow(name) << QString::fromLatin1(selector) << QString::fromLatin1(stepBox) << second << stimulus
                                << response;
        };
        row("X", "stepInXbutton", "posXStepDoubleSpinBox", false, 8, 0);
        row("Y", "stepInYbutton", "posYStepDoubleSpinBox", false, 9, 1);
        row("I0", "stepInI0button", "i0StepDoubleSpinBox", false, 11, 2);
        row("X of BPM2", "stepInXbutton", "posXStepDoubleSpinBox", true, 8, 4);
        row("Y of BPM2", "stepInYbutton", "posYStepDoubleSpinBox", true, 9, 5);
        row("I0 of BPM2", "stepInI0button", "i0StepDoubleSpinBox", true, 11, 6);
    }

    void figuresAreThoseOfTheAnswer()
    {
        QFETCH(QString, selector);
        QFETCH(QString, stepBox);
        QFETCH(bool, secondMonitor);
        QFETCH(int, stimulusSlot);
        QFETCH(int, responseSlot);
        press(radio(selector.toLatin1().constData()));
        box(stepBox.toLatin1().constData())->setValue(0.5);
        find<QCheckBox>(window.get(), "useBPM2checkbox")->setChecked(secondMonitor);
        answerStep(stimulusSlot, 0, 0.5, responseSlot, 0, 3);
        run();
        // The upper level is a sum of 1434 samples over 1433.5: 1.50052.
        QCOMPARE(text("dclabel"), QStringLiteral("1.501"));
        QCOMPARE(text("dulabel"), QStringLiteral("0.5"));
        QCOMPARE(text("Klabel"), QStringLiteral("3.001"));
        // 40 samples of dead time and 10 of the rise; then 80 samples of the rise.
        QCOMPARE(text("Tdeadlabel"), QStringLiteral("1 ms"));
        QCOMPARE(text("Tsetlabel"), QStringLiteral("1.6 ms"));
        QCOMPARE(text("invertedLabel"), QString());
    }

    void tracesHoldBothSignalsOverTime()
    {
        answerStep(8, 1, 0.1, 0, -2, 3);
        run();
        for (int graph = 0; graph < 2; ++graph)
            QCOMPARE(plot->graph(graph)->dataCount(), analysed);
        const auto stimulus = plot->graph(0)->data()->constBegin();
        const auto response = plot->graph(1)->data()->constBegin();
        for (int i : {0, 1, 2001, 2090, analysed - 1}) {
            // Times are computed in single precision.
            QCOMPARE((stimulus + i)->key, double(float(i) / 50000.0f));
            QCOMPARE((response + i)->key, double(float(i) / 50000.0f));
            QCOMPARE((stimulus + i)->value, 1 + 0.1 * stepped(i));
            QCOMPARE((response + i)->value, -2 + 0.3 * answer(i));
        }
    }

    void newRunReplacesTheTraces()
    {
        answerStep(8, 1, 0.1, 0, -2, 3);
        run();
        answerStep(8, 1, 0.1, 0, 5, 3);
        run();
        QCOMPARE(plot->graph(1)->dataCount(), analysed);
        QCOMPARE(plot->graph(1)->data()->constBegin()->value, 5.0);
    }

    void fallingResponseIsShownInvertedAndALaterRisingOneIsNot()
    {
        answerStep(8, 0, 0.1, 0, -0.01, -3);
        run();
        QCOMPARE(text("invertedLabel"), QStringLiteral("Inverted display"));
        QCOMPARE(plot->graph(1)->data()->constBegin()->value, 0.01);
        QCOMPARE((plot->graph(1)->data()->constBegin() + 5000)->value, 0.31);
        QCOMPARE(text("Tsetlabel"), QStringLiteral("1.6 ms"));
        QVERIFY(text("dclabel").toDouble() > 0);
        answerStep(8, 0, 0.1, 0, 0.01, 3);
        run();
        QCOMPARE(text("invertedLabel"), QString());
        QCOMPARE(plot->graph(1)->data()->constBegin()->value, 0.01);
    }

    void annotationLiesWhereTheFiguresAre()
    {
        box("posXbiasDoubleSpinBox")->setValue(1);
        box("posXStepDoubleSpinBox")->setValue(0.5);
        answerStep(8, 1, 0.5, 0, 0, 3);
        run();
        const double low = 0;
        const double high = 1.5 * 1434 / 1433.5;
        const double dy = high - low;
        const double tStim = stepAt / 50000.0;
        const double tLow = (stepAt + deadSamples + 10) / 50000.0;
        const double tHigh = (stepAt + deadSamples + 90) / 50000.0;
        const double below = low - 0.1 * dy;
        const double beside = tHigh + 0.3 * (tHigh - tLow);
        const struct
        {
            QColor colour;
            QPointF from;
            QPointF to;
            bool arrow;
        } lines[] = {{QColor(50, 200, 50), {tLow, low}, {tHigh, high}, false},
                     {QColor(200, 50, 50), {tStim, below}, {tLow, below}, true},
                     {QColor(220, 69, 0), {tLow, below}, {tHigh, below}, true},
                     {QColor(0, 50, 200), {beside, low}, {beside, high}, true}};
        QCOMPARE(plot->itemCount(), 7);
        for (int i = 0; i < 4; ++i) {
            const auto* line = item<QCPItemLine>(i);
            QCOMPARE(line->pen().color(), lines[i].colour);
            QCOMPARE(line->pen().widthF(), 2.0);
            QCOMPARE(line->start->keyAxis(), plot->xAxis);
            QCOMPARE(line->end->valueAxis(), plot->yAxis2);
            QCOMPARE(line->start->coords(), lines[i].from);
            QCOMPARE(line->end->coords(), lines[i].to);
            for (const QCPLineEnding& ending : {line->head(), line->tail()}) {
                QCOMPARE(int(ending.style()), lines[i].arrow ? 2 : 0);
                QVERIFY(!lines[i].arrow || (ending.width() == 8 && ending.length() == 10));
            }
            QVERIFY(line->visible());
        }
        const struct
        {
            const char* text;
            int arrow;
            Qt::Alignment alignment;
        } texts[] = {{"Tdead", 1, Qt::AlignTop | Qt::AlignHCenter},
                     {"Tsettle", 2, Qt::AlignTop | Qt::AlignHCenter},
                     {"dy", 3, Qt::AlignTop | Qt::AlignLeft}};
        for (int i = 0; i < 3; ++i) {
            const auto* label = item<QCPItemText>(4 + i);
            QCOMPARE(label->text(), QLatin1String(texts[i].text));
            QCOMPARE(label->color(), lines[texts[i].arrow].colour);
            QCOMPARE(label->positionAlignment(), texts[i].alignment);
            QCOMPARE(label->position->valueAxis(), plot->yAxis2);
            QCOMPARE(label->position->coords(), (lines[texts[i].arrow].from + lines[texts[i].arrow].to) / 2);
        }
        const double m = tHigh - tLow;
        QCOMPARE(plot->xAxis->range(), QCPRange(tStim - 0.2 * m, tHigh + m));
        QCOMPARE(plot->yAxis->range(), QCPRange(1 - 0.2 * 0.5, 1 + 1.2 * 0.5));
        QCOMPARE(plot->yAxis2->range(), QCPRange(low - 0.2 * dy, low + 1.2 * dy));
    }

    void nothingIsAnnotatedBeforeTheFirstRun()
    {
        for (int i = 0; i < plot->itemCount(); ++i)
            QVERIFY(!plot->item(i)->visible());
    }

    void runWithoutAStepShowsWhatTheDivisionGives()
    {
        box("posXStepDoubleSpinBox")->setValue(0);
        answerStep(8, 0, 0.5, 0, 10, 3);
        run();
        QCOMPARE(text("Klabel"), QStringLiteral("inf"));
        QCOMPARE(text("dulabel"), QStringLiteral("0"));
        answers().fillBlock = nullptr;
        run();
        QCOMPARE(text("Klabel"), QStringLiteral("nan"));
    }

    void failingWritesChangeNothingInTheOrder()
    {
        setDevicePresent("/dev/kora_anvolt0", false);
        fail("setOutputMux");
        fail("setDisplayFreq");
        answerStep(8, 0, 0.1, 0, 0, 3);
        run();
        QVERIFY(callsOf("ioctl").empty());
        QCOMPARE(text("Tsetlabel"), QStringLiteral("1.6 ms"));
        QCOMPARE(callsOf("setOutputMux").size(), std::size_t(2));
    }

    void negativeStepPutsTheStimulusEdgeBeforeTheFirstSample()
    {
        std::vector<double> stimulus(1000, 5.0);
        std::vector<double> response(1000, 0.0);
        for (std::size_t i = 500; i < 700; ++i) {
            stimulus[i] = 4.0;
            response[i] = 1.0;
        }
        const auto result = step_analysis::analyse(response, stimulus, 5, -1, 1000);
        QCOMPARE(result.iStim, -1);
        QCOMPARE(result.tStim, -0.001);
        QCOMPARE(result.iLow, 499);
        QCOMPARE(result.tDead, 0.5);
    }

    void flatResponseHasNoGainAndNoCrossing()
    {
        const std::vector<double> response(1000, 2.0);
        std::vector<double> stimulus(1000, 0.0);
        std::fill(stimulus.begin() + 300, stimulus.end(), 1.0);
        const auto result = step_analysis::analyse(response, stimulus, 0, 1, 1000);
        QCOMPARE(result.dy, 0.0);
        QCOMPARE(result.iLow, 999);
        QCOMPARE(result.iHigh, 999);
        QCOMPARE(result.iStim, 299);
        QCOMPARE(result.tSettle, 0.0);
    }

    void constantNegativeResponseHasNoSettlingTime()
    {
        // An output that stands still, so that nothing is inverted.
        answerStep(8, 0, 0, 0, -2, 0);
        run();
        QCOMPARE(text("invertedLabel"), QString());
        QCOMPARE(plot->graph(1)->data()->constBegin()->value, -2.0);
        QCOMPARE(text("Tsetlabel"), QStringLiteral("0 ms"));
    }

    void missingUpperCrossingIsTheLastSample()
    {
        // A spike that is shorter than a tenth of the samples pulls no level up, and one sample passes 10 %.
        std::vector<double> response(1000, 0.0);
        response[600] = 0.5;
        for (std::size_t i = 901; i < 1000; ++i)
            response[i] = 1.0;
        const std::vector<double> stimulus(1000, 0.0);
        const auto found = step_analysis::analyse(response, stimulus, 0, 1, 1000);
        QCOMPARE(found.iLow, 599);
        QCOMPARE(found.iHigh, 900);
        QCOMPARE(found.iStim, 999);
        // Rising in one sample: both crossings are the same.
        response[600] = 0.0;
        const auto edge = step_analysis::analyse(response, stimulus, 0, 1, 1000);
        QCOMPARE(edge.iLow, 900);
        QCOMPARE(edge.iHigh, 900);
    }

    void firstSampleIsNoCrossing()
    {
        std::vector<double> response(1000, 0.0);
        response[0] = 10;
        for (std::size_t i = 500; i < 1000; ++i)
            response[i] = 1.0;
        const auto result = step_analysis::analyse(response, response, 0, 1, 1000);
        QCOMPARE(result.iLow, 499);
        QCOMPARE(result.iStim, -1);
    }

    void levelsAreMeansOfTheOuterTenthsOverAnUnroundedTenth()
    {
        std::vector<double> response(25);
        for (std::size_t i = 0; i < 25; ++i)
            response[i] = double(24 - i);
        const auto result = step_analysis::analyse(response, response, 0, 1, 1);
        // Two samples below, from index 22 on three samples above, both over 2.5.
        QCOMPARE(result.low, (0 + 1) / 2.5);
        QCOMPARE(result.high, (22 + 23 + 24) / 2.5);
    }
};

QTEST_MAIN(StepResponseFiguresTest)
#include "StepResponseFiguresTest.moc"
