// Time of the ROC curve with each standard error of the area, and of the comparison of tests, by
// number of rows. Values rounded to thousandths (argument 1) and values that are nearly all
// distinct (argument 0).
#include <benchmark/benchmark.h>

#include "bench/roc_job.h"

namespace {

using survmeth::bench::RocComparison;
using survmeth::bench::RocCurve;
using survmeth::bench::RocData;

RocData rawData(const benchmark::State& state, int tests) {
  return survmeth::bench::makeRocData(static_cast<int>(state.range(0)), tests, state.range(1) != 0);
}

void timeCurve(benchmark::State& state, int error) {
  RocData data = rawData(state, 1);
  for (auto _ : state) {
    state.PauseTiming();
    RocCurve curve(data);  // the values come back sorted, so every run starts from fresh ones
    state.ResumeTiming();
    curve.run(data, error);
    benchmark::DoNotOptimize(curve.summary);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void CurveHanleyMcNeil(benchmark::State& state) { timeCurve(state, 0); }
void CurveMannWhitney(benchmark::State& state) { timeCurve(state, 1); }
void CurveDeLong(benchmark::State& state) { timeCurve(state, 2); }

void Comparison(benchmark::State& state) {
  const int tests = static_cast<int>(state.range(2));
  RocData data = rawData(state, tests);
  RocComparison comparison(data, tests);
  for (auto _ : state) {
    comparison.run(data);
    benchmark::DoNotOptimize(comparison.covariance.data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgNames({"rows", "rounded"})->Unit(benchmark::kMillisecond);
  for (const int rounded : {1, 0}) {
    for (const int rows : {1'000, 10'000, 100'000, 1'000'000}) benchmark->Args({rows, rounded});
  }
}

void comparisonSizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgNames({"rows", "rounded", "tests"})->Unit(benchmark::kMillisecond);
  for (const int tests : {2, 4, 8}) {
    for (const int rows : {10'000, 100'000, 1'000'000}) benchmark->Args({rows, 0, tests});
  }
}

BENCHMARK(CurveHanleyMcNeil)->Apply(sizes);
BENCHMARK(CurveMannWhitney)->Apply(sizes);
BENCHMARK(CurveDeLong)->Apply(sizes);
BENCHMARK(Comparison)->Apply(comparisonSizes);

}  // namespace

BENCHMARK_MAIN();
