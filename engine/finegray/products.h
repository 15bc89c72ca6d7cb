// Sums over rows of products of the few numbers that say what a row does to the baseline's cumulative
// subdistribution hazard.
#ifndef ENGINE_FINEGRAY_PRODUCTS_H_
#define ENGINE_FINEGRAY_PRODUCTS_H_

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <vector>

#include "engine/finegray/fit.h"
#include "numerics/doubleDouble.h"
#include "numerics/sizes.h"

namespace survmeth::engine::finegray {

// A row's numbers: of the integral of dL / S0, of 1, and of the two functions of its group of
// censoring (what a row at risk loses by the censorings so far, the integral of G H dL / S0).
inline constexpr std::size_t kNumbers = 4;
using Numbers = std::array<double, kNumbers>;

// Sums of products of the numbers over rows or clusters, with each other and with their scores.
class Products {
 public:
  Products(const Fit& fit, const numerics::BlockedColumns& scores)
      : problem_(*fit.problem),
        frequencies_(fit.weightKind == WeightKind::kFrequencies),
        width_(2 + 2 * problem_.censoring.size()),
        p_(problem_.columns()),
        squares_(numerics::product(width_, width_)),
        mixed_(numerics::product(width_, p_)) {
    const cox::Problem& rows = problem_.rows;
    const auto& source = rows.arrangement.source;
    const std::size_t units = rows.cluster.empty() ? source.size() : rows.clusters;
    score_.resize(numerics::product(units, p_));
    for (std::size_t i = 0; i < source.size(); ++i) {
      for (std::size_t j = 0; j < p_; ++j) score_[unit(i) * p_ + j] += scores(i, j);
    }
    if (!rows.cluster.empty()) numbers_.resize(numerics::product(units, width_));
  }

  // A row's numbers were `from` and are `to`.
  void change(std::size_t row, const Numbers& from, const Numbers& to) {
    const std::size_t g = 2 + 2 * problem_.group[row];
    const std::array<std::size_t, kNumbers> place = {0, 1, g, g + 1};
    const bool alone = numbers_.empty();
    numerics::DoubleDouble* numbers = alone ? nullptr : numbers_.data() + unit(row) * width_;
    const double share = alone && frequencies_ ? 1.0 / problem_.rows.arrangement.weight[row] : 1.0;
    Numbers before = from;
    Numbers after = to;
    for (std::size_t m = 0; m < kNumbers && !alone; ++m) {
      numerics::DoubleDouble& number = numbers[place[m]];
      before[m] = number.hi;
      number = number - from[m] + to[m];
      after[m] = number.hi;
    }
    const auto replace = [share](numerics::DoubleDouble& sum, double less, double more) {
      sum = sum - share * less + share * more;
    };
    for (std::size_t m = 0; m < kNumbers; ++m) {
      const std::size_t at = place[m];
      for (std::size_t l = 0; l <= m; ++l) {
        replace(squares_[at * width_ + place[l]], before[m] * before[l], after[m] * after[l]);
      }
      for (std::size_t b = 2; b < width_ && !alone; ++b) {
        if (b == g || b == g + 1) continue;
        replace(squares_[std::max(at, b) * width_ + std::min(at, b)], before[m] * numbers[b].hi,
                after[m] * numbers[b].hi);
      }
      const double* score = score_.data() + unit(row) * p_;
      for (std::size_t j = 0; j < p_; ++j) {
        replace(mixed_[at * p_ + j], before[m] * score[j], after[m] * score[j]);
      }
    }
  }

  // With the functions' values at a time: the sum of squares, and the products with the scores.
  double squares(std::span<const double> value) const {
    double sum = 0.0;
    for (std::size_t a = 0; a < width_; ++a) {
      double row = 0.0;
      for (std::size_t b = 0; b < a; ++b) row += 2.0 * squares_[a * width_ + b].hi * value[b];
      sum += value[a] * (row + squares_[a * width_ + a].hi * value[a]);
    }
    return sum;
  }
  void mixed(std::span<const double> value, std::span<double> sum) const {
    std::fill(sum.begin(), sum.end(), 0.0);
    for (std::size_t a = 0; a < width_; ++a) {
      for (std::size_t j = 0; j < p_; ++j) sum[j] += value[a] * mixed_[a * p_ + j].hi;
    }
  }
  std::size_t width() const { return width_; }

 private:
  std::size_t unit(std::size_t row) const {
    const auto& cluster = problem_.rows.cluster;
    return cluster.empty() ? row : cluster[problem_.rows.arrangement.source[row]];
  }

  const Problem& problem_;
  bool frequencies_;
  std::size_t width_, p_;
  std::vector<numerics::DoubleDouble> squares_, mixed_;  // the lower triangle; width x p
  std::vector<double> score_;                            // units x p
  std::vector<numerics::DoubleDouble> numbers_;  // clusters x width; of rows they are not kept
};

}  // namespace survmeth::engine::finegray

#endif  // ENGINE_FINEGRAY_PRODUCTS_H_
