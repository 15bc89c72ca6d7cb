// The sums over event times and strata that weighted tests of equal survival are made of.
#ifndef ENGINE_CURVES_WEIGHTED_SUMS_H_
#define ENGINE_CURVES_WEIGHTED_SUMS_H_

#include <cstddef>
#include <numeric>
#include <span>
#include <vector>

#include "engine/curves/comparison.h"
#include "engine/curves/pooled.h"
#include "numerics/squareMatrix.h"

namespace survmeth::engine::curves {

// Which groups are compared with one another, directly or by way of others: the covariance is
// singular along the sum of all groups that are, and in no other direction.
class Links {
 public:
  explicit Links(std::size_t groups) : parent_(groups) {
    std::iota(parent_.begin(), parent_.end(), std::size_t{0});
  }
  std::size_t find(std::size_t group) {
    while (parent_[group] != group) group = parent_[group] = parent_[parent_[group]];
    return group;
  }
  // False where they were linked before.
  bool join(std::size_t a, std::size_t b) {
    a = find(a);
    b = find(b);
    parent_[b] = a;
    return a != b;
  }

 private:
  std::vector<std::size_t> parent_;
};

// Sums of one weighting. What a row contributes is the integral of a common function over its time
// at risk, so that a row costs its two ends and nothing between them.
struct WeightedSums {
  explicit WeightedSums(std::size_t groups)
      : observed(groups), expected(groups), covariance(groups), links(groups) {}

  std::vector<double> observed, expected;
  numerics::SquareMatrix covariance;
  Links links;
};

// Of each weighting. The counts of the strata's groups are added to `events`, where it is one.
std::vector<WeightedSums> weightedSums(const Pooled& pooled, std::span<const Weighting> weightings,
                                       std::size_t groups, std::vector<StratumEvents>* events);

}  // namespace survmeth::engine::curves

#endif  // ENGINE_CURVES_WEIGHTED_SUMS_H_
