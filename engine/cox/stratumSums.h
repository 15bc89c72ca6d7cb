// Sums of risk times covariates over the rows from each one to the end of its stratum.
#ifndef ENGINE_COX_STRATUM_SUMS_H_
#define ENGINE_COX_STRATUM_SUMS_H_

#include <cstddef>
#include <span>

#include "engine/cox/problem.h"

namespace survmeth::engine::cox {

// Columns that are summed up side by side, each a chain of additions that waits for itself.
inline constexpr std::size_t kAbreast = 10;

// Calls work(j, columns) for neighbouring columns, at most kAbreast at once and groups of like
// size: eleven columns are five and six.
template <typename Work>
void byColumns(std::size_t p, const Work& work) {
  const std::size_t groups = (p + kAbreast - 1) / kAbreast;
  for (std::size_t group = 0; group < groups; ++group) {
    const std::size_t j = group * p / groups;
    work(j, (group + 1) * p / groups - j);
  }
}

// For every row of the block and `columns` columns from j on. Not where sums are formed column by
// column.
//
// In   scale  none, or one number for each row of the block that multiplies its sums
// Out  sums[columns * kBlock]
void sumsToEnd(const Problem& problem, const Hazards& hazards, std::size_t block, std::size_t j,
               std::size_t columns, const double* scale, double* sums);

// For one row, of all columns.
//
// Out  sums[p]
void sumsToEnd(const Problem& problem, const Hazards& hazards, std::size_t row,
               std::span<double> sums);

}  // namespace survmeth::engine::cox

#endif  // ENGINE_COX_STRATUM_SUMS_H_
