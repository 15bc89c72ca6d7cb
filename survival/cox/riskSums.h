// The inner loop of the Cox routines: sums of row terms over the risk sets of many groups.
//
// A risk set runs from its group's first row to the stratum's last row. Each sum is formed by its
// own pass in row order, which fixes its bits; several groups and several terms advance together,
// one group in each lane of a vector register, so every lane's order is that of a plain loop.
#ifndef SURVIVAL_COX_RISKSUMS_H_
#define SURVIVAL_COX_RISKSUMS_H_

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "numerics/hot.h"

namespace survival::cox {

// Terms that advance together; they stand side by side in the rows of a tile.
inline constexpr int kTileTerms = 3;

// sums[t * stride + k] = tile[starts[k]][t] + tile[starts[k] + 1][t] + ... + tile[rows - 1][t],
// from +0.0, for k = 0..groups - 1. `starts` are row numbers from 0, in any order; a start at
// `rows` or beyond gives 0. Cost O(groups rows).
using SumOverRiskSets = void (*)(const double* tile, std::ptrdiff_t rows, const double* starts,
                                 int groups, double* sums, std::ptrdiff_t stride);

template <typename Lanes>
struct BitsOf;
// Adds up the rows that not all lanes have reached, up to `common`. Groups come in the order of
// their first rows, so at most one vector at a time, number `Begun`, is under way in some of its
// lanes only; the vectors after it wait.
template <typename Lanes, int Vectors, int Terms, int Begun>
[[gnu::always_inline]] inline void beginInTurn(const double* tile, const double* firsts,
                                               const Lanes* first, std::ptrdiff_t common,
                                               std::ptrdiff_t& row, Lanes (&sum)[Terms][Vectors]) {
  if constexpr (Begun < Vectors) {
    using Bits = typename BitsOf<Lanes>::type;
    constexpr int width = static_cast<int>(sizeof(Lanes) / sizeof(double));
    std::ptrdiff_t end = common;
    if constexpr (Begun + 1 < Vectors) {
      end = static_cast<std::ptrdiff_t>(firsts[(Begun + 1) * width]);
    }
    for (; row < end; ++row) {
      const Bits begun = first[Begun] <= static_cast<double>(row);
      for (int t = 0; t < Terms; ++t) {
        const Lanes term = tile[row * Terms + t] - Lanes{};
        for (int v = 0; v < Begun; ++v) sum[t][v] += term;
        sum[t][Begun] += reinterpret_cast<Lanes>(reinterpret_cast<Bits>(term) & begun);
      }
    }
    beginInTurn<Lanes, Vectors, Terms, Begun + 1>(tile, firsts, first, common, row, sum);
  }
}

template <typename Lanes, int Vectors, int Terms>
[[gnu::always_inline]] inline void sumBlock(const double* tile, std::ptrdiff_t rows,
                                            const double* starts, int groups, double* sums,
                                            std::ptrdiff_t stride) {
  using Bits = typename BitsOf<Lanes>::type;
  constexpr int width = static_cast<int>(sizeof(Lanes) / sizeof(double));
  constexpr int lanes = width * Vectors;

  // Lanes without a group repeat the last one.
  double firsts[lanes];
  double earliest = static_cast<double>(rows);
  double latest = 0.0;
  bool ascending = true;
  for (int lane = 0; lane < lanes; ++lane) {
    firsts[lane] = std::min(starts[std::min(lane, groups - 1)], static_cast<double>(rows));
    earliest = std::min(earliest, firsts[lane]);
    ascending = ascending && firsts[lane] >= latest;
    latest = std::max(latest, firsts[lane]);
  }
  Lanes first[Vectors];
  std::memcpy(first, firsts, sizeof first);

  // While some groups have not begun, their lanes add +0.0: a sum that began at +0.0 never is
  // -0.0, so that changes nothing.
  Lanes sum[Terms][Vectors] = {};
  std::ptrdiff_t row = static_cast<std::ptrdiff_t>(earliest);
  const std::ptrdiff_t common = static_cast<std::ptrdiff_t>(latest);
  if (ascending) {
    beginInTurn<Lanes, Vectors, Terms, 0>(tile, firsts, first, common, row, sum);
  }
  for (; row < common; ++row) {
    for (int v = 0; v < Vectors; ++v) {
      const Bits begun = first[v] <= static_cast<double>(row);
      for (int t = 0; t < Terms; ++t) {
        const Lanes term = tile[row * Terms + t] - Lanes{};
        sum[t][v] += reinterpret_cast<Lanes>(reinterpret_cast<Bits>(term) & begun);
      }
    }
  }
  for (; row < rows; ++row) {
    for (int t = 0; t < Terms; ++t) {
      for (int v = 0; v < Vectors; ++v) sum[t][v] += tile[row * Terms + t];
    }
  }
  for (int t = 0; t < Terms; ++t) {
    double out[lanes];
    std::memcpy(out, sum[t], sizeof out);
    std::memcpy(sums + t * stride, out, static_cast<std::size_t>(groups) * sizeof(double));
  }
}

// Blocks of `Wide` vectors of groups, the last few groups in blocks of `Narrow` vectors.
template <typename Lanes, int Wide, int Narrow, int Terms>
[[gnu::always_inline]] inline void sumGroups(const double* tile, std::ptrdiff_t rows,
                                             const double* starts, int groups, double* sums,
                                             std::ptrdiff_t stride) {
  constexpr int width = static_cast<int>(sizeof(Lanes) / sizeof(double));
  int done = 0;
  while (groups - done > Narrow * width) {
    const int block = std::min(groups - done, Wide * width);
    sumBlock<Lanes, Wide, Terms>(tile, rows, starts + done, block, sums + done, stride);
    done += block;
  }
  if (done < groups) {
    sumBlock<Lanes, Narrow, Terms>(tile, rows, starts + done, groups - done, sums + done, stride);
  }
}

using Lanes2 [[gnu::vector_size(16)]] = double;
using Bits2 [[gnu::vector_size(16)]] = long long;
template <>
struct BitsOf<Lanes2> {
  using type = Bits2;
};

// Accumulators and broadcast terms must stay in registers: 16 of 2 lanes on the plain processor.
template <int Terms>
void sumPlain(const double* tile, std::ptrdiff_t rows, const double* starts, int groups,
              double* sums, std::ptrdiff_t stride) {
  sumGroups<Lanes2, 4, 1, Terms>(tile, rows, starts, groups, sums, stride);
}

#if defined(SURVMETH_MULTIVERSION)
#define SURVIVAL_COX_WIDE_LANES 1

using Lanes4 [[gnu::vector_size(32)]] = double;
using Bits4 [[gnu::vector_size(32)]] = long long;
template <>
struct BitsOf<Lanes4> {
  using type = Bits4;
};
using Lanes8 [[gnu::vector_size(64)]] = double;
using Bits8 [[gnu::vector_size(64)]] = long long;
template <>
struct BitsOf<Lanes8> {
  using type = Bits8;
};

// 16 registers of 4 lanes.
template <int Terms>
[[gnu::target("avx2")]] void sumAvx2(const double* tile, std::ptrdiff_t rows, const double* starts,
                                     int groups, double* sums, std::ptrdiff_t stride) {
  sumGroups<Lanes4, 4, 1, Terms>(tile, rows, starts, groups, sums, stride);
}

// 32 registers of 8 lanes.
template <int Terms>
[[gnu::target("avx512f")]] void sumAvx512(const double* tile, std::ptrdiff_t rows,
                                          const double* starts, int groups, double* sums,
                                          std::ptrdiff_t stride) {
  sumGroups<Lanes8, 8, 2, Terms>(tile, rows, starts, groups, sums, stride);
}
#endif

// The widest loop that this machine has, for tiles of 1..kTileTerms terms.
inline SumOverRiskSets sumOverRiskSets(int terms) {
  constexpr SumOverRiskSets plain[] = {sumPlain<1>, sumPlain<2>, sumPlain<3>};
  const SumOverRiskSets* widest = plain;
#if defined(SURVIVAL_COX_WIDE_LANES)
  constexpr SumOverRiskSets avx2[] = {sumAvx2<1>, sumAvx2<2>, sumAvx2<3>};
  constexpr SumOverRiskSets avx512[] = {sumAvx512<1>, sumAvx512<2>, sumAvx512<3>};
  if (__builtin_cpu_supports("avx512f")) {
    widest = avx512;
  } else if (__builtin_cpu_supports("avx2")) {
    widest = avx2;
  }
#endif
  return widest[terms - 1];
}

}  // namespace survival::cox

#endif  // SURVIVAL_COX_RISKSUMS_H_
