// Times the polynomial mapping: fits, and a million points by each order beside a plain loop over the same
// sums.

#include "ZelUtil/PolyApprox.h"

#include <benchmark/benchmark.h>
#include <random>
#include <vector>

namespace
{

constexpr int kPoints = 1'000'000;

ControlPoints RandomPairs()
{
    std::mt19937 random(1);
    std::uniform_real_distribution<double> number(-1.0, 1.0);
    ControlPoints points = {};
    points.count = 20;
    for (int k = 0; k < 20; ++k)
    {
        points.source[k] = {number(random), number(random)};
        points.target[k] = {number(random), number(random)};
    }
    return points;
}

std::vector<REALPOINT> RandomPoints()
{
    std::mt19937 random(2);
    std::uniform_real_distribution<double> number(-1.0, 1.0);
    std::vector<REALPOINT> points(kPoints);
    for (REALPOINT& point : points)
        point = {number(random), number(random)};
    return points;
}

void Setup(benchmark::State& state)
{
    const ControlPoints points = RandomPairs();
    CPolyApprox approx;
    for ([[maybe_unused]] auto _ : state)
        if (!approx.SetupPolynom(points, static_cast<int>(state.range(0))))
        {
            state.SkipWithError("refused");
            break;
        }
}

void Approx(benchmark::State& state)
{
    const std::vector<REALPOINT> from = RandomPoints();
    std::vector<REALPOINT> to(from.size());
    CPolyApprox approx;
    if (!approx.SetupPolynom(RandomPairs(), static_cast<int>(state.range(0))))
        state.SkipWithError("refused");
    for ([[maybe_unused]] auto _ : state)
    {
        for (std::size_t i = 0; i < from.size(); ++i)
            to[i] = approx.Approx(from[i]);
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kPoints);
}

// The sums where the compiler sees them, in the caller's own loop.
template <int kTerms>
void Inline(benchmark::State& state)
{
    const std::vector<REALPOINT> from = RandomPoints();
    std::vector<REALPOINT> to(from.size());
    CPolyApprox approx;
    if (!approx.SetupPolynom(RandomPairs(), kTerms == 3 ? 1 : 3))
        state.SkipWithError("refused");
    const PolyCoefficients c = approx.GetCoefficients();
    for ([[maybe_unused]] auto _ : state)
    {
        for (std::size_t i = 0; i < from.size(); ++i)
        {
            const auto [x, y] = from[i];
            const double terms[] = {1.0,   x,         y,         x * x,       x * y,
                                    y * y, x * x * x, x * x * y, x * (y * y), y * y * y};
            to[i] = {0.0, 0.0};
            for (int k = 0; k < kTerms; ++k)
            {
                to[i].x += c.xCoeff[k] * terms[k];
                to[i].y += c.yCoeff[k] * terms[k];
            }
        }
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kPoints);
}

BENCHMARK(Setup)->DenseRange(1, 3);
BENCHMARK(Approx)->DenseRange(1, 3)->Unit(benchmark::kMicrosecond);
BENCHMARK(Inline<3>)->Name("Inline/1")->Unit(benchmark::kMicrosecond);
BENCHMARK(Inline<10>)->Name("Inline/3")->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
