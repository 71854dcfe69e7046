// The unchanged program on the simulated installation, seen from outside: processor time of the whole process, the
// longest turns of its GUI thread, and the 3D walk against the pauses that it must make. Every figure is the median of
// five starts with its range.
//
// usage: bench_program [live] [floated] [walk1] [walk10]    all without one

#include "TurnRecord.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryFile>
#include <QThread>
#include <QVector>

#include <sys/mman.h>

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace {

constexpr int starts = 5;
constexpr int settlingS = 4;
constexpr int measuredS = 10;
/// The display timer starts with the event loop and fires after a second.
constexpr double firstTickFromS = 0.8;
constexpr double firstTickToS = 1.8;
/// Pauses of a walk in steps: 4096 points, and at each one before, ten tenths between the readings and one after.
constexpr double stepsOfWalk = 4096 * 3;

double seconds(clockid_t clock)
{
    timespec now = {};
    clock_gettime(clock, &now);
    return double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
}

/// One start of the program, ended with the object.
class RunningProgram
{
public:
    explicit RunningProgram(const QString& scene)
    {
        if (!turnFile.open() || !turnFile.resize(sizeof(TurnRecord)))
            qFatal("no file for the turns");
        record = reinterpret_cast<const TurnRecord*>(turnFile.map(0, sizeof(TurnRecord)));
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("LD_PRELOAD"), QStringLiteral(KORA_TURN_METER));
        environment.insert(QStringLiteral("KORA_TURNS"), turnFile.fileName());
        if (!scene.isEmpty()) {
            environment.insert(QStringLiteral("QT_PLUGIN_PATH"), QStringLiteral(KORA_SCENE_FOLDER));
            environment.insert(QStringLiteral("QT_QPA_GENERIC_PLUGINS"), QStringLiteral("kora-scene"));
            environment.insert(QStringLiteral("KORA_SCENE"), scene);
        }
        process.setProcessEnvironment(environment);
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(QStringLiteral(KORA_PROGRAM), QStringList());
        if (!process.waitForStarted())
            qFatal("the program did not start");
        clock_getcpuclockid(pid_t(process.processId()), &clock);
    }
    ~RunningProgram()
    {
        process.kill();
        process.waitForFinished();
    }
    /// Time of all its threads on a processor, s.
    double busy() const { return seconds(clock); }
    /// The longest turn, by its time on a processor, that began between two moments of the monotonic clock.
    TurnRecord::Turn longestTurn(double from, double to) const
    {
        TurnRecord::Turn longest = {};
        for (std::uint64_t i = 0; i < turnCount(); ++i) {
            const TurnRecord::Turn& turn = record->turns[i];
            if (turn.begin >= from && turn.begin < to && turn.busy > longest.busy)
                longest = turn;
        }
        return longest;
    }
    double firstTurn() const { return turnCount() > 0 ? record->turns[0].begin : 0; }
    /// What the scene prints when it is set, or done.
    double answer(int patienceS)
    {
        if (!process.waitForReadyRead(patienceS * 1000))
            qFatal("the scene gave no answer");
        return process.readLine().toDouble();
    }

private:
    std::uint64_t turnCount() const
    {
        return std::min(__atomic_load_n(&record->count, __ATOMIC_ACQUIRE), TurnRecord::capacity);
    }

    QTemporaryFile turnFile;
    const TurnRecord* record;
    QProcess process;
    clockid_t clock = {};
};

void print(const char* figure, QVector<double> values, const char* unit)
{
    std::sort(values.begin(), values.end());
    std::printf("%-58s %8.2f  (%.2f to %.2f) %s\n", figure, values[values.size() / 2], values.first(), values.last(),
                unit);
    std::fflush(stdout);
}

void measureLive(const QString& scene)
{
    QVector<double> busy;
    QVector<double> turns;
    QVector<double> wallTurns;
    QVector<double> firstTicks;
    for (int start = 0; start < starts; ++start) {
        RunningProgram program(scene);
        if (!scene.isEmpty())
            program.answer(settlingS);
        QThread::sleep(settlingS);
        const double from = seconds(CLOCK_MONOTONIC);
        const double busyBefore = program.busy();
        QThread::sleep(measuredS);
        const double to = seconds(CLOCK_MONOTONIC);
        busy.append((program.busy() - busyBefore) / (to - from) * 1e3);
        const TurnRecord::Turn longest = program.longestTurn(from, to);
        turns.append(longest.busy * 1e3);
        wallTurns.append(longest.wall * 1e3);
        const double begin = program.firstTurn();
        firstTicks.append(program.longestTurn(begin + firstTickFromS, begin + firstTickToS).busy * 1e3);
    }
    std::printf("%s\n", scene.isEmpty() ? "live" : qPrintable(scene));
    print("  processor time of the process", busy, "ms/s");
    print("  longest turn of the GUI thread, on a processor", turns, "ms");
    print("  the same on the wall clock", wallTurns, "ms");
    if (scene.isEmpty())
        print("  first tick, on a processor", firstTicks, "ms");
}

void measureWalk(int stepMs)
{
    QVector<double> ratios;
    for (int start = 0; start < starts; ++start) {
        RunningProgram program(QStringLiteral("walk %1").arg(stepMs));
        ratios.append(program.answer(1200) / (stepsOfWalk * stepMs * 1e-3));
    }
    std::printf("3D walk, step of %d ms\n", stepMs);
    print("  time against its pauses", ratios, "times");
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    QStringList wanted = QCoreApplication::arguments().mid(1);
    if (wanted.isEmpty())
        wanted = QStringList{QStringLiteral("live"), QStringLiteral("floated"), QStringLiteral("walk1"),
                             QStringLiteral("walk10")};
    for (const QString& figure : wanted) {
        if (figure == QLatin1String("live"))
            measureLive(QString());
        else if (figure == QLatin1String("floated"))
            measureLive(figure);
        else if (figure == QLatin1String("walk1"))
            measureWalk(1);
        else if (figure == QLatin1String("walk10"))
            measureWalk(10);
        else
            qFatal("no such figure");
    }
    return 0;
}
