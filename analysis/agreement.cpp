// Agreement and repeatability, computed here: the entry points take squares and denominators below
// fixed sizes for 0, whatever the unit, and form squares as differences of large sums.
#include "analysis/agreement.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "Dist/Dist"
#include "analysis/checks.h"
#include "analysis/estimate.h"
#include "analysis/spread.h"

namespace survmeth {

using engine::Refusal;
using engine::Role;
namespace {

// One pair's difference, NaN where the denominator is 0.
double differenceOf(DifferenceKind kind, double first, double second, double mean) {
  switch (kind) {
    case DifferenceKind::kRelative:
      return mean == 0 ? kNone : (second - first) / std::fabs(mean);
    case DifferenceKind::kRatio:
      return first == 0 ? kNone : second / first;
    case DifferenceKind::kAbsolute:
      break;
  }
  return second - first;
}

// Half of the sum, which itself may pass the largest double.
double meanOfTwo(double first, double second) {
  const double sum = first + second;
  return std::isfinite(sum) ? sum / 2 : first / 2 + second / 2;
}

std::vector<double> numbersIn(std::span<const double> values) {
  std::vector<double> numbers;
  std::copy_if(values.begin(), values.end(), std::back_inserter(numbers),
               [](double value) { return !std::isnan(value); });
  return numbers;
}

}  // namespace

std::string differenceName(DifferenceKind kind, const std::string& first,
                           const std::string& second) {
  if (kind == DifferenceKind::kRatio) return second + " / " + first;
  const std::string difference = second + " - " + first;
  return kind == DifferenceKind::kRelative ? "(" + difference + ") / |mean|" : difference;
}

AgreementResult agreement(const AgreementRequest& request) {
  const std::size_t n = request.first.size();
  requireRows(n, 3, Role::kFirst, "fewer than three pairs");
  require(request.second.size() == n, Role::kSecond,
          "the two methods have different numbers of values");
  requireAlpha(request.alpha);
  requireFinite(request.first, Role::kFirst);
  requireFinite(request.second, Role::kSecond);

  AgreementResult result;
  result.means.resize(n);
  result.differences.resize(n);
  for (std::size_t i = 0; i < n; ++i) {
    const double first = request.first[i], second = request.second[i];
    result.means[i] = meanOfTwo(first, second);
    const double difference = differenceOf(request.kind, first, second, result.means[i]);
    if (std::isinf(difference)) {
      throw Refusal(Role::kSecond, i, "a difference is beyond the largest number");
    }
    result.differences[i] = difference;
    result.excluded += std::isnan(difference) ? 1 : 0;
  }
  result.pairs = n - result.excluded;
  require(result.pairs >= 3, Role::kFirst, "fewer than three pairs have a difference");

  const auto [bias, sd] =
      result.excluded == 0 ? spreadOf(result.differences) : spreadOf(numbersIn(result.differences));
  const double pairs = static_cast<double>(result.pairs);
  const double p = 1 - request.alpha / 2;
  const double z = InvCDFNormalStd(p), t = InvCDFStudent(p, pairs - 1);
  const auto around = [](double value, double halfWidth) {
    return Estimate{value, value - halfWidth, value + halfWidth};
  };
  const double halfWidth = t * std::sqrt(1 / pairs + z * z / (2 * (pairs - 1))) * sd;
  result.sd = sd;
  result.z = z;
  result.bias = around(bias, t / std::sqrt(pairs) * sd);
  result.lowerLimit = around(bias - z * sd, halfWidth);
  result.upperLimit = around(bias + z * sd, halfWidth);
  require(std::isfinite(result.lowerLimit.lower) && std::isfinite(result.upperLimit.upper),
          Role::kSecond, "the limits are beyond the largest number");
  return result;
}

RepeatabilityResult repeatability(const RepeatabilityRequest& request) {
  const std::size_t n = request.values.size();
  requireRows(n, 1, Role::kFirst, "there are no values");
  require(request.subject.size() == n, Role::kSubject,
          "values and subjects have different numbers");
  requireAlpha(request.alpha);
  requireFinite(request.values, Role::kFirst);
  requireCodes(request.subject, request.subjects, Role::kSubject, "subject");

  // The entry point forms the within-subject squares as a difference of large sums and takes small
  // ones for 0; here they are summed around each subject's own mean, which is found from its first
  // value, so that replicates that are the same deviate by exactly 0.
  const int unit = unitOf(request.values);
  std::vector<double> deviations = inUnit(request.values, unit);
  std::vector<double> first(request.subjects, 0), sum(request.subjects, 0);
  std::vector<std::size_t> count(request.subjects, 0);
  for (std::size_t i = 0; i < n; ++i) {
    const std::size_t s = request.subject[i];
    if (count[s]++ == 0) first[s] = deviations[i];
    deviations[i] -= first[s];
    sum[s] += deviations[i];
  }
  for (std::size_t i = 0; i < n; ++i) {
    const std::size_t s = request.subject[i];
    deviations[i] -= sum[s] / static_cast<double>(count[s]);
  }
  RepeatabilityResult result;
  result.values = n;
  for (const std::size_t values : count) result.subjects += values > 0 ? 1 : 0;
  require(n > result.subjects, Role::kSubject, "no subject has two values");

  const int finer = unitOf(deviations);
  double within = 0;
  for (const double value : inUnit(deviations, finer)) within += value * value;
  const double df = static_cast<double>(n - result.subjects);
  const double sd = std::ldexp(std::sqrt(within / df), unit + finer);
  const double p = 1 - request.alpha / 2;
  result.degreesOfFreedom = df;
  result.withinSd = {sd, kNone, kNone};
  if (sd > 0) {
    result.withinSd.lower = sd / std::sqrt(InvCDFChiSq(p, df) / df);
    result.withinSd.upper = sd / std::sqrt(InvCDFChiSq(request.alpha / 2, df) / df);
  }
  result.z = InvCDFNormalStd(p);
  result.repeatability = std::sqrt(2.0) * result.z * sd;
  return result;
}

}  // namespace survmeth
