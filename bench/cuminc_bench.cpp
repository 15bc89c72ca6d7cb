// Time of each step of a competing-risks analysis, by number of rows and, in Gray's test, groups.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <vector>

#include "bench/cuminc_job.h"

namespace {

using survmeth::bench::CumIncData;
using survmeth::bench::Pooled;
using Vector = std::vector<double>;

void StatusCheck(benchmark::State& state) {
  CumIncData data(static_cast<int>(state.range(0)), false);
  Vector codes(data.time.size()), recoded(data.time.size());
  int count = 0;
  for (auto _ : state) {
    Cpp_CheckStatusFormat(data.status.data(), data.n, codes.data(), &count, 0, recoded.data());
    benchmark::DoNotOptimize(recoded.data());
  }
  state.SetItemsProcessed(state.iterations() * data.n);
}

void Preparation(benchmark::State& state) {
  const CumIncData raw(static_cast<int>(state.range(0)), state.range(1) != 0);
  for (auto _ : state) {
    state.PauseTiming();
    CumIncData data = raw;
    state.ResumeTiming();
    data.prepare();
    benchmark::DoNotOptimize(data.time.data());
  }
  state.SetItemsProcessed(state.iterations() * raw.n);
}

// Per row of the table, which has one for each distinct time.
void Incidence(benchmark::State& state) {
  CumIncData data(static_cast<int>(state.range(0)), state.range(1) != 0);
  data.prepare();
  Pooled pooled(data);
  for (auto _ : state) {
    state.PauseTiming();
    survmeth::bench::Incidence incidence(pooled);
    state.ResumeTiming();
    incidence.run(data, pooled, 1);
    benchmark::DoNotOptimize(incidence.complement.data());
  }
  state.SetItemsProcessed(state.iterations() * pooled.groups);
}

void CumulativeHazard(benchmark::State& state) {
  CumIncData data(static_cast<int>(state.range(0)), state.range(1) != 0);
  data.prepare();
  Pooled pooled(data);
  Vector table(static_cast<std::size_t>(pooled.groups) * 9);
  for (auto _ : state) {
    Cpp_TransNelsonAalen(pooled.table.data(), table.data(), data.n, pooled.groups, 0.05, 2, 3);
    benchmark::DoNotOptimize(table.data());
  }
  state.SetItemsProcessed(state.iterations() * pooled.groups);
}

void Gray(benchmark::State& state) {
  const int K = static_cast<int>(state.range(1));
  CumIncData data(static_cast<int>(state.range(0)), false, K);
  double statistic = 0.0, df = 0.0, pValue = 0.0;
  for (auto _ : state) {
    Cpp_GrayTest(data.n, K, data.time.data(), data.status.data(), data.group.data(), 1, 0.0,
                 &statistic, &df, &pValue);
    benchmark::DoNotOptimize(statistic);
  }
  state.SetItemsProcessed(state.iterations() * data.n);
}

void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgNames({"rows", "wholeDays"})->Unit(benchmark::kMillisecond);
  for (const int rows : {500, 1000, 10000, 100000, 1000000}) benchmark->Args({rows, 0});
  benchmark->Args({1000000, 1});
}

BENCHMARK(StatusCheck)->ArgName("rows")->Arg(1000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(Preparation)->Apply(sizes);
BENCHMARK(Incidence)->Apply(sizes);
BENCHMARK(CumulativeHazard)->Apply(sizes);
BENCHMARK(Gray)
    ->ArgNames({"rows", "groups"})
    ->Unit(benchmark::kMillisecond)
    ->Args({1000, 2})
    ->Args({100000, 2})
    ->Args({1000000, 2})
    ->Args({100000, 4})
    ->Args({100000, 8})
    ->Args({100000, 16})
    ->Args({100000, 32});

}  // namespace

BENCHMARK_MAIN();
