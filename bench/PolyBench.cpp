// Times the polynomial mapping: the fit, and the mapping of a million points by each order. The definition, a
// plain loop over the documented sums, is timed too. A mapping that differs from it in one bit is not timed.

#include "ZelUtil/PolyApprox.h"

#include <benchmark/benchmark.h>
#include <cstring>
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

// The documented sums in a loop of the caller, so that the compiler can inline them.
template <int kTerms>
void MapByDefinition(const PolyCoefficients& c, const std::vector<REALPOINT>& from,
                     std::vector<REALPOINT>& to)
{
    for (std::size_t i = 0; i < from.size(); ++i)
    {
        const auto [x, y] = from[i];
        const double terms[] = {1.0, x, y, x * x, x * y, y * y, x * x * x, x * x * y, x * (y * y), y * y * y};
        to[i] = {0.0, 0.0};
        for (int k = 0; k < kTerms; ++k)
        {
            to[i].x += c.xCoeff[k] * terms[k];
            to[i].y += c.yCoeff[k] * terms[k];
        }
    }
}

void Map(const CPolyApprox& approx, const std::vector<REALPOINT>& from, std::vector<REALPOINT>& to)
{
    for (std::size_t i = 0; i < from.size(); ++i)
        to[i] = approx.Approx(from[i]);
}

template <int kOrder, bool kByDefinition>
void Approx(benchmark::State& state)
{
    constexpr int kTerms = (kOrder + 1) * (kOrder + 2) / 2;
    const std::vector<REALPOINT> from = RandomPoints();
    std::vector<REALPOINT> to(from.size()), expected(from.size());
    CPolyApprox approx;
    if (!approx.SetupPolynom(RandomPairs(), kOrder))
        return state.SkipWithError("refused");
    const PolyCoefficients coefficients = approx.GetCoefficients();
    Map(approx, from, to);
    MapByDefinition<kTerms>(coefficients, from, expected);
    if (std::memcmp(to.data(), expected.data(), to.size() * sizeof(REALPOINT)) != 0)
        return state.SkipWithError("differs from its definition");
    for ([[maybe_unused]] auto _ : state)
    {
        if (kByDefinition)
            MapByDefinition<kTerms>(coefficients, from, to);
        else
            Map(approx, from, to);
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kPoints);
}

BENCHMARK(Setup)->DenseRange(1, 3);
BENCHMARK_TEMPLATE(Approx, 1, false)->Name("Approx order 1/library");
BENCHMARK_TEMPLATE(Approx, 1, true)->Name("Approx order 1/definition");
BENCHMARK_TEMPLATE(Approx, 2, false)->Name("Approx order 2/library");
BENCHMARK_TEMPLATE(Approx, 2, true)->Name("Approx order 2/definition");
BENCHMARK_TEMPLATE(Approx, 3, false)->Name("Approx order 3/library");
BENCHMARK_TEMPLATE(Approx, 3, true)->Name("Approx order 3/definition");

} // namespace

BENCHMARK_MAIN();
