// Made-up data with proportional hazards, and a whole Cox fit of them through the flat entry
// points: the job that the benchmarks time.
#ifndef BENCH_COX_JOB_H_
#define BENCH_COX_JOB_H_

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <random>
#include <utility>
#include <vector>

#include "bench/columns.h"
#include "survival/calls/cox.h"

namespace survmeth::bench {

struct CoxData {
  int n = 0;
  int p = 0;
  Column time, status, covariates;
};

// Exponential times in years with proportional hazards; where `censoring`, a third is censored.
// In weeks there are a few hundred distinct times, otherwise no ties.
inline CoxData makeCoxData(int n, int p, bool censoring, bool weeks = false) {
  CoxData data{n, p, {}, {}, {}};
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
    const double time = std::min(event, limit);
    data.time.push_back(weeks ? std::ceil(52.0 * time) : time);
    data.status.push_back(event <= limit ? 1.0 : 0.0);
  }
  return data;
}

// The data as the preparation leaves them.
struct PreparedCox {
  explicit PreparedCox(CoxData source)
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
  CoxData data;
  Column other, keys;
  std::vector<int> starts, sizes, events;
  int distinct = 0;
  int censored = 0;
  int groups = 0;
};

// From raw columns to coefficients, criteria and tests, Breslow ties; the baseline where wanted.
struct CoxFit {
  CoxFit(const CoxData& data, bool withBaseline)
      : raw(data), survival(static_cast<short>(withBaseline ? -1 : 0)) {}

  void run() {
    PreparedCox prepared(std::move(raw));
    CoxData& data = prepared.data;
    const std::size_t p = static_cast<std::size_t>(data.p);
    beta.resize(p);
    criteria.resize(12);
    Column tests(9), coefficients(p * 9), history(p * 3);
    Column baseline(data.time.size()), mean(baseline);
    Column residuals(survival == -1 ? data.time.size() * (2 * p + 4) : 1);
    std::vector<int> order(p);
    double rows = data.n;
    int q = 0, steps = 0;
    iterations = 20;
    RunCoxReg(data.time.data(), data.n, data.p, &q, data.status.data(), 0, data.covariates.data(),
              0, &rows, 1, &iterations, 1e-9, 0, &prepared.distinct, prepared.sizes.data(),
              prepared.events.data(), &prepared.censored, prepared.starts.data(), -1, 0, 0.05, 0.1,
              0.05, prepared.groups, survival, 0, 0, 0, beta.data(), criteria.data(), tests.data(),
              coefficients.data(), baseline.data(), mean.data(), residuals.data(), history.data(),
              &steps, order.data());
  }

  CoxData raw;
  short survival;
  int iterations = 0;
  Column beta, criteria;
};

}  // namespace survmeth::bench

#endif  // BENCH_COX_JOB_H_
