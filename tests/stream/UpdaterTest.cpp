#include "Window.h"

#include "stream/BufferWindow.h"
#include "support/LogLines.h"

#include "logging/Log.h"

#include <QMetaMethod>
#include <QSignalSpy>
#include <QtTest>

using namespace koralink_double;

namespace {

/// Different for every record and slot, and not exact in single precision.
double mark(int record, int slot)
{
    return slot + 1 + record / 1024.0 / 1024.0;
}

/// Trace, slot and factor as they are agreed with the hardware, written down once more for comparison.
struct Agreed
{
    int kind;
    int channel;
    int slot;
    double factor;
};
const Agreed agreed[] = {
    {3, 0, 24, 1}, {3, 1, 25, 1}, {3, 2, 26, 1},  {3, 3, 27, 1},  {4, 0, 28, 1}, {4, 1, 29, 1},
    {4, 2, 30, 1}, {4, 3, 31, 1}, {7, 0, 0, 2},   {7, 1, 4, 5},   {7, 2, 12, 2}, {7, 3, 13, 2},
    {8, 0, 1, 3},  {8, 1, 5, 7},  {8, 2, 14, 3},  {8, 3, 15, 3},  {9, 0, 2, 1},  {9, 1, 6, 1},
    {10, 0, 8, 1}, {10, 1, 9, 1}, {10, 2, 10, 1}, {10, 3, 11, 1},
};

void setScales()
{
    bpmScaleX[0] = 2;
    bpmScaleY[0] = 3;
    bpmScaleX[1] = 5;
    bpmScaleY[1] = 7;
}

QStringList signatures(const QMetaObject& object, QMetaMethod::MethodType type)
{
    QStringList found;
    for (int i = object.methodOffset(); i < object.methodCount(); ++i) {
        if (object.method(i).methodType() == type)
            found.append(QString::fromLatin1(object.method(i).methodSignature()));
    }
    return found;
}

} // namespace

class UpdaterTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Window> window;

private slots:
    void init()
    {
        window = std::make_unique<Window>();
        Window::setSlots(mark);
    }
    void cleanup() { window.reset(); }

    void signalsAndSlotsStandInTheirOrder()
    {
        QCOMPARE(signatures(Updater::staticMetaObject, QMetaMethod::Signal),
                 QStringList({QStringLiteral("replotGraphs()"), QStringLiteral("replotDACgraph()"),
                              QStringLiteral("PIDstatusChanged(PID_Status_Type)")}));
        QCOMPARE(signatures(Updater::staticMetaObject, QMetaMethod::Slot),
                 QStringList({QStringLiteral("updateGraphs()"), QStringLiteral("updateIonBars()"),
                              QStringLiteral("ChangeFFTremoveDC(bool)")}));
    }

    void startsUnpausedWithTheSpectrumOfSlotOne()
    {
        QCOMPARE(updater->paused, false);
        QCOMPARE(updater->removeDC, false);
        QCOMPARE(updater->fftLength, 1024);
        QCOMPARE(updater->fftChannel, 1);
        QVERIFY(updater->buffer);
        QVERIFY(!updater->dataFFT);
        QCOMPARE(updater->parent(), nullptr);
    }

    void everyTraceTakesItsSlotAndFactor()
    {
        setScales();
        std::vector<QCPDataMap*> maps;
        for (const Agreed& trace : agreed)
            maps.push_back(window->registered(trace.kind, trace.channel));
        updater->updateGraphs();
        for (std::size_t i = 0; i < maps.size(); ++i) {
            QCOMPARE(maps[i]->size(), 14336);
            for (int record : {0, 1, 127, 128, 129, 9999, 14335}) {
                const QCPGraphData& point = *maps[i]->at(record);
                QCOMPARE(point.key, double(float(record) / 1000.0f));
                QCOMPARE(point.value, agreed[i].factor * mark(record, agreed[i].slot));
            }
        }
    }

    void keysKeepTheRoundingOfSinglePrecision()
    {
        QCPDataMap* map = window->registered(KindInt);
        SAMP_FREQ = 777;
        updater->updateGraphs();
        const double key = map->at(1000)->key;
        QVERIFY(key == double(float(1000) / float(777)));
        QVERIFY(key != 1000.0 / 777.0);
        QVERIFY(isOrderedAsMap(map));
    }

    void anUpdateRewritesTheDataWhereItLies()
    {
        QCPDataMap* map = window->registered(KindInt);
        updater->updateGraphs();
        const QCPGraphData* before = &*map->constBegin();
        Window::setSlots([](int, int) { return 42.0; });
        updater->updateGraphs();
        QVERIFY(&*map->constBegin() == before);
        QCOMPARE(map->at(14335)->value, 42.0);
    }

    void aShorterWindowLeavesNoPointOfTheLongerOne()
    {
        QCPDataMap* map = window->registered(KindInt);
        updater->updateGraphs();
        Window::setRecords(1024);
        updater->updateGraphs();
        QCOMPARE(map->size(), 1024);
        QCOMPARE(callsOf("getBuffer"), (std::vector<std::string>{"getBuffer(14336)", "getBuffer(1024)"}));
    }

    void cloudsTakeTheNewestThousandRecordsWithTheFactorsOfTheirMonitor()
    {
        setScales();
        QCPDataMap* clouds[2] = {window->registered(KindXY1), window->registered(KindXY2)};
        updater->updateGraphs();
        const int firstSlots[2] = {0, 4};
        for (int bpm = 0; bpm < 2; ++bpm) {
            QCOMPARE(clouds[bpm]->size(), 1000);
            QCOMPARE(clouds[bpm]->at(0)->key, bpmScaleX[bpm] * mark(13336, firstSlots[bpm]));
            QCOMPARE(clouds[bpm]->at(999)->key, bpmScaleX[bpm] * mark(14335, firstSlots[bpm]));
            QCOMPARE(clouds[bpm]->at(999)->value, bpmScaleY[bpm] * mark(14335, firstSlots[bpm] + 1));
        }
    }

    void aWindowBelowThousandRecordsGoesWholeIntoTheCloud()
    {
        QCPDataMap* cloud = window->registered(KindXY1);
        Window::setRecords(600);
        updater->updateGraphs();
        QCOMPARE(cloud->size(), 600);
    }

    void laterPointOfTheSamePositionReplacesTheEarlierOne()
    {
        QCPDataMap* cloud = window->registered(KindXY1);
        Window::setSlots([](int record, int slot) { return slot == 0 ? double(-record % 7) : double(record); });
        updater->updateGraphs();
        PointMap expected;
        for (int record = 13336; record < 14336; ++record)
            expected[double(-record % 7)] = record;
        QVERIFY(isOrderedAsMap(cloud));
        QCOMPARE(contentOf(cloud), expected);
    }

    void aBlockOfOneRecordIsTheNewestRecord()
    {
        QCPDataMap* trace = window->registered(KindInt, 1);
        QCPDataMap* cloud = window->registered(KindXY2);
        Window::setRecords(1);
        updater->updateGraphs();
        QCOMPARE(contentOf(trace), (PointMap{{0.0, mark(0, 6)}}));
        QCOMPARE(contentOf(cloud), (PointMap{{mark(0, 4), mark(0, 5)}}));
    }

    void zeroRecordsShowZeroAndAreNoError()
    {
        answers().fillBlock = nullptr;
        QCPDataMap* trace = window->registered(KindDAC, 3);
        QSignalSpy replots(updater, SIGNAL(replotGraphs()));
        updater->updateGraphs();
        QCOMPARE(trace->size(), 14336);
        QCOMPARE(trace->at(7000)->value, 0.0);
        QCOMPARE(replots.count(), 1);
    }

    void anUpdateTellsTheGraphsOnceAlsoWithoutAnyData()
    {
        QSignalSpy replots(updater, SIGNAL(replotGraphs()));
        QSignalSpy outputs(updater, SIGNAL(replotDACgraph()));
        QSignalSpy status(updater, SIGNAL(PIDstatusChanged(PID_Status_Type)));
        updater->updateGraphs();
        QCOMPARE(replots.count(), 1);
        QCOMPARE(outputs.count(), 0);
        QCOMPARE(status.count(), 0);
    }

    void unknownKindsAndChannelsRegisterNothing()
    {
        QCPDataMap stranger;
        for (int kind : {-1, 5, 6, 11, 1000})
            updater->setGraphData(kind, 0, &stranger);
        for (int channel : {-1, 4, 1000})
            updater->setGraphData(KindPosX, channel, &stranger);
        updater->setGraphData(KindInt, 2, &stranger);
        updater->updateGraphs();
        QVERIFY(stranger.isEmpty());
    }

    void pausedReadsTheAmplifiersButNotTheStream()
    {
        QCPDataMap* trace = window->registered(KindInt);
        updater->updateGraphs();
        updater->paused = true;
        clearCalls();
        answers().amplifierStatus[1].setField(16, 321.5f);
        QSignalSpy replots(updater, SIGNAL(replotGraphs()));
        Window::setSlots([](int, int) { return 0.0; });
        updater->updateGraphs();
        QCOMPARE(callsOf("getBuffer").size(), std::size_t(0));
        QCOMPARE(replots.count(), 0);
        QCOMPARE(updater->ionbarStatus[1].highVoltageVolts(), 321.5f);
        QCOMPARE(trace->at(5)->value, mark(5, 2));

        updater->paused = false;
        updater->updateGraphs();
        QCOMPARE(replots.count(), 1);
        QCOMPARE(trace->at(5)->value, 0.0);
    }

    void aDebugLineTellsWhatWasRead()
    {
        LogLines log(QsLogging::DebugLevel);
        updater->updateGraphs();
        QCOMPARE(log.lines().filter(QStringLiteral("updateGraphs")),
                 QStringList(QStringLiteral("1 updateGraphs read 14336 samples ")));
    }

    void theDefaultLevelLogsNothingAboutTheStream()
    {
        LogLines log(QsLogging::InfoLevel);
        updater->updateGraphs();
        QVERIFY(log.lines().isEmpty());
    }

    void theLogicOfMagnitudeIsThatOfAComplexNumber()
    {
        double complex[2] = {-3, 4};
        QCOMPARE(fftw_abs(complex), 5.0);
    }

    void thePlaceForAViewOfWindowsHasOneSlotAndDoesNothing()
    {
        BufferWindow placeholder;
        QCOMPARE(signatures(BufferWindow::staticMetaObject, QMetaMethod::Slot),
                 QStringList(QStringLiteral("updateAll()")));
        QVERIFY(QMetaObject::invokeMethod(&placeholder, "updateAll"));
        QVERIFY(calls().empty());
    }
};

QTEST_MAIN(UpdaterTest)
#include "UpdaterTest.moc"
