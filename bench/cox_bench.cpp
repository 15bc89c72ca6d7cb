// Cox regression: likelihood evaluations against a plain loop of additions, and whole fits.
//
// An evaluation on n distinct event times makes n (n + 1) / 2 additions for each of
// 1 + p + p (p + 1) / 2 sums; `ratio` is their rate over that of the plain loop, measured in the
// same run.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <vector>

#include "Klikro/Klikro"
#include "bench/cox_job.h"
#include "numerics/hot.h"
#include "survival/cox/cox.h"

namespace {

using survmeth::bench::CoxData;
using survmeth::bench::CoxFit;
using survmeth::bench::makeCoxData;
using survmeth::bench::PreparedCox;
using Doubles = std::vector<double>;

SURVMETH_HOT void addUp(const double* values, std::size_t count, double* sums) {
  constexpr std::size_t lanes = 64;
  double lane[lanes] = {};
  for (std::size_t i = 0; i + lanes <= count; i += lanes) {
    for (std::size_t j = 0; j < lanes; ++j) lane[j] += values[i + j];
  }
  for (std::size_t j = 0; j < lanes; ++j) sums[j] += lane[j];
}

// Values that stay in the first-level cache: the loop is then as fast as it can be.
constexpr std::size_t kStreamed = 2048;

// Processor time, which other programs on the machine do not stretch.
double seconds(std::clock_t from, std::clock_t to) {
  return static_cast<double>(to - from) / CLOCKS_PER_SEC;
}

double additionsPerSecond() {
  static const double rate = [] {
    const Doubles values(kStreamed, 1.0 / 3);
    Doubles sums(64);
    constexpr int passes = 20000;
    double best = 0.0;
    for (int round = 0; round < 9; ++round) {
      const std::clock_t start = std::clock();
      for (int pass = 0; pass < passes; ++pass) {
        addUp(values.data(), values.size(), sums.data());
        benchmark::DoNotOptimize(sums.data());
        benchmark::ClobberMemory();
      }
      const double took = seconds(start, std::clock());
      best = std::max(best, static_cast<double>(kStreamed) * passes / took);
    }
    return best;
  }();
  return rate;
}

void PlainAdditions(benchmark::State& state) {
  const Doubles values(kStreamed, 1.0 / 3);
  Doubles sums(64);
  for (auto _ : state) {
    addUp(values.data(), values.size(), sums.data());
    benchmark::DoNotOptimize(sums.data());
    benchmark::ClobberMemory();
  }
  state.counters["additions"] = benchmark::Counter(static_cast<double>(kStreamed),
                                                   benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(PlainAdditions);

void LikelihoodEvaluation(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const int p = static_cast<int>(state.range(1));
  const int ties = static_cast<int>(state.range(2));
  PreparedCox prepared(makeCoxData(n, p, false));
  matrix delta(n, 1, prepared.data.status.data(), true);
  matrix X(n, p, prepared.data.covariates.data(), true);
  matrix beta(p, 1, 0.01);
  matrix sizes(1, 1, static_cast<double>(n));
  matrixInt distinct(1, 1, prepared.distinct);
  matrixInt start(1, n, prepared.starts.data(), true);
  matrixInt size(1, n, prepared.sizes.data(), true);
  matrixInt events(1, n, prepared.events.data(), true);
  matrix gradient(p, 1, 0);
  matrix hessian(p, p, 0);
  double logLik = 0.0;
  const double plain = additionsPerSecond();
  const std::clock_t begin = std::clock();
  for (auto _ : state) {
    ComputeLogLikeDerivativesCox(p, &delta, &X, ties, &beta, &distinct, &size, &start, 1, &sizes,
                                 &events, &logLik, &gradient, &hessian);
    benchmark::DoNotOptimize(logLik);
  }
  const double took = seconds(begin, std::clock());
  const double additions = 0.5 * n * (n + 1.0) * (1 + p + 0.5 * p * (p + 1));
  state.counters["additions"] =
      benchmark::Counter(additions, benchmark::Counter::kIsIterationInvariantRate);
  state.counters["ratio"] = additions * static_cast<double>(state.iterations()) / took / plain;
}
BENCHMARK(LikelihoodEvaluation)
    ->ArgNames({"n", "p", "ties"})
    ->ArgsProduct({{10000}, {1, 5, 10, 30}, {0}})
    ->Args({10000, 10, 1})
    ->Args({1000, 10, 0})
    ->Unit(benchmark::kMillisecond);

void WholeFit(benchmark::State& state) {
  const CoxData data = makeCoxData(static_cast<int>(state.range(0)), 10, true);
  int iterations = 0;
  for (auto _ : state) {
    CoxFit fit(data, state.range(1) == -1);
    fit.run();
    benchmark::DoNotOptimize(fit.beta.data());
    iterations = fit.iterations;
  }
  state.counters["iterations"] = iterations;
}
BENCHMARK(WholeFit)
    ->ArgNames({"n", "survival"})
    ->Args({1000, 0})
    ->Args({3000, 0})
    ->Args({10000, 0})
    ->Args({10000, -1})
    ->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
