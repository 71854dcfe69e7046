#include "hardware/koralink.h"
#include "simulation/SimulationControl.h"
#include "stream/DeviceRecords.h"
#include "stream/DisplayRecord.h"

#include <QTest>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

using kora::simulation::findControl;
using kora::simulation::SimulationControl;

/// Concurrent calls, as the poll and the windows of the program make them. Meant to run under a thread sanitizer too.
class ThreadsTest : public QObject
{
    Q_OBJECT

private slots:
    void pollWindowsAndToolsWorkAtOnce()
    {
        SimulationControl* const control = findControl();
        QVERIFY(control);
        std::atomic<int> failures{0};
        const auto expect = [&failures](bool good) { failures += !good; };
        const auto poll = [&] {
            BPMStats stats;
            std::uint16_t id = 0;
            expect(getSFPinfo(0, &id, nullptr, nullptr, nullptr) == 0);
            expect(getBPMStats(&stats) == 0);
            expect(getPIDstatus() >= 0);
        };
        const auto display = [&] {
            std::vector<DisplayRecord> records(1024);
            expect(getBuffer(records.data(), 1024) == 1024);
            const int fd = open(amplifierDevicePath[0], O_RDONLY);
            AmplifierStatus status;
            expect(ioctl(fd, requestAmplifierStatus, &status) == 0);
            expect(close(fd) == 0);
        };
        const auto command = [&] {
            double value = 0;
            expect(setSetpoint(0, 1) == 0);
            expect(getSetpoint(0, &value) == 0 && value == 1);
            expect(setPIDparams(0, 0.001, 1, 0, 0, 2, 0, 10, 1) == 0);
            expect(setFBenable(1) == 0);
            expect(setDisplayFreq(20000, 1) == 0);
        };
        const auto tool = [&] {
            const int fd = open(streamDevicePath, O_RDONLY);
            DisplayRecord records[16];
            expect(read(fd, records, sizeof records) == ssize_t(sizeof records));
            expect(close(fd) == 0);
        };
        const auto trainer = [&] {
            control->kick(1, 1);
            control->failFunction("setCtrlReset", 1);
            control->beamPosition();
        };
        std::vector<std::thread> threads;
        for (const std::function<void()>& work :
             std::vector<std::function<void()>>{poll, display, command, tool, trainer})
            threads.emplace_back([work] {
                for (int i = 0; i < 40; ++i)
                    work();
            });
        for (std::thread& thread : threads)
            thread.join();
        QCOMPARE(failures.load(), 0);
    }

    void clockIsSwitchedWhileAReaderWaits()
    {
        SimulationControl* const control = findControl();
        control->useRealClock();
        QCOMPARE(setDisplayFreq(10, 0), 0);
        std::atomic<bool> read16{false};
        std::thread reader([&read16] {
            const int fd = open(streamDevicePath, O_RDONLY);
            std::vector<DisplayRecord> records(100);
            // Ten seconds of a stream of 10 Hz, unless somebody turns the clock.
            read16 = read(fd, records.data(), 100 * 256) == 100 * 256;
            close(fd);
        });
        QTest::qSleep(30);
        control->useDrivenClock();
        reader.join();
        QVERIFY(read16);
    }
};

QTEST_GUILESS_MAIN(ThreadsTest)
#include "ThreadsTest.moc"
