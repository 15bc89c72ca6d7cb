// Time of each step of a competing-risks analysis, by number of rows and, in Gray's test, groups.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <random>
#include <vector>

#include "survival/calls/cuminc.h"
#include "survival/calls/life.h"

namespace {

using Vector = std::vector<double>;

// n rows in one stratum: nearly no equal times, or whole days.
struct Data {
  int n;
  Vector time, status, flag, ones, sizes;

  Data(int rows, bool wholeDays)
      : n(rows), flag(rows), ones(rows, 1.0), sizes(1, static_cast<double>(rows)) {
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> uniform;
    for (int i = 0; i < n; ++i) {
      const double t = -1000 * std::log(1 - uniform(random));
      time.push_back(wholeDays ? std::ceil(t) : t);
      status.push_back(std::floor(3 * uniform(random)));
    }
  }

  void prepare() {
    double maxTime = 0.0;
    Cpp_ReorganizeDataCum(time.data(), n, status.data(), flag.data(), ones.data(), sizes.data(), 1,
                          &maxTime);
  }
};

// The Kaplan-Meier table with all types pooled.
struct Pooled {
  Vector intervals, table;
  int groups = 0;

  explicit Pooled(Data& data)
      : intervals(static_cast<std::size_t>(data.n + 1) * 2),
        table(static_cast<std::size_t>(data.n + 2) * 12) {
    int offset = 0;
    double bounds = 0.0, total = 0.0, grid = 0.0;
    RunLife(data.n, 1, &offset, 0, 1.0, 0, 1, data.n, 1, 0, 0, data.time.data(), data.flag.data(),
            data.ones.data(), 0, 0, 0, 0, &bounds, intervals.data(), &total, table.data(), &groups,
            &grid);
  }
};

void StatusCheck(benchmark::State& state) {
  Data data(static_cast<int>(state.range(0)), false);
  Vector codes(data.time.size()), recoded(data.time.size());
  int count = 0;
  for (auto _ : state) {
    Cpp_CheckStatusFormat(data.status.data(), data.n, codes.data(), &count, 0, recoded.data());
    benchmark::DoNotOptimize(recoded.data());
  }
  state.SetItemsProcessed(state.iterations() * data.n);
}

void Preparation(benchmark::State& state) {
  const Data raw(static_cast<int>(state.range(0)), state.range(1) != 0);
  for (auto _ : state) {
    state.PauseTiming();
    Data data = raw;
    state.ResumeTiming();
    data.prepare();
    benchmark::DoNotOptimize(data.time.data());
  }
  state.SetItemsProcessed(state.iterations() * raw.n);
}

// Per row of the table, which has one for each distinct time.
void Incidence(benchmark::State& state) {
  Data data(static_cast<int>(state.range(0)), state.range(1) != 0);
  data.prepare();
  Pooled pooled(data);
  Vector table(static_cast<std::size_t>(pooled.groups) * 10), complement(table.size());
  for (auto _ : state) {
    state.PauseTiming();
    table.assign(table.size(), 0.0);
    state.ResumeTiming();
    Cpp_CumIncCalc(pooled.groups, data.n, data.time.data(), data.status.data(), 1, 0.05, data.n, 0,
                   pooled.table.data(), table.data(), complement.data());
    benchmark::DoNotOptimize(complement.data());
  }
  state.SetItemsProcessed(state.iterations() * pooled.groups);
}

void CumulativeHazard(benchmark::State& state) {
  Data data(static_cast<int>(state.range(0)), state.range(1) != 0);
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
  Data data(static_cast<int>(state.range(0)), false);
  const int K = static_cast<int>(state.range(1));
  Vector group;
  for (int i = 0; i < data.n; ++i) group.push_back(1 + i % K);
  double statistic = 0.0, df = 0.0, pValue = 0.0;
  for (auto _ : state) {
    Cpp_GrayTest(data.n, K, data.time.data(), data.status.data(), group.data(), 1, 0.0, &statistic,
                 &df, &pValue);
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
