// Robust variances of incidences: what each cluster's weight does to them.
#ifndef ENGINE_INCIDENCE_ROBUST_H_
#define ENGINE_INCIDENCE_ROBUST_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "engine/incidence/causes.h"
#include "numerics/doubleDouble.h"

namespace survmeth::engine::incidence {

struct Curve;

// The derivative of a sum over times by a row's weight: `cause` at the time at which it fails of
// the cause, and `any` where it fails of any, less `all` at every time at which it is at risk.
struct Increments {
  explicit Increments(std::size_t times) : cause(times), any(times), all(times) {}
  std::vector<double> cause, any, all;
};

class Robust {
 public:
  Robust(const Causes& data, const Rows& rows) : data_(data), rows_(rows) {}

  // Sets the variances of the incidence and the hazard of one cause; the rest is there.
  //
  // Cost O(rows + times) of the group. The influence on the incidence F at a time is g - F h, of
  // two sums that its rows at risk gather alike, so that the squares are a polynomial whose
  // coefficients only change with rows that come and go; in twice the precision, because it cancels
  void addVariances(std::size_t group, std::size_t cause, Curve& curve);

  // The variance of one sum over all times of the group.
  double variance(std::size_t group, std::size_t cause, const Increments& increments);

 private:
  using DoubleDouble = numerics::DoubleDouble;
  struct Cluster {
    DoubleDouble g, h;    // what its rows have apart from those at risk
    double atRisk = 0.0;  // weight
  };
  // Sums over the clusters.
  struct Moments {
    DoubleDouble gg, gh, hh, ga, ha, aa;
    void add(const Cluster& cluster, double sign);
  };

  std::vector<double> variances(std::size_t group, std::size_t cause, const Increments& g,
                                const Increments& h, std::span<const double> level);
  std::size_t clusterOf(std::size_t row, std::size_t group) const;
  void begin(std::size_t group);
  // What the row's own event adds.
  double own(std::size_t row, std::size_t cause, const Increments& increments,
             std::size_t at) const;

  const Causes& data_;
  const Rows& rows_;
  std::vector<std::uint32_t> byEntry_;  // rows of the group
  std::vector<Cluster> cluster_;
};

}  // namespace survmeth::engine::incidence

#endif  // ENGINE_INCIDENCE_ROBUST_H_
