// Cells of rows that differ in nothing: where each begins, and the sum of its weights.
#ifndef ANALYSIS_LIFE_CELLS_H_
#define ANALYSIS_LIFE_CELLS_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace survmeth::analysis {

// What rows have beside their times: of each a code below `count`.
struct CellCodes {
  std::span<const std::uint32_t> codes;
  std::size_t count = 0;
};

// In the order of first use.
struct Cells {
  std::vector<std::uint32_t> firstRow;
  std::vector<double> time, weight;
};

// The cells of rows that have one time and the same codes, where they are at most a quarter of the
// rows, else nothing.
//
// In   time    n, none missing; -0 and 0 are one
//      weight  n whole numbers from 0 on, or none: all 1; rows of weight 0 are in no cell
// Cost O(n), memory for the cells
std::optional<Cells> cellsOf(std::span<const double> time, const std::vector<CellCodes>& codes,
                             std::span<const double> weight);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_LIFE_CELLS_H_
