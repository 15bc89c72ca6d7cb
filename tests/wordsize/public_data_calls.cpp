// The public data sets through the entry points of each family, in the order in which an analysis
// calls them, so that results go in where the next call takes them.
#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "survival/survival.h"
#include "tests/support/csv.h"
#include "tests/wordsize/calls.h"

namespace survmeth::test {
namespace {

constexpr short kYes = -1;
constexpr short kNo = 0;
constexpr double kAlpha = 0.05;

using Vector = std::vector<double>;

const Csv& dataSet(const std::string& name) {
  static std::map<std::string, Csv> read;
  return read.try_emplace(name, SURVMETH_DATA "/" + name + ".csv").first->second;
}

// Codes 1, 2, ... of the labels in order of appearance.
Vector codesOf(const std::vector<std::string>& labels) {
  std::vector<std::string> seen;
  Vector codes;
  for (const std::string& label : labels) {
    auto place = std::find(seen.begin(), seen.end(), label);
    if (place == seen.end()) place = seen.insert(place, label);
    codes.push_back(static_cast<double>(place - seen.begin() + 1));
  }
  return codes;
}

Vector sizesOf(const Vector& codes) {
  Vector sizes(static_cast<std::size_t>(*std::max_element(codes.begin(), codes.end())));
  for (const double code : codes) ++sizes[static_cast<std::size_t>(code) - 1];
  return sizes;
}

// The named columns side by side, each less its mean, in units of `scale`.
Vector covariatesOf(const Csv& data, const std::vector<std::string>& names, double scale) {
  Vector all;
  for (const std::string& name : names) {
    const Vector column = data.numbers(name);
    double sum = 0;
    for (const double value : column) sum += value;
    for (const double value : column) all.push_back((value - sum / column.size()) / scale);
  }
  return all;
}

int sizeOf(const Vector& column) { return static_cast<int>(column.size()); }

// Tables, means, quartiles and tests of the curves of each treatment.
Call curves(const std::string& name, short lifeTable) {
  return {name, false, [lifeTable](Arrays& a, unsigned) {
            const Csv& data = dataSet("veteran");
            const Vector times = data.numbers("time");
            const int n = sizeOf(times);
            const Vector codes = data.numbers("trt"), groups = sizesOf(codes);
            const int S = sizeOf(groups);
            constexpr int kMost = 64;  // intervals of 20 days
            double *time = a.reals(times), *status = a.reals(data.numbers("status")),
                   *weight = a.blank(n, 1), *stratum = a.reals(codes), *sizes = a.reals(groups),
                   *grid = a.blank((3 * S + 1) * n, 0), *maxTime = a.scalars(1),
                   *bounds = a.blank(1), *intervals = a.blank(S * 2 * (n + kMost)),
                   *total = a.scalars(S), *table = a.blank(S * 16 * (n + kMost), 0),
                   *cut = a.scalars(S), *mean = a.blank(4 * S), *quartiles = a.blank(12 * S),
                   *tests = a.blank(12);
            int *count = a.intScalar(n), *distinct = a.intScalar(n), *rows = a.blankInts(S),
                *offset = a.ints({0});
            return [=] {
              ReorganizeData(time, count, status, weight, stratum, sizes, S, kNo, maxTime);
              LoadKaplanTest(distinct, n, S, time, grid);
              for (int s = 0; s < S; ++s) {
                const int m = static_cast<int>(sizes[s]);
                double* rowsOf = table + static_cast<std::ptrdiff_t>(s) * 16 * (n + kMost);
                RunLife(n, s + 1, offset, 0, 20.0, n, S, m, 1, 0, 0, time, status, weight, kNo,
                        kYes, lifeTable, kYes, bounds, intervals + s * 2 * (n + kMost), total + s,
                        rowsOf, rows + s, grid);
                if (lifeTable != kYes) {
                  ComputeKaplanMeanMedian(rowsOf, m, kAlpha, m, rows[s], cut + s, mean + 4 * s,
                                          quartiles + 12 * s);
                }
                *offset += m;
              }
              ComputeLifeTests(grid, *distinct, n, S, kAlpha, tests);
            };
          }};
}

// Preparation and regression, stratified by cell type or not at all.
Call regression(const std::string& name, bool stratified, int ties, int method) {
  return {name, false, [=](Arrays& a, unsigned) {
            const Csv& data = dataSet("veteran");
            const Vector times = data.numbers("time");
            const int n = sizeOf(times);
            const Vector codes = stratified ? codesOf(data.texts("celltype")) : Vector(n, 1.0);
            const Vector groups = sizesOf(codes);
            constexpr int p = 4;
            const int S = sizeOf(groups);
            double *time = a.reals(times), *status = a.reals(data.numbers("status")),
                   *extra = a.blank(n, 1), *key = a.blank(n, 1),
                   *x = a.reals(covariatesOf(data, {"trt", "karno", "age", "diagtime"}, 10)),
                   *stratum = a.reals(codes), *sizes = a.reals(groups), *beta = a.blank(p, 0),
                   *criteria = a.blank(12), *tests = a.blank(9), *table = a.blank(9 * p),
                   *baseline = a.blank(S * n), *mean = a.blank(S * n),
                   *residuals = a.blank(n * (2 * p + 4)), *history = a.blank(3 * p);
            int *distinct = a.blankInts(S), *censored = a.blankInts(S), *start = a.blankInts(S * n),
                *size = a.blankInts(S * n), *events = a.blankInts(S * n), *most = a.intScalar(0),
                *kept = a.intScalar(), *iterations = a.intScalar(50), *steps = a.intScalar(),
                *order = a.blankInts(p);
            return [=] {
              Cpp_ReorganizeDataCox(time, n, p, status, extra, key, x, stratum, sizes, S, distinct,
                                    censored, start, size, events, most);
              RunCoxReg(time, n, p, kept, status, 0, x, 0, sizes, S, iterations, 1e-9, ties,
                        distinct, size, events, censored, start, method, 0, 0.2, 0.1, kAlpha, *most,
                        kYes, 0, 0, 0, beta, criteria, tests, table, baseline, mean, residuals,
                        history, steps, order);
            };
          }};
}

Call parametric(const std::string& name, int law, int method) {
  return {name, false, [=](Arrays& a, unsigned) {
            const Csv& data = dataSet("veteran");
            const Vector days = data.numbers("time");
            const int n = sizeOf(days);
            constexpr int p = 4;
            const int k = law == 1 ? 1 : 2, m = p + k;
            double *times = a.reals(days), *status = a.reals(data.numbers("status")),
                   *bounds = a.blank(2 * n, 1),
                   *x = a.reals(covariatesOf(data, {"trt", "karno", "age", "diagtime"}, 10)),
                   *weights = a.blank(n, 1), *initial = a.blank(m, 0), *parameters = a.blank(m),
                   *fit = a.blank(14), *tests = a.blank(9), *table = a.blank(9 * m),
                   *survival = a.blank(n), *residuals = a.blank(2 * n),
                   *probabilities = a.blank(2 * n), *quantiles = a.blank(9 * n),
                   *steps = a.blank(3 * p);
            int *kept = a.intScalar(p), *count = a.intScalar(), *order = a.blankInts(m),
                *code = a.intScalar();
            return [=] {
              *code = Cpp_RunParamReg(times, n, p, kept, k, status, bounds, x, weights, 50, 1e-9,
                                      kYes, law, kNo, method, 0, 0.2, 0.1, kAlpha, 0, kNo, initial,
                                      kNo, 0, parameters, fit, tests, table, survival, residuals,
                                      probabilities, quantiles, steps, count, order);
            };
          }};
}

Call competing(const std::string& name, int type) {
  return {
      name, false, [=](Arrays& a, unsigned) {
        const Csv& data = dataSet("pbc");
        const Vector days = data.numbers("time");
        const int n = sizeOf(days);
        double *time = a.reals(days), *raw = a.reals(data.numbers("status")), *codes = a.blank(n),
               *status = a.blank(n), *flag = a.blank(n), *weight = a.blank(n, 1),
               *stratum = a.blank(n, 1), *sizes = a.reals({static_cast<double>(n)}),
               *maxTime = a.scalars(1), *bounds = a.blank(1), *intervals = a.blank(2 * (n + 1)),
               *total = a.scalars(1), *km = a.blank(12 * (n + 2), 0), *grid = a.blank(4),
               *incidence = a.blank(10 * n, 0), *complement = a.blank(10 * n, 0),
               *hazards = a.blank(6 * 9 * n, 0);
        int *types = a.intScalar(), *rows = a.intScalar(), *offset = a.ints({0});
        return [=] {
          Cpp_CheckStatusFormat(raw, n, codes, types, 0, status);
          Cpp_ReorganizeDataCum(time, n, status, flag, stratum, sizes, 1, maxTime);
          RunLife(n, 1, offset, 0, 1.0, 0, 1, n, 1, 0, 0, time, flag, weight, kNo, kNo, kNo, kNo,
                  bounds, intervals, total, km, rows, grid);
          Cpp_CumIncCalc(*rows, n, time, status, type, kAlpha, n, 0, km, incidence, complement);
          for (int i = 0; i < 6; ++i) {
            Cpp_TransNelsonAalen(km, hazards + i * 9 * n, n, *rows, kAlpha, i / 3 + 1, i % 3 + 1);
          }
        };
      }};
}

Call gray(const std::string& name, double rho) {
  return {name, false, [=](Arrays& a, unsigned) {
            const Csv& data = dataSet("pbc");
            double *time = a.reals(data.numbers("time")), *status = a.reals(data.numbers("status")),
                   *group = a.reals(data.numbers("stage")), *out = a.scalars(3);
            const int n = sizeOf(data.numbers("time"));
            return [=] { Cpp_GrayTest(n, 4, time, status, group, 2, rho, out, out + 1, out + 2); };
          }};
}

// One if the outcome is poor.
Vector poorOutcomes() {
  Vector status;
  for (const std::string& text : dataSet("sah").texts("outcome")) status.push_back(text == "Poor");
  return status;
}

Call curve(const std::string& name, int intervals, int area) {
  return {name, false, [=](Arrays& a, unsigned) {
            const Vector results = dataSet("sah").numbers("s100b");
            const int n = sizeOf(results);
            Vector sorted = results;
            std::sort(sorted.begin(), sorted.end());
            const int t =
                static_cast<int>(std::unique(sorted.begin(), sorted.end()) - sorted.begin());
            double *status = a.reals(poorOutcomes()), *values = a.reals(results),
                   *weights = a.blank(n, 1), *thresholds = a.blank(t), *points = a.blank(2 * t + 2),
                   *sensitivity = a.blank(3 * t), *specificity = a.blank(3 * t), *tp = a.blank(t),
                   *tn = a.blank(t), *fp = a.blank(t), *fn = a.blank(t), *ratios = a.blank(2 * t),
                   *predictive = a.blank(2 * t), *summary = a.blank(9), *cost = a.blank(t);
            return [=] {
              Cpp_ComputeROC(status, n, t, values, weights, 2, kAlpha, 0, intervals, kYes, area, 0,
                             1, 2, 3, 4, thresholds, points, sensitivity, specificity, tp, tn, fp,
                             fn, ratios, predictive, summary, cost);
            };
          }};
}

Call comparison(const std::string& name) {
  return {name, false, [](Arrays& a, unsigned) {
            const Csv& data = dataSet("sah");
            constexpr int k = 3;
            Vector values;
            for (const char* marker : {"s100b", "ndka", "wfns"}) {
              const Vector column = data.numbers(marker);
              values.insert(values.end(), column.begin(), column.end());
            }
            const int n = sizeOf(values) / k;
            double *status = a.reals(poorOutcomes()), *tests = a.reals(values),
                   *weights = a.blank(n, 1), *sizes = a.blank(k, n),
                   *areas = a.reals({0.7313686, 0.6117176, 0.8236789}),
                   *variances = a.reals({0.003, 0.0033, 0.002}), *difference = a.blank(9),
                   *z = a.blank(9), *half = a.blank(9), *covariance = a.blank(9),
                   *pValue = a.blank(9);
            int *selected = a.ints({1, 1, 1}), *significant = a.blankInts(9);
            return [=] {
              Cpp_ComputeROCComparisonsDep2(status, n, tests, weights, sizes, k, kAlpha, kYes,
                                            areas, variances, selected, difference, z, half,
                                            covariance, pValue, significant);
            };
          }};
}

Call agreement(const std::string& name, int type) {
  return {name, false, [=](Arrays& a, unsigned) {
            const Csv& data = dataSet("pefr");
            const Vector wright = data.numbers("wright1");
            const int n = sizeOf(wright);
            double *x = a.reals(wright), *y = a.reals(data.numbers("mini1")),
                   *differences = a.blank(n), *means = a.blank(n), *s = a.scalars(6);
            return [=] {
              Cpp_BlandAltman(x, y, n, type, kAlpha, differences, means, s, s + 1, s + 2, s + 3,
                              s + 4, s + 5);
            };
          }};
}

Call passingBablok(const std::string& name) {
  return {name, true, [](Arrays& a, unsigned) {
            const Csv& data = dataSet("pefr");
            const Vector wright = data.numbers("wright1");
            const int n = sizeOf(wright);
            double *x = a.reals(wright), *y = a.reals(data.numbers("mini1")), *s = a.scalars(9),
                   *out = a.blank(4 * n);
            return [=] {
              VB_PassingBablok(x, n, y, kAlpha, s, s + 1, s + 2, s + 3, s + 4, s + 5, out, out + n,
                               out + 2 * n, out + 3 * n, s + 6, s + 7, s + 8);
            };
          }};
}

Call deming(const std::string& name, short weighted) {
  return {name, true, [weighted](Arrays& a, unsigned) {
            const Csv& data = dataSet("pefr");
            Vector x = data.numbers("wright1"), y = data.numbers("mini1");
            Vector ids = data.numbers("subject");
            const int m = sizeOf(x), n = 2 * m;
            for (const double value : data.numbers("wright2")) x.push_back(value);
            for (const double value : data.numbers("mini2")) y.push_back(value);
            for (const double value : data.numbers("subject")) ids.push_back(value);
            double *first = a.reals(x), *second = a.reals(y), *id = a.reals(ids),
                   *difference = a.blank(n), *bias = a.blank(2 * n), *residuals = a.blank(n),
                   *fitted = a.blank(n), *band = a.blank(2 * n), *s = a.scalars(28);
            int* counts = a.blankInts(m, 2);
            return [=] {
              VB_DemingRegression(first, n, second, id, kYes, m, counts, 1, weighted, kAlpha, 1.0,
                                  1e-9, 50, 300, 600, s, s + 1, s + 2, s + 3, s + 4, s + 5,
                                  difference, bias, residuals, fitted, band, s + 6, s + 7, s + 8,
                                  s + 9, s + 10, s + 11, s + 12, s + 13, s + 14, s + 15, s + 16,
                                  s + 17, s + 18, s + 19, s + 20, s + 21, s + 22, s + 23, s + 24,
                                  s + 25, s + 26, s + 27);
            };
          }};
}

Call validation(const std::string& name) {
  return {name, false, [](Arrays& a, unsigned) {
            const Csv& data = dataSet("veteran");
            const Vector times = data.numbers("time");
            const int n = sizeOf(times);
            double *time = a.reals(times), *status = a.reals(data.numbers("status")),
                   *x = a.reals(covariatesOf(data, {"karno", "age"}, 10)),
                   *beta = a.reals({-0.33, 0.02}), *h = a.blank(9, 0.5), *f = a.blank(12, 400),
                   *table = a.blank(15);
            f[2] = 1000;
            f[8] = 960;
            h[3] = 45;
            return [=] { Cpp_ComputeCVTable(n, 2, time, status, x, beta, h, f, 2, 3, table); };
          }};
}

}  // namespace

std::vector<Call> publicDataCalls() {
  std::vector<Call> all = {
      curves("veteran, Kaplan-Meier", kNo),
      curves("veteran, life table", kYes),
      gray("pbc, Gray", 0),
      gray("pbc, Gray with rho 0.5", 0.5),
      comparison("sah, areas compared"),
      passingBablok("pefr, Passing-Bablok"),
      deming("pefr, Deming", kNo),
      deming("pefr, weighted Deming", kYes),
      validation("veteran, validation"),
  };
  for (int code = 0; code < 3; ++code) {
    const std::string number = std::to_string(code);
    all.push_back(parametric("veteran, parametric law " + number, code + 1, -1));
    all.push_back(parametric("veteran, Weibull selection " + number, 2, code));
    all.push_back(regression("veteran, Cox method " + number, false, 0, code - 1));
    all.push_back(regression("veteran, Cox by cell type, ties " + number, true, code, -1));
    all.push_back(agreement("pefr, Bland-Altman type " + number, code));
    all.push_back(curve("sah, ROC, area by method " + number, code, code));
  }
  for (const int type : {1, 2}) {
    all.push_back(competing("pbc, competing risks type " + std::to_string(type), type));
  }
  return all;
}

}  // namespace survmeth::test
