#include "Interleaved.h"

#include "feedback/FilterDesign.h"

// Design of all four position filters, each of fourth order, against a single arma::roots of that order: the
// polynomial is the one that a low-pass design factors itself. "per_roots" is to stay below 5.

namespace {

constexpr double Ts = 0.0001;
constexpr int batch = 200;

/// Monic polynomial of the analogue Butterworth low-pass of fourth order, highest power first.
arma::rowvec butterworthPolynomial(double radiansPerSecond)
{
    const double w = radiansPerSecond;
    return {1.0, 2.6131259297527530 * w, 3.4142135623730951 * w * w, 2.6131259297527530 * w * w * w, w * w * w * w};
}

void designAllFour()
{
    arma::rowvec b;
    arma::rowvec a;
    butterLowpass(4, 10.0, Ts, b, a);
    benchmark::DoNotOptimize(a(4));
    butterLowpass(4, 20.0, Ts, b, a);
    benchmark::DoNotOptimize(a(4));
    butterBandpass(2, 10.0, 100.0, Ts, b, a);
    benchmark::DoNotOptimize(a(4));
    butterBandpass(2, 20.0, 200.0, Ts, b, a);
    benchmark::DoNotOptimize(a(4));
}

void rootsOnce(const arma::rowvec& polynomial)
{
    const arma::cx_vec roots = arma::roots(polynomial);
    benchmark::DoNotOptimize(roots(0));
}

template <typename Job>
std::function<void()> repeated(Job job)
{
    return [job] {
        for (int turn = 0; turn < batch; ++turn)
            job();
    };
}

void fourFilters(benchmark::State& state)
{
    const arma::rowvec polynomial = butterworthPolynomial(2 * M_PI * 10.0);
    Interleaved()
        .way("design", repeated(designAllFour))
        .way("roots", repeated([&polynomial] { rootsOnce(polynomial); }))
        .run(state);
}

} // namespace

BENCHMARK(fourFilters)->Iterations(200)->UseManualTime()->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
