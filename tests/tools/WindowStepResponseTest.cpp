#include "StepResponseTool.h"

#include "app/Globals.h"
#include "hardware/MailboxComm.h"
#include "stream/Updater.h"
#include "support/MessageBoxes.h"
#include "support/ScratchSettings.h"

#include <QCheckBox>

#include <algorithm>
#include <fcntl.h>
#include <limits>

using namespace koralink_double;
using operate::find;
using operate::press;

namespace {

constexpr int analysed = 14335;

} // namespace

/// The form, the order of a run, and what comes between.
class WindowStepResponseTest : public StepResponseTool
{
    Q_OBJECT

private slots:
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
        for (const char* caption : {"Pos X bias", "Pos X step", "Pos Y bias", "Pos Y step", "I0 bias", "I0 step",
                                    "dc =", "du =", "K =", "Tdead =", "Tset ="})
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

    void outputThatNoAxisDrivesKeepsItsVoltage()
    {
        scratch_settings::setValue("PID_Ylf/Offset", 9.0);
        scratch_settings::setValue("Beamline/DAC_posYlf", 1);
        answers().fillBlock = [](DisplayRecord* block, int count) {
            for (int i = 0; i < count; ++i)
                std::fill(std::begin(block[i].dac), std::end(block[i].dac), i + 1 < count ? 7.0 : 4.5);
        };
        dispBufferBytes = 100 * recordBytes;
        updater->updateGraphs();
        clearCalls();
        run();
        QCOMPARE(operate::lines(callsOf("ioctl")),
                 QStringList({QStringLiteral("ioctl(/dev/kora_anvolt0, 0, 0, 4.5, 0, 1)"),
                              QStringLiteral("ioctl(/dev/kora_anvolt0, 0.1, 0, 4.5, 0, 1)"),
                              QStringLiteral("ioctl(/dev/kora_anvolt0, 0, 0, 4.5, 0, 1)")}));
        // What the program holds already serves.
        QVERIFY(callsOf("getBuffer").empty());
        QCOMPARE(callsOf("read").size(), std::size_t(1));
    }

    void outputThatNoAxisDrivesIsZeroWithoutADisplayWindow()
    {
        scratch_settings::setValue("PID_Ylf/Offset", 9.0);
        run();
        QCOMPARE(operate::lines(callsOf("ioctl")).first(), QStringLiteral("ioctl(/dev/kora_anvolt0, 0, 0, 0, 0, 1)"));
    }

    void outputOfARecordThatHoldsNoNumberIsZero()
    {
        answers().fillBlock = [](DisplayRecord* block, int count) {
            block[count - 1].dac[2] = std::numeric_limits<double>::quiet_NaN();
        };
        updater->updateGraphs();
        clearCalls();
        run();
        QCOMPARE(operate::lines(callsOf("ioctl")).first(), QStringLiteral("ioctl(/dev/kora_anvolt0, 0, 0, 0, 0, 1)"));
    }

    void outputNumbersOutsideTheUnitAreHarmless()
    {
        scratch_settings::setValue("Beamline/DAC_posXlf", 400);
        scratch_settings::setValue("Beamline/DAC_posXhf", -9);
        box("posXbiasDoubleSpinBox")->setValue(1);
        run();
        QCOMPARE(operate::lines(callsOf("ioctl")).first(), QStringLiteral("ioctl(/dev/kora_anvolt0, 0, 0, 0, 0, 1)"));
        QCOMPARE(plot->graph(0)->dataCount(), analysed);
    }

    void missingStreamIsToldAndEndsTheProgramAfterTheRun()
    {
        setDevicePresent("/dev/kora_dma_displ", false);
        MessageBoxes boxes;
        QTimer::singleShot(0, runButton(), SLOT(click()));
        QCOMPARE(QCoreApplication::exec(), 0);
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(boxes.boxes().first().title, QStringLiteral("Cannot open file"));
        QCOMPARE(boxes.boxes().first().text, QStringLiteral("System file /dev/kora_dma_displ could not be opened.\n\n"
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

    void enterInAFieldStartsNothing()
    {
        window->showTool();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        QTest::keyClick(box("posXStepDoubleSpinBox"), Qt::Key_Return);
        QVERIFY(commands().empty());
        QVERIFY(window->isVisible());
    }
};

QTEST_MAIN(WindowStepResponseTest)
#include "WindowStepResponseTest.moc"
