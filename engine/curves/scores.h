// The scores of rows whose sum over a group is a weighted log-rank difference.
#ifndef ENGINE_CURVES_SCORES_H_
#define ENGINE_CURVES_SCORES_H_

#include <cstdint>
#include <span>
#include <vector>

#include "engine/curves/comparison.h"
#include "engine/curves/pooled.h"

namespace survmeth::engine::curves {

// Rows that can exchange their groups, stratum after stratum.
struct Scores {
  std::vector<std::uint32_t> group;  // of each row
  std::vector<std::size_t> first;    // strata + 1
  // Of each weighting and row: the scores as whole multiples of `unit`, so that sums are exact in
  // any order.
  std::vector<std::vector<std::int64_t>> score;
  std::vector<double> unit;

  std::size_t rows() const { return group.size(); }
  std::size_t strata() const { return first.size() - 1; }
};

// Edge case weights count as 1
Scores scoresOf(const Pooled& pooled, std::span<const Weighting> weightings);

}  // namespace survmeth::engine::curves

#endif  // ENGINE_CURVES_SCORES_H_
