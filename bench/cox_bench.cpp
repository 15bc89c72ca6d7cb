// Cox regression: likelihood evaluations against a plain loop of additions, and whole fits.
//
//   cox_bench                         all of it
//   COX_BENCH_DATA=folder cox_bench   fits of cox_1000.csv, cox_3000.csv, ... of that folder
//
// An evaluation on n distinct event times makes n (n + 1) / 2 additions for each of
// 1 + p + p (p + 1) / 2 sums; `ratio` is their rate over that of the plain loop, measured in the
// same run.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "Klikro/Klikro"
#include "Klikro/hot.h"
#include "survival/calls/cox.h"
#include "survival/cox/cox.h"

namespace {

using Doubles = std::vector<double>;

struct Data {
  int n = 0;
  int p = 0;
  Doubles time, status, covariates;
};

// Exponential times with proportional hazards and no ties; where `censoring`, a third is censored.
Data simulated(int n, int p, bool censoring) {
  Data data{n, p, {}, {}, {}};
  std::mt19937_64 random(20240601);
  std::normal_distribution<double> normal;
  std::exponential_distribution<double> exponential;
  data.covariates.resize(static_cast<std::size_t>(n) * static_cast<std::size_t>(p));
  for (double& x : data.covariates) x = normal(random);
  for (int i = 0; i < n; ++i) {
    double eta = 0.0;
    for (int j = 0; j < p; ++j) {
      eta += 0.2 * std::cos(j) * data.covariates[static_cast<std::size_t>(j) * n + i];
    }
    const double event = exponential(random) / std::exp(eta);
    const double limit = censoring ? 2.0 * exponential(random) : event;
    data.time.push_back(std::min(event, limit));
    data.status.push_back(event <= limit ? 1.0 : 0.0);
  }
  return data;
}

// time,status,x1,x2,... with a header line.
Data fromFile(const std::string& path) {
  Data data;
  std::ifstream file(path);
  std::string line;
  std::getline(file, line);
  data.p = static_cast<int>(std::count(line.begin(), line.end(), ',')) - 1;
  std::vector<Doubles> columns(static_cast<std::size_t>(data.p) + 2);
  while (std::getline(file, line)) {
    std::istringstream in(line);
    for (Doubles& column : columns) {
      std::string field;
      std::getline(in, field, ',');
      column.push_back(std::stod(field));
    }
  }
  data.n = static_cast<int>(columns[0].size());
  data.time = columns[0];
  data.status = columns[1];
  for (std::size_t j = 2; j < columns.size(); ++j) {
    data.covariates.insert(data.covariates.end(), columns[j].begin(), columns[j].end());
  }
  return data;
}

// The data as the preparation leaves them.
struct Prepared {
  explicit Prepared(Data source)
      : data(std::move(source)),
        other(static_cast<std::size_t>(data.n)),
        keys(static_cast<std::size_t>(data.n), 1.0),
        starts(static_cast<std::size_t>(data.n)),
        sizes(starts),
        events(starts) {
    double rows = data.n;
    Cpp_ReorganizeDataCox(data.time.data(), data.n, data.p, data.status.data(), other.data(),
                          keys.data(), data.covariates.data(), other.data(), &rows, 1, &distinct,
                          &censored, starts.data(), sizes.data(), events.data(), &groups);
  }
  Data data;
  Doubles other, keys;
  std::vector<int> starts, sizes, events;
  int distinct = 0;
  int censored = 0;
  int groups = 0;
};

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
  Prepared prepared(simulated(n, p, false));
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
  const int n = static_cast<int>(state.range(0));
  const short survival = static_cast<short>(state.range(1));
  const char* folder = std::getenv("COX_BENCH_DATA");
  const Data data = folder != nullptr
                        ? fromFile(std::string(folder) + "/cox_" + std::to_string(n) + ".csv")
                        : simulated(n, 10, true);
  if (data.n != n) {
    state.SkipWithError("no data of that size");
    return;
  }
  const std::size_t p = static_cast<std::size_t>(data.p);
  Doubles beta(p), criteria(12), tests(9), coefficients(p * 9), history(p * 3);
  Doubles baseline(data.time.size()), mean(baseline);
  Doubles residuals(data.time.size() * (2 * p + 4));
  std::vector<int> order(p);
  int iterations = 0;
  for (auto _ : state) {
    Prepared prepared(data);
    double rows = n;
    int q = 0, steps = 0;
    iterations = 20;
    RunCoxReg(prepared.data.time.data(), n, data.p, &q, prepared.data.status.data(), 0,
              prepared.data.covariates.data(), 0, &rows, 1, &iterations, 1e-9, 0,
              &prepared.distinct, prepared.sizes.data(), prepared.events.data(), &prepared.censored,
              prepared.starts.data(), -1, 0, 0.05, 0.1, 0.05, prepared.groups, survival, 0, 0, 0,
              beta.data(), criteria.data(), tests.data(), coefficients.data(), baseline.data(),
              mean.data(), residuals.data(), history.data(), &steps, order.data());
    benchmark::DoNotOptimize(beta.data());
  }
  state.counters["iterations"] = iterations;
  if (folder != nullptr) {
    std::ofstream out(std::string(folder) + "/coefficients_" + std::to_string(n) + ".txt");
    out.precision(std::numeric_limits<double>::max_digits10);
    for (const double b : beta) out << b << '\n';
  }
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
