// The weights of event times in the tests of equal survival.
#ifndef ENGINE_CURVES_WEIGHTS_H_
#define ENGINE_CURVES_WEIGHTS_H_

#include <span>
#include <vector>

#include "engine/curves/comparison.h"
#include "engine/curves/pooled.h"

namespace survmeth::engine::curves {

// Throws a Refusal for powers below 0.
void requireWeighting(const Weighting& weighting);

// The weights of one stratum's event times, one time after the other.
class WeightsInTime {
 public:
  explicit WeightsInTime(std::span<const Weighting> weightings);

  // weights[weightings] of the next event time.
  void next(const PooledTime& time, double* weights);

 private:
  std::span<const Weighting> weightings_;
  bool peto_ = false;      // whether a weighting needs the n + 1 estimate
  double survival_ = 1.0;  // Kaplan-Meier, before the next event time
  double estimate_ = 1.0;  // of n + 1, up to and including the last one
};

// All of them, of one weighting.
std::vector<double> weightsOf(const Weighting& weighting, std::span<const PooledTime> times);

}  // namespace survmeth::engine::curves

#endif  // ENGINE_CURVES_WEIGHTS_H_
