// Time of one evaluation of a parametric model by rows, covariates and law (1 exponential,
// 2 Weibull, 3 log-normal): log-likelihood alone, and with its derivatives in the same pass.
#include <benchmark/benchmark.h>

#include "bench/param_job.h"

namespace {

using survmeth::bench::ParamData;
using survmeth::bench::ParamModel;

void LogLikelihood(benchmark::State& state) {
  ParamData data(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  ParamModel model(data, static_cast<int>(state.range(2)));
  for (auto _ : state) benchmark::DoNotOptimize(model.value(data));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void LogLikelihoodAndDerivatives(benchmark::State& state) {
  ParamData data(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  ParamModel model(data, static_cast<int>(state.range(2)));
  for (auto _ : state) benchmark::DoNotOptimize(model.valueAndDerivatives(data));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void models(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgNames({"rows", "covariates", "law"})->Unit(benchmark::kMillisecond);
  for (const int law : {1, 2, 3}) {
    benchmark->Args({10000, 10, law})->Args({1000000, 10, law});
  }
  benchmark->Args({100000, 50, 2});
}

BENCHMARK(LogLikelihood)->Apply(models);
BENCHMARK(LogLikelihoodAndDerivatives)->Apply(models);

}  // namespace

BENCHMARK_MAIN();
