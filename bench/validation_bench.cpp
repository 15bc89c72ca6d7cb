// Time of the validation family by number of rows or samples. The index of 1,000,000 rows is to
// take less than a second.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <random>
#include <vector>

#include "survival/calls/validation.h"

namespace {

using Vector = std::vector<double>;

// One validation row of a model with three covariates: nearly no ties, or whole days and scores.
void ValidationRow(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const bool wholeDays = state.range(1) != 0;
  std::mt19937_64 random(1);
  std::uniform_real_distribution<double> uniform;
  Vector time, status, X, beta = {0.5, -0.25, 1.0}, H(9, 1.0), F(12, 1.0), table(5, 0.0);
  for (int i = 0; i < n; ++i) {
    const double t = -1000 * std::log(1 - uniform(random));
    time.push_back(wholeDays ? std::ceil(t) : t);
    status.push_back(uniform(random) < 0.6 ? 1 : 0);
  }
  for (int i = 0; i < 3 * n; ++i) {
    X.push_back(wholeDays ? std::floor(20 * uniform(random)) : uniform(random));
  }
  for (auto _ : state) {
    Cpp_ComputeCVTable(n, 3, time.data(), status.data(), X.data(), beta.data(), H.data(), F.data(),
                       1, 1, table.data());
    benchmark::DoNotOptimize(table.data());
  }
  state.SetItemsProcessed(state.iterations() * n);
}

void BootstrapSummary(benchmark::State& state) {
  const int B = static_cast<int>(state.range(0));
  std::mt19937_64 random(2);
  std::normal_distribution<double> normal;
  Vector statistics(static_cast<std::size_t>(B) * 5), summary(20);
  for (double& value : statistics) value = normal(random);
  for (auto _ : state) {
    Cpp_ComputeBootOut(B, 0.05, statistics.data(), summary.data());
    benchmark::DoNotOptimize(summary.data());
  }
  state.SetItemsProcessed(state.iterations() * B);
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
