// The maximum of the likelihood over some of the coefficients, the others held.
#ifndef ENGINE_COX_MAXIMUM_H_
#define ENGINE_COX_MAXIMUM_H_

#include <string>
#include <vector>

#include "engine/cox/likelihood.h"
#include "engine/cox/separation.h"
#include "numerics/progress.h"

namespace survmeth::engine::cox {

// A column is dependent where 1 - R^2 of it on those before it is at most this: some 1e5 times
// the rounding of the sums.
inline constexpr double kRankTolerance = 1e-11;

struct Maximum {
  std::vector<double> at;       // p; infinite coefficients stand at large finite numbers
  numerics::NewtonPoint point;  // of all p columns, taken at `at`
  double decrement = 0.0;
  int iterations = 0;
  bool converged = false;
  std::string reason;                     // what keeps it from converging
  std::vector<Separation> separations;    // directions without a finite maximum
  Hazards hazards;                        // memory that may be used on
  std::vector<std::size_t> undetermined;  // columns that nothing is left to tell apart then
};

// In   start, point  all p coefficients and what evaluate gives there
//      free          columns to be estimated; the others keep their starting values
//      hazards       memory that is at hand, whatever it holds
Maximum maximise(const Problem& problem, Ties ties, const std::vector<double>& start,
                 std::vector<std::size_t> free, const numerics::NewtonPoint& point,
                 int iterationLimit, numerics::Progress& progress, Hazards hazards = {});

}  // namespace survmeth::engine::cox

#endif  // ENGINE_COX_MAXIMUM_H_
