// Calls of the other families: competing risks, validation, ROC curves, methods, judges.
#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "survival/survival.h"
#include "tests/boundary/call_families.h"

namespace survmeth::test {
namespace {

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

}  // namespace

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

}  // namespace survmeth::test
