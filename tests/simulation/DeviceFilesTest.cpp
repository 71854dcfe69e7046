#include "FortifiedCalls.h"
#include "FreshInstallation.h"
#include "hardware/koralink.h"
#include "stream/DeviceRecords.h"
#include "stream/DisplayRecord.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstring>
#include <vector>

using kora::simulation::SimulationControl;

namespace {

constexpr const char* allDevices[] = {streamDevicePath, amplifierDevicePath[0], amplifierDevicePath[1],
                                      outputDevicePath};

/// A descriptor that is closed at the end of its scope.
struct Descriptor
{
    explicit Descriptor(int opened) : fd(opened) {}
    ~Descriptor()
    {
        if (fd >= 0)
            close(fd);
    }
    const int fd;
};

int signalPipe[2];

void readInSignalHandler(int)
{
    char byte = 0;
    if (read(signalPipe[0], &byte, 1) == 1)
        byte = 'h';
    if (write(signalPipe[1], &byte, 1) != 1)
        _exit(3);
}

} // namespace

/// The device files through the calls that the program makes.
class DeviceFilesTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        control = freshInstallation();
        QVERIFY(control);
    }

    void everyFormOfOpenReachesTheDevices()
    {
        for (const char* path : allDevices) {
            for (const int fd :
                 {open(path, O_RDONLY), open64(path, O_RDWR | O_SYNC), openat(AT_FDCWD, path, O_RDONLY),
                  openat64(-1, path, O_RDONLY), fortified::open(path, O_RDONLY), fortified::open64(path, O_RDONLY),
                  fortified::openat(path, O_RDONLY), fortified::openat64(path, O_RDONLY)}) {
                QVERIFY2(fd >= 0, path);
                // None of them knows this request, and says so as a driver does.
                errno = 0;
                QCOMPARE(ioctl(fd, 0x1234, &fd), -1);
                QCOMPARE(errno, ENOTTY);
                QCOMPARE(close(fd), 0);
                QCOMPARE(close(fd), -1);
            }
        }
    }

    void absentDeviceCannotBeOpenedAndAnswersNoMore()
    {
        for (const char* path : allDevices) {
            const Descriptor before(open(path, O_RDWR));
            control->setDevicePresent(path, false);
            errno = 0;
            QCOMPARE(open(path, O_RDWR), -1);
            QCOMPARE(errno, ENOENT);
            char bytes[256];
            QCOMPARE(read(before.fd, bytes, sizeof bytes), ssize_t(-1));
            QCOMPARE(errno, ENODEV);
            QCOMPARE(ioctl(before.fd, requestAmplifierStatus, bytes), -1);
            QCOMPARE(errno, ENODEV);
            control->setDevicePresent(path, true);
            const Descriptor after(open(path, O_RDWR));
            QVERIFY(after.fd >= 0);
        }
    }

    void streamDeliversWholeRecordsAtAnyAddress()
    {
        const Descriptor stream(open(streamDevicePath, O_RDONLY));
        std::vector<unsigned char> bytes(3 * 256 + 1);
        QCOMPARE(read(stream.fd, bytes.data() + 1, 3 * 256), ssize_t(3 * 256));
        DisplayRecord newest;
        std::memcpy(&newest, bytes.data() + 1 + 2 * 256, sizeof newest);
        DisplayRecord fromLibrary;
        QCOMPARE(getBuffer(&fromLibrary, 1), 1);
        QCOMPARE(std::memcmp(&newest, &fromLibrary, sizeof newest), 0);
        QCOMPARE(read(stream.fd, bytes.data(), 700), ssize_t(512));
        QCOMPARE(fortified::read(stream.fd, bytes.data(), 512), ssize_t(512));
        QCOMPARE(read(stream.fd, bytes.data(), 0), ssize_t(0));
        errno = 0;
        QCOMPARE(read(stream.fd, bytes.data(), 255), ssize_t(-1));
        QCOMPARE(errno, EINVAL);
    }

    void wholeBlockComesInOneRead()
    {
        const Descriptor stream(open(streamDevicePath, O_RDONLY));
        std::vector<DisplayRecord> records(largestBlockRecords);
        QCOMPARE(read(stream.fd, records.data(), largestBlockBytes), ssize_t(largestBlockBytes));
        QVERIFY(records.front().int1 > 0);
        control->truncateBlocks(1000);
        QCOMPARE(read(stream.fd, records.data(), largestBlockBytes), ssize_t(largestBlockBytes - 1000 * recordBytes));
    }

    void readAfterRateIsSetWaitsInDrivenTime()
    {
        const Descriptor stream(open(streamDevicePath, O_RDONLY));
        std::vector<DisplayRecord> records(1000);
        QCOMPARE(setDisplayFreq(10000, 0), 0);
        control->advance(0.04);
        QCOMPARE(read(stream.fd, records.data(), 1000 * 256), ssize_t(256000));
        QCOMPARE(control->time(), 0.1);
        // As many records as asked for exist now.
        QCOMPARE(read(stream.fd, records.data(), 1000 * 256), ssize_t(256000));
        QCOMPARE(control->time(), 0.1);
        // The same rate set again starts a new stretch, so that a block holds nothing from before.
        QCOMPARE(setDisplayFreq(10000, 0), 0);
        QCOMPARE(read(stream.fd, records.data(), 1000 * 256), ssize_t(256000));
        QCOMPARE(control->time(), 0.2);
    }

    void readAfterRateIsSetWaitsInRealTime()
    {
        control->useRealClock();
        const Descriptor stream(open(streamDevicePath, O_RDONLY));
        std::vector<DisplayRecord> records(200);
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(setDisplayFreq(1000, 0), 0);
        QCOMPARE(read(stream.fd, records.data(), 200 * 256), ssize_t(200 * 256));
        QVERIFY(timer.elapsed() >= 199);
        timer.start();
        QCOMPARE(read(stream.fd, records.data(), 200 * 256), ssize_t(200 * 256));
        QVERIFY(timer.elapsed() < 150);
    }

    void standingStreamIsNotWaitedFor()
    {
        const Descriptor stream(open(streamDevicePath, O_RDONLY));
        DisplayRecord records[10];
        QCOMPARE(setDisplayFreq(0, 0), 0);
        QCOMPARE(read(stream.fd, records, sizeof records), ssize_t(sizeof records));
        control->useRealClock();
        QCOMPARE(read(stream.fd, records, sizeof records), ssize_t(sizeof records));
    }

    void statusRecordIsPackedWithReversedChannels()
    {
        const Descriptor amplifier(open(amplifierDevicePath[1], O_RDONLY));
        unsigned char bytes[1 + sizeof(AmplifierStatus)];
        QCOMPARE(ioctl(amplifier.fd, requestAmplifierStatus, bytes + 1), 0);
        AmplifierStatus status;
        std::memcpy(&status, bytes + 1, sizeof status);
        QCOMPARE(status.highVoltageCode(), int(HighVoltageState::Off));
        CurrentRecord currents;
        QCOMPARE(ioctl(amplifier.fd, requestCurrents, &currents), 0);
        DisplayRecord newest;
        QCOMPARE(setDisplayFreq(50000, 0), 0);
        control->advance(0.001);
        QCOMPARE(ioctl(amplifier.fd, requestAmplifierStatus, bytes + 1), 0);
        std::memcpy(&status, bytes + 1, sizeof status);
        QCOMPARE(ioctl(amplifier.fd, requestCurrents, &currents), 0);
        QCOMPARE(getBuffer(&newest, 1), 1);
        for (int channel = 0; channel < 4; ++channel) {
            QVERIFY(newest.cur2[channel] > 1e-7);
            QCOMPARE(status.current(channel), newest.cur2[channel]);
            QCOMPARE(currents.channel(channel), newest.cur2[channel]);
        }
    }

    void requestsAreToldApartByTheirLower32Bits()
    {
        const Descriptor amplifier(open(amplifierDevicePath[0], O_RDONLY));
        AmplifierStatus status;
        QCOMPARE(ioctl(amplifier.fd, 0xffffffff00000000ul | requestAmplifierStatus, &status), 0);
        errno = 0;
        QCOMPARE(ioctl(amplifier.fd, requestSetOutputs, &status), -1);
        QCOMPARE(errno, ENOTTY);
        QCOMPARE(ioctl(amplifier.fd, requestAmplifierStatus, nullptr), -1);
        QCOMPARE(errno, EFAULT);
    }

    void highVoltageRampsShowInTheStatus()
    {
        const Descriptor amplifier(open(amplifierDevicePath[0], O_RDONLY));
        AmplifierStatus status;
        const auto code = [&] {
            return ioctl(amplifier.fd, requestAmplifierStatus, &status) == 0 ? status.highVoltageCode() : -1;
        };
        QCOMPARE(ionbarHVSetVoltage(0, 200), 0);
        QCOMPARE(ionbarHVenable(1, 0), 0);
        control->advance(1);
        QCOMPARE(code(), 3);
        QVERIFY(std::fabs(status.highVoltageVolts() - 100) < 0.1f);
        control->advance(1.01);
        QCOMPARE(code(), 1);
        QCOMPARE(status.highVoltageVolts(), 200.0f);
        QVERIFY(std::fabs(status.highVoltageMicroamps() - 0.2f) < 1e-6f);
        QCOMPARE(ionbarHVenable(0, 0), 0);
        control->advance(1);
        QCOMPARE(code(), 5);
        control->advance(1.01);
        QCOMPARE(code(), 0);
        QCOMPARE(status.highVoltageVolts(), 0.0f);
    }

    void writtenOutputsAppearWhenTheSourceIsDirect()
    {
        const Descriptor outputs(open(outputDevicePath, O_RDWR | O_SYNC));
        OutputRecord record;
        const double volts[4] = {1.5, -2.5, 99, 4};
        std::memcpy(record.volts, volts, sizeof volts);
        QCOMPARE(ioctl(outputs.fd, requestSetOutputs, &record), 0);
        control->advance(0.001);
        QCOMPARE(control->outputVolts(0), 5.0);
        QCOMPARE(setOutputMux(0), 0);
        control->advance(0.001);
        QCOMPARE(control->outputVolts(0), 1.5);
        QCOMPARE(control->outputVolts(1), -2.5);
        QCOMPARE(control->outputVolts(2), 12.0);
        QCOMPARE(control->outputVolts(3), 4.0);
        QCOMPARE(setOutputMux(1), 0);
        control->advance(0.001);
        QCOMPARE(control->outputVolts(0), 5.0);
    }

    void unpluggedModulesAnswerNoDevice()
    {
        const Descriptor amplifier(open(amplifierDevicePath[0], O_RDONLY));
        const Descriptor outputs(open(outputDevicePath, O_RDWR));
        control->plug(0, 0);
        control->plug(2, 0);
        AmplifierStatus status;
        OutputRecord record;
        errno = 0;
        QCOMPARE(ioctl(amplifier.fd, requestAmplifierStatus, &status), -1);
        QCOMPARE(errno, ENODEV);
        QCOMPARE(ioctl(outputs.fd, requestSetOutputs, &record), -1);
        QCOMPARE(errno, ENODEV);
        QVERIFY(ionbarHVenable(1, 0) < 0);
    }

    void otherFilesPassThrough()
    {
        QTemporaryDir folder;
        const QByteArray path = QFile::encodeName(folder.filePath(QStringLiteral("plain")));
        const mode_t mask = umask(0);
        {
            const Descriptor made(open(path.constData(), O_CREAT | O_WRONLY | O_EXCL, 0640));
            QVERIFY(made.fd >= 0);
            QCOMPARE(write(made.fd, "hello", 5), ssize_t(5));
        }
        umask(mask);
        struct stat file;
        QCOMPARE(stat(path.constData(), &file), 0);
        QCOMPARE(unsigned(file.st_mode & 0777), 0640u);
        char bytes[16] = {};
        const Descriptor opened(fortified::open64(path.constData(), O_RDONLY));
        QCOMPARE(fortified::read(opened.fd, bytes, 16), ssize_t(5));
        QCOMPARE(std::strcmp(bytes, "hello"), 0);
        int waiting = -1;
        QCOMPARE(lseek(opened.fd, 1, SEEK_SET), off_t(1));
        QCOMPARE(ioctl(opened.fd, FIONREAD, &waiting), 0);
        QCOMPARE(waiting, 4);
        errno = 0;
        QCOMPARE(open("/dev/kora_nothing", O_RDONLY), -1);
        QCOMPARE(errno, ENOENT);
        QCOMPARE(read(-1, bytes, 1), ssize_t(-1));
        QCOMPARE(errno, EBADF);
        QFile qtFile(QString::fromLocal8Bit(path));
        QVERIFY(qtFile.open(QIODevice::ReadOnly));
        QCOMPARE(qtFile.readAll(), QByteArray("hello"));
    }

    void descriptorThatWasReplacedIsOrdinary()
    {
        QTemporaryDir folder;
        const QByteArray path = QFile::encodeName(folder.filePath(QStringLiteral("other")));
        const Descriptor other(open(path.constData(), O_CREAT | O_RDWR, 0600));
        QCOMPARE(write(other.fd, "x", 1), ssize_t(1));
        const Descriptor stream(open(streamDevicePath, O_RDONLY));
        // dup2 closes the device behind the back of close().
        QCOMPARE(dup2(other.fd, stream.fd), stream.fd);
        QCOMPARE(lseek(stream.fd, 0, SEEK_SET), off_t(0));
        char bytes[256];
        QCOMPARE(read(stream.fd, bytes, sizeof bytes), ssize_t(1));
        QCOMPARE(bytes[0], 'x');
    }

    void forkedChildReadsOrdinaryFiles()
    {
        int pipeEnds[2];
        QCOMPARE(pipe(pipeEnds), 0);
        const pid_t child = fork();
        if (child == 0) {
            char byte = 0;
            const bool got = read(pipeEnds[0], &byte, 1) == 1 && byte == 'c';
            const int fd = open("/dev/null", O_RDONLY);
            _exit(got && fd >= 0 && read(fd, &byte, 1) == 0 && close(fd) == 0 ? 0 : 1);
        }
        QCOMPARE(write(pipeEnds[1], "c", 1), ssize_t(1));
        int status = -1;
        QCOMPARE(waitpid(child, &status, 0), child);
        QVERIFY(WIFEXITED(status));
        QCOMPARE(WEXITSTATUS(status), 0);
        close(pipeEnds[0]);
        close(pipeEnds[1]);
    }

    void signalHandlersReadOrdinaryFiles()
    {
        QCOMPARE(pipe(signalPipe), 0);
        QCOMPARE(write(signalPipe[1], "s", 1), ssize_t(1));
        void (*const before)(int) = std::signal(SIGUSR1, readInSignalHandler);
        raise(SIGUSR1);
        std::signal(SIGUSR1, before);
        char byte = 0;
        QCOMPARE(read(signalPipe[0], &byte, 1), ssize_t(1));
        QCOMPARE(byte, 'h');
        close(signalPipe[0]);
        close(signalPipe[1]);
    }

    void manyOpeningsLeakNoDescriptor()
    {
        const int first = open(streamDevicePath, O_RDONLY);
        close(first);
        for (int i = 0; i < 5000; ++i) {
            const Descriptor device(open(allDevices[i % 4], O_RDONLY));
            QVERIFY(device.fd >= 0);
        }
        const int last = open(streamDevicePath, O_RDONLY);
        close(last);
        QCOMPARE(last, first);
    }

private:
    SimulationControl* control = nullptr;
};

QTEST_GUILESS_MAIN(DeviceFilesTest)
#include "DeviceFilesTest.moc"
