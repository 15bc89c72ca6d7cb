#include "engine/cox/maximum.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "numerics/newton.h"

namespace survmeth::engine::cox {
namespace {

// How far the predictors are moved apart along a separating direction: exp(-400) is nothing.
constexpr double kApart = 400.0;

std::string reasonOf(numerics::NewtonStop stop) {
  switch (stop) {
    case numerics::NewtonStop::kIterationLimit:
      return "the limit was reached";
    case numerics::NewtonStop::kNoAscent:
      return "no step raises the likelihood";
    case numerics::NewtonStop::kRankLost:
      return "the information matrix became singular";
    case numerics::NewtonStop::kNoValue:
      return "the predictors are too far apart";
    default:
      return "";
  }
}

// Newton's method over the free columns of one problem.
class Search {
 public:
  Search(const Problem& problem, Ties ties, numerics::Progress& progress, Hazards hazards)
      : problem_(problem),
        ties_(ties),
        progress_(progress),
        smallest_(smallestInformation(problem)),
        hazards_(std::move(hazards)) {}

  // The result's `point` is that of the free columns, `whole` that of all.
  numerics::NewtonResult run(std::vector<double>& at, const std::vector<std::size_t>& free,
                             numerics::NewtonPoint& whole, bool known, int limit) {
    separation_.reset();
    std::vector<double> start;
    for (const std::size_t j : free) start.push_back(at[j]);
    numerics::NewtonPoint tried = whole;
    const auto function = [&](std::span<const double> value, numerics::NewtonPoint& point) {
      for (std::size_t m = 0; m < free.size(); ++m) at[free[m]] = value[m];
      if (!known && !evaluate(problem_, ties_, at, hazards_, tried)) return false;
      known = false;
      point.value = tried.value;
      point.gradient.clear();
      for (const std::size_t j : free) point.gradient.push_back(tried.gradient[j]);
      point.information = numerics::part(tried.information, free);
      return true;
    };
    const auto watch = [&](const numerics::NewtonResult& now) {
      progress_.at(std::min(1.0, static_cast<double>(now.iterations) / limit));
      whole = tried;  // the point has been accepted
      return suspicious(now, free) && separation(now, free);
    };
    numerics::NewtonOptions options;
    options.iterationLimit = limit;
    options.rankTolerance = kRankTolerance;
    options.smallestInformation = smallest(free);
    numerics::NewtonResult result = numerics::maximise(function, start, options, watch);
    for (std::size_t m = 0; m < free.size(); ++m) at[free[m]] = result.at[m];
    return result;
  }
  const std::optional<Separation>& separation() const { return separation_; }
  Hazards memory() { return std::move(hazards_); }
  std::vector<double> smallest(const std::vector<std::size_t>& free) const {
    std::vector<double> chosen;
    for (const std::size_t j : free) chosen.push_back(smallest_[j]);
    return chosen;
  }

 private:
  // A step that moves predictors far although next to nothing is left to gain.
  bool suspicious(const numerics::NewtonResult& now, const std::vector<std::size_t>& free) const {
    if (now.iterations < 4) return false;
    double reach = 0.0;
    for (std::size_t m = 0; m < free.size(); ++m) {
      reach += std::fabs(now.step[m]) * problem_.spread[free[m]];
    }
    return reach > 0.3 && now.decrement * now.decrement < 0.02 * reach * reach;
  }

  bool separation(const numerics::NewtonResult& now, const std::vector<std::size_t>& free) {
    std::vector<double> direction(problem_.columns(), 0.0);
    for (std::size_t m = 0; m < free.size(); ++m) direction[free[m]] = now.step[m];
    separation_ = separates(problem_, ties_, direction);
    return separation_.has_value();
  }

  const Problem& problem_;
  Ties ties_;
  numerics::Progress& progress_;
  std::vector<double> smallest_;
  Hazards hazards_;
  std::optional<Separation> separation_;
};

// The column that carries most of a direction.
std::size_t chief(const Problem& problem, const Separation& separation) {
  return *std::max_element(separation.columns.begin(), separation.columns.end(),
                           [&](std::size_t a, std::size_t b) {
                             return std::fabs(separation.direction[a]) * problem.spread[a] <
                                    std::fabs(separation.direction[b]) * problem.spread[b];
                           });
}

void moveApart(const Problem& problem, const Separation& separation, std::vector<double>& at) {
  std::vector<double> value(problem.arrangement.rows(), 0.0);
  numerics::addProduct(problem.x, separation.direction, value);
  const auto [least, most] = std::minmax_element(value.begin(), value.end());
  for (const std::size_t j : separation.columns) {
    at[j] += separation.direction[j] * (kApart / (*most - *least));
  }
}

}  // namespace

Maximum maximise(const Problem& problem, Ties ties, const std::vector<double>& start,
                 std::vector<std::size_t> free, const numerics::NewtonPoint& point,
                 int iterationLimit, numerics::Progress& progress, Hazards hazards) {
  Maximum result;
  result.at = start;
  result.point = point;
  Search search(problem, ties, progress, std::move(hazards));
  bool known = true;
  for (;;) {
    const numerics::NewtonResult found =
        search.run(result.at, free, result.point, known, iterationLimit);
    result.iterations += found.iterations;
    result.decrement = found.decrement;
    result.converged = found.stop == numerics::NewtonStop::kConverged;
    result.reason = reasonOf(found.stop);
    if (found.stop == numerics::NewtonStop::kRankLost && !result.separations.empty()) {
      // Where some coefficients are infinite, fewer rows are left to tell others apart.
      const numerics::Cholesky factor(found.point.information, kRankTolerance,
                                      search.smallest(free));
      for (std::size_t m = free.size(); m-- > 0;) {
        if (!factor.dependent(m)) continue;
        result.undetermined.push_back(free[m]);
        free.erase(free.begin() + static_cast<std::ptrdiff_t>(m));
      }
      known = true;
      continue;
    }
    if (found.stop != numerics::NewtonStop::kWatched) {
      result.hazards = search.memory();
      return result;
    }
    // One coefficient of the direction is held where the direction has done its work; the others
    // find their finite part.
    result.separations.push_back(*search.separation());
    moveApart(problem, result.separations.back(), result.at);
    std::erase(free, chief(problem, result.separations.back()));
    known = false;
  }
}

}  // namespace survmeth::engine::cox
