// The entry points get the ranks of a marker's values, turned round where lower is positive: they
// take values within 1e-12 for tied, in whatever unit, and of their rules only "at or above" goes
// with DeLong's error. The area under the curve and its error are theirs, as are the counts and
// limits at each threshold; what they compute by guarded proportions (likelihood ratios,
// predictive values), at the rows' own prevalence only (costs) or with the upper tail as 1 less the
// lower one (p-values) is formed here from those counts and errors.
#include "analysis/rocCurve.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>

#include "Dist/Dist"
#include "analysis/checks.h"
#include "survival/survival.h"

namespace survmeth {

using engine::Refusal;
using engine::Role;
namespace {

constexpr int kAtOrAbove = 2, kTwoSided = 0, kHanleyMcNeil = 0, kDeLong = 2;
constexpr short kTrue = -1, kFalse = 0;
// Rows that whole weights may stand for.
constexpr double kMostCopies = 1e7;
// A variance of a difference below this part of what it is the difference of is rounding.
constexpr double kRounding = 1e-10;

// A cost is the sum of four products of factors that are rounded themselves: a decimal cost, a
// share of the rows formed by four operations. Costs closer than that are the same.
constexpr double kCostRounding = 8 * std::numeric_limits<double>::epsilon();

constexpr const char* kNoCounts = "the weights are not counts of subjects";
constexpr const char* kOneRow = "a class of one row has no standard error";
constexpr const char* kNoError = "the standard error is 0";

void check(const RocRequest& request) {
  const std::size_t n = request.positive.size();
  requireRows(n, 1, Role::kClass, "there are no rows");
  require(!request.markers.empty(), Role::kMarker, "there is no marker");
  require(request.weight.empty() || request.weight.size() == n, Role::kWeight,
          "as many weights as rows are needed");
  requireAlpha(request.alpha);
  requireWeights(request.weight);
  if (request.prevalence) {
    require(*request.prevalence > 0 && *request.prevalence < 1, Role::kPrevalence,
            "the prevalence is not between 0 and 1");
  }
  const RocCosts& costs = request.costs;
  double rows = request.weight.empty() ? static_cast<double>(n) : 0;
  for (const double weight : request.weight) rows += weight;
  for (const double cost : {costs.tp, costs.fp, costs.fn, costs.tn}) {
    require(std::isfinite(cost), Role::kCost, "a cost is not finite");
    require(std::isfinite(4 * rows * cost), Role::kCost,
            "the cost of all rows is beyond the largest number");
  }
  for (std::size_t m = 0; m < request.markers.size(); ++m) {
    const std::span<const double> values = request.markers[m].values;
    require(values.size() == n, Role::kClass, "the columns differ in length");
    if (std::any_of(values.begin(), values.end(), [](double v) { return std::isinf(v); })) {
      throw Refusal(Role::kMarker, Refusal::kNone, "a value is infinite", m);
    }
  }
}

// The rows that take part in one analysis; whole weights as so many copies.
struct Sample {
  std::vector<std::uint32_t> row;
  std::vector<double> status, weight;
  std::size_t rows = 0;  // of the data
  double positives = 0, negatives = 0;

  int size() const { return static_cast<int>(row.size()); }
};

// The values of a marker in a sample by their order, from 0 for what speaks most against positive.
struct Ranks {
  std::vector<double> distinct;  // in that order
  std::vector<double> rank;      // of each element of the sample

  Ranks(const RocMarker& marker, const Sample& sample) {
    rank.reserve(sample.row.size());
    for (const std::uint32_t row : sample.row) distinct.push_back(marker.values[row] + 0.0);
    std::sort(distinct.begin(), distinct.end());
    distinct.erase(std::unique(distinct.begin(), distinct.end()), distinct.end());
    const double last = static_cast<double>(distinct.size()) - 1;
    for (const std::uint32_t row : sample.row) {
      const auto at = std::lower_bound(distinct.begin(), distinct.end(), marker.values[row]);
      const double place = static_cast<double>(at - distinct.begin());
      rank.push_back(marker.lowerIsPositive ? last - place : place);
    }
    if (marker.lowerIsPositive) std::reverse(distinct.begin(), distinct.end());
  }
};

// What Cpp_ComputeROC makes of a sample; row k of T belongs to the k-th rank.
struct Curve {
  int T;
  std::vector<double> thresholds, points, sensitivity, specificity, tp, tn, fp, fn, ratios,
      predictive, area, cost;

  Curve(const Sample& sample, const Ranks& ranks, const RocRequest& request, int interval,
        int errorMethod)
      : T(static_cast<int>(ranks.distinct.size())) {
    const std::size_t t = ranks.distinct.size();
    for (auto* column : {&thresholds, &tp, &tn, &fp, &fn, &cost}) column->assign(t, 0);
    for (auto* columns : {&ratios, &predictive}) columns->assign(2 * t, 0);
    for (auto* columns : {&sensitivity, &specificity}) columns->assign(3 * t, 0);
    points.assign(2 * (t + 1), 0);
    area.assign(9, 0);
    std::vector<double> status = sample.status, values = ranks.rank, weight = sample.weight;
    Cpp_ComputeROC(status.data(), sample.size(), T, values.data(), weight.data(), kAtOrAbove,
                   request.alpha, kTwoSided, interval, kFalse, errorMethod, 0, 0, 0, 0, 0,
                   thresholds.data(), points.data(), sensitivity.data(), specificity.data(),
                   tp.data(), tn.data(), fp.data(), fn.data(), ratios.data(), predictive.data(),
                   area.data(), cost.data());
  }
};

double ratio(double numerator, double denominator) {
  if (denominator == 0) return numerator > 0 ? INFINITY : kNone;
  return numerator / denominator;
}

// The area as the number of half pairs that it is, free of the rounding of the sum.
double wholeArea(double area, double positives, double negatives) {
  const double halves = 2 * positives * negatives;
  constexpr double kWhole = 4503599627370496.0;  // 2^52
  return halves < kWhole ? std::nearbyint(area * halves) / halves : area;
}

// Two-sided p-value, with every digit of the tail.
double twoSided(double z) { return 2 * CDFNormalStd(-std::fabs(z)); }

class Analysis {
 public:
  explicit Analysis(const RocRequest& request)
      : request_(request), z_(InvCDFNormalStd(1 - request.alpha / 2)) {
    check(request);
    const double rows = static_cast<double>(request.positive.size());
    double total = request.weight.empty() ? rows : 0;
    bool whole = true;
    for (const double weight : request.weight) {
      total += weight;
      whole = whole && weight == std::trunc(weight);
    }
    counts_ = whole && total <= std::max(kMostCopies, rows);
  }

  RocResult run() {
    RocResult result;
    result.weightsAreCounts = counts_;
    for (std::size_t m = 0; m < request_.markers.size(); ++m) result.curves.push_back(curve(m));
    for (std::size_t i = 0; i < request_.markers.size(); ++i) {
      for (std::size_t j = i + 1; j < request_.markers.size(); ++j) {
        result.comparisons.push_back(comparison(i, j));
      }
    }
    return result;
  }

 private:
  // The rows that have all of these markers.
  Sample sampleOf(std::initializer_list<std::size_t> markers) const {
    Sample sample;
    for (std::size_t i = 0; i < request_.positive.size(); ++i) {
      const double weight = request_.weight.empty() ? 1 : request_.weight[i];
      if (weight == 0 || std::any_of(markers.begin(), markers.end(), [&](std::size_t m) {
            return std::isnan(request_.markers[m].values[i]);
          })) {
        continue;
      }
      ++sample.rows;
      const bool positive = request_.positive[i] != 0;
      (positive ? sample.positives : sample.negatives) += weight;
      const auto copies = counts_ ? static_cast<std::size_t>(weight) : 1;
      sample.row.insert(sample.row.end(), copies, static_cast<std::uint32_t>(i));
      sample.status.insert(sample.status.end(), copies, positive ? 1 : 0);
      sample.weight.insert(sample.weight.end(), copies, counts_ ? 1 : weight);
    }
    return sample;
  }

  int intervalCode() const {
    switch (request_.interval) {
      case RateInterval::kWilson:
        return 2;
      case RateInterval::kClopperPearson:
        return 3;
      case RateInterval::kWald:
      case RateInterval::kAgresti:
        break;
    }
    return 0;
  }

  // Row k of the entry point's rates, of x in m cases.
  Estimate rate(const std::vector<double>& rates, int T, int k, double x, double m) const {
    Estimate result{x / m, kNone, kNone};
    if (!counts_) return result;
    if (request_.interval == RateInterval::kAgresti) {
      // The entry point's adjusted Wald interval adds two cases to each side at every level.
      const double cases = m + z_ * z_;
      GetInfSupWald(z_, (x + z_ * z_ / 2) / cases, cases, &result.lower, &result.upper);
    } else {
      result.lower = rates[static_cast<std::size_t>(T) + static_cast<std::size_t>(k)];
      result.upper = rates[2 * static_cast<std::size_t>(T) + static_cast<std::size_t>(k)];
    }
    result.lower = std::clamp(result.lower, 0.0, 1.0);
    result.upper = std::clamp(result.upper, 0.0, 1.0);
    return result;
  }

  RocThreshold threshold(const Curve& made, const Ranks& ranks, int k, double P, double N) const {
    RocThreshold row;
    row.threshold = ranks.distinct[static_cast<std::size_t>(k)];
    row.tp = made.tp[k];
    row.fp = made.fp[k];
    row.fn = made.fn[k];
    row.tn = made.tn[k];
    row.sensitivity = rate(made.sensitivity, made.T, k, row.tp, P);
    row.specificity = rate(made.specificity, made.T, k, row.tn, N);
    // Of whole counts the one over the common denominator: ties are then ties to the bit.
    row.youden = counts_ ? (row.tp * N - row.fp * P) / (P * N) : row.tp / P - row.fp / N;
    row.positiveRatio = ratio(row.tp / P, row.fp / N);
    row.negativeRatio = ratio(row.fn / P, row.tn / N);
    if (request_.prevalence) {
      const double ill = *request_.prevalence, well = 1 - ill;
      row.positiveValue = ill * row.tp / P / (ill * row.tp / P + well * row.fp / N);
      row.negativeValue = well * row.tn / N / (ill * row.fn / P + well * row.tn / N);
    } else {
      row.positiveValue = row.tp / (row.tp + row.fp);
      row.negativeValue = row.tn / (row.tn + row.fn);
    }
    row.cost = costOf(row, P, N).value;
    return row;
  }

  // A cost, and what rounding may have made of it.
  struct Cost {
    double value, rounding;
  };

  Cost costOf(const RocThreshold& row, double P, double N) const {
    // As many positives and negatives as the rows would hold at the prevalence, for each there is.
    double positives = 1, negatives = 1;
    if (request_.prevalence) {
      positives = (P + N) * *request_.prevalence / P;
      negatives = (P + N) * (1 - *request_.prevalence) / N;
    }
    const RocCosts& costs = request_.costs;
    const double parts[] = {positives * row.tp * costs.tp, negatives * row.fp * costs.fp,
                            positives * row.fn * costs.fn, negatives * row.tn * costs.tn};
    Cost cost{0, 0};
    for (const double part : parts) {
      cost.value += part;
      cost.rounding += kCostRounding * std::fabs(part);
    }
    return cost;
  }

  RocCurve curve(std::size_t m) const {
    const RocMarker& marker = request_.markers[m];
    const Sample sample = sampleOf({m});
    if (sample.positives == 0 || sample.negatives == 0) {
      throw Refusal(Role::kMarker, Refusal::kNone,
                    std::string("no ") + (sample.positives == 0 ? "positive" : "negative") +
                        " row has the marker",
                    m);
    }
    const Ranks ranks(marker, sample);
    // Weights far apart make DeLong's sums go pair by pair; only counts have his error.
    const Curve made(sample, ranks, request_, intervalCode(), counts_ ? kDeLong : kHanleyMcNeil);
    RocCurve result;
    result.rows = sample.rows;
    result.positives = sample.positives;
    result.negatives = sample.negatives;
    result.lowerIsPositive = marker.lowerIsPositive;
    result.area.value = areaOf(made, sample);
    setAreaTest(sample, made.area[1], result);
    for (int k = 0; k < made.T; ++k) {
      result.thresholds.push_back(threshold(made, ranks, k, sample.positives, sample.negatives));
    }
    if (marker.lowerIsPositive) std::reverse(result.thresholds.begin(), result.thresholds.end());
    choose(result);
    return result;
  }

  double areaOf(const Curve& made, const Sample& sample) const {
    return counts_ ? wholeArea(made.area[0], sample.positives, sample.negatives) : made.area[0];
  }

  void setAreaTest(const Sample& sample, double error, RocCurve& result) const {
    if (!counts_) {
      result.reason = kNoCounts;
    } else if (sample.positives == 1 || sample.negatives == 1) {
      result.reason = kOneRow;
    } else {
      result.standardError = error;
      if (!(error > 0)) result.reason = kNoError;
    }
    if (!result.reason.empty()) return;
    result.area.lower = std::max(0.0, result.area.value - z_ * error);
    result.area.upper = std::min(1.0, result.area.value + z_ * error);
    result.z = (result.area.value - 0.5) / error;
    result.pValue = twoSided(result.z);
  }

  void choose(RocCurve& result) const {
    double most = counts_ ? 0 : 1e-12;  // of weights an index below that is rounding
    RocThreshold nobody;
    nobody.fn = result.positives;
    nobody.tn = result.negatives;
    Cost least = costOf(nobody, result.positives, result.negatives);
    for (const RocThreshold& row : result.thresholds) {
      most = std::max(most, row.youden);
      if (row.cost < least.value) least = costOf(row, result.positives, result.negatives);
    }
    result.leastCost = least.value;
    for (std::size_t k = 0; k < result.thresholds.size(); ++k) {
      const RocThreshold& row = result.thresholds[k];
      if (row.youden == most && most > 0) result.best.push_back(k);
      const Cost cost = costOf(row, result.positives, result.negatives);
      if (cost.value - least.value <= cost.rounding + least.rounding) result.cheapest.push_back(k);
    }
  }

  RocComparison comparison(std::size_t i, std::size_t j) const {
    const Sample sample = sampleOf({i, j});
    RocComparison result;
    result.first = i;
    result.second = j;
    result.rows = sample.rows;
    result.positives = sample.positives;
    result.negatives = sample.negatives;
    if (sample.positives == 0 || sample.negatives == 0) {
      result.reason = std::string("no ") + (sample.positives == 0 ? "positive" : "negative") +
                      " row has both markers";
      return result;
    }
    std::vector<double> values, areas;
    for (const std::size_t m : {i, j}) {
      const Ranks ranks(request_.markers[m], sample);
      areas.push_back(areaOf(Curve(sample, ranks, request_, 0, kHanleyMcNeil), sample));
      values.insert(values.end(), ranks.rank.begin(), ranks.rank.end());
    }
    result.firstArea = areas[0];
    result.secondArea = areas[1];
    result.difference.value = areas[0] - areas[1];
    if (!counts_) {
      result.reason = kNoCounts;
    } else if (sample.positives == 1 || sample.negatives == 1) {
      result.reason = kOneRow;
    } else {
      setDifferenceTest(sample, values, areas, result);
    }
    return result;
  }

  void setDifferenceTest(const Sample& sample, std::vector<double>& values,
                         std::vector<double>& areas, RocComparison& result) const {
    std::vector<double> status = sample.status, weight = sample.weight;
    double sizes[2] = {}, errors[2] = {}, difference[4], z[4], halfWidth[4], covariance[4], p[4];
    int selected[2] = {1, 1}, significant[4];
    Cpp_ComputeROCComparisonsDep2(status.data(), sample.size(), values.data(), weight.data(), sizes,
                                  2, request_.alpha, kTrue, areas.data(), errors, selected,
                                  difference, z, halfWidth, covariance, p, significant);
    const double sum = covariance[0] + covariance[3];
    const double variance = sum - 2 * covariance[2];
    if (!(variance > kRounding * sum)) {
      result.standardError = 0;
      result.reason = kNoError;
      return;
    }
    result.standardError = std::sqrt(variance);
    const double half = z_ * result.standardError;
    result.difference.lower = std::max(-1.0, result.difference.value - half);
    result.difference.upper = std::min(1.0, result.difference.value + half);
    result.z = result.difference.value / result.standardError;
    result.pValue = twoSided(result.z);
  }

  const RocRequest& request_;
  double z_;
  bool counts_ = true;
};

}  // namespace

RocResult rocCurves(const RocRequest& request) { return Analysis(request).run(); }

}  // namespace survmeth
