// Robust variances: what each cluster's weight does to a sum over the times of a group.
#ifndef ENGINE_CURVES_INFLUENCE_H_
#define ENGINE_CURVES_INFLUENCE_H_

#include <cstddef>
#include <span>
#include <vector>

#include "engine/curves/curve.h"
#include "engine/curves/sample.h"

namespace survmeth::engine::curves {

// The derivative of a sum over times by a row's weight: `own` at the time at which it fails, less
// `all` at every time at which it is at risk. Times of one group.
struct Increments {
  std::vector<double> own, all;
};

Increments hazardIncrements(const Sample& sample, std::size_t group, HazardTies ties);
// Of -log S, the product-limit estimate; 0 where all at risk fail.
Increments productIncrements(const Sample& sample, std::size_t group);

class Influence {
 public:
  Influence(const Sample& sample, const Rows& rows);

  // The variance of the sum of the increments up to each time of the group: the sum over the
  // clusters of the square of the weighted influences of their rows.
  //
  // Cost O(rows + times) of the group. What a cluster's rows at risk have gathered is a linear
  // function of the sum of `all`, so that the squares are a quadratic one whose coefficients only
  // change with rows that come and go; in twice the precision, because it cancels
  std::vector<double> variances(std::size_t group, const Increments& increments);

  // The same of a single sum over all times, each increment times factor[time].
  double variance(std::size_t group, const Increments& increments, std::span<const double> factor);

 private:
  std::size_t clusterOf(std::size_t row, std::size_t group) const;

  const Sample& sample_;
  const Rows& rows_;
  std::vector<std::uint32_t> byEntry_;  // rows of the group, by entry
  struct Cluster {
    double gathered = 0.0, lost = 0.0;  // what its rows have apart from those at risk
    double atRisk = 0.0;                // weight
  };
  std::vector<Cluster> cluster_;
};

}  // namespace survmeth::engine::curves

#endif  // ENGINE_CURVES_INFLUENCE_H_
