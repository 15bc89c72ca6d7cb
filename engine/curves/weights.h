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

// Of one stratum's event times.
std::vector<double> weightsOf(const Weighting& weighting, std::span<const PooledTime> times);

}  // namespace survmeth::engine::curves

#endif  // ENGINE_CURVES_WEIGHTS_H_
