// Made-up diagnostic tests on the same subjects, and their analysis through the flat entry points:
// the job that the benchmarks time.
#ifndef BENCH_ROC_JOB_H_
#define BENCH_ROC_JOB_H_

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <random>
#include <vector>

#include "Klikro/Klikro"
#include "bench/columns.h"
#include "survival/survival.h"

namespace survmeth::bench {

struct RocData {
  std::vector<double> status;
  std::vector<double> tests;  // one column for each test
  int thresholds = 0;         // distinct values of the first test
};

// The caller counts the thresholds, so this is part of the job.
inline void countThresholds(RocData& data) {
  const int n = static_cast<int>(data.status.size());
  matrix sorted(n, 1, data.tests.data(), 0, 0);
  matrix* column = &sorted;
  SortQVector(column, n, 1, n, 0);
  const double* values = sorted.data();
  data.thresholds = static_cast<int>(std::unique(sorted.data(), sorted.data() + n) - values);
}

// The raw columns status and one for each test; the thresholds are not counted.
inline RocData rocData(const Columns& columns) {
  RocData data;
  data.status = columns[0];
  for (std::size_t t = 1; t < columns.size(); ++t) {
    data.tests.insert(data.tests.end(), columns[t].begin(), columns[t].end());
  }
  return data;
}

// Three in ten subjects are positive; test t is normal, higher by 1 - t / 10 in the positives, and
// correlates with the other tests through a part all share. Rounded to thousandths there are some
// 8,000 distinct values, otherwise hardly any two are equal.
inline RocData makeRocData(int n, int k, bool rounded) {
  std::mt19937_64 random(19821115);
  std::normal_distribution<double> normal;
  std::uniform_real_distribution<double> uniform(0.0, 1.0);
  RocData data;
  data.status.resize(static_cast<std::size_t>(n));
  data.tests.resize(static_cast<std::size_t>(n) * static_cast<std::size_t>(k));
  for (int i = 0; i < n; ++i) {
    data.status[i] = uniform(random) < 0.3 ? 1.0 : 0.0;
    const double shared = normal(random);
    for (int t = 0; t < k; ++t) {
      const double value = data.status[i] * (1.0 - 0.1 * t) + 0.6 * shared + 0.8 * normal(random);
      data.tests[i + static_cast<std::size_t>(t) * n] =
          rounded ? std::round(value * 1000.0) / 1000.0 : value;
    }
  }
  countThresholds(data);
  return data;
}

// The curve of the first test: table, rates with Wald intervals, and the area by method `error`.
struct RocCurve {
  explicit RocCurve(const RocData& data)
      : values(data.tests.begin(),
               data.tests.begin() + static_cast<std::ptrdiff_t>(data.status.size())),
        weights(data.status.size(), 1.0) {
    for (auto* column : {&thresholds, &tp, &tn, &fp, &fn, &cost}) column->resize(data.thresholds);
    for (auto* pair : {&likelihoodRatios, &predictiveValues}) pair->resize(2 * data.thresholds);
    for (auto* triple : {&sensitivity, &specificity}) triple->resize(3 * data.thresholds);
    rocPoints.resize(2 * (data.thresholds + 1));
  }

  void run(RocData& data, int error) {
    Cpp_ComputeROC(data.status.data(), static_cast<int>(data.status.size()), data.thresholds,
                   values.data(), weights.data(), 2, 0.05, 0, 0, 0, error, 0.0, 0.0, 1.0, 1.0, 0.0,
                   thresholds.data(), rocPoints.data(), sensitivity.data(), specificity.data(),
                   tp.data(), tn.data(), fp.data(), fn.data(), likelihoodRatios.data(),
                   predictiveValues.data(), summary, cost.data());
  }

  std::vector<double> values, weights, thresholds, rocPoints, sensitivity, specificity, tp, tn, fp,
      fn, likelihoodRatios, predictiveValues, cost;
  double summary[9] = {};
};

// All tests against each other, on the same subjects.
struct RocComparison {
  RocComparison(const RocData& data, int tests)
      : k(tests),
        values(data.tests),
        weights(data.status.size(), 1.0),
        sampleSizes(k),
        aucs(k, 0.5),
        errors(k),
        selected(k, 1),
        significant(k * k) {
    for (auto* m : {&aucDiff, &zStat, &halfWidth, &covariance, &pValue}) m->resize(k * k);
  }

  void run(RocData& data) {
    Cpp_ComputeROCComparisonsDep2(data.status.data(), static_cast<int>(data.status.size()),
                                  values.data(), weights.data(), sampleSizes.data(), k, 0.05, -1,
                                  aucs.data(), errors.data(), selected.data(), aucDiff.data(),
                                  zStat.data(), halfWidth.data(), covariance.data(), pValue.data(),
                                  significant.data());
  }

  int k;
  std::vector<double> values, weights, sampleSizes, aucs, errors;
  std::vector<int> selected, significant;
  std::vector<double> aucDiff, zStat, halfWidth, covariance, pValue;
};

}  // namespace survmeth::bench

#endif  // BENCH_ROC_JOB_H_
