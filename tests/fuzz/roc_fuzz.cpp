// Fuzz target of the ROC family.
#include <algorithm>

#include "survival/calls/roc.h"
#include "tests/fuzz/fuzz.h"

namespace survmeth::fuzz {
namespace {

Call curve(Input& in, Arrays& a) {
  const int n = in.count(40);
  const std::vector<double> tested = in.column(n, Likely::kTimes);
  int t = in.count(40);
  if (in.byte() < 200) {
    std::vector<double> sorted(tested);
    std::erase_if(sorted, [](double x) { return !(x > -1.79769313486231e308); });
    std::sort(sorted.begin(), sorted.end());
    t = static_cast<int>(std::unique(sorted.begin(), sorted.end()) - sorted.begin());
  }
  const int rows = std::max(t, 1);
  const int rule = in.integer(0, 3), alternative = in.integer(-1, 1), ciMethod = in.integer(0, 3),
            aucMethod = in.integer(0, 2);
  const short correction = in.flag();
  const double alpha = in.alpha(), prevalence = in.alpha();
  const double costTP = in.number(), costFP = in.number(), costFN = in.number(),
               costTN = in.number();
  double *status = a.in(in.column(n, Likely::kStatus)), *values = a.inOut(tested),
         *weights = a.in(in.column(n, Likely::kOnes)), *thresholds = a.out(rows),
         *points = a.out(2LL * std::max(t + 1, 1)), *sensitivity = a.out(3LL * rows),
         *specificity = a.out(3LL * rows), *tp = a.out(rows), *tn = a.out(rows), *fp = a.out(rows),
         *fn = a.out(rows), *ratios = a.out(2LL * rows), *predictive = a.out(2LL * rows),
         *summary = a.out(9), *cost = a.out(rows);
  return [=] {
    return coded(Cpp_ComputeROC(status, n, t, values, weights, rule, alpha, alternative, ciMethod,
                                correction, aucMethod, prevalence, costTP, costFP, costFN, costTN,
                                thresholds, points, sensitivity, specificity, tp, tn, fp, fn,
                                ratios, predictive, summary, cost),
                 {0}, {-2});
  };
}

Call statistics(Input& in, Arrays& a) {
  const int ciMethod = in.integer(0, 3);
  const short correction = in.flag();
  const double alpha = in.alpha(), prevalence = in.alpha();
  double *table = a.in(in.column(4, Likely::kTimes)), *stats = a.out(39), *proportions = a.out(9);
  return [=] {
    return coded(
        Cpp_GetROCStats(table, alpha, ciMethod, correction, prevalence, stats, proportions), {0});
  };
}

Call contingency(Input& in, Arrays& a) {
  const int n = in.count(40), rule = in.integer(1, 4);
  const short exact = in.flag();
  const double threshold = in.number();
  const std::wstring names[] = {L"ill", L"well", L"", L"illness",
                                std::wstring(300, static_cast<wchar_t>(in.byte() + 1))};
  std::vector<std::wstring> given(static_cast<std::size_t>(std::max(n, 0)));
  for (std::wstring& label : given) label = names[in.byte() % 5];
  wchar_t **labels = a.strings(given), *positive = a.text(names[in.byte() % 5]);
  double *values = a.in(in.column(n, Likely::kTimes)), *weights = a.in(in.column(n, Likely::kOnes)),
         *table = a.out(4);
  return [=] {
    Cpp_CreateROCContingencyTable(labels, n, positive, values, exact, threshold, rule, weights,
                                  table);
    return Outcome{};
  };
}

Call comparison(Input& in, Arrays& a) {
  const int n = in.count(40), k = in.count(6);
  const short paired = in.flag();
  const double alpha = in.alpha();
  const int tests = std::max(k, 1);
  const long long cells = 1LL * tests * tests;
  double *status = a.in(in.column(n, Likely::kStatus)),
         *values = a.in(in.column(std::max(n, 0) * tests, Likely::kTimes)),
         *weights = a.in(in.column(n, Likely::kOnes)),
         *sizes = a.in(in.column(tests, Likely::kTimes)),
         *aucs = a.in(in.column(tests, Likely::kProbabilities)),
         *variances = a.inOut(in.column(tests, Likely::kProbabilities)), *difference = a.out(cells),
         *z = a.out(cells), *half = a.out(cells), *covariance = a.out(cells), *p = a.out(cells);
  int *selected = a.in(in.integers(tests, 0, 1)), *significant = a.outInts(cells);
  return [=] {
    Cpp_ComputeROCComparisonsDep2(status, n, values, weights, sizes, k, alpha, paired, aucs,
                                  variances, selected, difference, z, half, covariance, p,
                                  significant);
    return Outcome{};
  };
}

}  // namespace

const std::vector<Prepare> kEntries = {curve, statistics, contingency, comparison};

}  // namespace survmeth::fuzz
