#include "engine/cox/stratumSums.h"

#include <algorithm>

#include "numerics/hot.h"

namespace survmeth::engine::cox {
namespace {

constexpr std::size_t kBlock = numerics::BlockedColumns::kBlock;

// Of the rows begin .. stop - 1 alone, of kColumns columns at once.
template <std::size_t kColumns>
void suffixSums(const double* risk, const double* x, std::size_t begin, std::size_t stop,
                double* sums) {
  double running[kColumns] = {};
  for (std::size_t i = stop; i-- > begin;) {
    for (std::size_t c = 0; c < kColumns; ++c) {
      running[c] += risk[i] * x[c * kBlock + i];
      sums[c * kBlock + i] = running[c];
    }
  }
}

using SuffixSums = void (*)(const double*, const double*, std::size_t, std::size_t, double*);
constexpr SuffixSums kSuffixSums[] = {suffixSums<1>, suffixSums<2>, suffixSums<3>, suffixSums<4>,
                                      suffixSums<5>, suffixSums<6>, suffixSums<7>, suffixSums<8>};
static_assert(sizeof kSuffixSums / sizeof *kSuffixSums == kAbreast);

SURVMETH_HOT void addTo(double* sums, std::size_t begin, std::size_t stop, double value) {
  for (std::size_t i = begin; i < stop; ++i) sums[i] += value;
}

}  // namespace

void sumsToEnd(const Problem& problem, const Hazards& hazards, std::size_t block, std::size_t j,
               std::size_t columns, double* sums) {
  const risk::Arrangement& a = problem.arrangement;
  const double* risk = hazards.risk.data() + block * kBlock;
  const double* x = problem.x.column(block, j);
  const std::size_t from = block * kBlock;
  std::size_t stop = from + problem.x.rowsOf(block);
  const std::size_t end = stop;
  while (stop > from) {
    const std::size_t begin = std::max<std::size_t>(from, a.stratumRow[a.rowStratum[stop - 1]]);
    kSuffixSums[columns - 1](risk, x, begin - from, stop - from, sums);
    if (stop == end) {
      // The sums behind the block are those of the stratum of its last row.
      const double* behind = hazards.behind.data() + block * problem.columns() + j;
      for (std::size_t c = 0; c < columns; ++c) {
        addTo(sums + c * kBlock, begin - from, stop - from, behind[c]);
      }
    }
    stop = begin;
  }
}

void sumsToEnd(const Problem& problem, const Hazards& hazards, std::size_t row,
               std::span<double> sums) {
  const risk::Arrangement& a = problem.arrangement;
  const std::size_t block = row / kBlock;
  const std::size_t end = a.stratumRow[a.rowStratum[row] + std::size_t{1}];
  const std::size_t stop = std::min(end, (block + 1) * kBlock);
  std::fill(sums.begin(), sums.end(), 0.0);
  numerics::addWeightedSums(problem.x.column(block, 0) + row % kBlock, hazards.risk.data() + row,
                            stop - row, sums);
  if (stop == end) return;
  for (std::size_t j = 0; j < sums.size(); ++j) sums[j] += hazards.behind[block * sums.size() + j];
}

}  // namespace survmeth::engine::cox
