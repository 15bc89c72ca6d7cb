// Cox data sets for tests: from rows to the arrays and matrices that the routines take.
#ifndef TESTS_SURVIVAL_COX_COX_CASE_H_
#define TESTS_SURVIVAL_COX_COX_CASE_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "Klikro/Klikro"
#include "survival/calls/cox.h"
#include "survival/cox/cox.h"
#include "tests/support/csv.h"
#include "tests/support/matrices.h"

namespace survmeth::test {

using Doubles = std::vector<double>;
using Ints = std::vector<int>;

// The arrays of a preparation. Group tables start as `fill`, so that untouched cells show.
struct CoxArrays {
  CoxArrays(Doubles times, Doubles statuses, const std::vector<Doubles>& columns,
            Doubles labels = {}, Doubles sizes = {}, int fill = 0)
      : n(static_cast<int>(times.size())),
        p(static_cast<int>(columns.size())),
        time(std::move(times)),
        status(std::move(statuses)),
        extra(time.size()),
        tieKey(time.size(), 1.0),
        stratum(labels.empty() ? Doubles(time.size(), 1.0) : std::move(labels)),
        stratumSizes(sizes.empty() ? Doubles{static_cast<double>(n)} : std::move(sizes)),
        S(static_cast<int>(stratumSizes.size())),
        distinctTimes(S, fill),
        censored(S, fill),
        groupStart(static_cast<std::size_t>(S) * n, fill),
        groupSize(groupStart),
        groupEvents(groupStart) {
    for (std::size_t i = 0; i < extra.size(); ++i) extra[i] = 100.0 + static_cast<double>(i);
    for (const Doubles& column : columns) {
      covariates.insert(covariates.end(), column.begin(), column.end());
    }
    if (p == 0) covariates.assign(time.size(), 0.0);
  }

  int prepare() {
    return Cpp_ReorganizeDataCox(time.data(), n, p, status.data(), extra.data(), tieKey.data(),
                                 covariates.data(), stratum.data(), stratumSizes.data(), S,
                                 distinctTimes.data(), censored.data(), groupStart.data(),
                                 groupSize.data(), groupEvents.data(), &maxGroups);
  }

  // Element (s, k) of a group table as it came from the preparation.
  int at(const Ints& table, int s, int k) const {
    return table[static_cast<std::size_t>(s - 1) + static_cast<std::size_t>(k - 1) * S];
  }

  int n;
  int p;
  Doubles time;
  Doubles status;
  Doubles extra;
  Doubles tieKey;
  Doubles covariates;
  Doubles stratum;
  Doubles stratumSizes;
  int S;
  Ints distinctTimes;
  Ints censored;
  Ints groupStart;
  Ints groupSize;
  Ints groupEvents;
  int maxGroups = 0;
};

// The same as matrices, for the routines behind the flat arrays.
struct CoxCase {
  explicit CoxCase(CoxArrays a)
      : n(a.n),
        p(a.p),
        S(a.S),
        prepared(a.prepare()),
        G(a.maxGroups),
        time(n, 1, a.time.data(), 0, 0),
        delta(n, 1, a.status.data(), 0, 0),
        X(n, std::max(p, 1), a.covariates.data(), 0, 0),
        sizes(1, S, a.stratumSizes.data(), 0, 0),
        distinct(S, 1, a.distinctTimes.data(), false),
        censored(S, 1, a.censored.data(), false),
        start(S, G, a.groupStart.data(), false),
        size(S, G, a.groupSize.data(), false),
        events(S, G, a.groupEvents.data(), false) {
    EXPECT_EQ(prepared, 0);
  }

  // Times, statuses and covariates, which no routine writes.
  Doubles columns() const {
    Doubles all = elements(time);
    for (const matrix* column : {&delta, &X}) {
      const Doubles more = elements(*column);
      all.insert(all.end(), more.begin(), more.end());
    }
    return all;
  }

  int n;
  int p;
  int S;
  int prepared;
  int G;
  matrix time;
  matrix delta;
  matrix X;
  matrix sizes;
  matrixInt distinct;
  matrixInt censored;
  matrixInt start;
  matrixInt size;
  matrixInt events;
};

// One evaluation of the likelihood.
struct Likelihood {
  Likelihood(CoxCase* c, int ties, Doubles coefficients)
      : gradient(c->p, 1, 7), hessian(c->p, c->p, 7) {
    matrix beta(c->p, 1, coefficients.data(), 0, 0);
    ComputeLogLikeDerivativesCox(c->p, &c->delta, &c->X, ties, &beta, &c->distinct, &c->size,
                                 &c->start, c->S, &c->sizes, &c->events, &logLik, &gradient,
                                 &hessian);
  }
  double logLik = 7.0;
  matrix gradient;
  matrix hessian;
};

// One fit.
struct Fit {
  Fit(CoxCase* c, int limit, double tolerance, int ties = 0)
      : iterations(limit),
        gradient(c->p, 1, 7),
        hessian(c->p, c->p, 7),
        inverse(c->p, c->p, 7),
        gradient0(c->p, 1, 7),
        inverse0(c->p, c->p, 7),
        beta(c->p, 1, 7) {
    code = OptimizeCoxModel(c->p, &c->delta, &c->X, &c->sizes, c->S, &iterations, tolerance, ties,
                            &c->distinct, &c->size, &c->events, &c->start, &logLik, &logLik0,
                            &gradient, &hessian, &inverse, &gradient0, &inverse0, &beta);
  }
  int code = 7;
  int iterations;
  double logLik = 7.0;
  double logLik0 = 7.0;
  matrix gradient;
  matrix hessian;
  matrix inverse;
  matrix gradient0;
  matrix inverse0;
  matrix beta;
};

// A whole regression through the flat arrays, which start as `fill`.
struct Regression {
  struct Options {
    int limit = 50;
    double tolerance = 1e-12;
    int ties = 0;
    int method = -1;
    int removalTest = 0;
    double entry = 0.05;
    double removal = 0.1;
    double alpha = 0.05;
    short survival = -1;
  };

  explicit Regression(const CoxArrays& arrays, Options options, double fill = 3.0)
      : a(arrays),
        iterations(options.limit),
        beta(std::max(a.p, 1), fill),
        criteria(12, fill),
        tests(9, fill),
        coefficients(static_cast<std::size_t>(std::max(a.p, 1)) * 9, fill),
        history(static_cast<std::size_t>(std::max(a.p, 1)) * 3, fill),
        order(std::max(a.p, 1), static_cast<int>(fill)) {
    prepared = a.prepare();
    const std::size_t cells = static_cast<std::size_t>(a.S) * std::max(a.maxGroups, 1);
    baseline.assign(cells, fill);
    mean.assign(cells, fill);
    residuals.assign(static_cast<std::size_t>(a.n) * (2 * a.p + 4), fill);
    covariatesBefore = a.covariates;
    code = RunCoxReg(a.time.data(), a.n, a.p, &finalCovariates, a.status.data(), -7,
                     a.covariates.data(), 99, a.stratumSizes.data(), a.S, &iterations,
                     options.tolerance, options.ties, a.distinctTimes.data(), a.groupSize.data(),
                     a.groupEvents.data(), a.censored.data(), a.groupStart.data(), options.method,
                     options.removalTest, options.entry, options.removal, options.alpha,
                     a.maxGroups, options.survival, 1, -1, 12345, beta.data(), criteria.data(),
                     tests.data(), coefficients.data(), baseline.data(), mean.data(),
                     residuals.data(), history.data(), &steps, order.data());
  }

  double criterion(int row, int column) const { return criteria[row - 1 + (column - 1) * 6]; }
  double test(int row, int column) const { return tests[row - 1 + (column - 1) * 3]; }
  double coefficient(int row, int column) const {
    return coefficients[row - 1 + static_cast<std::size_t>(column - 1) * std::max(a.p, 1)];
  }
  double residual(int row, int column) const {
    return residuals[row - 1 + static_cast<std::size_t>(column - 1) * a.n];
  }
  double survivalAt(const Doubles& table, int s, int k) const {
    return table[s - 1 + static_cast<std::size_t>(k - 1) * a.S];
  }
  double step(int row, int column) const { return history[row - 1 + (column - 1) * 3]; }

  CoxArrays a;
  Doubles covariatesBefore;
  int prepared = 7;
  int code = 7;
  int finalCovariates = 77;
  int iterations;
  Doubles beta;
  Doubles criteria;
  Doubles tests;
  Doubles coefficients;
  Doubles baseline;
  Doubles mean;
  Doubles residuals;
  Doubles history;
  int steps = 77;
  Ints order;
};

// Survival in advanced lung cancer by age, sex and performance score; rows without a missing
// score. `extra` numbers the rows from 1.
inline CoxArrays lungCancer() {
  const Csv csv(SURVMETH_DATA "/lung.csv");
  Doubles time, status, age, male, score;
  for (std::size_t i = 0; i < csv.rows(); ++i) {
    if (csv.text("ph.ecog", i).empty()) continue;
    time.push_back(csv.number("time", i));
    status.push_back(csv.number("status", i));
    age.push_back(csv.number("age", i));
    male.push_back(csv.text("sex", i) == "male" ? 1.0 : 0.0);
    score.push_back(csv.number("ph.ecog", i));
  }
  CoxArrays arrays(time, status, {age, male, score});
  for (std::size_t i = 0; i < arrays.extra.size(); ++i) arrays.extra[i] = static_cast<double>(i);
  return arrays;
}

// The veterans' trial by Karnofsky score, age and months since diagnosis, stratified by cell type
// in the order squamous, smallcell, adeno, large.
inline CoxArrays veterans() {
  const Csv csv(SURVMETH_DATA "/veteran.csv");
  const std::vector<std::string> types{"squamous", "smallcell", "adeno", "large"};
  Doubles stratum;
  Doubles sizes(types.size());
  for (const std::string& type : csv.texts("celltype")) {
    for (std::size_t s = 0; s < types.size(); ++s) {
      if (type != types[s]) continue;
      stratum.push_back(static_cast<double>(s + 1));
      ++sizes[s];
    }
  }
  CoxArrays arrays(csv.numbers("time"), csv.numbers("status"),
                   {csv.numbers("karno"), csv.numbers("age"), csv.numbers("diagtime")}, stratum,
                   sizes);
  for (std::size_t i = 0; i < arrays.extra.size(); ++i) arrays.extra[i] = static_cast<double>(i);
  return arrays;
}

// Three events, covariate 1, 0, 1.
inline CoxCase threeEvents() { return CoxCase(CoxArrays({1, 2, 3}, {1, 1, 1}, {{1, 0, 1}})); }

}  // namespace survmeth::test

#endif  // TESTS_SURVIVAL_COX_COX_CASE_H_
