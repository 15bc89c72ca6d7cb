// What an arrangement of the groups is measured by, beside the one observed.
#ifndef ENGINE_CURVES_YARDSTICK_H_
#define ENGINE_CURVES_YARDSTICK_H_

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "engine/curves/combination.h"
#include "engine/curves/scores.h"
#include "numerics/squareMatrix.h"

namespace survmeth::engine::curves {

// One weighting's statistic, over its standard deviation or covariance among all arrangements.
class Yardstick {
 public:
  Yardstick(const Scores& scores, std::size_t w, std::size_t groups, Alternative alternative);

  std::size_t freedom() const { return freedom_; }
  // Of the sums of the groups' scores; of two groups.
  double z(std::span<const std::int64_t> sums) const {
    return static_cast<double>(sums[1]) * scale_;
  }
  // |z|, z or -z of two groups, the square root of the quadratic form of more.
  double size(std::span<const std::int64_t> sums) const;

 private:
  double unit_;
  std::size_t groups_;
  Alternative alternative_;
  std::size_t freedom_ = 0;
  numerics::SquareMatrix inverse_;
  double scale_ = 0.0;
};

// The statistics of all weightings, and which arrangements are no less extreme than the observed.
class Judge {
 public:
  Judge(const Scores& scores, std::size_t groups, Alternative alternative);

  std::size_t statistics() const { return yardsticks_.size(); }
  const Yardstick& operator[](std::size_t w) const { return yardsticks_[w]; }
  std::span<const std::int64_t> sums(std::size_t w) const { return sums_[w]; }
  double observed(std::size_t w) const { return observed_[w]; }
  double largest() const { return largest_; }

  // `sums` of every weighting and group, weighting after weighting. Adds to extreme[weighting], and
  // at the end to that of the largest.
  void count(std::span<const std::int64_t> sums, std::span<std::uint64_t> extreme) const;

 private:
  std::size_t groups_;
  std::vector<Yardstick> yardsticks_;
  std::vector<std::vector<std::int64_t>> sums_;
  std::vector<double> observed_;
  double largest_ = -std::numeric_limits<double>::infinity();
};

}  // namespace survmeth::engine::curves

#endif  // ENGINE_CURVES_YARDSTICK_H_
