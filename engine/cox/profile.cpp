#include "engine/cox/profile.h"

#include <cmath>
#include <vector>

#include "Dist/Dist"
#include "engine/cox/fall.h"
#include "engine/cox/likelihood.h"
#include "engine/cox/maximum.h"

namespace survmeth::engine::cox {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

class Profile {
 public:
  Profile(const Fit& fit, std::size_t column, numerics::Progress& progress)
      : fit_(fit), column_(column), progress_(progress), at_(fit.working) {
    for (std::size_t j = 0; j < fit.working.size(); ++j) {
      if (j != column && fit.column[j] == Column::kEstimated) free_.push_back(j);
    }
  }

  Fall at(double b) {
    std::vector<double> start = at_;
    start[column_] = b;
    if (!evaluate(*fit_.problem, fit_.ties, start, hazards_, point_)) return {0.0, 0.0, false};
    const Maximum maximum =
        maximise(*fit_.problem, fit_.ties, start, free_, point_, fit_.iterationLimit, progress_);
    if (!maximum.converged) return {0.0, 0.0, false};
    at_ = maximum.at;
    const double root = std::sqrt(std::max(0.0, 2.0 * (fit_.logLikelihood - maximum.point.value)));
    const double slope = root > 0.0 ? -maximum.point.gradient[column_] / root : 0.0;
    return {root, slope, true};
  }

 private:
  const Fit& fit_;
  std::size_t column_;
  numerics::Progress& progress_;
  std::vector<double> at_;
  std::vector<std::size_t> free_;
  Hazards hazards_;
  numerics::NewtonPoint point_;
};

}  // namespace

ProfileLimits profileLimits(const Fit& fit, std::size_t column, double level,
                            numerics::Progress& progress) {
  ProfileLimits result;
  const Problem& problem = *fit.problem;
  if (!fit.converged || fit.column[column] == Column::kAliased) {
    result.outcome = Outcome{"notConverged",
                             problem.names[column] + " has no estimate to take limits around",
                             {problem.names[column]}};
    return result;
  }
  const double z = std::sqrt(InvCDFChiSq(level, 1.0));
  const double far = kFarApart / problem.spread[column];
  const bool infinite = fit.column[column] == Column::kInfinite;
  for (const double sign : {-1.0, 1.0}) {
    double& bound = sign < 0.0 ? result.lower : result.upper;
    if (infinite && sign * fit.coefficients[column] > 0.0) {
      bound = sign * kInfinity;
      continue;
    }
    Profile profile(fit, column, progress);
    bool exists = true;
    const double from = fit.working[column];
    // Beside an infinite estimate the limit lies where the covariate begins to matter.
    const double first =
        infinite ? 0.0 : from + sign * z * std::sqrt(fit.covariance(column, column));
    bound =
        limitOfFall([&](double b) { return profile.at(b); }, {from, first, z, sign, far}, exists);
    if (!exists) {
      result.outcome = Outcome{"notConverged",
                               "the profile of " + problem.names[column] + " has no maximum",
                               {problem.names[column]}};
    }
  }
  return result;
}

}  // namespace survmeth::engine::cox
