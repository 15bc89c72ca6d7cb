// Time of each step of a Kaplan-Meier analysis of three groups, by number of rows. Times of whole
// days (argument 1) and times that are nearly all distinct (argument 0).
#include <benchmark/benchmark.h>

#include "bench/life_job.h"

namespace {

using survmeth::bench::LifeData;
using survmeth::bench::LifeTables;

LifeData rawData(const benchmark::State& state) {
  return survmeth::bench::makeLifeData(static_cast<int>(state.range(0)), state.range(1) != 0);
}

void perRow(benchmark::State& state) {
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void Preparation(benchmark::State& state) {
  const LifeData raw = rawData(state);
  for (auto _ : state) {
    state.PauseTiming();
    LifeData data = raw;
    state.ResumeTiming();
    survmeth::bench::prepare(data);
    benchmark::DoNotOptimize(data.time.data());
  }
  perRow(state);
}

void GridTimes(benchmark::State& state) {
  LifeData data = rawData(state);
  survmeth::bench::prepare(data);
  LifeTables tables;
  for (auto _ : state) survmeth::bench::loadGrid(data, tables);
  perRow(state);
}

void Tables(benchmark::State& state) {
  LifeData data = rawData(state);
  survmeth::bench::prepare(data);
  LifeTables tables;
  survmeth::bench::loadGrid(data, tables);
  for (auto _ : state) survmeth::bench::estimate(data, tables);
  perRow(state);
}

void Tests(benchmark::State& state) {
  LifeData data = rawData(state);
  survmeth::bench::prepare(data);
  LifeTables tables;
  survmeth::bench::loadGrid(data, tables);
  survmeth::bench::estimate(data, tables);
  for (auto _ : state) benchmark::DoNotOptimize(survmeth::bench::test(tables));
  perRow(state);
}

void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgNames({"rows", "wholeDays"})->Unit(benchmark::kMillisecond);
  for (const int days : {1, 0}) {
    for (const int rows : {1'000, 10'000, 100'000, 1'000'000}) benchmark->Args({rows, days});
  }
}

BENCHMARK(Preparation)->Apply(sizes);
BENCHMARK(GridTimes)->Apply(sizes);
BENCHMARK(Tables)->Apply(sizes);
BENCHMARK(Tests)->Apply(sizes);

}  // namespace

BENCHMARK_MAIN();
