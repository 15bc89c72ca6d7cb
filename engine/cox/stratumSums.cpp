#include "engine/cox/stratumSums.h"

#include <algorithm>

#include "numerics/hot.h"
#include "numerics/pairs.h"

namespace survmeth::engine::cox {
namespace {

using numerics::firsts;
using numerics::Pair;
using numerics::pairAt;
using numerics::putPair;
using numerics::seconds;
constexpr std::size_t kBlock = numerics::BlockedColumns::kBlock;

// Of the rows begin .. stop - 1 alone, of kColumns columns at once: two rows of two columns at a
// time, so that sums are stored by twos. A last column without a partner is its own.
template <std::size_t kColumns>
void suffixSums(const double* risk, const double* x, std::size_t begin, std::size_t stop,
                double* sums) {
  constexpr std::size_t kPairs = (kColumns + 1) / 2;
  Pair running[kPairs] = {};
  std::size_t i = stop;
  if ((stop - begin) % 2 != 0) {
    --i;
    for (std::size_t c = 0; c < kColumns; ++c) {
      // Added to 0, which makes -0 a 0 as it does in the other rows.
      sums[c * kBlock + i] = running[c / 2][c % 2] = 0.0 + risk[i] * x[c * kBlock + i];
    }
    if constexpr (kColumns % 2 != 0) running[kPairs - 1][1] = running[kPairs - 1][0];
  }
  while (i > begin) {
    i -= 2;
    const Pair weight = pairAt(risk + i);
    for (std::size_t q = 0; q < kPairs; ++q) {
      const std::size_t a = 2 * q;
      const std::size_t b = std::min(a + 1, kColumns - 1);
      const Pair left = weight * pairAt(x + a * kBlock + i);
      const Pair right = weight * pairAt(x + b * kBlock + i);
      const Pair behind = running[q] + seconds(left, right);
      running[q] = behind + firsts(left, right);
      putPair(firsts(running[q], behind), sums + a * kBlock + i);
      putPair(seconds(running[q], behind), sums + b * kBlock + i);
    }
  }
}

using SuffixSums = void (*)(const double*, const double*, std::size_t, std::size_t, double*);
constexpr SuffixSums kSuffixSums[] = {suffixSums<1>, suffixSums<2>, suffixSums<3>, suffixSums<4>,
                                      suffixSums<5>, suffixSums<6>, suffixSums<7>, suffixSums<8>,
                                      suffixSums<9>, suffixSums<10>};
static_assert(sizeof kSuffixSums / sizeof *kSuffixSums == kAbreast);

SURVMETH_HOT void addTo(double* sums, std::size_t begin, std::size_t stop, double value) {
  for (std::size_t i = begin; i < stop; ++i) sums[i] += value;
}

SURVMETH_HOT void addToScaled(double* sums, const double* scale, std::size_t begin,
                              std::size_t stop, double value) {
  for (std::size_t i = begin; i < stop; ++i) sums[i] = (sums[i] + value) * scale[i];
}

}  // namespace

void sumsToEnd(const Problem& problem, const Hazards& hazards, std::size_t block, std::size_t j,
               std::size_t columns, const double* scale, double* sums) {
  const risk::Arrangement& a = problem.arrangement;
  const double* risk = hazards.risk.data() + block * kBlock;
  const double* x = problem.x.column(block, j);
  const std::size_t from = block * kBlock;
  std::size_t stop = from + problem.x.rowsOf(block);
  const std::size_t end = stop;
  while (stop > from) {
    const std::size_t begin = std::max<std::size_t>(from, a.stratumRow[a.rowStratum[stop - 1]]);
    kSuffixSums[columns - 1](risk, x, begin - from, stop - from, sums);
    // The sums behind the block are those of the stratum of its last row.
    const double* behind =
        stop == end ? hazards.behind.data() + block * problem.columns() + j : nullptr;
    for (std::size_t c = 0; c < columns && (behind != nullptr || scale != nullptr); ++c) {
      const double base = behind == nullptr ? 0.0 : behind[c];
      if (scale == nullptr) {
        addTo(sums + c * kBlock, begin - from, stop - from, base);
      } else {
        addToScaled(sums + c * kBlock, scale, begin - from, stop - from, base);
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
