#include "FreshInstallation.h"
#include "hardware/koralink.h"
#include "simulation/Operations.h"
#include "stream/DisplayRecord.h"

#include <QTest>

#include <sys/mman.h>
#include <unistd.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <string>
#include <vector>

using kora::simulation::SimulationControl;

namespace {

/// Copies a text to the end of a page with nothing readable behind it.
class GuardedBuffer
{
public:
    explicit GuardedBuffer(const char* text, std::size_t bytes = 32) : page(std::size_t(sysconf(_SC_PAGESIZE)))
    {
        memory =
            static_cast<char*>(mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        mprotect(memory + page, page, PROT_NONE);
        start = memory + page - bytes;
        strncpy(start, text, bytes);
    }
    ~GuardedBuffer() { munmap(memory, 2 * page); }
    const char* text() const { return start; }

private:
    std::size_t page;
    char* memory;
    char* start;
};

double meanOf(const std::vector<DisplayRecord>& records, double DisplayRecord::*field)
{
    double sum = 0;
    for (const DisplayRecord& record : records)
        sum += record.*field;
    return sum / double(records.size());
}

/// One call of each operation with arguments that succeed.
const std::map<std::string, std::function<int()>>& goodCalls()
{
    static unsigned char bytes[6];
    static int ints[4];
    static double number;
    static signed char code;
    static float amplitudes[4] = {};
    static float offsets[4] = {};
    static BPMStats stats;
    static std::uint16_t id;
    static std::uint32_t words[3];
    static char version[4];
    static DisplayRecord record;
    static const std::map<std::string, std::function<int()>> calls = {
        {"setFBenable", [] { return setFBenable(0); }},
        {"setCtrlReset", [] { return setCtrlReset(); }},
        {"setPIDconf", [] { return setPIDconf(2); }},
        {"getPIDconf", [] { return getPIDconf(&code); }},
        {"setPIDparams", [] { return setPIDparams(0, 0, 0, 0, 0, 1, 0, 10, 1); }},
        {"setOffset", [] { return setOffset(5, 5, 5, 5); }},
        {"setWindAvg", [] { return setWindAvg(0, 10); }},
        {"setSetpoint", [] { return setSetpoint(0, 1); }},
        {"getSetpoint", [] { return getSetpoint(0, &number); }},
        {"setPIDoutSel", [] { return setPIDoutSel(0, 1, 2, 3); }},
        {"getPIDoutSel", [] { return getPIDoutSel(bytes, bytes + 1, bytes + 2, bytes + 3); }},
        {"setBPMselector", [] { return setBPMselector(0, 0, 0, 0); }},
        {"getBPMselector", [] { return getBPMselector(ints, ints + 1, ints + 2, ints + 3); }},
        {"setOutputMux", [] { return setOutputMux(1); }},
        {"getOutputMux", [] { return getOutputMux(bytes); }},
        {"setBPMorient", [] { return setBPMorient(0, 1); }},
        {"setBPMscale", [] { return setBPMscale(0, 500, 500); }},
        {"setBPMoffset", [] { return setBPMoffset(0, 0, 0); }},
        {"setCrossBar", [] { return setCrossBar(0, 0, 1, 2, 3); }},
        {"setROCenable", [] { return setROCenable(0, 0, 0, 0, 0, 0); }},
        {"getROCenable", [] { return getROCenable(bytes, bytes + 1, bytes + 2, bytes + 3, bytes + 4, bytes + 5); }},
        {"setROClimits", [] { return setROClimits(0, 0, 1); }},
        {"ionbarHVenable", [] { return ionbarHVenable(0, 0); }},
        {"ionbarHVSetVoltage", [] { return ionbarHVSetVoltage(0, 0); }},
        {"ionbarSetRange", [] { return ionbarSetRange(0, 0); }},
        {"setDisplayFreq", [] { return setDisplayFreq(1000, 0); }},
        {"getDisplayFreq", [] { return getDisplayFreq(ints, bytes); }},
        {"getBuffer", [] { return getBuffer(&record, 1) - 1; }},
        {"setFiltControl", [] { return setFiltControl(0, 0, 1); }},
        {"setFiltCoef", [] { return setFiltCoef(0, 0, 0, 0, 1); }},
        {"commitFiltCoef", [] { return commitFiltCoef(0, 0); }},
        {"funcGenConfig", [] { return funcGenConfig(amplitudes, offsets, 10); }},
        {"funcGenEnable", [] { return funcGenEnable(0); }},
        {"getPIDstatus", [] { return int(getPIDstatus()); }},
        {"getBPMStats", [] { return getBPMStats(&stats); }},
        {"getSFPinfo", [] { return getSFPinfo(0, &id, words, version, words + 1); }},
        {"getSystemVersion", [] { return getSystemVersion(words, words + 1, words + 2); }},
        {"getLock", [] { return getLock("user", "user") - 1; }}};
    return calls;
}

} // namespace

/// The control library as the program sees it: linked by its soname, found by the loader.
class LibraryTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        control = freshInstallation();
        QVERIFY(control);
    }

    void everyOperationSucceedsAndFailsWhenTold()
    {
        QCOMPARE(goodCalls().size(), std::size_t(38));
        for (const char* name : kora::simulation::operationNames) {
            const auto& call = goodCalls().at(name);
            const bool returnsData = std::strcmp(name, "getPIDstatus") == 0 || std::strcmp(name, "getLock") == 0;
            QVERIFY2(call() == 0, name);
            QVERIFY(control->failFunction(name, 2));
            for (int i = 0; i < 2; ++i)
                QVERIFY2(returnsData ? call() <= 0 : call() < 0, name);
            QVERIFY2(call() == 0, name);
            control->failFunction(name, -1);
            for (int i = 0; i < 5; ++i)
                QVERIFY2(returnsData ? call() <= 0 : call() < 0, name);
            control->failFunction(name, 0);
            QVERIFY2(call() == 0, name);
        }
        QVERIFY(!control->failFunction("setNothing", 1));
    }

    void dataIsNeverNegativeOnFailure()
    {
        control->failFunction("getPIDstatus", -1);
        control->failFunction("getLock", -1);
        QCOMPARE(int(getPIDstatus()), 0);
        QCOMPARE(getLock("admin", "admin"), 0);
    }

    void failedSetterChangesNothing()
    {
        QCOMPARE(setPIDconf(5), 0);
        control->failFunction("setPIDconf", 1);
        QVERIFY(setPIDconf(9) < 0);
        signed char code = -1;
        QCOMPARE(getPIDconf(&code), 0);
        QCOMPARE(int(code), 5);
    }

    void settersAreRemembered()
    {
        for (int code = 0; code <= 15; ++code) {
            QCOMPARE(setPIDconf(static_cast<signed char>(code)), 0);
            signed char read = -1;
            QCOMPARE(getPIDconf(&read), 0);
            QCOMPARE(int(read), code);
        }
        QCOMPARE(setPIDoutSel(3, 2, 1, 0), 0);
        unsigned char outputs[4];
        QCOMPARE(getPIDoutSel(outputs, outputs + 1, outputs + 2, outputs + 3), 0);
        QCOMPARE(QByteArray(reinterpret_cast<char*>(outputs), 4), QByteArray("\3\2\1\0", 4));
        QCOMPARE(setBPMselector(1, 0, 0, 1), 0);
        int bpms[4];
        QCOMPARE(getBPMselector(bpms, bpms + 1, bpms + 2, bpms + 3), 0);
        QCOMPARE(bpms[0] * 1000 + bpms[1] * 100 + bpms[2] * 10 + bpms[3], 1001);
        QCOMPARE(setOutputMux(0), 0);
        unsigned char source = 9;
        QCOMPARE(getOutputMux(&source), 0);
        QCOMPARE(int(source), 0);
        QCOMPARE(setROCenable(1, 0, 1, 0, 1, 0), 0);
        unsigned char checks[6];
        QCOMPARE(getROCenable(checks, checks + 1, checks + 2, checks + 3, checks + 4, checks + 5), 0);
        QCOMPARE(QByteArray(reinterpret_cast<char*>(checks), 6), QByteArray("\1\0\1\0\1\0", 6));
        QCOMPARE(setDisplayFreq(12345, 1), 0);
        int hertz = 0;
        unsigned char filter = 0;
        QCOMPARE(getDisplayFreq(&hertz, &filter), 0);
        QCOMPARE(hertz, 12345);
        QVERIFY(filter != 0);
    }

    void setpointsAreReadBackAndNullStoresNothing()
    {
        for (int loop = 0; loop < 4; ++loop)
            QCOMPARE(setSetpoint(loop, loop + 0.25), 0);
        for (int loop = 0; loop < 4; ++loop) {
            double value = 0;
            QCOMPARE(getSetpoint(loop, &value), 0);
            QCOMPARE(value, loop + 0.25);
            QCOMPARE(getSetpoint(loop, nullptr), 0);
        }
    }

    void argumentsOutOfRangeAreRefused()
    {
        const double nan = std::numeric_limits<double>::quiet_NaN();
        float floats[4] = {};
        DisplayRecord record;
        QVERIFY(setPIDconf(-1) < 0);
        QVERIFY(setPIDconf(16) < 0);
        QVERIFY(setPIDparams(4, 0, 0, 0, 0, 0, 0, 0, 0) < 0);
        QVERIFY(setPIDparams(0, nan, 0, 0, 0, 0, 0, 0, 0) < 0);
        QVERIFY(setOffset(0, 0, 0, nan) < 0);
        QVERIFY(setWindAvg(0, 0) < 0);
        QVERIFY(setWindAvg(-1, 1) < 0);
        QVERIFY(setSetpoint(4, 0) < 0);
        QVERIFY(setSetpoint(0, nan) < 0);
        QVERIFY(getSetpoint(-1, nullptr) < 0);
        QVERIFY(setPIDoutSel(0, 1, 2, 4) < 0);
        QVERIFY(setBPMselector(0, 0, 2, 0) < 0);
        QVERIFY(setOutputMux(2) < 0);
        QVERIFY(setBPMorient(2, 0) < 0);
        QVERIFY(setBPMorient(0, 2) < 0);
        QVERIFY(setBPMscale(2, 1, 1) < 0);
        QVERIFY(setBPMscale(0, nan, 1) < 0);
        QVERIFY(setBPMoffset(-1, 1, 1) < 0);
        QVERIFY(setCrossBar(0, 0, 1, 2, 4) < 0);
        QVERIFY(setROClimits(6, 0, 1) < 0);
        QVERIFY(setROClimits(0, 0, nan) < 0);
        QVERIFY(ionbarHVenable(1, 2) < 0);
        QVERIFY(ionbarHVSetVoltage(0, 501) < 0);
        QVERIFY(ionbarHVSetVoltage(0, -1) < 0);
        QVERIFY(ionbarSetRange(3, 0) < 0);
        QVERIFY(setDisplayFreq(-1, 0) < 0);
        QVERIFY(setDisplayFreq(50001, 0) < 0);
        QVERIFY(getBuffer(&record, -1) < 0);
        QVERIFY(getBuffer(nullptr, 1) < 0);
        QVERIFY(setFiltControl(2, 0, 0) < 0);
        QVERIFY(setFiltCoef(0, 2, 0, 0, 0) < 0);
        QVERIFY(setFiltCoef(0, 0, 2, 0, 0) < 0);
        QVERIFY(setFiltCoef(0, 0, 0, 5, 0) < 0);
        QVERIFY(commitFiltCoef(-1, 0) < 0);
        QVERIFY(funcGenConfig(floats, floats, -1) < 0);
        QVERIFY(funcGenConfig(nullptr, floats, 1) < 0);
        QVERIFY(funcGenEnable(1) < 0);
        QVERIFY(funcGenEnable(6) < 0);
        QVERIFY(getSFPinfo(4, nullptr, nullptr, nullptr, nullptr) < 0);
    }

    void infiniteLimitsAreTaken() { QCOMPARE(setROClimits(0, 0, std::numeric_limits<double>::infinity()), 0); }

    void accountsGiveTheirLevel()
    {
        QCOMPARE(getLock("cruise", "cruise"), 0);
        QCOMPARE(getLock("cruise", "whatever"), 0);
        QCOMPARE(getLock("user", "user"), 1);
        QCOMPARE(getLock("admin", "admin"), 2);
        QVERIFY(getLock("user", "admin") != 1);
        QVERIFY(getLock("admin", "user") != 2);
        QVERIFY(getLock("admin", "") != 2);
        QCOMPARE(getLock("Admin", "Admin"), 0);
        QCOMPARE(getLock("", ""), 0);
    }

    void namesWithoutTerminatorAreNotReadPastTheirBuffer()
    {
        const std::string longName = "admin" + std::string(40, 'x');
        const GuardedBuffer name(longName.c_str());
        const GuardedBuffer password(std::string(64, 'p').c_str());
        QCOMPARE(getLock(name.text(), password.text()), 0);
        const GuardedBuffer shortName("admin");
        QCOMPARE(getLock(shortName.text(), shortName.text()), 2);
        QCOMPARE(getLock(shortName.text(), password.text()), 0);
    }

    void portsShowWhatIsPlugged()
    {
        const unsigned expected[] = {0x2101, 0x2101, 0x2200, 0};
        for (int port = 0; port < 4; ++port) {
            std::uint16_t id = 1;
            std::uint32_t hardware = 1;
            std::uint32_t serial = 1;
            char version[4] = {1, 1, 1, 1};
            QCOMPARE(getSFPinfo(port, &id, &hardware, version, &serial), 0);
            QCOMPARE(unsigned(id), expected[port]);
            QCOMPARE(serial != 0, expected[port] != 0);
        }
        control->plug(3, 0x2300);
        std::uint16_t id = 0;
        QCOMPARE(getSFPinfo(3, &id, nullptr, nullptr, nullptr), 0);
        QCOMPARE(unsigned(id), 0x2300u);
        control->plug(0, 0);
        QCOMPARE(getSFPinfo(0, &id, nullptr, nullptr, nullptr), 0);
        QCOMPARE(unsigned(id), 0u);
    }

    void firmwareIsNewerThanTheOneOfFixedRate()
    {
        std::uint32_t timestamp = 0;
        std::uint32_t software = 0;
        std::uint32_t pid = 0;
        QCOMPARE(getSystemVersion(&timestamp, &software, &pid), 0);
        const auto* b = reinterpret_cast<const unsigned char*>(&software);
        const QString text = QStringLiteral("%1.%2.%3%4").arg(b[0]).arg(b[1]).arg(b[2]).arg(b[3]);
        QVERIFY(QStringLiteral("1.0.02") < text);
        QVERIFY(timestamp != 0);
        QCOMPARE(getSystemVersion(nullptr, nullptr, nullptr), 0);
    }

    void livingStreamNeverComesShort()
    {
        std::vector<DisplayRecord> records(14336);
        for (const int hertz : {1000, 0, 1, 20, 999, 20000, 50000}) {
            QCOMPARE(setDisplayFreq(hertz, 1), 0);
            QCOMPARE(getBuffer(records.data(), 14336), 14336);
        }
        QCOMPARE(getBuffer(records.data(), 1), 1);
        QCOMPARE(getBuffer(records.data(), 0), 0);
    }

    void firstWindowIsFullOfBeam()
    {
        std::vector<DisplayRecord> records(14336);
        QCOMPARE(getBuffer(records.data(), 14336), 14336);
        int repeated = 0;
        for (std::size_t i = 1; i < records.size(); ++i)
            repeated += std::memcmp(&records[i], &records[i - 1], sizeof(DisplayRecord)) == 0;
        QCOMPARE(repeated, 0);
        QVERIFY(meanOf(records, &DisplayRecord::int1) > 3e-6);
    }

    void newestRecordIsTheLastOfABlock()
    {
        std::vector<DisplayRecord> records(100);
        DisplayRecord newest;
        QCOMPARE(getBuffer(records.data(), 100), 100);
        QCOMPARE(getBuffer(&newest, 1), 1);
        QCOMPARE(std::memcmp(&newest, &records.back(), sizeof newest), 0);
        control->advance(0.002);
        std::vector<DisplayRecord> later(100);
        QCOMPARE(getBuffer(later.data(), 100), 100);
        // At 1000 Hz two records have come.
        QCOMPARE(std::memcmp(&later[97], &newest, sizeof newest), 0);
    }

    void shortAndGarbageBlocksComeAsTold()
    {
        std::vector<DisplayRecord> records(1024);
        control->truncateBlocks(24);
        QCOMPARE(getBuffer(records.data(), 1024), 1000);
        QCOMPARE(getBuffer(records.data(), 10), 0);
        control->truncateBlocks(0);
        control->setGarbageBlocks(true);
        QCOMPARE(getBuffer(records.data(), 1024), 1024);
        int finite = 0;
        int notNumbers = 0;
        for (const DisplayRecord& record : records) {
            finite += std::isfinite(record.pos1X);
            notNumbers += std::isnan(record.pos1X);
        }
        QVERIFY(finite > 0);
        QVERIFY(notNumbers > 0);
        control->setGarbageBlocks(false);
        QCOMPARE(getBuffer(records.data(), 1024), 1024);
        QVERIFY(std::isfinite(meanOf(records, &DisplayRecord::pos1X)));
    }

    void statisticsAgreeWithTheStream()
    {
        QCOMPARE(setDisplayFreq(10000, 0), 0);
        control->advance(1.0);
        std::vector<DisplayRecord> records(10000);
        QCOMPARE(getBuffer(records.data(), 10000), 10000);
        BPMStats stats;
        QCOMPARE(getBPMStats(&stats), 0);
        const double mean = meanOf(records, &DisplayRecord::pos1X);
        double squares = 0;
        for (const DisplayRecord& record : records)
            squares += (record.pos1X - mean) * (record.pos1X - mean);
        const double deviation = std::sqrt(squares / double(records.size()));
        // The statistics cover whole tenths of a second: up to one of them is newer or older.
        QVERIFY(std::fabs(stats.bpm[0].posXMean - mean) < 0.2 * deviation);
        QVERIFY(std::fabs(stats.bpm[0].posXStd / deviation - 1) < 0.2);
        QVERIFY(stats.bpm[0].posXStdFilt <= stats.bpm[0].posXStd);
        QVERIFY(stats.bpm[0].i0Mean > 3e-6);
        QVERIFY(stats.bpm[1].posXStd > stats.bpm[0].posXStd);
    }

    void resetGoesBackToPowerOn()
    {
        setPIDconf(7);
        setOutputMux(0);
        setDisplayFreq(50000, 1);
        control->plug(0, 0);
        control->reset();
        signed char code = 0;
        getPIDconf(&code);
        QCOMPARE(int(code), 2);
        int hertz = 0;
        getDisplayFreq(&hertz, nullptr);
        QCOMPARE(hertz, 1000);
        QCOMPARE(control->time(), 0.0);
        QCOMPARE(control->outputVolts(0), 5.0);
    }

    void drivenTimeStandsStillUntilAdvanced()
    {
        control->advance(0.25);
        QCOMPARE(control->time(), 0.25);
        DisplayRecord first;
        DisplayRecord second;
        getBuffer(&first, 1);
        QTest::qSleep(20);
        getBuffer(&second, 1);
        QCOMPARE(std::memcmp(&first, &second, sizeof first), 0);
    }

    void realTimeGoesOnByItself()
    {
        control->useRealClock();
        const double before = control->time();
        QTest::qSleep(50);
        const double passed = control->time() - before;
        QVERIFY(passed >= 0.05);
        QVERIFY(passed < 2.1);
    }

private:
    SimulationControl* control = nullptr;
};

QTEST_GUILESS_MAIN(LibraryTest)
#include "LibraryTest.moc"
