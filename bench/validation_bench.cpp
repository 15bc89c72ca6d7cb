// Time of the validation family by number of rows or samples. The index of 1,000,000 rows is to
// take less than a second.
#include <benchmark/benchmark.h>

#include "bench/validation_job.h"

namespace {

void ValidationRow(benchmark::State& state) {
  survmeth::bench::ValidationData data(static_cast<int>(state.range(0)), state.range(1) != 0);
  survmeth::bench::ValidationRow row;
  for (auto _ : state) {
    row.run(data);
    benchmark::DoNotOptimize(row.table.data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BootstrapSummary(benchmark::State& state) {
  survmeth::bench::Column statistics =
      survmeth::bench::makeBootstrap(static_cast<int>(state.range(0)));
  survmeth::bench::BootstrapSummary summary;
  for (auto _ : state) {
    summary.run(statistics);
    benchmark::DoNotOptimize(summary.summary.data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgNames({"rows", "wholeDays"})->Unit(benchmark::kMillisecond);
  for (const int rows : {1000, 10000, 100000, 1000000}) {
    for (const int wholeDays : {0, 1}) benchmark->Args({rows, wholeDays});
  }
}

BENCHMARK(ValidationRow)->Apply(sizes);
BENCHMARK(BootstrapSummary)
    ->ArgName("samples")
    ->Arg(1000)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
