#include "numerics/newton.h"

#include <cmath>
#include <limits>
#include <utility>

#include "numerics/cholesky.h"

namespace survmeth::numerics {
namespace {

constexpr int kHalvings = 30;
// A decrement below this that a step no longer halves is rounding.
constexpr double kSmall = 1e-6;

}  // namespace

NewtonResult maximise(const NewtonFunction& function, std::vector<double> start,
                      const NewtonOptions& options,
                      const std::function<bool(const NewtonResult&)>& watch) {
  NewtonResult result;
  result.at = std::move(start);
  if (!function(result.at, result.point)) {
    result.stop = NewtonStop::kNoValue;
    return result;
  }
  double previous = std::numeric_limits<double>::infinity();
  NewtonPoint next;
  std::vector<double> at(result.at.size());
  for (;; ++result.iterations) {
    const Cholesky factor(result.point.information, options.rankTolerance,
                          options.smallestInformation);
    result.step = factor.solve(result.point.gradient);
    result.decrement = std::sqrt(factor.quadraticForm(result.point.gradient));
    if (watch && watch(result)) {
      result.stop = NewtonStop::kWatched;
      return result;
    }
    if (!factor.fullRank()) {
      result.stop = NewtonStop::kRankLost;
      return result;
    }
    if (result.decrement <= options.tolerance ||
        (result.decrement < kSmall && result.decrement > 0.5 * previous)) {
      result.stop = NewtonStop::kConverged;
      return result;
    }
    if (result.iterations >= options.iterationLimit) {
      result.stop = NewtonStop::kIterationLimit;
      return result;
    }
    previous = result.decrement;
    // A gain below the rounding of the value itself cannot be seen.
    const double rounding = 1e-13 * (1.0 + std::fabs(result.point.value));
    double length = 1.0;
    bool risen = false;
    for (int halving = 0; halving <= kHalvings && !risen; ++halving, length *= 0.5) {
      for (std::size_t j = 0; j < at.size(); ++j) at[j] = result.at[j] + length * result.step[j];
      risen = function(at, next) &&
              next.value > result.point.value + 1e-4 * length * previous * previous - rounding;
    }
    if (!risen) {
      result.stop = NewtonStop::kNoAscent;
      return result;
    }
    result.at.swap(at);
    std::swap(result.point, next);
  }
}

}  // namespace survmeth::numerics
