#include "tools/WindowStepResponse.h"
#include "app/Globals.h"
#include "double/KoralinkDouble.h"
#include "hardware/MailboxComm.h"
#include "support/DrivenPause.h"
#include "support/MessageBoxes.h"
#include "support/Operator.h"
#include "support/ScratchSettings.h"
#include "support/World.h"
#include "tools/StepAnalysis.h"

#include <qcustomplot.h>

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QRadioButton>
#include <QtTest>

#include <cmath>
#include <fcntl.h>
#include <limits>
#include <memory>

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
    const auto ramp = [i](int edge) {
        return std::clamp((i - edge - deadSamples) / double(riseSamples), 0.0, 1.0);
    };
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

class WindowStepResponseTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<World> world;
    std::unique_ptr<WindowStepResponse> window;
    QCustomPlot* plot = nullptr;

    QDoubleSpinBox* box(const char* name) { return find<QDoubleSpinBox>(window.get(), name); }
    QRadioButton* radio(const char* name) { return find<QRadioButton>(window.get(), name); }
    QString text(const char* label) { return find<QLabel>(window.get(), label)->text(); }
    QPushButton* runButton()
    {
        return find<QDialogButtonBox>(window.get(), "buttonBox")->button(QDialogButtonBox::Apply);
    }
    void run() { press(runButton()); }
    template <typename Item>
    Item* item(int index)
    {
        auto* found = qobject_cast<Item*>(plot->item(index));
        if (!found)
            qFatal("no item %d of that kind", index);
        return found;
    }

private slots:
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
        window = std::make_unique<WindowStepResponse>();
        plot = find<QCustomPlot>(window.get(), "graph");
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
        QCOMPARE(window->windowTitle(), QStringLiteral("Step Response"));
        QCOMPARE(radio("stepInXbutton")->text(), QStringLiteral("X"));
        QCOMPARE(radio("stepInYbutton")->text(), QStringLiteral("Y"));
        QCOMPARE(radio("stepInI0button")->text(), QStringLiteral("I0"));
        QVERIFY(radio("stepInXbutton")->isChecked());
        QCOMPARE(radio("stepInYbutton")->group()->objectName(), QStringLiteral("buttonGroup"));
        QCOMPARE(box("posXStepDoubleSpinBox")->maximum(), 10.0);
        QCOMPARE(box("posYStepDoubleSpinBox")->maximum(), 10.0);
        QCOMPARE(box("posYStepDoubleSpinBox")->singleStep(), 0.1);
        QCOMPARE(box("i0StepDoubleSpinBox")->maximum(), 99.99);
        for (const char* bias : {"posXbiasDoubleSpinBox", "posYbiasDoubleSpinBox", "i0biasDoubleSpinBox"}) {
            QCOMPARE(box(bias)->minimum(), 0.0);
            QCOMPARE(box(bias)->maximum(), 99.99);
        }
        QVERIFY(!find<QCheckBox>(window.get(), "useBPM2checkbox")->isChecked());
        QCOMPARE(runButton()->text(), QStringLiteral("Run"));
        QVERIFY(find<QDialogButtonBox>(window.get(), "buttonBox")->button(QDialogButtonBox::Close));
        QCOMPARE(find<QDialogButtonBox>(window.get(), "buttonBox")->orientation(), Qt::Vertical);
        QStringList captions;
        for (const QLabel* label : window->findChildren<QLabel*>())
            captions.append(label->text());
        for (const char* caption : {"Pos X bias", "Pos X step", "Pos Y bias", "Pos Y step", "I0 bias",
                                    "I0 step", "dc =", "du =", "K =", "Tdead =", "Tset ="})
            QVERIFY2(captions.contains(QLatin1String(caption)), caption);
        QCOMPARE(text("invertedLabel"), QString());
    }

    void plotHasTheStatedLook()
    {
        QCOMPARE(plot->graphCount(), 2);
        QCOMPARE(plot->graph(0)->name(), QStringLiteral("Stimulus"));
        QCOMPARE(plot->graph(0)->valueAxis(), plot->yAxis);
        QCOMPARE(plot->graph(0)->pen().color(), QColor(Qt::blue));
        QCOMPARE(plot->graph(1)->name(), QStringLiteral("Response"));
        QCOMPARE(plot->graph(1)->keyAxis(), plot->xAxis);
        QCOMPARE(plot->graph(1)->valueAxis(), plot->yAxis2);
        QCOMPARE(plot->graph(1)->pen().color(), QColor(200, 0, 0));
        // The left edge shows the gradient, which ends at 500 pixels.
        const QImage picture = plot->toPixmap(300, 600).toImage();
        QCOMPARE(picture.pixelColor(0, 0), QColor(250, 250, 250));
        QVERIFY(qAbs(picture.pixelColor(0, 250).green() - 235) <= 1);
        QCOMPARE(picture.pixelColor(0, 500), QColor(220, 220, 220));
        QVERIFY(plot->yAxis2->visible());
        QCOMPARE(int(plot->interactions()), 19);
        QCOMPARE(plot->axisRect()->rangeZoom(), Qt::Orientations(Qt::Horizontal));
        QVERIFY(plot->legend->visible());
        QCOMPARE(plot->legend->textColor(), QColor(10, 10, 10));
        QCOMPARE(plot->legend->brush().color(), QColor(222, 222, 222));
    }

    void openingFillsTheBiasesFromTheirOddKeys()
    {
        scratch_settings::setValue("PID_Xlf/Offset", 1.5);
        scratch_settings::setValue("PID_Xhf/Offset", 2.5);
        scratch_settings::setValue("PID_Ylf/Offset", 3.5);
        scratch_settings::setValue("PID_Yhf/Offset", 9.5);
        window->showTool();
        QVERIFY(window->isVisible());
        QCOMPARE(box("posXbiasDoubleSpinBox")->value(), 1.5);
        QCOMPARE(box("posYbiasDoubleSpinBox")->value(), 2.5);
        QCOMPARE(box("i0biasDoubleSpinBox")->value(), 3.5);
        QVERIFY(commands().empty());
    }

    void newWindowOffersTheStepOfXAlone()
    {
        QVERIFY(box("posXStepDoubleSpinBox")->isEnabled());
        QVERIFY(!box("posYStepDoubleSpinBox")->isEnabled());
        QVERIFY(!box("i0StepDoubleSpinBox")->isEnabled());
        QCOMPARE(box("posXStepDoubleSpinBox")->value(), 0.1);
        QCOMPARE(box("posYStepDoubleSpinBox")->value(), 0.0);
        QCOMPARE(box("i0StepDoubleSpinBox")->value(), 0.0);
    }

    void selectingAnAxisSetsAndEnablesItsStepAlone()
    {
        box("posXbiasDoubleSpinBox")->setValue(7);
        box("posXStepDoubleSpinBox")->setValue(2.5);
        press(radio("stepInYbutton"));
        QCOMPARE(box("posXStepDoubleSpinBox")->value(), 0.0);
        QCOMPARE(box("posYStepDoubleSpinBox")->value(), 0.1);
        QCOMPARE(box("i0StepDoubleSpinBox")->value(), 0.0);
        QVERIFY(!box("posXStepDoubleSpinBox")->isEnabled());
        QVERIFY(box("posYStepDoubleSpinBox")->isEnabled());
        QVERIFY(!box("i0StepDoubleSpinBox")->isEnabled());
        press(radio("stepInI0button"));
        QVERIFY(box("i0StepDoubleSpinBox")->isEnabled());
        QCOMPARE(box("i0StepDoubleSpinBox")->value(), 0.1);
        QCOMPARE(box("posYStepDoubleSpinBox")->value(), 0.0);
        press(radio("stepInXbutton"));
        QCOMPARE(box("posXStepDoubleSpinBox")->value(), 0.1);
        for (const char* bias : {"posXbiasDoubleSpinBox", "posYbiasDoubleSpinBox", "i0biasDoubleSpinBox"})
            QVERIFY(box(bias)->isEnabled());
        QCOMPARE(box("posXbiasDoubleSpinBox")->value(), 7.0);
    }

    void runCallsEverythingInOrder()
    {
        mailbox->pidStatus = PidStatusOn;
        box("posXbiasDoubleSpinBox")->setValue(1);
        box("posXStepDoubleSpinBox")->setValue(0.5);
        box("posYbiasDoubleSpinBox")->setValue(2);
        box("i0biasDoubleSpinBox")->setValue(3);
        std::vector<std::size_t> callsAtPause;
        driven_pause::setAction([&](unsigned long) { callsAtPause.push_back(calls().size()); });
        run();
        QStringList lines;
        for (const Call& call : calls())
            lines.append(QString::fromStdString(call.text()));
        const QString base = QStringLiteral("ioctl(/dev/kora_anvolt0, 1, 2, 0, 3, 1)");
        const QStringList closes = lines.mid(lines.size() - 2);
        QCOMPARE(lines.mid(0, lines.size() - 2),
                 QStringList({QStringLiteral("setFBenable(0)"), QStringLiteral("setDisplayFreq(50000, 1)"),
                              QStringLiteral("open(/dev/kora_anvolt0, %1)").arg(O_RDWR | O_SYNC),
                              QStringLiteral("open(/dev/kora_dma_displ, %1)").arg(O_RDONLY),
                              QStringLiteral("setOutputMux(0)"), base,
                              QStringLiteral("ioctl(/dev/kora_anvolt0, 1.5, 2, 0, 3, 1)"), base,
                              QStringLiteral("read(/dev/kora_dma_displ, %1)").arg(0x380000),
                              QStringLiteral("setOutputMux(1)")}));
        QVERIFY(closes.contains(QStringLiteral("close(/dev/kora_anvolt0)")));
        QVERIFY(closes.contains(QStringLiteral("close(/dev/kora_dma_displ)")));
        QCOMPARE(driven_pause::pauses(), (std::vector<unsigned long>{100000, 100000, 120000}));
        // After each of the three writes.
        QCOMPARE(callsAtPause, (std::vector<std::size_t>{6, 7, 8}));
        QCOMPARE(SAMP_FREQ, 50000);
    }

    void feedbackThatIsOffIsNotSwitchedOff_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("switched");
        QTest::newRow("off") << int(PidStatusOff) << 0;
        QTest::newRow("out of the region") << int(PidStatusOutOfRoc) << 1;
        QTest::newRow("beam off") << int(PidStatusBeamOff) << 1;
        QTest::newRow("on") << int(PidStatusOn) << 1;
    }
    void feedbackThatIsOffIsNotSwitchedOff()
    {
        QFETCH(int, status);
        QFETCH(int, switched);
        mailbox->pidStatus = status;
        run();
        QCOMPARE(int(callsOf("setFBenable").size()), switched);
    }

    void rateStaysAtFiftyKilohertz()
    {
        SAMP_FREQ = 2000;
        run();
        QCOMPARE(SAMP_FREQ, 50000);
        QCOMPARE(callsOf("setDisplayFreq").size(), std::size_t(1));
    }

    void outputsFollowTheConfiguration()
    {
        scratch_settings::setValue("Beamline/DAC_posXlf", 3);
        scratch_settings::setValue("Beamline/DAC_posXhf", 2);
        scratch_settings::setValue("Beamline/DAC_posYlf", 1);
        scratch_settings::setValue("Beamline/DAC_posYhf", 0);
        press(radio("stepInI0button"));
        box("posXbiasDoubleSpinBox")->setValue(1);
        box("posYbiasDoubleSpinBox")->setValue(2);
        box("i0biasDoubleSpinBox")->setValue(3);
        box("i0StepDoubleSpinBox")->setValue(4);
        run();
        QCOMPARE(operate::lines(callsOf("ioctl")),
                 QStringList({QStringLiteral("ioctl(/dev/kora_anvolt0, 3, 0, 2, 1, 1)"),
                              QStringLiteral("ioctl(/dev/kora_anvolt0, 7, 0, 2, 1, 1)"),
                              QStringLiteral("ioctl(/dev/kora_anvolt0, 3, 0, 2, 1, 1)")}));
    }

    void outputThatNoAxisDrivesRestsAtItsOffset()
    {
        scratch_settings::setValue("PID_Ylf/Offset", 4.5);
        scratch_settings::setValue("Beamline/DAC_posYlf", 2);
        run();
        QCOMPARE(operate::lines(callsOf("ioctl")),
                 QStringList({QStringLiteral("ioctl(/dev/kora_anvolt0, 0, 0, 4.5, 0, 1)"),
                              QStringLiteral("ioctl(/dev/kora_anvolt0, 0.1, 0, 4.5, 0, 1)"),
                              QStringLiteral("ioctl(/dev/kora_anvolt0, 0, 0, 4.5, 0, 1)")}));
        // An output that an axis drives belongs to the axis.
        scratch_settings::setValue("Beamline/DAC_posYlf", 0);
        clearCalls();
        run();
        QCOMPARE(operate::lines(callsOf("ioctl")).first(),
                 QStringLiteral("ioctl(/dev/kora_anvolt0, 0, 0, 0, 0, 1)"));
    }

    void outputNumbersOutsideTheUnitAreHarmless()
    {
        scratch_settings::setValue("Beamline/DAC_posXlf", 400);
        scratch_settings::setValue("Beamline/DAC_posXhf", -9);
        box("posXbiasDoubleSpinBox")->setValue(1);
        run();
        QCOMPARE(operate::lines(callsOf("ioctl")).first(),
                 QStringLiteral("ioctl(/dev/kora_anvolt0, 0, 0, 0, 0, 1)"));
        QCOMPARE(plot->graph(0)->dataCount(), analysed);
    }

    void figuresAreThoseOfTheAnswer_data()
    {
        QTest::addColumn<QString>("selector");
        QTest::addColumn<QString>("stepBox");
        QTest::addColumn<bool>("secondMonitor");
        QTest::addColumn<int>("stimulusSlot");
        QTest::addColumn<int>("responseSlot");
        const auto row = [](const char* name, const char* selector, const char* stepBox, bool second,
                            int stimulus, int response) {
            QTest::newRow(name) << QString::fromLatin1(selector) << QString::fromLatin1(stepBox) << second
                                << stimulus << response;
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

    void missingStreamIsToldAndEndsTheProgramAfterTheRun()
    {
        setDevicePresent("/dev/kora_dma_displ", false);
        MessageBoxes boxes;
        QTimer::singleShot(0, runButton(), SLOT(click()));
        QCOMPARE(QCoreApplication::exec(), 0);
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(boxes.boxes().first().title, QStringLiteral("Cannot open file"));
        QCOMPARE(boxes.boxes().first().text,
                 QStringLiteral("System file /dev/kora_dma_displ could not be opened.\n\n"
                                "Please check if KORA driver is loaded.\n"
                                "Application will now quit.\n"));
        QCOMPARE(boxes.boxes().first().icon, QMessageBox::Critical);
        QCOMPARE(callsOf("ioctl").size(), std::size_t(3));
        QCOMPARE(operate::lines(commands()).last(), QStringLiteral("setOutputMux(1)"));
        QCOMPARE(plot->graph(1)->dataCount(), analysed);
        QCOMPARE(text("dclabel"), QStringLiteral("0"));
        QCOMPARE(openDescriptors(), 0);
    }

    void windowDestroyedUnderTheBoxIsHarmless()
    {
        setDevicePresent("/dev/kora_dma_displ", false);
        QTimer::singleShot(0, runButton(), SLOT(click()));
        QTimer::singleShot(0, qApp, [this] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            window.reset();
            if (box)
                box->accept();
        });
        QCOMPARE(QCoreApplication::exec(), 0);
        QVERIFY(!window);
        QVERIFY(callsOf("ioctl").empty());
        QCOMPARE(openDescriptors(), 0);
    }

    void shortBlockReadsAsZerosAtItsEnd()
    {
        answers().deliveredBytes = 1000 * 256;
        answers().fillBlock = [](DisplayRecord* block, int count) {
            for (int i = 0; i < count; ++i)
                block[i].pos1X = 5;
        };
        run();
        const auto response = plot->graph(1)->data()->constBegin();
        QCOMPARE((response + 999)->value, 5.0);
        QCOMPARE((response + 1000)->value, 0.0);
    }

    void recordsThatAreNoNumbersAreNoCrash()
    {
        answers().fillBlock = [](DisplayRecord* block, int count) {
            const double odd[] = {std::numeric_limits<double>::quiet_NaN(),
                                  std::numeric_limits<double>::infinity(),
                                  -std::numeric_limits<double>::infinity(),
                                  1e308,
                                  -1e308,
                                  5e-324};
            for (int i = 0; i < count; ++i) {
                block[i].pos1X = odd[i * 7 % 6];
                block[i].dac[0] = odd[i * 5 % 6];
            }
        };
        window->showTool();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        run();
        QCOMPARE(operate::lines(commands()).last(), QStringLiteral("setOutputMux(1)"));
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

    void enterInAFieldStartsNothing()
    {
        window->showTool();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        QTest::keyClick(box("posXStepDoubleSpinBox"), Qt::Key_Return);
        QVERIFY(commands().empty());
        QVERIFY(window->isVisible());
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

QTEST_MAIN(WindowStepResponseTest)
#include "WindowStepResponseTest.moc"
