// Calls of the families that fit: life, cox, param.
#include <algorithm>
#include <string>
#include <vector>

#include "survival/survival.h"
#include "tests/boundary/call_families.h"

namespace survmeth::test {
namespace {

// Cox data sorted by time in one stratum, every row a group of its own.
struct CoxArguments {
  CoxArguments(Arrays& arrays, unsigned seed) {
    Data data(seed);
    std::vector<double> sorted = data.uniform(kRows, 0, 10);
    std::sort(sorted.begin(), sorted.end());
    const std::vector<double> events01 = data.binary(kRows);
    std::vector<int> start(kRows), events(kRows);
    int cens = 0;
    for (int i = 0; i < kRows; ++i) {
      start[i] = i + 1;
      events[i] = events01[i] != 0;
      cens += events01[i] == 0;
    }
    time = arrays.reals(sorted);
    this->status = arrays.reals(events01);
    covariates = arrays.reals(data.uniform(kRows * 3, -1, 1));
    sizes = arrays.reals({double{kRows}});
    distinct = arrays.ints({kRows});
    groupSize = arrays.blankInts(kRows, 1);
    groupEvents = arrays.ints(events);
    censored = arrays.ints({cens});
    groupStart = arrays.ints(start);
  }
  double *time, *status, *covariates, *sizes;
  int *distinct, *groupSize, *groupEvents, *censored, *groupStart;
};

Call coxCall(const std::string& name, int method) {
  return {name, false, [method](Arrays& a, unsigned seed) {
            const CoxArguments c(a, seed);
            int *q = a.intScalar(), *iterations = a.intScalar(20), *steps = a.intScalar(),
                *order = a.blankInts(3);
            double *beta = a.blank(3), *criteria = a.blank(12), *tests = a.blank(9),
                   *table = a.blank(27), *baseline = a.blank(kRows), *mean = a.blank(kRows),
                   *residuals = a.blank(kRows * 10), *history = a.blank(9);
            return [=] {
              RunCoxReg(c.time, kRows, 3, q, c.status, 0, c.covariates, 0, c.sizes, 1, iterations,
                        1e-9, 0, c.distinct, c.groupSize, c.groupEvents, c.censored, c.groupStart,
                        method, 0, 0.5, 0.1, 0.05, kRows, -1, 0, 0, 0, beta, criteria, tests, table,
                        baseline, mean, residuals, history, steps, order);
            };
          }};
}

Call lifeCall(const std::string& name, short lifeTable) {
  return {name, false, [lifeTable](Arrays& a, unsigned seed) {
            Data data(seed);
            std::vector<double> sorted = data.whole(kRows, 1, 9);
            std::sort(sorted.begin(), sorted.end());
            sorted.back() = 9;
            double *time = a.reals(sorted), *status = a.reals(data.binary(kRows)),
                   *weight = a.reals(ones(kRows)), *bounds = a.blank(1),
                   *intervals = a.blank(2 * (kRows + 1)), *total = a.scalars(1),
                   *table = a.blank(16 * (kRows + 2));
            std::vector<double> gridTimes(4 * 9, 0);
            for (int g = 0; g < 9; ++g) gridTimes[4 * g] = g + 1;
            double* grid = a.reals(gridTimes);
            int *offset = a.ints({0}), *rows = a.intScalar();
            return [=] {
              RunLife(kRows, 1, offset, 0, 1.0, 9, 1, kRows, 1, 0, 0, time, status, weight, 0, -1,
                      lifeTable, -1, bounds, intervals, total, table, rows, grid);
            };
          }};
}

// A parametric fit's arrays.
struct ParamArguments {
  static constexpr int p = 3, k = 2, m = p + k;
  ParamArguments(Arrays& a, unsigned seed) {
    Data data(seed);
    times = a.reals(data.uniform(kRows, 0.1, 3));
    status = a.reals(data.binary(kRows));
    bounds = a.reals(data.uniform(2 * kRows, 0.1, 3));
    covariates = a.reals(data.uniform(kRows * p, -1, 1));
    weights = a.reals(ones(kRows));
    initial = a.reals({0, 0, 0, 1, 1});
    parameters = a.blank(m);
    logLik = a.scalars(1);
    logLik0 = a.scalars(1);
    gradient = a.blank(m);
    hessian = a.blank(m * m);
    covariance = a.blank(m * m);
    gradient0 = a.blank(m);
    hessian0 = a.blank(m * m);
    steps = a.blank(3 * p);
    count = a.intScalar();
    order = a.blankInts(m);
    iterations = a.intScalar(15);
    kept = a.intScalar(p);
  }
  double *times, *status, *bounds, *covariates, *weights, *initial, *parameters, *logLik, *logLik0,
      *gradient, *hessian, *covariance, *gradient0, *hessian0, *steps;
  int *count, *order, *iterations, *kept;
};

Call paramDriverCall(const std::string& name, int method) {
  return {name, false, [method](Arrays& a, unsigned seed) {
            const ParamArguments g(a, seed);
            constexpr int p = ParamArguments::p, k = ParamArguments::k, m = ParamArguments::m;
            double *fit = a.blank(14), *tests = a.blank(9), *table = a.blank(9 * m),
                   *survival = a.blank(kRows), *residuals = a.blank(2 * kRows),
                   *probabilities = a.blank(2 * kRows), *quantiles = a.blank(9 * kRows);
            return [=] {
              Cpp_RunParamReg(g.times, kRows, p, g.kept, k, g.status, g.bounds, g.covariates,
                              g.weights, 25, 1e-8, -1, 2, 0, method, 0, 0.5, 0.1, 0.05, 0, 0,
                              g.initial, 0, 0, g.parameters, fit, tests, table, survival, residuals,
                              probabilities, quantiles, g.steps, g.count, g.order);
            };
          }};
}

}  // namespace

std::vector<Call> lifeCalls() {
  return {
      {"ReorganizeData", false,
       [](Arrays& a, unsigned seed) {
         Data data(seed);
         std::vector<double> stratum(kRows, 1);
         for (int i = 0; i < kRows / 2; ++i) stratum[2 * i] = 2;
         double *time = a.reals(data.whole(kRows, 1, 9)), *status = a.reals(data.binary(kRows)),
                *weight = a.reals(ones(kRows)), *strata = a.reals(stratum),
                *sizes = a.reals({kRows / 2.0, kRows / 2.0}), *maxTime = a.scalars(1);
         int* n = a.intScalar(kRows);
         return [=] { ReorganizeData(time, n, status, weight, strata, sizes, 2, 0, maxTime); };
       }},
      lifeCall("RunLife, Kaplan-Meier", 0),
      lifeCall("RunLife, life table", -1),
      {"ComputeKaplanMeanMedian", false,
       [](Arrays& a, unsigned seed) {
         Data data(seed);
         double *table = a.reals(data.uniform(12 * (kRows + 2), 0.1, 0.9)), *cut = a.scalars(1),
                *mean = a.blank(4), *quartiles = a.blank(12);
         return [=] {
           ComputeKaplanMeanMedian(table, kRows, 0.05, kRows, kRows, cut, mean, quartiles);
         };
       }},
      {"ComputeLifeTests", false,
       [](Arrays& a, unsigned seed) {
         double *grid = a.reals(Data(seed).whole(10 * 9, 1, 9)), *result = a.blank(12);
         return [=] { ComputeLifeTests(grid, 9, 9, 3, 0.05, result); };
       }},
      {"LoadKaplanTest", false,
       [](Arrays& a, unsigned seed) {
         double *times = a.reals(Data(seed).whole(kRows, 1, 9)), *grid = a.blank(7 * kRows);
         int* n = a.intScalar(kRows);
         return [=] { LoadKaplanTest(n, kRows, 2, times, grid); };
       }},
  };
}

std::vector<Call> coxCalls() {
  return {
      {"Cpp_ReorganizeDataCox", false,
       [](Arrays& a, unsigned seed) {
         Data data(seed);
         std::vector<double> stratum(kRows, 1);
         for (int i = 0; i < kRows / 2; ++i) stratum[2 * i] = 2;
         double *time = a.reals(data.whole(kRows, 1, 9)), *status = a.reals(data.binary(kRows)),
                *extra = a.reals(data.uniform(kRows, 0, 1)), *key = a.reals(ones(kRows)),
                *x = a.reals(data.uniform(2 * kRows, 0, 1)), *strata = a.reals(stratum),
                *sizes = a.reals({kRows / 2.0, kRows / 2.0});
         int *distinct = a.blankInts(2), *censored = a.blankInts(2),
             *start = a.blankInts(2 * kRows), *size = a.blankInts(2 * kRows),
             *events = a.blankInts(2 * kRows), *groups = a.intScalar(0);
         return [=] {
           Cpp_ReorganizeDataCox(time, kRows, 2, status, extra, key, x, strata, sizes, 2, distinct,
                                 censored, start, size, events, groups);
         };
       }},
      coxCall("RunCoxReg, all covariates", -1),
      coxCall("RunCoxReg, forward", 0),
      coxCall("RunCoxReg, backward", 1),
  };
}

std::vector<Call> paramCalls() {
  constexpr int p = ParamArguments::p, k = ParamArguments::k, m = ParamArguments::m;
  return {
      {"Cpp_ComputeLogLikeDerivativesParam", false,
       [](Arrays& a, unsigned seed) {
         const ParamArguments g(a, seed);
         return [=] {
           Cpp_ComputeLogLikeDerivativesParam(g.times, kRows, p, k, g.status, g.bounds,
                                              g.covariates, g.initial, g.weights, 3, g.logLik,
                                              g.gradient, g.hessian);
         };
       }},
      {"Cpp_OptimizeParamModel", false,
       [](Arrays& a, unsigned seed) {
         const ParamArguments g(a, seed);
         return [=] {
           Cpp_OptimizeParamModel(g.times, kRows, p, k, g.status, g.bounds, g.covariates, g.weights,
                                  g.iterations, 1e-8, 2, 0, g.initial, 0, 0, g.logLik, g.logLik0,
                                  g.gradient, g.hessian, g.covariance, g.gradient0, g.hessian0,
                                  g.parameters);
         };
       }},
      {"Cpp_Param_BackSelection", false,
       [](Arrays& a, unsigned seed) {
         const ParamArguments g(a, seed);
         return [=] {
           Cpp_Param_BackSelection(
               g.times, kRows, g.kept, k, g.status, g.bounds, g.covariates, g.weights, g.iterations,
               1e-8, 3, 0, g.initial, 0, 0, 0, 0.1, g.parameters, g.logLik, g.logLik0, g.gradient,
               g.hessian, g.covariance, g.gradient0, g.hessian0, g.steps, g.count, g.order);
         };
       }},
      {"Cpp_Param_ForSelection", false,
       [](Arrays& a, unsigned seed) {
         const ParamArguments g(a, seed);
         return [=] {
           Cpp_Param_ForSelection(g.times, kRows, g.kept, k, g.status, g.bounds, g.covariates,
                                  g.weights, g.iterations, 1e-8, 2, 0, g.initial, 0, 0, 0.5,
                                  g.parameters, g.logLik, g.logLik0, g.gradient, g.hessian,
                                  g.covariance, g.gradient0, g.hessian0, g.steps, g.count, g.order);
         };
       }},
      {"Cpp_ComputeCritParam", false,
       [](Arrays& a, unsigned seed) {
         Data data(seed);
         double *theta = a.reals(data.uniform(m, -1, 1)), *h = a.reals(data.uniform(m * m, -1, 0)),
                *v = a.reals(data.uniform(m * m, -1, 0)), *z = a.scalars(1), *g0 = a.blank(m, 1),
                *h0 = a.reals(data.uniform(m * m, -1, 0)), *fit = a.blank(14),
                *table = a.blank(9 * m), *tests = a.blank(9);
         return [=] {
           Cpp_ComputeCritParam(kRows, p, k, -10, -12, 5, 0.05, theta, h, v, z, g0, h0, fit, table,
                                tests);
         };
       }},
      {"Cpp_ResParam", false,
       [](Arrays& a, unsigned seed) {
         const ParamArguments g(a, seed);
         double *survival = a.blank(kRows), *probabilities = a.blank(2 * kRows),
                *residuals = a.blank(2 * kRows), *quantiles = a.blank(9 * kRows);
         return [=] {
           Cpp_ResParam(g.times, kRows, p, k, 2, -1, g.covariates, g.initial, survival,
                        probabilities, residuals, quantiles);
         };
       }},
      paramDriverCall("Cpp_RunParamReg, all covariates", -1),
      paramDriverCall("Cpp_RunParamReg, forward", 0),
      paramDriverCall("Cpp_RunParamReg, backward", 1),
      {"Cpp_PrepareIntervalData", false,
       [](Arrays& a, unsigned seed) {
         Data data(seed);
         double *answers = a.reals(data.whole(kRows * 4, 0, 1)), *times = a.reals({1, 2, 3, 4}),
                *x = a.reals(data.uniform(2 * kRows, 0, 1)), *bounds = a.blank(2 * kRows, 0),
                *type = a.blank(kRows, 0), *key = a.blank(kRows, 0), *kept = a.blank(2 * kRows),
                *summary = a.blank(8);
         int *removed = a.intScalar(), *flags = a.blankInts(kRows, 0), *left = a.intScalar();
         return [=] {
           Cpp_PrepareIntervalData(answers, kRows, 4, times, x, 2, removed, flags, left, bounds,
                                   type, key, kept, summary);
         };
       }},
      {"Cpp_TransformJudgeToInt", false,
       [](Arrays& a, unsigned seed) {
         Data data(seed);
         std::vector<double> keys(kRows);
         for (int i = 0; i < kRows; ++i) keys[i] = i / 2 + 1;
         double *rating = a.reals(data.whole(kRows, 1, 5)), *key = a.reals(keys),
                *sizes = a.blank(kRows / 2, 2), *x = a.reals(data.uniform(2 * kRows, 0, 1)),
                *indicators = a.blank(kRows / 2 * 6, 0), *kept = a.blank(kRows),
                *levels = a.blank(6);
         return [=] {
           Cpp_TransformJudgeToInt(rating, kRows, 6, key, kRows / 2, sizes, x, 2, indicators, kept,
                                   levels);
         };
       }},
  };
}

}  // namespace survmeth::test
