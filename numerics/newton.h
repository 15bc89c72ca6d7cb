// Newton's method for the maximum of a concave function, with halved steps and an outcome.
#ifndef NUMERICS_NEWTON_H_
#define NUMERICS_NEWTON_H_

#include <functional>
#include <span>
#include <vector>

#include "numerics/squareMatrix.h"

namespace survmeth::numerics {

struct NewtonPoint {
  double value = 0.0;
  std::vector<double> gradient;
  SquareMatrix information;  // minus the second derivatives
};

// Fills the point; false where the function has no value there, which ends a step too far.
using NewtonFunction = std::function<bool(std::span<const double> at, NewtonPoint& point)>;

enum class NewtonStop {
  kConverged,       // the decrement is at most the tolerance, or as small as rounding lets it be
  kIterationLimit,  // the limit was reached before
  kNoAscent,        // no part of the step, halved 30 times, raises the value
  kRankLost,        // the information matrix is singular where it has been regular before
  kNoValue,         // the function has no value at the start
  kWatched,         // `watch` asked to stop
};

struct NewtonOptions {
  int iterationLimit = 50;
  // Of the decrement sqrt(gradient' information^-1 gradient): the length of the step that is left
  // in units of the standard errors.
  double tolerance = 1e-10;
  double rankTolerance = 1e-11;
  std::vector<double> smallestInformation;  // as Cholesky's `smallest`, or empty
};

struct NewtonResult {
  std::vector<double> at;
  NewtonPoint point;         // taken at `at`
  std::vector<double> step;  // the full step from there
  double decrement = 0.0;
  int iterations = 0;
  NewtonStop stop = NewtonStop::kConverged;
};

// Maximises `function` from `start`.
//
// In   watch  or none: called before each step; true stops there
// Out  the last point whose value was accepted
// Cost one call of the function for each step, and for each halving
NewtonResult maximise(const NewtonFunction& function, std::vector<double> start,
                      const NewtonOptions& options,
                      const std::function<bool(const NewtonResult&)>& watch = {});

}  // namespace survmeth::numerics

#endif  // NUMERICS_NEWTON_H_
