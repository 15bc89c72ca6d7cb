#include "engine/curves/yardstick.h"

#include <algorithm>
#include <cmath>

#include "numerics/cholesky.h"

namespace survmeth::engine::curves {
namespace {

using numerics::SquareMatrix;

// Of the sums of the groups' scores, over the arrangements of one stratum.
void addCovariance(const Scores& scores, std::size_t w, std::size_t s, std::size_t groups,
                   SquareMatrix& covariance) {
  std::vector<double> count(groups);
  double squares = 0.0;
  for (std::size_t i = scores.first[s]; i < scores.first[s + 1]; ++i) {
    const double score = scores.unit[w] * static_cast<double>(scores.score[w][i]);
    squares += score * score;  // their mean is 0
    ++count[scores.group[i]];
  }
  const auto n = static_cast<double>(scores.first[s + 1] - scores.first[s]);
  if (n < 2.0) return;
  const double variance = squares / (n - 1.0);
  for (std::size_t g = 0; g < groups; ++g) {
    for (std::size_t h = 0; h < groups; ++h) {
      covariance(g, h) += variance * count[g] * ((g == h ? 1.0 : 0.0) - count[h] / n);
    }
  }
}

}  // namespace

Yardstick::Yardstick(const Scores& scores, std::size_t w, std::size_t groups,
                     Alternative alternative)
    : unit_(scores.unit[w]), groups_(groups), alternative_(alternative) {
  SquareMatrix covariance(groups);
  for (std::size_t s = 0; s < scores.strata(); ++s) {
    addCovariance(scores, w, s, groups, covariance);
  }
  const numerics::Cholesky factor(covariance);
  freedom_ = factor.rank();
  inverse_ = factor.inverse();
  if (groups == 2 && freedom_ == 1) scale_ = unit_ / std::sqrt(covariance(1, 1));
}

double Yardstick::size(std::span<const std::int64_t> sums) const {
  if (groups_ == 2) {
    if (alternative_ == Alternative::kTwoSided) return std::fabs(z(sums));
    return alternative_ == Alternative::kGreater ? z(sums) : -z(sums);
  }
  double form = 0.0;
  for (std::size_t g = 0; g < groups_; ++g) {
    double row = 0.0;
    for (std::size_t h = 0; h < groups_; ++h) {
      row += inverse_(g, h) * (unit_ * static_cast<double>(sums[h]));
    }
    form += row * (unit_ * static_cast<double>(sums[g]));
  }
  return std::sqrt(std::max(form, 0.0));
}

Judge::Judge(const Scores& scores, std::size_t groups, Alternative alternative) : groups_(groups) {
  for (std::size_t w = 0; w < scores.score.size(); ++w) {
    yardsticks_.emplace_back(scores, w, groups, alternative);
    std::vector<std::int64_t> sums(groups);
    for (std::size_t i = 0; i < scores.rows(); ++i) sums[scores.group[i]] += scores.score[w][i];
    observed_.push_back(yardsticks_[w].size(sums));
    if (yardsticks_[w].freedom() > 0) largest_ = std::max(largest_, observed_.back());
    sums_.push_back(std::move(sums));
  }
}

void Judge::count(std::span<const std::int64_t> sums, std::span<std::uint64_t> extreme) const {
  // What tells equal sums apart is the rounding of the scores.
  constexpr double kEqual = 1e-9;
  double largest = -std::numeric_limits<double>::infinity();
  for (std::size_t w = 0; w < yardsticks_.size(); ++w) {
    if (yardsticks_[w].freedom() == 0) continue;
    const double size = yardsticks_[w].size(sums.subspan(w * groups_, groups_));
    if (size >= observed_[w] - kEqual) ++extreme[w];
    largest = std::max(largest, size);
  }
  if (largest >= largest_ - kEqual) ++extreme.back();
}

}  // namespace survmeth::engine::curves
