#include "logging/DestinationMaker.h"
#include "logging/Log.h"
#include "logging/LogWindow.h"

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QTableView>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <ctime>
#include <malloc.h>
#include <thread>
#include <vector>

// The log window with 100000 lines: how long the event loop stands still while they arrive, and what a change
// of the level filter costs against the same table over a QStandardItemModel and a plain filter. With 400000: what one
// more line costs, what they cost in all against a quarter of them, and their memory.

namespace {

using namespace QsLogging;

constexpr int lines = 100000;

double median(std::vector<double> values)
{
    std::nth_element(values.begin(), values.begin() + std::ptrdiff_t(values.size() / 2), values.end());
    return values[values.size() / 2];
}

double milliseconds(const QElapsedTimer& timer)
{
    return double(timer.nsecsElapsed()) * 1e-6;
}

/// Time of this thread on a processor, ms: what a turn costs however many programs share the machine.
double busyMilliseconds()
{
    timespec now = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) * 1e-6;
}

/// The longest turn of the event loop so far, ms.
struct Longest
{
    double elapsed = 0;
    double busy = 0;
};

/// Does all that is due, timers included.
Longest settle(Longest longest = {})
{
    for (int turn = 0; turn < 5; ++turn) {
        QElapsedTimer timer;
        timer.start();
        const double busyBefore = busyMilliseconds();
        QCoreApplication::processEvents();
        longest.elapsed = std::max(longest.elapsed, milliseconds(timer));
        longest.busy = std::max(longest.busy, busyMilliseconds() - busyBefore);
    }
    return longest;
}

int rowsOf(const QTableView* table)
{
    return table->model()->rowCount();
}

/// Lines of all levels from the information level up, in turn.
void logLine(int number)
{
    const int level = InfoLevel + number % (FatalLevel - InfoLevel + 1);
    KORA_LOG(level) << "setFBenable() failed with code" << number;
}

/// Every line goes through the logger, its worker and the queued connection.
void burstsArrive(benchmark::State& state)
{
    const int burst = int(state.range(0));
    std::vector<double> gaps;
    std::vector<double> busy;
    for (auto _ : state) {
        Window window;
        window.show();
        settle();
        const auto* table = window.findChild<QTableView*>(QStringLiteral("tableViewMessages"));
        Logger::instance().addDestination(
            DestinationMaker::newFunctorDestination(&window, SLOT(addLogMessage(QsLogging::LogMessage))));

        QElapsedTimer whole;
        whole.start();
        std::thread caller([burst] {
            for (int number = 0; number < lines; ++number) {
                logLine(number);
                if (number % burst == burst - 1)
                    std::this_thread::sleep_for(std::chrono::milliseconds(2));
            }
        });
        Longest longest;
        while (rowsOf(table) < lines)
            longest = settle(longest);
        longest = settle(longest);
        caller.join();
        state.SetIterationTime(milliseconds(whole) * 1e-3);
        Logger::instance().removeDestination(QStringLiteral("functor"));
        gaps.push_back(longest.elapsed);
        busy.push_back(longest.busy);
    }
    state.counters["longest turn ms (<=100)"] = *std::max_element(gaps.begin(), gaps.end());
    state.counters["of it on the processor ms"] = *std::max_element(busy.begin(), busy.end());
    state.counters["median of longest ms"] = median(gaps);
}

/// The same lines and the same question, as any model and table of Qt would do it.
class ItemFilter : public QSortFilterProxyModel
{
public:
    void setLevel(int lowest)
    {
        level = lowest;
        invalidateFilter();
    }

protected:
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override
    {
        return sourceModel()->index(row, 1, parent).data(Qt::UserRole).toInt() >= level;
    }

private:
    int level = InfoLevel;
};

void fill(QStandardItemModel& model, int number)
{
    auto* level = new QStandardItem(levelName(InfoLevel + number % 4));
    level->setData(InfoLevel + number % 4, Qt::UserRole);
    model.appendRow({new QStandardItem(QDateTime::currentDateTime().toString()), level,
                     new QStandardItem(QStringLiteral("setFBenable() failed with code %1 ").arg(number))});
}

void levelFilterChanges(benchmark::State& state)
{
    // One level among long runs of others, or every level in turn.
    Window window;
    window.show();
    auto* levels = window.findChild<QComboBox*>(QStringLiteral("comboBoxLevel"));
    QStandardItemModel items;
    for (int number = 0; number < lines; ++number) {
        const LogMessage message(QStringLiteral("setFBenable() failed with code %1 ").arg(number),
                                 QDateTime::currentDateTimeUtc(), InfoLevel + number % 4);
        QMetaObject::invokeMethod(&window, "addLogMessage", Qt::DirectConnection,
                                  Q_ARG(QsLogging::LogMessage, message));
        fill(items, number);
    }
    ItemFilter filter;
    filter.setSourceModel(&items);
    // The reference's table need not size its rows, which is in its favour.
    QTableView table;
    table.setModel(&filter);
    table.show();
    settle();

    std::vector<double> own;
    std::vector<double> reference;
    for (auto _ : state) {
        for (const int level : {ErrorLevel, InfoLevel}) {
            QElapsedTimer timer;
            timer.start();
            levels->setCurrentIndex(level);
            settle();
            own.push_back(milliseconds(timer));
            timer.start();
            filter.setLevel(level);
            settle();
            reference.push_back(milliseconds(timer));
        }
        state.SetIterationTime((own[own.size() - 1] + own[own.size() - 2]) * 1e-3);
    }
    state.counters["ms"] = median(own);
    state.counters["ms QStandardItemModel"] = median(reference);
    state.counters["ratio (<=0.5)"] = median(own) / median(reference);
}

void add(Window& window, int number)
{
    const LogMessage message(QStringLiteral("setFBenable() failed %1 ").arg(number), QDateTime::currentDateTimeUtc(),
                             InfoLevel);
    QMetaObject::invokeMethod(&window, "addLogMessage", Qt::DirectConnection, Q_ARG(QsLogging::LogMessage, message));
}

/// A thousand lines a turn. @return ms on the processor
double fillMilliseconds(Window& window, int count)
{
    const double before = busyMilliseconds();
    for (int number = 0; number < count; ++number) {
        add(window, number);
        if (number % 1000 == 999)
            QCoreApplication::processEvents();
    }
    settle();
    return busyMilliseconds() - before;
}

double heapBytes()
{
    const struct mallinfo2 info = mallinfo2();
    return double(info.uordblks) + double(info.hblkhd);
}

void longLog(benchmark::State& state)
{
    constexpr int longest = 400000;
    const bool shown = state.range(0) != 0;
    std::vector<double> lineMs;
    std::vector<double> fillRatio;
    double lineBytes = 0;
    for (auto _ : state) {
        double quarterMs = 0;
        {
            Window quarter;
            quarter.setVisible(shown);
            settle();
            quarterMs = fillMilliseconds(quarter, longest / 4);
        }
        Window window;
        window.setVisible(shown);
        settle();
        const double before = heapBytes();
        fillRatio.push_back(fillMilliseconds(window, longest) / quarterMs);
        lineBytes = (heapBytes() - before) / longest;
        for (int number = 0; number < 100; ++number) {
            const double begin = busyMilliseconds();
            add(window, number);
            settle();
            lineMs.push_back(busyMilliseconds() - begin);
        }
        state.SetIterationTime(lineMs.back() * 1e-3);
    }
    state.counters["ms a line (<=2)"] = median(lineMs);
    state.counters["longest"] = *std::max_element(lineMs.begin(), lineMs.end());
    state.counters["400000 / 100000 (<=4.4)"] = median(fillRatio);
    state.counters["bytes a line (<=200)"] = lineBytes;
}

} // namespace

BENCHMARK(longLog)->ArgName("shown")->Arg(0)->Arg(1)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(burstsArrive)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->Iterations(3)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(levelFilterChanges)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
