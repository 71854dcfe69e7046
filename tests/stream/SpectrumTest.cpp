#include "Window.h"

#include <QtTest>

#include <cmath>
#include <complex>

using namespace koralink_double;

namespace {

/// Reproducible, without a pattern that a transform would favour.
double scramble(int record)
{
    return std::sin(record * 12.9898) * 43758.5453 - std::floor(std::sin(record * 12.9898) * 43758.5453);
}

/// |X[k]| / L by definition.
double definedMagnitude(const std::vector<double>& input, int bin)
{
    const double pi = std::acos(-1.0);
    std::complex<double> sum = 0;
    const int length = int(input.size());
    for (int j = 0; j < length; ++j)
        sum += input[std::size_t(j)] * std::polar(1.0, -2 * pi * double((long(bin) * j) % length) / length);
    return std::abs(sum) / length;
}

bool near(double a, double b)
{
    return std::abs(a - b) < 1e-12;
}

} // namespace

class SpectrumTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Window> window;
    QCPDataMap* spectrum = nullptr;

    void compareWithDefinition(const std::vector<double>& input)
    {
        const int length = int(input.size());
        PointMap expected;
        for (int bin = 0; bin <= length / 2; ++bin)
            expected[SAMP_FREQ * bin / length] = definedMagnitude(input, bin);
        const PointMap content = contentOf(spectrum);
        QVERIFY(isOrderedAsMap(spectrum));
        QCOMPARE(content.size(), expected.size());
        for (const auto& [key, value] : expected) {
            QVERIFY2(content.count(key) == 1, qPrintable(QString::number(key)));
            QVERIFY2(near(content.at(key), value), qPrintable(QString::number(key)));
        }
    }

private slots:
    void init()
    {
        window = std::make_unique<Window>();
        spectrum = window->registered(KindFFT);
        Window::setSlots([](int record, int slot) { return scramble(record * 32 + slot); });
    }
    void cleanup() { window.reset(); }

    void theSpectrumIsThePlainMagnitudeOverTheLength_data()
    {
        QTest::addColumn<int>("length");
        QTest::addColumn<int>("rate");
        QTest::newRow("as started") << 1024 << 1000;
        QTest::newRow("short, bins apart") << 64 << 1000;
        QTest::newRow("fast stream") << 256 << 50000;
        QTest::newRow("bins share whole hertz") << 2048 << 1000;
        QTest::newRow("odd length") << 77 << 1000;
        QTest::newRow("one point") << 1 << 1000;
    }
    void theSpectrumIsThePlainMagnitudeOverTheLength()
    {
        QFETCH(int, length);
        QFETCH(int, rate);
        SAMP_FREQ = rate;
        updater->fftLength = length;
        updater->setFFTchannel(24);
        updater->updateGraphs();
        std::vector<double> newest;
        for (int record = 14336 - length; record < 14336; ++record)
            newest.push_back(scramble(record * 32 + 24));
        compareWithDefinition(newest);
    }

    void eightThousandPointsAreTheNewestOnes()
    {
        Window::setSlots([](int record, int) { return record < 14336 - 8192 ? 1e9 : 1.0; });
        updater->fftLength = 8192;
        updater->updateGraphs();
        // Bins 0 to 8 fall on 0 Hz, and of a constant all but bin 0 are zero.
        QVERIFY(near(spectrum->at(0)->value, 0.0));
        QVERIFY(near(spectrum->at(1)->value, 0.0));
        updater->fftLength = 64;
        updater->updateGraphs();
        QVERIFY(near(spectrum->at(0)->value, 1.0));
    }

    void ofBinsOnOneHertzTheHighestStays()
    {
        updater->fftLength = 2048;
        updater->setFFTchannel(24);
        updater->updateGraphs();
        std::vector<double> newest;
        for (int record = 14336 - 2048; record < 14336; ++record)
            newest.push_back(scramble(record * 32 + 24));
        QCOMPARE(spectrum->at(0)->key, 0.0);
        QVERIFY(near(spectrum->at(0)->value, definedMagnitude(newest, 2)));
        QVERIFY(!near(spectrum->at(0)->value, definedMagnitude(newest, 0)));
    }

    void binZeroIsTheMeanUntilItIsRemoved()
    {
        Window::setSlots([](int record, int) { return 5.0 + (record % 2 ? 1 : -1); });
        updater->fftLength = 128;
        updater->updateGraphs();
        QVERIFY(near(spectrum->at(0)->value, 5.0));
        QVERIFY(near((spectrum->constEnd() - 1)->value, 1.0));
        updater->ChangeFFTremoveDC(true);
        updater->updateGraphs();
        QVERIFY(near(spectrum->at(0)->value, 0.0));
        QVERIFY(near((spectrum->constEnd() - 1)->value, 1.0));
        updater->ChangeFFTremoveDC(false);
        updater->updateGraphs();
        QVERIFY(near(spectrum->at(0)->value, 5.0));
    }

    void onlyThePositionsOfBpm1AreScaled()
    {
        bpmScaleX[0] = 10;
        bpmScaleY[0] = 100;
        bpmScaleX[1] = bpmScaleY[1] = 1e6;
        Window::setSlots([](int, int) { return 2.0; });
        const std::map<int, double> expected = {{0, 20}, {1, 200}, {2, 2}, {4, 2}, {12, 2}, {24, 2}, {31, 2}};
        for (const auto& [slot, value] : expected) {
            updater->setFFTchannel(slot);
            updater->fftLength = 64;
            updater->updateGraphs();
            QVERIFY2(near(spectrum->at(0)->value, value), qPrintable(QString::number(slot)));
        }
    }

    void recordsThatAShortWindowLacksCountAsZero()
    {
        Window::setRecords(1024);
        updater->fftLength = 2048;
        updater->setFFTchannel(24);
        updater->updateGraphs();
        std::vector<double> padded(1024, 0.0);
        for (int record = 0; record < 1024; ++record)
            padded.push_back(scramble(record * 32 + 24));
        compareWithDefinition(padded);
    }

    void aSlotThatNoRecordHasReadsAsZero()
    {
        for (int slot : {-1, 32, 1 << 30}) {
            updater->setFFTchannel(slot);
            updater->updateGraphs();
            QCOMPARE(spectrum->at(0)->value, 0.0);
        }
    }

    void aLengthBelowOneGivesAnEmptySpectrum()
    {
        updater->updateGraphs();
        QVERIFY(!spectrum->isEmpty());
        for (int length : {0, -5}) {
            updater->fftLength = length;
            updater->updateGraphs();
            QVERIFY(spectrum->isEmpty());
        }
    }
};

QTEST_MAIN(SpectrumTest)
#include "SpectrumTest.moc"
