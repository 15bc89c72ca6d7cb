#include "analysis/agreement.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "Dist/Dist"
#include "analysis/invalidRequest.h"
#include "survival/survival.h"

namespace survmeth {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

}  // namespace

void requireSpread(std::span<const double> column, const std::string& member) {
  const auto [least, most] = std::minmax_element(column.begin(), column.end());
  if (*least == *most) throw InvalidRequest(member, "all values are the same");
}

AgreementResult agreement(const AgreementRequest& request) {
  if (request.first.size() != request.second.size()) {
    throw InvalidRequest("second", "the two methods have different numbers of values");
  }
  if (request.first.size() < 3) throw InvalidRequest("first", "fewer than three pairs");

  const std::size_t n = request.first.size();
  AgreementResult result;
  result.means.resize(n);
  result.differences.resize(n);
  std::vector<double> first(request.first.begin(), request.first.end());
  std::vector<double> second(request.second.begin(), request.second.end());
  const int kind = static_cast<int>(request.kind);
  double lower = 0;
  double upper = 0;
  Cpp_BlandAltman(first.data(), second.data(), static_cast<int>(n), kind, request.alpha,
                  result.differences.data(), result.means.data(), &result.bias.value, &result.sd,
                  &result.bias.lower, &result.bias.upper, &lower, &upper);
  for (double& difference : result.differences) {
    if (difference > -1.797e308) continue;
    difference = kNan;
    ++result.excluded;
  }
  result.pairs = n - result.excluded;
  if (result.pairs < 3) throw InvalidRequest("first", "fewer than three pairs have a difference");

  const double pairs = static_cast<double>(result.pairs);
  const double p = 1 - request.alpha / 2;
  const double z = InvCDFNormalStd(p);
  const double halfWidth =
      InvCDFStudent(p, pairs - 1) * result.sd * std::sqrt(1 / pairs + z * z / (2 * (pairs - 1)));
  result.lowerLimit = {lower, lower - halfWidth, lower + halfWidth};
  result.upperLimit = {upper, upper - halfWidth, upper + halfWidth};
  return result;
}

RepeatabilityResult repeatability(const RepeatabilityRequest& request) {
  if (request.values.size() != request.subject.size()) {
    throw InvalidRequest("subject", "values and subjects have different numbers");
  }
  // The entry point forms the within-subject squares as a difference of large sums and takes small
  // ones for 0; here they are summed around each subject's own mean.
  std::vector<double> sum(request.subjects, 0), squares(request.subjects, 0);
  std::vector<std::size_t> count(request.subjects, 0);
  for (std::size_t i = 0; i < request.values.size(); ++i) {
    sum[request.subject[i]] += request.values[i];
    ++count[request.subject[i]];
  }
  for (std::size_t i = 0; i < request.values.size(); ++i) {
    const std::size_t s = request.subject[i];
    const double deviation = request.values[i] - sum[s] / static_cast<double>(count[s]);
    squares[s] += deviation * deviation;
  }
  RepeatabilityResult result;
  result.values = request.values.size();
  double within = 0;
  for (std::size_t s = 0; s < request.subjects; ++s) {
    if (count[s] > 0) ++result.subjects;
    within += squares[s];
  }
  if (result.values <= result.subjects) {
    throw InvalidRequest("subject", "no subject has two values");
  }
  const double df = static_cast<double>(result.values - result.subjects);
  const double sd = std::sqrt(within / df);
  const double p = 1 - request.alpha / 2;
  result.degreesOfFreedom = df;
  result.withinSd = {sd, kNan, kNan};
  if (sd > 0) {
    result.withinSd.lower = sd / std::sqrt(InvCDFChiSq(p, df) / df);
    result.withinSd.upper = sd / std::sqrt(InvCDFChiSq(request.alpha / 2, df) / df);
  }
  result.repeatability = std::sqrt(2.0) * InvCDFNormalStd(p) * sd;
  return result;
}

}  // namespace survmeth
