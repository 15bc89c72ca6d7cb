// Passing-Bablok at its cap of pairs, the Deming jackknife, Bland-Altman and repeatability.
#include <benchmark/benchmark.h>

#include "bench/methcomp_job.h"

namespace {

using survmeth::bench::Methods;

void run(benchmark::State& state, void (Methods::*analysis)()) {
  Methods methods(state.range(0));
  for (auto _ : state) {
    (methods.*analysis)();
    benchmark::DoNotOptimize(methods.s[0]);
  }
}

void PassingBablok(benchmark::State& state) { run(state, &Methods::passingBablok); }
void Deming(benchmark::State& state) { run(state, &Methods::deming); }
void BlandAltman(benchmark::State& state) { run(state, &Methods::blandAltman); }
void Repeatability(benchmark::State& state) { run(state, &Methods::repeatability); }

BENCHMARK(PassingBablok)->Arg(100)->Arg(1000)->Arg(2000)->Unit(benchmark::kMillisecond);
BENCHMARK(Deming)->Arg(100)->Arg(1000)->Arg(5000)->Unit(benchmark::kMillisecond);
BENCHMARK(BlandAltman)->Arg(100)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMicrosecond);
BENCHMARK(Repeatability)->Arg(100)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
