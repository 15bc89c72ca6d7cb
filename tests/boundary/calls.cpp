#include "tests/boundary/calls.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <random>

#include "survival/survival.h"

namespace survmeth::test {

double* Arrays::reals(std::vector<double> values) {
  values.push_back(0);  // never empty, so that there is an address
  reals_.push_back(std::move(values));
  return reals_.back().data();
}

int* Arrays::ints(std::vector<int> values) {
  values.push_back(0);
  ints_.push_back(std::move(values));
  return ints_.back().data();
}

double* Arrays::blank(int count, double fill) { return reals(std::vector<double>(count, fill)); }

int* Arrays::blankInts(int count, int fill) { return ints(std::vector<int>(count, fill)); }

double* Arrays::scalars(int count) {
  scalars_.emplace_back(count, 77.0);
  return scalars_.back().data();
}

int* Arrays::intScalar(int value) {
  intScalars_.push_back(value);
  return &intScalars_.back();
}

std::vector<unsigned char> Arrays::bytes(bool withScalars) const {
  std::vector<unsigned char> all;
  const auto append = [&all](const void* data, std::size_t size) {
    const auto* begin = static_cast<const unsigned char*>(data);
    all.insert(all.end(), begin, begin + size);
  };
  for (const auto& array : reals_) append(array.data(), array.size() * sizeof(double));
  for (const auto& array : ints_) append(array.data(), array.size() * sizeof(int));
  if (!withScalars) return all;
  for (const auto& array : scalars_) append(array.data(), array.size() * sizeof(double));
  for (const int& value : intScalars_) append(&value, sizeof value);
  return all;
}

void Arrays::visit(const std::function<void(const std::vector<double>&)>& real,
                   const std::function<void(const std::vector<int>&)>& integer) const {
  for (const auto& array : reals_) real(array);
  for (const auto& array : scalars_) real(array);
  for (const auto& array : ints_) integer(array);
  for (const int value : intScalars_) integer({value});
}

namespace {

constexpr int kRows = 24;

// Columns of one data set.
class Data {
 public:
  explicit Data(unsigned seed) : random_(seed) {}

  std::vector<double> uniform(int count, double low, double high) {
    std::vector<double> values(count);
    for (double& value : values) value = low + (high - low) * (random_() / 4294967296.0);
    return values;
  }
  // Whole numbers low..high.
  std::vector<double> whole(int count, int low, int high) {
    std::vector<double> values(count);
    for (double& value : values) value = low + static_cast<int>(random_() % (high - low + 1));
    return values;
  }
  // Both 0 and 1 occur.
  std::vector<double> binary(int count) {
    std::vector<double> values = whole(count, 0, 1);
    values[0] = 1;
    values[1] = 0;
    return values;
  }

 private:
  std::mt19937 random_;
};

std::vector<double> ones(int count) { return std::vector<double>(count, 1.0); }

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

Call rocCall(const std::string& name, int method) {
  return {name, false, [method](Arrays& a, unsigned seed) {
            Data data(seed);
            std::vector<double> values = data.whole(kRows, 0, 9);
            std::vector<double> distinct = values;
            std::sort(distinct.begin(), distinct.end());
            const int t =
                static_cast<int>(std::unique(distinct.begin(), distinct.end()) - distinct.begin());
            double *status = a.reals(data.binary(kRows)), *value = a.reals(values),
                   *weight = a.reals(ones(kRows));
            std::array<double*, 12> out{};
            const int columns[12] = {1, 0, 3, 3, 1, 1, 1, 1, 2, 2, 0, 1};
            for (int i = 0; i < 12; ++i) out[i] = a.blank(columns[i] * t);
            out[1] = a.blank(2 * (t + 1));
            out[10] = a.blank(9);
            return [=] {
              Cpp_ComputeROC(status, kRows, t, value, weight, 2, 0.05, 0, 2, -1, method, 0, 1, 2, 3,
                             4, out[0], out[1], out[2], out[3], out[4], out[5], out[6], out[7],
                             out[8], out[9], out[10], out[11]);
            };
          }};
}

Call comparisonCall(const std::string& name, short paired) {
  return {name, false, [paired](Arrays& a, unsigned seed) {
            Data data(seed);
            double *status = a.reals(data.binary(kRows)),
                   *values = a.reals(data.uniform(3 * kRows, 0, 1)), *weight = a.reals(ones(kRows)),
                   *sizes = a.reals({24, 24, 24}), *aucs = a.reals({0.6, 0.7, 0.8}),
                   *variances = a.reals({0.1, 0.2, 0.3});
            int *selected = a.ints({1, 1, 1}), *significant = a.blankInts(9);
            double *difference = a.blank(9), *z = a.blank(9), *half = a.blank(9),
                   *covariance = a.blank(9), *pValue = a.blank(9);
            return [=] {
              Cpp_ComputeROCComparisonsDep2(status, kRows, values, weight, sizes, 3, 0.05, paired,
                                            aucs, variances, selected, difference, z, half,
                                            covariance, pValue, significant);
            };
          }};
}

Call demingCall(const std::string& name, short weighted) {
  return {name, true, [weighted](Arrays& a, unsigned seed) {
            Data data(seed);
            std::vector<double> ids(kRows);
            for (int i = 0; i < kRows; ++i) ids[i] = i / 2 + 1;
            double *x = a.reals(data.uniform(kRows, 1, 9)), *y = a.reals(data.uniform(kRows, 1, 9)),
                   *id = a.reals(ids), *difference = a.blank(kRows), *bias = a.blank(2 * kRows),
                   *residuals = a.blank(kRows), *fitted = a.blank(kRows),
                   *band = a.blank(2 * kRows), *s = a.scalars(31);
            int* counts = a.blankInts(kRows / 2, 2);
            return [=] {
              VB_DemingRegression(x, kRows, y, id, -1, kRows / 2, counts, 1, weighted, 0.05, 1.0,
                                  1e-9, 30, 3, 6, s, s + 1, s + 2, s + 3, s + 4, s + 5, difference,
                                  bias, residuals, fitted, band, s + 6, s + 7, s + 8, s + 9, s + 10,
                                  s + 11, s + 12, s + 13, s + 14, s + 15, s + 16, s + 17, s + 18,
                                  s + 19, s + 20, s + 21, s + 22, s + 23, s + 24, s + 25, s + 26,
                                  s + 27);
            };
          }};
}

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

std::vector<Call> competingCalls() {
  return {
      {"Cpp_CheckStatusFormat", false,
       [](Arrays& a, unsigned seed) {
         double *status = a.reals(Data(seed).whole(kRows, 0, 3)), *codes = a.blank(kRows),
                *recoded = a.blank(kRows);
         int* count = a.intScalar();
         return [=] { Cpp_CheckStatusFormat(status, kRows, codes, count, 0, recoded); };
       }},
      {"Cpp_ReorganizeDataCum", false,
       [](Arrays& a, unsigned seed) {
         Data data(seed);
         std::vector<double> stratum(kRows, 1);
         for (int i = 0; i < kRows / 2; ++i) stratum[2 * i] = 2;
         double *time = a.reals(data.whole(kRows, 1, 9)),
                *status = a.reals(data.whole(kRows, 0, 2)), *flag = a.blank(kRows),
                *strata = a.reals(stratum), *sizes = a.reals({kRows / 2.0, kRows / 2.0}),
                *maxTime = a.scalars(1);
         return
             [=] { Cpp_ReorganizeDataCum(time, kRows, status, flag, strata, sizes, 2, maxTime); };
       }},
      {"Cpp_CumIncCalc", false,
       [](Arrays& a, unsigned seed) {
         Data data(seed);
         std::vector<double> sorted = data.uniform(kRows, 0, 9);
         std::sort(sorted.begin(), sorted.end());
         const std::vector<double> status = data.whole(kRows, 0, 2);
         std::vector<double> table((kRows + 2) * 12, 0);
         table[7 * (kRows + 2)] = 1;
         for (int k = 0; k < kRows; ++k) {
           double* row = table.data() + k + 1;
           const double atRisk = kRows - k;
           row[0] = sorted[k];
           row[3 * (kRows + 2)] = status[k] != 0;
           row[4 * (kRows + 2)] = status[k] == 0;
           row[5 * (kRows + 2)] = atRisk;
           row[7 * (kRows + 2)] = row[7 * (kRows + 2) - 1] * (1 - (status[k] != 0) / atRisk);
         }
         double *time = a.reals(sorted), *codes = a.reals(status), *km = a.reals(table),
                *incidence = a.blank(10 * kRows, 0), *complement = a.blank(10 * kRows, 0);
         return [=] {
           Cpp_CumIncCalc(kRows, kRows, time, codes, 1, 0.05, kRows, 0, km, incidence, complement);
         };
       }},
      {"Cpp_GrayTest", false,
       [](Arrays& a, unsigned seed) {
         Data data(seed);
         double *time = a.reals(data.whole(kRows, 1, 9)),
                *status = a.reals(data.whole(kRows, 0, 2)),
                *group = a.reals(data.whole(kRows, 1, 3)), *out = a.scalars(3);
         return [=] { Cpp_GrayTest(kRows, 3, time, status, group, 1, 0, out, out + 1, out + 2); };
       }},
      {"Cpp_TransNelsonAalen", false,
       [](Arrays& a, unsigned seed) {
         double *km = a.reals(Data(seed).whole((kRows + 2) * 12, 1, 9)),
                *table = a.blank(9 * kRows);
         return [=] { Cpp_TransNelsonAalen(km, table, kRows, kRows, 0.05, 1, 2); };
       }},
      {"Cpp_ComputeBootOut", false,
       [](Arrays& a, unsigned seed) {
         double *statistics = a.reals(Data(seed).uniform(5 * kRows, 0, 1)),
                *summary = a.blank(20, 0);
         return [=] { Cpp_ComputeBootOut(kRows, 0.05, statistics, summary); };
       }},
      {"Cpp_ComputeCVTable", false,
       [](Arrays& a, unsigned seed) {
         Data data(seed);
         double *time = a.reals(data.whole(kRows, 1, 9)), *status = a.reals(data.binary(kRows)),
                *x = a.reals(data.uniform(2 * kRows, -1, 1)), *beta = a.reals({1, -1}),
                *h = a.reals(data.uniform(9, 0, 1)), *f = a.reals(data.uniform(12, 0, 1)),
                *table = a.blank(15);
         return [=] { Cpp_ComputeCVTable(kRows, 2, time, status, x, beta, h, f, 2, 3, table); };
       }},
  };
}

std::vector<Call> diagnosticCalls() {
  static wchar_t ill[] = L"ill";
  static wchar_t well[] = L"well";
  static wchar_t* labels[kRows];
  for (int i = 0; i < kRows; ++i) labels[i] = i % 3 == 0 ? ill : well;
  return {
      rocCall("Cpp_ComputeROC, Hanley-McNeil", 0),
      rocCall("Cpp_ComputeROC, Mann-Whitney", 1),
      rocCall("Cpp_ComputeROC, DeLong", 2),
      {"Cpp_GetROCStats", false,
       [](Arrays& a, unsigned seed) {
         double *table = a.reals(Data(seed).whole(4, 1, 50)), *stats = a.blank(39),
                *proportions = a.blank(9);
         return [=] { Cpp_GetROCStats(table, 0.05, 3, -1, 0, stats, proportions); };
       }},
      {"Cpp_CreateROCContingencyTable", false,
       [](Arrays& a, unsigned seed) {
         double *values = a.reals(Data(seed).uniform(kRows, 0, 1)), *weight = a.reals(ones(kRows)),
                *table = a.blank(4, 0);
         return [=] {
           Cpp_CreateROCContingencyTable(labels, kRows, ill, values, 0, 0.5, 3, weight, table);
         };
       }},
      comparisonCall("Cpp_ComputeROCComparisonsDep2, paired", -1),
      comparisonCall("Cpp_ComputeROCComparisonsDep2, independent", 0),
      {"Cpp_BlandAltman", false,
       [](Arrays& a, unsigned seed) {
         Data data(seed);
         double *x = a.reals(data.uniform(kRows, 1, 9)), *y = a.reals(data.uniform(kRows, 1, 9)),
                *differences = a.blank(kRows), *means = a.blank(kRows), *s = a.scalars(6);
         return [=] {
           Cpp_BlandAltman(x, y, kRows, 1, 0.05, differences, means, s, s + 1, s + 2, s + 3, s + 4,
                           s + 5);
         };
       }},
      {"Cpp_GetRepeatability", false,
       [](Arrays& a, unsigned seed) {
         std::vector<double> ids(kRows);
         for (int i = 0; i < kRows; ++i) ids[i] = i / 2 + 1;
         double *values = a.reals(Data(seed).uniform(kRows, 1, 9)), *id = a.reals(ids),
                *s = a.scalars(3);
         return [=] { Cpp_GetRepeatability(values, kRows, id, 0.05, s, s + 1, s + 2); };
       }},
      {"VB_PassingBablok", true,
       [](Arrays& a, unsigned seed) {
         Data data(seed);
         double *x = a.reals(data.uniform(kRows, 1, 9)), *y = a.reals(data.uniform(kRows, 1, 9)),
                *s = a.scalars(9), *out = a.blank(4 * kRows);
         return [=] {
           VB_PassingBablok(x, kRows, y, 0.05, s, s + 1, s + 2, s + 3, s + 4, s + 5, out,
                            out + kRows, out + 2 * kRows, out + 3 * kRows, s + 6, s + 7, s + 8);
         };
       }},
      demingCall("VB_DemingRegression, closed form", 0),
      demingCall("VB_DemingRegression, weighted", -1),
  };
}

}  // namespace

const std::vector<Call>& calls() {
  static const std::vector<Call> all = [] {
    std::vector<Call> list;
    for (auto part : {lifeCalls, coxCalls, paramCalls, competingCalls, diagnosticCalls}) {
      for (Call& call : part()) list.push_back(std::move(call));
    }
    return list;
  }();
  return all;
}

}  // namespace survmeth::test
