// The rows of Gray's test in the order in which it runs over them.
#ifndef ENGINE_INCIDENCE_GRAY_ROWS_H_
#define ENGINE_INCIDENCE_GRAY_ROWS_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "engine/incidence/causes.h"

namespace survmeth::engine::incidence {

// Rows of positive weight by stratum, then time, one after the other in memory: every cause, and
// every pair of groups, runs over them.
struct GrayRow {
  std::uint32_t code, group, cause;  // code of its time
};
struct GrayStratum {
  std::span<const GrayRow> rows;
  std::span<const double> weight;  // empty: 1
  double weightOf(std::size_t row) const { return weight.empty() ? 1.0 : weight[row]; }
};
struct GrayRows {
  // Cost O(n)
  explicit GrayRows(const Ordered& ordered);
  // Those of two groups.
  GrayRows(const GrayRows& all, std::uint32_t one, std::uint32_t other);

  std::size_t strata() const { return first.size() - 1; }
  GrayStratum stratum(std::size_t s) const;

  std::vector<GrayRow> rows;
  std::vector<double> weight;
  std::vector<std::size_t> first;  // strata + 1
  std::size_t groups;              // of the caller
};

}  // namespace survmeth::engine::incidence

#endif  // ENGINE_INCIDENCE_GRAY_ROWS_H_
