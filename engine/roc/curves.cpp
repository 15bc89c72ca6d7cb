// The checks of a request, its curves and their comparisons.
#include "engine/roc/curves.h"

#include <algorithm>
#include <cmath>

#include "Dist/Dist"
#include "engine/roc/delong.h"
#include "engine/roc/rates.h"
#include "engine/roc/sample.h"

namespace survmeth::engine::roc {
namespace {

// Rows that whole weights may stand for.
constexpr double kMostCopies = 1e7;
// A variance of a difference below this part of what it is the difference of is rounding.
constexpr double kRounding = 1e-10;
// An index of weighted rates below this is rounding.
constexpr double kIndexRounding = 1e-12;

constexpr const char* kNoCounts = "the weights are not counts of subjects";
constexpr const char* kOneRow = "a class of one row has no standard error";
constexpr const char* kNoError = "the standard error is 0";

void require(bool holds, Role role, const char* what, std::size_t row = Refusal::kNone,
             std::size_t column = Refusal::kNone) {
  if (!holds) throw Refusal(role, row, what, column);
}

void check(const Request& request) {
  const std::size_t n = request.positive.size();
  require(n > 0, Role::kClass, "there are no rows");
  require(n < 0xffffffffU, Role::kClass, "there are too many rows");
  require(!request.markers.empty(), Role::kMarker, "there is no marker");
  require(request.weight.empty() || request.weight.size() == n, Role::kWeight,
          "as many weights as rows are needed");
  require(request.alpha > 0 && request.alpha < 1, Role::kAlpha,
          "the significance level is not between 0 and 1");
  double rows = request.weight.empty() ? static_cast<double>(n) : 0;
  for (std::size_t i = 0; i < request.weight.size(); ++i) {
    require(request.weight[i] >= 0 && std::isfinite(request.weight[i]), Role::kWeight,
            "a weight is negative or not finite", i);
    rows += request.weight[i];
  }
  require(std::isfinite(rows), Role::kWeight, "the weights' sum is not finite");
  require(!request.prevalence || (*request.prevalence > 0 && *request.prevalence < 1),
          Role::kPrevalence, "the prevalence is not between 0 and 1");
  const Costs& costs = request.costs;
  for (const double cost : {costs.tp, costs.fp, costs.fn, costs.tn}) {
    require(std::isfinite(cost), Role::kCost, "a cost is not finite");
    require(std::isfinite(4 * rows * cost), Role::kCost,
            "the cost of all rows is beyond the largest number");
  }
  for (std::size_t m = 0; m < request.markers.size(); ++m) {
    const std::span<const double> values = request.markers[m].values;
    require(values.size() == n, Role::kClass, "the columns differ in length");
    for (const double value : values) {
      require(!std::isinf(value), Role::kMarker, "a value is infinite", Refusal::kNone, m);
    }
  }
}

// What the weights are, in the result.
void judgeWeights(const Request& request, Result& result) {
  result.rows = request.positive.size();
  double total = 0;
  bool whole = true;
  for (const double weight : request.weight) {
    total += weight;
    whole = whole && weight == std::trunc(weight);
    result.rows -= weight == 0 ? 1 : 0;
  }
  if (!whole) {
    result.reason = "the weights are not whole numbers";
  } else if (total > std::max(kMostCopies, static_cast<double>(request.positive.size()))) {
    result.reason = "the weights add up to more than 10,000,000";
  }
  result.weightsAreCounts = result.reason.empty();
}

// The class without a row in the sample, or nullptr.
const char* missingClass(const Sample& sample) {
  if (sample.positives == 0) return "positive";
  return sample.negatives == 0 ? "negative" : nullptr;
}

// Why there is no error of an area, or nothing.
const char* noError(const Sample& sample, bool counts) {
  if (!counts) return kNoCounts;
  return sample.positives == 1 || sample.negatives == 1 ? kOneRow : "";
}

// Limits within [least, 1] and the test of equality to `null`.
template <class Tested>
void test(Estimate& estimate, double least, double null, double alpha, Tested& result) {
  const double half = InvCDFNormalStd(1 - alpha / 2) * result.standardError;
  estimate.lower = std::max(least, estimate.value - half);
  estimate.upper = std::min(1.0, estimate.value + half);
  result.z = (estimate.value - null) / result.standardError;
  // With every digit of the tail.
  result.pValue = 2 * CDFNormalStd(-std::fabs(result.z));
}

void choose(const Rates& rates, bool counts, Curve& curve) {
  double most = counts ? 0 : kIndexRounding;
  Threshold nobody;
  nobody.fn = curve.positives;
  nobody.tn = curve.negatives;
  Rates::Cost least = rates.costOf(nobody);
  for (const Threshold& row : curve.thresholds) {
    most = std::max(most, row.youden);
    if (row.cost < least.value) least = rates.costOf(row);
  }
  curve.leastCost = least.value;
  for (std::size_t k = 0; k < curve.thresholds.size(); ++k) {
    const Threshold& row = curve.thresholds[k];
    if (row.youden == most && most > 0) curve.best.push_back(k);
    const Rates::Cost cost = rates.costOf(row);
    if (cost.value - least.value <= cost.rounding + least.rounding) curve.cheapest.push_back(k);
  }
}

Curve curveOf(const Request& request, std::size_t m, bool counts) {
  const Sample sample(request, {m});
  if (const char* missing = missingClass(sample)) {
    throw Refusal(Role::kMarker, Refusal::kNone,
                  std::string("no ") + missing + " row has the marker", m,
                  "positive and negative rows with a weight above 0");
  }
  const Ranks ranks(request.markers[m], sample);
  const double P = sample.positives, N = sample.negatives;
  Curve curve;
  curve.rows = sample.rows();
  curve.positives = P;
  curve.negatives = N;
  curve.lowerIsPositive = request.markers[m].lowerIsPositive;
  curve.area.value = areaOf(sample, ranks, counts);
  curve.reason = noError(sample, counts);
  if (curve.reason.empty()) {
    const std::vector<double> components = componentsOf(sample, ranks);
    const Products squares = productsOf(sample, components, components);
    curve.standardError =
        std::sqrt(squares.ofPositives / ((P - 1.0) * P) + squares.ofNegatives / ((N - 1.0) * N));
    if (!(curve.standardError > 0)) curve.reason = kNoError;
  }
  if (curve.reason.empty()) test(curve.area, 0, 0.5, request.alpha, curve);
  const Rates rates(request, P, N, counts);
  curve.thresholds.resize(ranks.size());
  for (std::size_t k = 0; k < ranks.size(); ++k) {
    Threshold& row = curve.thresholds[curve.lowerIsPositive ? ranks.size() - 1 - k : k];
    row.threshold = ranks.value[k];
    row.tp = ranks.positives.atOrAbove[k];
    row.fp = ranks.negatives.atOrAbove[k];
    row.fn = ranks.positives.below[k];
    row.tn = ranks.negatives.below[k];
    rates.complete(row);
  }
  choose(rates, counts, curve);
  return curve;
}

Comparison compare(const Request& request, std::size_t i, std::size_t j, bool counts) {
  const Sample sample(request, {i, j});
  Comparison pair;
  pair.first = i;
  pair.second = j;
  pair.rows = sample.rows();
  pair.positives = sample.positives;
  pair.negatives = sample.negatives;
  if (const char* missing = missingClass(sample)) {
    pair.reason = std::string("no ") + missing + " row has both markers";
    return pair;
  }
  const Ranks first(request.markers[i], sample), second(request.markers[j], sample);
  pair.firstArea = areaOf(sample, first, counts);
  pair.secondArea = areaOf(sample, second, counts);
  pair.difference.value = pair.firstArea - pair.secondArea;
  pair.reason = noError(sample, counts);
  if (!pair.reason.empty()) return pair;
  const std::vector<double> a = componentsOf(sample, first), b = componentsOf(sample, second);
  const double sum = covarianceOf(sample, a, a) + covarianceOf(sample, b, b);
  const double variance = sum - 2 * covarianceOf(sample, a, b);
  if (variance > kRounding * sum) {
    pair.standardError = std::sqrt(variance);
    test(pair.difference, -1, 0, request.alpha, pair);
  } else {
    pair.standardError = 0;
    pair.reason = kNoError;
  }
  return pair;
}

}  // namespace

Result curves(const Request& request) {
  check(request);
  Result result;
  judgeWeights(request, result);
  const bool counts = result.weightsAreCounts;
  for (std::size_t m = 0; m < request.markers.size(); ++m) {
    result.curves.push_back(curveOf(request, m, counts));
  }
  for (std::size_t i = 0; i < request.markers.size(); ++i) {
    for (std::size_t j = i + 1; j < request.markers.size(); ++j) {
      result.comparisons.push_back(compare(request, i, j, counts));
    }
  }
  return result;
}

}  // namespace survmeth::engine::roc
