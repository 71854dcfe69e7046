#include "app/Globals.h"
#include "double/KoralinkDouble.h"
#include "hardware/MailboxComm.h"
#include "logging/Log.h"
#include "support/DrivenPause.h"
#include "support/FileDialogs.h"
#include "support/FullDisk.h"
#include "support/LogLines.h"
#include "support/MessageBoxes.h"
#include "support/Operator.h"
#include "support/World.h"
#include "tools/WindowFrequencyAnalysis.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>
#include <QTreeWidget>
#include <QtTest>
#include <qcustomplot.h>

#include <fcntl.h>

#include <cmath>
#include <cstring>
#include <memory>

using namespace koralink_double;
using operate::find;
using operate::lines;

namespace {

constexpr int blockRecords = 14336;
constexpr int usedRecords = 14335;

/// Frequency of the last funcGenConfig, Hz.
double generatorHertz()
{
    double hertz = 0;
    for (const Call& call : calls()) {
        if (call.name == "funcGenConfig")
            hertz = call.arguments.at(8);
    }
    return hertz;
}

std::vector<double> generatorFrequencies()
{
    std::vector<double> list;
    for (const Call& call : calls()) {
        if (call.name == "funcGenConfig")
            list.push_back(call.arguments.at(8));
    }
    return list;
}

/// A response of known phase: whole turns of the references over the used records, so that the means are exact.
struct Response {
    std::function<double(double hertz)> phaseDeg = [](double) { return 0.0; };
    double amplitude = 1;
    double mean = 0;

    void operator()(DisplayRecord* block, int count) const
    {
        const double phase = phaseDeg(generatorHertz()) * M_PI / 180;
        for (int i = 0; i < count; ++i) {
            const double turn = 2 * M_PI * 61 * i / usedRecords;
            block[i].xLf = mean + amplitude * std::sin(turn + phase);
            block[i].yLf = -3 * block[i].xLf;
            block[i].funcGenRefA = float(4 * std::sin(turn));
            block[i].funcGenRefB = float(4 * std::cos(turn));
        }
    }
};

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    return file.readAll();
}

} // namespace

class FrequencyAnalysisTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<World> world;
    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<WindowFrequencyAnalysis> window;

    QLineEdit* line(const char* name) const { return find<QLineEdit>(window.get(), name); }
    QComboBox* combo(const char* name) const { return find<QComboBox>(window.get(), name); }
    QPushButton* button(const char* name) const { return find<QPushButton>(window.get(), name); }
    QCustomPlot* magnitudePlot() const { return find<QCustomPlot>(window.get(), "graphMg"); }
    QCustomPlot* phasePlot() const { return find<QCustomPlot>(window.get(), "graphPh"); }
    QTreeWidget* tree() const { return find<QTreeWidget>(window.get(), "plotsTree"); }
    int progress() const { return find<QProgressBar>(window.get(), "progressBar")->value(); }
    QString path(const char* name) const { return folder->filePath(QLatin1String(name)); }

    void setSweep(const char* start, const char* stop, const char* length, const char* type = "lin")
    {
        line("startFreqLineEdit")->setText(QLatin1String(start));
        line("stopFreqLineEdit")->setText(QLatin1String(stop));
        line("lengthLineEdit")->setText(QLatin1String(length));
        combo("sweepTypeComboBox")->setCurrentText(QLatin1String(type));
    }
    void start() { operate::press(button("StartSweepPushButton")); }
    void stop() { operate::press(button("StopSweepPushButton")); }
    void exportSelected() { operate::press(button("exportMeasPushButton")); }
    void inPause(int number, std::function<void()> action)
    {
        driven_pause::setAction([number, action = std::move(action)](unsigned long) {
            if (int(driven_pause::pauses().size()) == number)
                action();
        });
    }
    std::vector<double> keys(int plot) const
    {
        std::vector<double> list;
        for (const QCPGraphData& point : *magnitudePlot()->graph(plot)->data())
            list.push_back(point.key);
        return list;
    }
    std::vector<double> values(QCustomPlot* graphs, int plot) const
    {
        std::vector<double> list;
        for (const QCPGraphData& point : *graphs->graph(plot)->data())
            list.push_back(point.value);
        return list;
    }

private slots:
    void init()
    {
        koralink_double::reset();
        world = std::make_unique<World>();
        folder = std::make_unique<QTemporaryDir>();
        window = std::make_unique<WindowFrequencyAnalysis>();
        clearCalls();
    }
    void cleanup()
    {
        window.reset();
        folder.reset();
        world.reset();
        QCOMPARE(openDescriptors(), 0);
    }

    void opensWithTheStatedTextsAndDefaults()
    {
        QCOMPARE(window->windowTitle(), QStringLiteral("Frequency Analysis Tool"));
        QCOMPARE(line("startFreqLineEdit")->text(), QStringLiteral("10"));
        QCOMPARE(line("stopFreqLineEdit")->text(), QStringLiteral("50"));
        QCOMPARE(line("lengthLineEdit")->text(), QStringLiteral("5"));
        const auto items = [this](const char* name) {
            QStringList texts;
            for (int i = 0; i < combo(name)->count(); ++i)
                texts.append(combo(name)->itemText(i));
            return texts.join(QLatin1Char(' '));
        };
        QCOMPARE(items("sweepTypeComboBox"), QStringLiteral("log lin"));
        QCOMPARE(combo("sweepTypeComboBox")->currentText(), QStringLiteral("log"));
        QCOMPARE(items("outputChComboBox"), QStringLiteral("x y"));
        QCOMPARE(items("inputChComboBox"), QStringLiteral("x y"));
        for (const char* name : {"outAnvoltChLineEdit", "offsetspinBox", "inIonbarChLineEdit", "inBpmChLineEdit"})
            QVERIFY2(!line(name)->isEnabled(), name);
        const auto* amplitude = find<QDoubleSpinBox>(window.get(), "amplspinBox");
        QCOMPARE(amplitude->value(), 0.01);
        QCOMPARE(amplitude->maximum(), 1.0);
        QCOMPARE(amplitude->singleStep(), 0.01);
        const auto* scaling = find<QCheckBox>(window.get(), "useBPMscalingCheckBox");
        QCOMPARE(scaling->text(), QStringLiteral("use BPM scaling"));
        QVERIFY(scaling->isChecked());
        QCOMPARE(tree()->headerItem()->text(0), QStringLiteral("Plots"));
        QCOMPARE(tree()->selectionMode(), QAbstractItemView::MultiSelection);
        QCOMPARE(button("exportMeasPushButton")->text(), QStringLiteral("Export meas"));
        QCOMPARE(button("pushButtonAutoscale")->text(), QStringLiteral("Autoscale"));
        QCOMPARE(button("StartSweepPushButton")->text(), QStringLiteral("Start sweep"));
        QCOMPARE(button("StopSweepPushButton")->text(), QStringLiteral("Stop sweep"));
        QCOMPARE(progress(), 0);
        QStringList labels;
        for (const QLabel* label : window->findChildren<QLabel*>())
            labels.append(label->text());
        for (const char* text : {"Start freq", "Stop freq", "Length", "Sweep type", "Output ch", "Anvolt",
                                 "Ampl [Vpp]", "Offset", "Input ch", "IonBar", "BPM"})
            QVERIFY2(labels.contains(QLatin1String(text)), text);
    }

    void plotsAreDressedAsStated()
    {
        for (QCustomPlot* plot : {magnitudePlot(), phasePlot()}) {
            QCOMPARE(int(plot->interactions()), 59);
            QCOMPARE(plot->axisRect()->rangeZoom(), Qt::Orientations(Qt::Vertical));
            QCOMPARE(plot->xAxis->label(), QStringLiteral("Frequency [Hz]"));
            QCOMPARE(plot->xAxis->scaleType(), QCPAxis::stLogarithmic);
            QCOMPARE(plot->xAxis->range().lower, 1.0);
            QCOMPARE(plot->xAxis->range().upper, 100.0);
            const auto ticker = qSharedPointerDynamicCast<QCPAxisTickerLog>(plot->xAxis->ticker());
            QVERIFY(ticker);
            QCOMPARE(ticker->subTickCount(), 8);
            for (QCPAxis* axis : {plot->xAxis, plot->yAxis}) {
                QCOMPARE(axis->labelColor(), QColor(Qt::white));
                QCOMPARE(axis->tickLabelColor(), QColor(Qt::white));
                for (const QPen& pen : {axis->basePen(), axis->tickPen(), axis->subTickPen()}) {
                    QCOMPARE(pen.color(), QColor(Qt::white));
                    QCOMPARE(pen.widthF(), 1.0);
                    QCOMPARE(pen.style(), Qt::SolidLine);
                }
                QVERIFY(axis->grid()->subGridVisible());
            }
        }
        QCOMPARE(magnitudePlot()->yAxis->label(), QStringLiteral("Magnitude"));
        QCOMPARE(phasePlot()->yAxis->label(), QStringLiteral("Phase [deg]"));
        QCOMPARE(magnitudePlot()->yAxis->scaleType(), QCPAxis::stLogarithmic);
        QCOMPARE(magnitudePlot()->yAxis->numberFormat(), QStringLiteral("e"));
        QCOMPARE(magnitudePlot()->yAxis->numberPrecision(), 2);
        QCOMPARE(phasePlot()->yAxis->scaleType(), QCPAxis::stLinear);
    }

    void fieldsMirrorOutputSelectorAndValue()
    {
        answers().outSel[0] = 3;
        answers().outSel[2] = 1;
        answers().bpmSel[0] = 1;
        answers().fillBlock = [](DisplayRecord* block, int count) {
            QCOMPARE(count, 1);
            block[0].dac[1] = 5;
            block[0].dac[3] = -1.2345678;
        };
        window->showTool();
        QVERIFY(window->isVisible());
        QCOMPARE(line("outAnvoltChLineEdit")->text(), QStringLiteral("OUT4"));
        QCOMPARE(line("offsetspinBox")->text(), QStringLiteral("-1,23457"));
        QCOMPARE(line("inBpmChLineEdit")->text(), QStringLiteral("2"));
        QCOMPARE(line("inIonbarChLineEdit")->text(), QStringLiteral("Xlf"));
        combo("outputChComboBox")->setCurrentText(QStringLiteral("y"));
        QCOMPARE(line("outAnvoltChLineEdit")->text(), QStringLiteral("OUT2"));
        QCOMPARE(line("offsetspinBox")->text(), QStringLiteral("5"));
        combo("inputChComboBox")->setCurrentText(QStringLiteral("y"));
        QCOMPARE(line("inBpmChLineEdit")->text(), QStringLiteral("1"));
        QCOMPARE(line("inIonbarChLineEdit")->text(), QStringLiteral("Ylf"));
        for (const std::string& read : callsOf("read"))
            QCOMPARE(read, std::string("read(/dev/kora_dma_displ, 256)"));
    }

    void constructionFillsTheFields()
    {
        answers().outSel[0] = 2;
        answers().bpmSel[0] = 1;
        window = std::make_unique<WindowFrequencyAnalysis>();
        QCOMPARE(line("outAnvoltChLineEdit")->text(), QStringLiteral("OUT3"));
        QCOMPARE(line("offsetspinBox")->text(), QStringLiteral("0"));
        QCOMPARE(line("inBpmChLineEdit")->text(), QStringLiteral("2"));
    }

    void refusedSweepsSayWhyAndTouchNothing_data()
    {
        QTest::addColumn<QByteArray>("startText");
        QTest::addColumn<QByteArray>("stopText");
        QTest::addColumn<QByteArray>("lengthText");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("text");
        const QString startTitle = QStringLiteral("Start frequency not allowed ...\n");
        const QString startText = QStringLiteral("Allowed values [0.1, 500] Hz\n\n");
        const QString stopTitle = QStringLiteral("Stop frequency not allowed ...\n");
        const QString stopText = QStringLiteral("Allowed values [1, 1000] Hz\n\n");
        const QString lengthTitle = QStringLiteral("Number of frequency points not allowed ...\n");
        const QString lengthText = QStringLiteral("Allowed values [2, 1000]\n\n");
        using Text = QByteArray;
        QTest::newRow("start below") << Text("0.0999") << Text("50") << Text("5") << startTitle << startText;
        QTest::newRow("start above") << Text("500.1") << Text("50") << Text("5") << startTitle << startText;
        QTest::newRow("start not a number") << Text("nan") << Text("50") << Text("5") << startTitle << startText;
        QTest::newRow("start no text") << Text("") << Text("50") << Text("5") << startTitle << startText;
        QTest::newRow("start with a comma") << Text("1,5") << Text("50") << Text("5") << startTitle << startText;
        QTest::newRow("stop below") << Text("10") << Text("0.99") << Text("5") << stopTitle << stopText;
        QTest::newRow("stop above") << Text("10") << Text("1000.5") << Text("5") << stopTitle << stopText;
        QTest::newRow("stop infinite") << Text("10") << Text("inf") << Text("5") << stopTitle << stopText;
        QTest::newRow("length below") << Text("10") << Text("50") << Text("1") << lengthTitle << lengthText;
        QTest::newRow("length above") << Text("10") << Text("50") << Text("1001") << lengthTitle << lengthText;
        QTest::newRow("length not a number") << Text("10") << Text("50") << Text("five") << lengthTitle << lengthText;
        QTest::newRow("all wrong, start first") << Text("0") << Text("0") << Text("0") << startTitle << startText;
        QTest::newRow("stop before length") << Text("10") << Text("0") << Text("0") << stopTitle << stopText;
    }
    void refusedSweepsSayWhyAndTouchNothing()
    {
        QFETCH(QByteArray, startText);
        QFETCH(QByteArray, stopText);
        QFETCH(QByteArray, lengthText);
        setSweep(startText.constData(), stopText.constData(), lengthText.constData());
        MessageBoxes boxes;
        start();
        QCOMPARE(boxes.count(), 1);
        QTEST(boxes.boxes().first().title, "title");
        QTEST(boxes.boxes().first().text, "text");
        QCOMPARE(boxes.boxes().first().icon, QMessageBox::Critical);
        QCOMPARE(boxes.boxes().first().buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
        QVERIFY(button("StartSweepPushButton")->isEnabled());
        QVERIFY(calls().empty());
        QCOMPARE(tree()->topLevelItemCount(), 0);

        // A stop that is pressed now is not remembered.
        stop();
        setSweep("10", "20", "2");
        start();
        QCOMPARE(keys(0).size(), std::size_t(2));
    }

    void limitsThemselvesAreAllowed_data()
    {
        QTest::addColumn<QByteArray>("startText");
        QTest::addColumn<QByteArray>("stopText");
        QTest::addColumn<QByteArray>("lengthText");
        QTest::newRow("lowest") << QByteArray("0.1") << QByteArray("1") << QByteArray("2");
        QTest::newRow("highest") << QByteArray("500") << QByteArray("1000") << QByteArray("2");
    }
    void limitsThemselvesAreAllowed()
    {
        QFETCH(QByteArray, startText);
        QFETCH(QByteArray, stopText);
        QFETCH(QByteArray, lengthText);
        setSweep(startText.constData(), stopText.constData(), lengthText.constData());
        MessageBoxes boxes;
        start();
        QCOMPARE(boxes.count(), 0);
        QCOMPARE(generatorFrequencies(),
                 (std::vector<double>{double(startText.toFloat()), double(stopText.toFloat())}));
    }

    void thousandPointsAreAllowed()
    {
        setSweep("10", "20", "1000");
        inPause(1, [this] { stop(); });
        start();
        QCOMPARE(generatorFrequencies().size(), std::size_t(1));
        QCOMPARE(tree()->topLevelItemCount(), 1);
    }

    void linearSweepHasEqualSteps()
    {
        setSweep("10", "50", "5", "lin");
        start();
        QCOMPARE(generatorFrequencies(), (std::vector<double>{10, 20, 30, 40, 50}));
    }

    void logarithmicSweepHasEqualRatios()
    {
        setSweep("1", "100", "5", "log");
        start();
        const std::vector<double> list = generatorFrequencies();
        QCOMPARE(list.size(), std::size_t(5));
        for (std::size_t i = 0; i < 5; ++i)
            QVERIFY(std::fabs(list[i] - std::pow(10, i * 0.5)) < 1e-6 * list[i]);
    }

    void runningLoopRefusesTheSweepAndKeepsALaterStop()
    {
        mailbox->pidStatus = PidStatusOutOfRoc;
        MessageBoxes boxes;
        start();
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(boxes.boxes().first().title, QStringLiteral("PID Running ...\n"));
        QCOMPARE(boxes.boxes().first().text,
                 QStringLiteral("Feedback need to be stopped before starting the Frequency Analysis.\n\n"));
        QCOMPARE(boxes.boxes().first().icon, QMessageBox::Critical);
        QVERIFY(button("StartSweepPushButton")->isEnabled());
        QVERIFY(calls().empty());
        QCOMPARE(tree()->topLevelItemCount(), 0);

        stop();
        mailbox->pidStatus = PidStatusOff;
        start();
        QCOMPARE(tree()->topLevelItemCount(), 1);
        QVERIFY(keys(0).empty());
        QVERIFY(callsOf("funcGenConfig").empty());
        start();
        QCOMPARE(keys(1).size(), std::size_t(5));
    }

    void runningLoopIsRefusedBeforeTheFieldsAreChecked()
    {
        mailbox->pidStatus = PidStatusOn;
        setSweep("0", "0", "0");
        MessageBoxes boxes;
        start();
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(boxes.boxes().first().title, QStringLiteral("PID Running ...\n"));
    }

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
        const QStringList expected = {
            QStringLiteral("open(/dev/kora_anvolt0, %1)").arg(O_RDWR | O_SYNC),
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
            QStringLiteral("close(/dev/kora_dma_displ)"),
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

    void failingGeneratorIsIgnored()
    {
        for (const char* function : {"funcGenConfig", "funcGenEnable", "getPIDoutSel", "getBPMselector"})
            fail(function);
        MessageBoxes boxes;
        start();
        QCOMPARE(boxes.count(), 0);
        QCOMPARE(keys(0).size(), std::size_t(5));
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
        answers().fillBlock = Response();
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
        answers().fillBlock = Response();
        setSweep("10", "20", "2");
        inPause(2, [this] { find<QCheckBox>(window.get(), "useBPMscalingCheckBox")->setChecked(false); });
        start();
        const std::vector<double> magnitudes = values(magnitudePlot(), 0);
        QVERIFY(std::fabs(magnitudes.at(0) / magnitudes.at(1) - 10) < 1e-6);
    }

    void phaseIsUnwrappedInTheOrderOfMeasuring()
    {
        Response response;
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

    void stopEndsTheSweepBeforeTheNextPoint()
    {
        bool startEnabled = true;
        inPause(2, [&] {
            startEnabled = button("StartSweepPushButton")->isEnabled();
            stop();
        });
        SAMP_FREQ = 4000;
        start();
        QVERIFY(!startEnabled);
        QCOMPARE(keys(0).size(), std::size_t(2));
        QCOMPARE(progress(), 40);
        QCOMPARE(SAMP_FREQ, 4000);
        QCOMPARE(callsOf("setDisplayFreq").back(), std::string("setDisplayFreq(4000, 0)"));
        QVERIFY(button("StartSweepPushButton")->isEnabled());
        start();
        QCOMPARE(keys(1).size(), std::size_t(5));
    }

    void stopWhileIdleAfterAStoppedSweepEndsTheNextOne()
    {
        inPause(1, [this] { stop(); });
        start();
        driven_pause::setAction(nullptr);
        stop();
        start();
        QCOMPARE(tree()->topLevelItemCount(), 2);
        QVERIFY(keys(1).empty());
        start();
        QCOMPARE(keys(2).size(), std::size_t(5));
    }

    void stopWhileIdleAfterAFinishedSweepIsForgotten()
    {
        start();
        stop();
        start();
        QCOMPARE(keys(1).size(), std::size_t(5));
    }

    void stopDuringTheLastPointDoesNotReachTheNextSweep()
    {
        inPause(5, [this] { stop(); });
        start();
        QCOMPARE(keys(0).size(), std::size_t(5));
        driven_pause::setAction(nullptr);
        start();
        QCOMPARE(keys(1).size(), std::size_t(5));
    }

    void equalStartAndStopLeaveOnePointTheLast()
    {
        int reads = 0;
        answers().fillBlock = [&](DisplayRecord* block, int count) {
            Response response;
            response.amplitude = ++reads;
            response(block, count);
        };
        find<QDoubleSpinBox>(window.get(), "amplspinBox")->setValue(1);
        setSweep("20", "20", "5");
        start();
        QCOMPARE(reads, 5);
        QCOMPARE(keys(0), std::vector<double>{20});
        QVERIFY(std::fabs(values(magnitudePlot(), 0).at(0) - 2 * 5) < 1e-4);
        tree()->topLevelItem(0)->setSelected(true);
        FileDialogs dialogs(path("one.csv"));
        exportSelected();
        QCOMPARE(contentOf(path("one_plot_x_x_0.csv")).count('\n'), 2);
    }

    void amplitudeOfZeroIsDividedByWithoutACheck()
    {
        find<QDoubleSpinBox>(window.get(), "amplspinBox")->setValue(0);
        answers().fillBlock = Response();
        setSweep("10", "20", "2");
        MessageBoxes boxes;
        start();
        QCOMPARE(boxes.count(), 0);
        QVERIFY(std::isinf(values(magnitudePlot(), 0).at(0)));
        answers().fillBlock = nullptr;
        start();
        QVERIFY(std::isnan(values(magnitudePlot(), 1).at(0)));
        tree()->topLevelItem(0)->setSelected(true);
        FileDialogs dialogs(path("zero.csv"));
        exportSelected();
        QVERIFY(contentOf(path("zero_plot_x_x_0.csv")).contains("10,inf,"));
    }

    void garbageInTheStreamIsSurvived()
    {
        answers().fillBlock = [](DisplayRecord* block, int count) {
            std::memset(static_cast<void*>(block), 0xff, std::size_t(count) * sizeof *block);
        };
        window->showTool();
        QCOMPARE(line("offsetspinBox")->text(), QStringLiteral("nan"));
        start();
        QCOMPARE(keys(0).size(), std::size_t(5));
        QVERIFY(std::isnan(values(magnitudePlot(), 0).at(4)));
        operate::press(button("pushButtonAutoscale"));
    }

    void everySweepAddsACheckedPlotInTheNextColour()
    {
        const QColor colors[6] = {QColor(255, 0, 0),   QColor(0, 255, 0),   QColor(0, 0, 255),
                                  QColor(255, 255, 0), QColor(0, 255, 255), QColor(255, 0, 255)};
        setSweep("10", "20", "2");
        for (int plot = 0; plot < 7; ++plot) {
            start();
            const QTreeWidgetItem* item = tree()->topLevelItem(plot);
            QCOMPARE(item->text(0), QStringLiteral("plot_x_x_%1").arg(plot));
            QCOMPARE(item->checkState(0), Qt::Checked);
            QVERIFY(item->flags() & Qt::ItemIsUserCheckable);
            QVERIFY(item->flags() & Qt::ItemIsEnabled);
            for (QCustomPlot* graphs : {magnitudePlot(), phasePlot()}) {
                QCOMPARE(graphs->graphCount(), plot + 1);
                const QPen pen = graphs->graph(plot)->pen();
                QCOMPARE(pen.color(), colors[plot % 6]);
                QCOMPARE(pen.widthF(), 1.0);
                QCOMPARE(pen.capStyle(), Qt::SquareCap);
                QCOMPARE(pen.joinStyle(), Qt::BevelJoin);
                QVERIFY(!graphs->graph(plot)->antialiased());
            }
        }
        QCOMPARE(tree()->topLevelItemCount(), 7);
    }

    void checkBoxOfAPlotShowsAndHidesBothTraces()
    {
        setSweep("10", "20", "2");
        start();
        start();
        QSignalSpy magnitudeDrawn(magnitudePlot(), SIGNAL(afterReplot()));
        QSignalSpy phaseDrawn(phasePlot(), SIGNAL(afterReplot()));
        tree()->topLevelItem(1)->setCheckState(0, Qt::Unchecked);
        QCOMPARE(magnitudeDrawn.count(), 1);
        QCOMPARE(phaseDrawn.count(), 1);
        QVERIFY(magnitudePlot()->graph(0)->visible());
        QVERIFY(!magnitudePlot()->graph(1)->visible());
        QVERIFY(!phasePlot()->graph(1)->visible());
        tree()->topLevelItem(1)->setCheckState(0, Qt::PartiallyChecked);
        QVERIFY(!magnitudePlot()->graph(1)->visible());
        tree()->topLevelItem(1)->setCheckState(0, Qt::Checked);
        QVERIFY(magnitudePlot()->graph(1)->visible());
        QVERIFY(phasePlot()->graph(1)->visible());
    }

    void plotsAreDrawnOnceAtTheEndOfASweep()
    {
        window->show();
        QSignalSpy magnitudeDrawn(magnitudePlot(), SIGNAL(afterReplot()));
        QSignalSpy phaseDrawn(phasePlot(), SIGNAL(afterReplot()));
        int drawnBefore = -1;
        QCoreApplication::processEvents();
        magnitudeDrawn.clear();
        phaseDrawn.clear();
        answers().fillBlock = Response();
        inPause(5, [&] { drawnBefore = magnitudeDrawn.count() + phaseDrawn.count(); });
        setSweep("20", "200", "5");
        start();
        QCOMPARE(drawnBefore, 0);
        QCOMPARE(magnitudeDrawn.count(), 1);
        QCOMPARE(phaseDrawn.count(), 1);
        QCOMPARE(magnitudePlot()->xAxis->range().lower, 20.0);
        QCOMPARE(magnitudePlot()->xAxis->range().upper, 200.0);
        QCOMPARE(phasePlot()->xAxis->range().upper, 200.0);
    }

    void autoscaleFollowsTheVisiblePlots()
    {
        answers().fillBlock = Response();
        setSweep("20", "200", "3");
        start();
        setSweep("2", "500", "3");
        start();
        QCOMPARE(phasePlot()->xAxis->range().lower, 2.0);
        tree()->topLevelItem(1)->setCheckState(0, Qt::Unchecked);
        magnitudePlot()->xAxis->setRange(50, 60);
        QSignalSpy drawn(magnitudePlot(), SIGNAL(afterReplot()));
        operate::press(button("pushButtonAutoscale"));
        QCOMPARE(drawn.count(), 1);
        QCOMPARE(magnitudePlot()->xAxis->range().lower, 20.0);
        QCOMPARE(phasePlot()->xAxis->range().upper, 200.0);
    }

    void exportIsExactToTheByteInAscendingFrequency()
    {
        int reads = 0;
        answers().fillBlock = [&](DisplayRecord* block, int count) {
            Response response;
            response.amplitude = std::pow(10, reads++ * 4);
            response.phaseDeg = [](double) { return 90.0; };
            response(block, count);
        };
        find<QDoubleSpinBox>(window.get(), "amplspinBox")->setValue(1);
        setSweep("500", "1", "3", "lin");
        start();
        tree()->topLevelItem(0)->setSelected(true);
        FileDialogs dialogs(path("base.csv"));
        exportSelected();
        QCOMPARE(dialogs.dialogs().size(), 1);
        QCOMPARE(dialogs.dialogs().first().caption, QStringLiteral("Select a file to export the data"));
        QCOMPARE(dialogs.dialogs().first().nameFilters,
                 (QStringList{QStringLiteral("CSV files (*.csv)"), QStringLiteral("All Files (*)")}));
        QCOMPARE(contentOf(path("base_plot_x_x_0.csv")),
                 QByteArray("frequency [Hz], amplitude [um/um], phase [deg]\n1,2e+08,90\n250.5,20000,90\n500,2,90\n"));
        QVERIFY(!QFile::exists(path("base.csv")));
    }

    void exportOfTwoPlotsAccumulatesTheNames()
    {
        setSweep("10", "20", "2");
        start();
        start();
        tree()->selectAll();
        FileDialogs dialogs(path("base.csv"));
        exportSelected();
        QVERIFY(QFile::exists(path("base_plot_x_x_0.csv")));
        QVERIFY(QFile::exists(path("base_plot_x_x_0_plot_x_x_1.csv")));
        QCOMPARE(QDir(folder->path()).entryList(QDir::Files).size(), 2);
    }

    void everySuffixIsTakenOutOfTheName()
    {
        setSweep("10", "20", "2");
        start();
        tree()->selectAll();
        FileDialogs dialogs(path("a.csv.b.csv"));
        exportSelected();
        QVERIFY(QFile::exists(path("a.b_plot_x_x_0.csv")));
        dialogs.answerWith(path("plain"));
        exportSelected();
        QVERIFY(QFile::exists(path("plain_plot_x_x_0.csv")));
    }

    void headerFollowsTheBoxAtTheExport()
    {
        find<QCheckBox>(window.get(), "useBPMscalingCheckBox")->setChecked(false);
        setSweep("10", "20", "2");
        start();
        tree()->selectAll();
        FileDialogs dialogs(path("off.csv"));
        exportSelected();
        QVERIFY(contentOf(path("off_plot_x_x_0.csv")).startsWith("frequency [Hz], amplitude [um], phase [deg]\n"));
        find<QCheckBox>(window.get(), "useBPMscalingCheckBox")->setChecked(true);
        dialogs.answerWith(path("on.csv"));
        exportSelected();
        QVERIFY(contentOf(path("on_plot_x_x_0.csv")).startsWith("frequency [Hz], amplitude [um/um], phase [deg]\n"));
    }

    void exportWithoutASelectionOrANameWritesNothing()
    {
        setSweep("10", "20", "2");
        start();
        FileDialogs dialogs(path("base.csv"));
        exportSelected();
        QCOMPARE(dialogs.dialogs().size(), 1);
        tree()->selectAll();
        dialogs.answerWith(QString());
        exportSelected();
        QCOMPARE(dialogs.dialogs().size(), 2);
        QVERIFY(QDir(folder->path()).isEmpty());
    }

    void exportOverwritesAnOldFile()
    {
        QFile old(path("base_plot_x_x_0.csv"));
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write(QByteArray(10000, 'x'));
        old.close();
        setSweep("10", "20", "2");
        start();
        tree()->selectAll();
        FileDialogs dialogs(path("base.csv"));
        exportSelected();
        QVERIFY(!contentOf(path("base_plot_x_x_0.csv")).contains('x'));
    }

    void fileThatCannotBeOpenedEndsTheExportWithoutAMessage()
    {
        setSweep("10", "20", "2");
        start();
        start();
        tree()->selectAll();
        QVERIFY(QDir(folder->path()).mkdir(QStringLiteral("base_plot_x_x_0.csv")));
        FileDialogs dialogs(path("base.csv"));
        MessageBoxes boxes;
        exportSelected();
        QCOMPARE(boxes.count(), 0);
        QCOMPARE(QDir(folder->path()).entryList(QDir::Files).size(), 0);
    }

    void exportToAFullDiskIsSurvived()
    {
        setSweep("10", "20", "2");
        start();
        tree()->selectAll();
        FileDialogs dialogs(path("base.csv"));
        {
            const FullDisk disk;
            exportSelected();
        }
        QVERIFY(contentOf(path("base_plot_x_x_0.csv")).isEmpty());
        exportSelected();
        QVERIFY(contentOf(path("base_plot_x_x_0.csv")).startsWith("frequency"));
    }

    void sweepAfterAnExportOfFewerPlotsIsNamedAndNumberedOn()
    {
        setSweep("10", "20", "2");
        start();
        start();
        start();
        tree()->topLevelItem(1)->setSelected(true);
        FileDialogs dialogs(path("base.csv"));
        exportSelected();
        start();
        QCOMPARE(tree()->topLevelItemCount(), 4);
        QCOMPARE(tree()->topLevelItem(3)->text(0), QStringLiteral("plot_x_x_3"));
        QCOMPARE(tree()->topLevelItem(3)->checkState(0), Qt::Checked);
        QCOMPARE(keys(3).size(), std::size_t(2));
        tree()->clearSelection();
        tree()->topLevelItem(3)->setSelected(true);
        dialogs.answerWith(path("next.csv"));
        exportSelected();
        QCOMPARE(contentOf(path("next_plot_x_x_3.csv")).count('\n'), 3);
    }

    void missingStreamIsToldAndTheSlotCarriesOn()
    {
        setDevicePresent(streamDevicePath, false);
        setSweep("10", "20", "2");
        MessageBoxes boxes;
        start();
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(boxes.boxes().first().title, QStringLiteral("Cannot open file"));
        QCOMPARE(boxes.boxes().first().text,
                 QStringLiteral("System file /dev/kora_dma_displ could not be opened.\n\nPlease check if KORA driver "
                                "is loaded.\nApplication will now quit.\n"));
        QCOMPARE(boxes.boxes().first().icon, QMessageBox::Critical);
        QCOMPARE(keys(0).size(), std::size_t(2));
        QCOMPARE(values(magnitudePlot(), 0).at(0), 0.0);
        QCOMPARE(callsOf("funcGenEnable").size(), std::size_t(4));
    }

    void missingStreamEndsTheProgramWhenTheSlotReturns()
    {
        setDevicePresent(streamDevicePath, false);
        setSweep("10", "20", "3");
        MessageBoxes boxes;
        QTimer::singleShot(0, this, [this] { start(); });
        QCOMPARE(QCoreApplication::exec(), 0);
        QCOMPARE(keys(0).size(), std::size_t(3));
    }

    void missingOutputDeviceIsNotNoticed()
    {
        setDevicePresent(outputDevicePath, false);
        MessageBoxes boxes;
        start();
        QCOMPARE(boxes.count(), 0);
        QCOMPARE(keys(0).size(), std::size_t(5));
    }

    void shortReadIsNotNoticed()
    {
        answers().deliveredBytes = 1000;
        answers().fillBlock = Response();
        MessageBoxes boxes;
        start();
        QCOMPARE(boxes.count(), 0);
        QCOMPARE(keys(0).size(), std::size_t(5));
    }

    void controllerWithoutAnOutputIsShownAndRefused()
    {
        answers().outSel[0] = 255;
        window->showTool();
        QCOMPARE(line("outAnvoltChLineEdit")->text(), QStringLiteral("OUT256"));
        QCOMPARE(line("offsetspinBox")->text(), QString());
        MessageBoxes boxes;
        start();
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(boxes.boxes().first().title, QStringLiteral("Output not allowed ...\n"));
        QVERIFY(callsOf("funcGenConfig").empty());
        QVERIFY(callsOf("funcGenEnable").empty());
        QCOMPARE(tree()->topLevelItemCount(), 0);
        QVERIFY(button("StartSweepPushButton")->isEnabled());
        answers().outSel[0] = 0;
        start();
        QCOMPARE(keys(0).size(), std::size_t(5));
    }

    void selectorOutOfRangeMeansTheSecondMonitor()
    {
        bpmScaleX[1] = 7;
        answers().bpmSel[0] = 12;
        answers().fillBlock = Response();
        find<QDoubleSpinBox>(window.get(), "amplspinBox")->setValue(1);
        start();
        QVERIFY(std::fabs(values(magnitudePlot(), 0).at(0) - 2 * 7) < 1e-4);
    }

    void secondStartWithinASweepDoesNothing()
    {
        inPause(2, [this] {
            start();
            window->slotStartSweepPushButton();
        });
        start();
        QCOMPARE(tree()->topLevelItemCount(), 1);
        QCOMPARE(keys(0).size(), std::size_t(5));
        QCOMPARE(callsOf("funcGenConfig").size(), std::size_t(5));
    }

    void exportWithinASweepLeavesItGoingOn()
    {
        setSweep("10", "20", "2");
        start();
        tree()->topLevelItem(0)->setSelected(true);
        FileDialogs dialogs(path("base.csv"));
        driven_pause::clear();
        inPause(1, [this] { exportSelected(); });
        start();
        QVERIFY(QFile::exists(path("base_plot_x_x_0.csv")));
        QCOMPARE(keys(1).size(), std::size_t(2));
    }

    void closedWindowGoesOnSweeping()
    {
        window->show();
        inPause(2, [this] { window->close(); });
        start();
        QVERIFY(!window->isVisible());
        QCOMPARE(keys(0).size(), std::size_t(5));
    }

    void windowDestroyedBetweenTwoPointsEndsTheSweep()
    {
        SAMP_FREQ = 3000;
        inPause(2, [this] { QTimer::singleShot(0, this, [this] { window.reset(); }); });
        start();
        QVERIFY(!window);
        QCOMPARE(callsOf("funcGenConfig").size(), std::size_t(2));
        QCOMPARE(callsOf("funcGenEnable").back(), std::string("funcGenEnable(0)"));
        QCOMPARE(SAMP_FREQ, 3000);
        QCOMPARE(callsOf("setDisplayFreq").back(), std::string("setDisplayFreq(3000, 0)"));
        QCOMPARE(openDescriptors(), 0);
    }

    void windowDestroyedBeneathItsRefusalIsSurvived_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("startText");
        QTest::addColumn<bool>("streamPresent");
        QTest::newRow("loop running") << int(PidStatusOn) << QByteArray("10") << true;
        QTest::newRow("start frequency") << int(PidStatusOff) << QByteArray("0") << true;
        QTest::newRow("stream missing") << int(PidStatusOff) << QByteArray("10") << false;
    }
    void windowDestroyedBeneathItsRefusalIsSurvived()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, startText);
        QFETCH(bool, streamPresent);
        mailbox->pidStatus = status;
        setSweep(startText.constData(), "50", "5");
        setDevicePresent(streamDevicePath, streamPresent);
        MessageBoxes boxes;
        QTimer::singleShot(0, this, [this] { window.reset(); });
        start();
        QVERIFY(!window);
        QCOMPARE(boxes.count(), 1);
        QVERIFY(callsOf("funcGenConfig").empty());
        QCOMPARE(openDescriptors(), 0);
    }

    void programThatQuitsEndsTheSweepAtThatPoint()
    {
        QTimer::singleShot(0, this, [this] { start(); });
        inPause(2, [] { QCoreApplication::exit(7); });
        QCOMPARE(QCoreApplication::exec(), 7);
        QCOMPARE(keys(0).size(), std::size_t(2));
        QCOMPARE(SAMP_FREQ, 1000);
        QCOMPARE(openDescriptors(), 0);
        driven_pause::setAction(nullptr);
        start();
        QCOMPARE(keys(1).size(), std::size_t(5));
    }

    void closingTheLastWindowEndsTheSweepAndTheProgram()
    {
        QWidget main;
        main.show();
        QTimer::singleShot(0, this, [this] { start(); });
        inPause(3, [&] { main.close(); });
        QCOMPARE(QCoreApplication::exec(), 0);
        QCOMPARE(keys(0).size(), std::size_t(3));
    }
};

QTEST_MAIN(FrequencyAnalysisTest)
#include "FrequencyAnalysisTest.moc"
