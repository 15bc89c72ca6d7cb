// The ROC curve of one test and the area under it.
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "Dist/Dist"
#include "survival/roc/components.h"
#include "survival/roc/intervals.h"
#include "survival/roc/roc.h"

namespace {

using survival::roc::Bounds;
using survival::roc::ClassView;
using survival::roc::IntervalOptions;

// Standard errors, denominators and counts at or below this are taken as zero.
constexpr double kTiny = 1e-12;

// Values and weights of one class, in the order of the rows sorted by status. A missing value
// keeps its place as value 0 with weight 0.
struct Group {
  // Rows first..last (0-based, half-open) as far as they exist.
  Group(const matrix& values, const matrix& weights, long long first, long long last, int n)
      : begin(static_cast<int>(std::clamp<long long>(first, 0, n))) {
    for (long long i = begin; i < std::min<long long>(last, n); ++i) {
      const double v = values.data()[i];
      anyMissing = anyMissing || isMissing(v);
      value.push_back(isMissing(v) ? 0.0 : v);
      weight.push_back(isMissing(v) ? 0.0 : weights.data()[i]);
    }
  }

  // Orders the class by value, given the rows of both classes in that order, if that is known.
  // Zeros in the place of missing values stand elsewhere there, so that the class is sorted by
  // itself then.
  void orderBy(const double* sortedRows, int n) {
    if (anyMissing || sortedRows == nullptr) {
      order = survival::roc::ascendingRows(value.data(), value.size());
      return;
    }
    order.reserve(value.size());
    for (int i = 0; i < n; ++i) {
      const double row = sortedRows[i] - begin;
      if (!(row >= 0.0 && row < static_cast<double>(value.size()))) continue;
      const auto at = static_cast<std::uint32_t>(row);
      if (!std::isnan(value[at])) order.push_back(at);
    }
  }

  ClassView view() const { return {value.data(), weight.data(), value.size(), &order}; }

  int begin;
  bool anyMissing = false;
  std::vector<double> value;
  std::vector<double> weight;
  std::vector<std::uint32_t> order;
};

// Sums of the terms of a column over its rows 1..r, for r that grows, and over those after r. Both
// are exact for integers, and the sum after rows that hold nothing is the total to the bit: a
// sensitivity of 1 must not come out an ulp above it.
template <typename TermOf>
class SplitSums {
 public:
  SplitSums(int n, TermOf termOf) : termOf_(termOf), after_(static_cast<std::size_t>(n) + 1, 0.0) {
    for (int i = 0; i < n; ++i) total_ += termOf_(i);
    for (int i = n; i-- > 0;) after_[i] = after_[i + 1] + termOf_(i);
  }

  double total() const { return total_; }
  // Moves on to run before + 1..through, where the last one ended at `before`.
  void moveTo(int before, int through) {
    before_ = through_;
    for (int i = before; i < through; ++i) through_ += termOf_(i);
  }
  double upToBefore() const { return before_; }
  double upToThrough() const { return through_; }
  double afterBefore(int before) const { return after(before, before_); }
  double afterThrough(int through) const { return after(through, through_); }

 private:
  double after(int r, double upTo) const {
    // The larger part comes from the difference, the smaller, and what stands after an infinite
    // weight, from its own sum.
    return 2.0 * std::fabs(upTo) < std::fabs(total_) ? total_ - upTo : after_[r];
  }

  TermOf termOf_;
  double total_ = 0.0;
  double before_ = 0.0;
  double through_ = 0.0;
  std::vector<double> after_;
};

struct Counts {
  double tp;
  double tn;
  double fp;
  double fn;
};

// Counts at the k-th threshold, whose run of equal values is rows before + 1 .. through.
template <typename Sums, typename OtherSums>
Counts countsAt(int positiveRule, int k, int before, int through, const Sums& positives,
                const OtherSums& negatives) {
  const auto upToBefore = [k](const auto& sums) { return k == 1 ? 0.0 : sums.upToBefore(); };
  switch (positiveRule) {
    case 2:  // value >= threshold
      return {positives.afterBefore(before), upToBefore(negatives), negatives.afterBefore(before),
              upToBefore(positives)};
    case 1:  // value <= threshold
      return {positives.upToThrough(), negatives.afterThrough(through), negatives.upToThrough(),
              positives.afterThrough(through)};
    case 0:  // value < threshold
      return {upToBefore(positives), negatives.afterBefore(before), upToBefore(negatives),
              positives.afterBefore(before)};
    default:  // value > threshold
      return {positives.afterThrough(through), negatives.upToThrough(),
              negatives.afterThrough(through), positives.upToThrough()};
  }
}

double ratioOrMissing(double numerator, double denominator) {
  return denominator > kTiny ? numerator / denominator : kMissing;
}

// Likelihood ratio of a result that `ofPositives` of the positives and `ofNegatives` of the
// negatives show. Without negatives it falls back to the bare proportion of the positives, which
// callers show in that case.
double likelihoodRatio(double ofPositives, double positives, double ofNegatives, double negatives) {
  if (positives * ofNegatives * negatives > kTiny) {
    return (ofPositives / positives) / (ofNegatives / negatives);
  }
  if (negatives < kTiny) return ofPositives / positives;
  return ofPositives >= kTiny || ofNegatives >= kTiny ? kInfinite : kMissing;
}

void setRate(matrix* rates, int k, const IntervalOptions& options, double rate, double cases) {
  const Bounds bounds = survival::roc::rateInterval(options, rate, cases);
  rates->vbset(k, 1, rate);
  rates->vbset(k, 2, bounds.lower);
  rates->vbset(k, 3, bounds.upper);
}

// Trapezoidal area under the first `points` + 1 rows. Beyond the end every coordinate reads as
// -1 and adds nothing, so the loop may stop there.
double trapezoidalArea(const matrix* rocPoints, int points) {
  double area = 0.0;
  for (int i = 1; i <= std::min(points, rocPoints->count()); ++i) {
    area += (rocPoints->vbget(i + 1, 1) - rocPoints->vbget(i, 1)) *
            (rocPoints->vbget(i, 2) + rocPoints->vbget(i + 1, 2)) / 2.0;
  }
  return area;
}

double hanleyMcNeilError(double A, double N, double P) {
  const double square = A * A;
  const double Q1 = A / (2.0 - A);
  const double Q2 = 2.0 * square / (1.0 + A);
  return sqr((A * (1.0 - A) + (P - 1.0) * (Q1 - square) + (N - 1.0) * (Q2 - square)) / (N * P));
}

// DeLong's error; `area` becomes the Mann-Whitney estimate, which is the one that is tested.
double delongError(const Group& negatives, const Group& positives, double N, double P,
                   double& area) {
  const survival::roc::Components components = survival::roc::componentsOf(
      negatives.view(), positives.view(), N, P, survival::roc::Pairs::all);
  area = components.area;
  const auto spread = [area](const std::vector<double>& weight,
                             const std::vector<double>& component) {
    double sum = 0.0;
    for (std::size_t i = 0; i < weight.size(); ++i) {
      const double deviation = component[i] - area;
      sum += weight[i] * (deviation * deviation);
    }
    return sum;
  };
  const double S10 = spread(negatives.weight, components.negative);
  const double S01 = spread(positives.weight, components.positive);
  return sqr(S01 / ((P - 1.0) * P) + S10 / ((N - 1.0) * N));
}

// Rows 5..9 of the summary: the test of an area of 0.5 against A.
void setAreaTest(matrix* aucSummary, double A, double error, int alternative, double z,
                 double alpha) {
  if (!(error > kTiny)) {
    for (int row = 5; row <= 9; ++row) aucSummary->vbset(row, 1, kMissing);
    return;
  }
  const double excess = A - 0.5;
  const double statistic = excess / error;
  const double lowerTail = CDFNormalStd(statistic);
  double lower = kMissing;
  double upper = kInfinite;
  double p = 0.0;
  double critical = 0.0;
  switch (alternative) {
    case 0:
      p = 2.0 * Min(lowerTail, 1.0 - lowerTail);
      critical = z;
      lower = excess - z * error;
      upper = excess + z * error;
      break;
    case -1:
      p = lowerTail;
      critical = InvCDFNormalStd(alpha);
      upper = excess + std::fabs(critical) * error;
      break;
    default:
      p = 1.0 - lowerTail;
      // One minus the quantile, not its negation: the bound that callers have always been given.
      critical = 1.0 - InvCDFNormalStd(alpha);
      lower = excess - std::fabs(critical) * error;
  }
  aucSummary->vbset(5, 1, statistic);
  aucSummary->vbset(6, 1, lower);
  aucSummary->vbset(7, 1, upper);
  aucSummary->vbset(8, 1, p);
  aucSummary->vbset(9, 1, critical);
}

}  // namespace

int ComputeROC(matrix* status, int n, int nThresholds, matrix* values, matrix* weights,
               int positiveRule, double alpha, int alternative, int ciMethod,
               short continuityCorrection, int aucSeMethod, double prevalence, double costTP,
               double costFP, double costFN, double costTN, matrix* thresholds, matrix* rocPoints,
               matrix* sensitivity, matrix* specificity, matrix* tp, matrix* tn, matrix* fp,
               matrix* fn, matrix* likelihoodRatios, matrix* predictiveValues, matrix* aucSummary,
               matrix* cost) {
  n = std::min({n, status->count(), values->count(), weights->count()});
  // The classes are counted before missing values are dropped, and in 64 bits: statuses other
  // than 0 and 1 can sum to anything.
  const long long nPos = truncated(V_Sum2(status, n));
  const long long nNeg = n - nPos;
  if (nPos == 0 || nNeg == 0) return -2;

  SortQ(values, n, 1, 1, n, status, weights, 1, 0, kTrue);
  Group negativeGroup(*values, *weights, 0, nNeg, n);
  Group positiveGroup(*values, *weights, nNeg, n, n);

  // Weights, and the rows that they belong to.
  matrix working(n, 2, 0);
  for (int i = 1; i <= n; ++i) {
    working.vbset(i, 1, isMissing(values->vbget(i, 1)) ? 0.0 : weights->vbget(i, 1));
    working.vbset(i, 2, i - 1);
  }
  SortQ(status, n, 1, 1, n, values, &working, 2, 0, kTrue);
  const double* rows = values->rows() < n ? nullptr : working.data() + n;
  negativeGroup.orderBy(rows, n);
  positiveGroup.orderBy(rows, n);

  const double* w = working.data();
  const double* positive = status->data();
  SplitSums positives(n, [w, positive](int i) { return w[i] * positive[i]; });
  SplitSums negatives(n, [w, positive](int i) { return w[i] * (1.0 - positive[i]); });
  const double P = positives.total();
  const double N = negatives.total();

  const IntervalOptions options(alpha, ciMethod, continuityCorrection);
  const double pi = prevalence <= 0.0 ? P / (P + N) : prevalence;
  const double* sorted = values->data();
  int k = 0;
  for (int before = 0, through = 0; before < n; before = through) {
    const double threshold = sorted[before];
    through = before + 1;
    while (through < n && !(sorted[through] > sorted[through - 1])) ++through;
    positives.moveTo(before, through);
    negatives.moveTo(before, through);
    if (isMissing(threshold)) continue;

    ++k;
    const Counts at = countsAt(positiveRule, k, before, through, positives, negatives);
    thresholds->vbset(k, 1, threshold);
    tp->vbset(k, 1, at.tp);
    tn->vbset(k, 1, at.tn);
    fp->vbset(k, 1, at.fp);
    fn->vbset(k, 1, at.fn);

    const double Se = at.tp / P;
    const double Sp = at.tn / N;
    setRate(sensitivity, k, options, Se, P);
    setRate(specificity, k, options, Sp, N);
    predictiveValues->vbset(k, 1, ratioOrMissing(pi * Se, (1.0 - Sp) * (1.0 - pi) + pi * Se));
    predictiveValues->vbset(k, 2,
                            ratioOrMissing((1.0 - pi) * Sp, pi * (1.0 - Se) + (1.0 - pi) * Sp));
    const double positivesHere = at.tp + at.fn;
    const double negativesHere = at.fp + at.tn;
    likelihoodRatios->vbset(k, 1, likelihoodRatio(at.tp, positivesHere, at.fp, negativesHere));
    likelihoodRatios->vbset(k, 2, likelihoodRatio(at.fn, positivesHere, at.tn, negativesHere));
    cost->vbset(k, 1, at.tp * costTP + at.fp * costFP + at.fn * costFN + at.tn * costTN);
    rocPoints->vbset(k, 1, 1.0 - Sp);
    rocPoints->vbset(k, 2, Se);
  }

  // The corner that no threshold reaches.
  const int points = nThresholds < INT_MAX ? nThresholds + 1 : INT_MAX;
  const double corner = positiveRule == 1 || positiveRule == 2 ? 0.0 : 1.0;
  rocPoints->vbset(points, 1, corner);
  rocPoints->vbset(points, 2, corner);
  SortQMatrixCol(rocPoints, points, 2, 2, 1, points, 0);
  SortQMatrixCol(rocPoints, points, 2, 1, 1, points, 0);

  const double area = trapezoidalArea(rocPoints, nThresholds);
  double tested = area;
  double error = 0.0;
  switch (aucSeMethod) {
    case 0:
      error = hanleyMcNeilError(area, N, P);
      break;
    case 1:
      error =
          survival::roc::mannWhitneyError(negativeGroup.view(), positiveGroup.view(), N, P, area);
      break;
    default:
      error = delongError(negativeGroup, positiveGroup, N, P, tested);
  }
  aucSummary->vbset(1, 1, area);
  aucSummary->vbset(2, 1, error);
  aucSummary->vbset(3, 1, std::max(0.0, area - options.z * error));
  aucSummary->vbset(4, 1, std::min(1.0, area + options.z * error));
  setAreaTest(aucSummary, tested, error, alternative, options.z, alpha);
  return 0;
}
