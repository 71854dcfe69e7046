// Saving 10000 rows of 19 columns, against QTextStream fed with QString::number and endl, to the same bytes.

#include "Interleaved.h"

#include "app/Globals.h"
#include "stream/DisplayRecord.h"
#include "tools/savedata/SaveDataLines.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>

#include <cstring>
#include <random>

namespace {

constexpr int rows = 10000;
constexpr int rateHz = 1000;

std::vector<DisplayRecord> noisyBlock()
{
    std::mt19937_64 random(1);
    std::normal_distribution<double> noise(0, 1);
    std::vector<DisplayRecord> block(rows);
    for (DisplayRecord& record : block) {
        record.pos1X = 0.01 * noise(random);
        record.pos1Y = 0.01 * noise(random);
        record.pos2X = 0.01 * noise(random);
        record.pos2Y = 0.01 * noise(random);
        record.int1 = 5e-6 + 1e-9 * noise(random);
        record.int2 = 4e-6 + 1e-9 * noise(random);
        for (double& volts : record.dac)
            volts = 5 + 0.1 * noise(random);
        for (double& current : record.cur1)
            current = 1e-6 + 1e-9 * noise(random);
        for (double& current : record.cur2)
            current = 1e-7 * noise(random);
    }
    return block;
}

void saveByTheProgram(const QString& path, const std::vector<DisplayRecord>& block)
{
    bool enabled[save_data::channelCount];
    std::fill(std::begin(enabled), std::end(enabled), true);
    QFile file(path);
    file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text);
    QTextStream text(&file);
    for (int i = 0; i < rows; ++i)
        text << save_data::dataRow(block[std::size_t(i)], i, rateHz, enabled);
}

void saveByQt(const QString& path, const std::vector<DisplayRecord>& block)
{
    QFile file(path);
    file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text);
    QTextStream text(&file);
    const auto put = [&text](double value) { text << QString::number(value, 'g', 6) << ", "; };
    for (int i = 0; i < rows; ++i) {
        const DisplayRecord& record = block[std::size_t(i)];
        text << QString::number(i) << ", ";
        put(double(float(i) / float(rateHz)));
        for (double current : record.cur1)
            put(current);
        for (double current : record.cur2)
            put(current);
        put(record.pos1X * bpmScaleX[0]);
        put(record.pos1Y * bpmScaleY[0]);
        put(record.int1);
        put(record.pos2X * bpmScaleX[1]);
        put(record.pos2Y * bpmScaleY[1]);
        put(record.int2);
        for (int output = 0; output < 3; ++output)
            put(record.dac[output]);
        text << "\r" << Qt::endl;
    }
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    return file.readAll();
}

void savingTenThousandRows(benchmark::State& state)
{
    const QTemporaryDir folder;
    const QString ours = folder.filePath(QStringLiteral("ours.csv"));
    const QString qts = folder.filePath(QStringLiteral("qts.csv"));
    bpmScaleX[0] = bpmScaleY[0] = bpmScaleX[1] = bpmScaleY[1] = 500;
    const std::vector<DisplayRecord> block = noisyBlock();
    Interleaved()
        .way("program", [&] { saveByTheProgram(ours, block); })
        .way("number_and_endl", [&] { saveByQt(qts, block); })
        .run(state);
    if (contentOf(ours).isEmpty() || contentOf(ours) != contentOf(qts))
        state.SkipWithError("the files differ");
}

} // namespace

BENCHMARK(savingTenThousandRows)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
