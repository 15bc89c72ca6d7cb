#include "numerics/gram.h"

#include <algorithm>
#include <cstring>

#include "numerics/hot.h"

namespace survmeth::numerics {
namespace {

constexpr std::size_t kBlock = BlockedColumns::kBlock;
constexpr std::size_t kLanes = 8;
constexpr std::size_t kPanel = 4;  // columns against columns that are held in registers

// Eight doubles: one register of the widest instruction set, several of the others, the same
// operations in every one.
typedef double Lanes __attribute__((vector_size(kLanes * sizeof(double))));

// Eight doubles in a row, on no boundary in particular. Copied: compilers take a vector behind a
// reference for aligned, whatever its type says, and vectors passed by value have no common form.
[[gnu::always_inline]] inline void load(const double* values, Lanes& lanes) {
  std::memcpy(&lanes, values, sizeof lanes);
}

typedef double Quads __attribute__((vector_size(4 * sizeof(double))));

// A sum of eight is ((l0 + l4) + (l2 + l6)) + ((l1 + l5) + (l3 + l7)): halves are added to one
// another, those of several registers side by side.
[[gnu::always_inline]] inline void addHalves(const Lanes& lanes, Quads& sum) {
  sum = __builtin_shufflevector(lanes, lanes, 0, 1, 2, 3) +
        __builtin_shufflevector(lanes, lanes, 4, 5, 6, 7);
}
[[gnu::always_inline]] inline void addQuarters(const Quads& a, const Quads& b, Quads& sum) {
  sum = __builtin_shufflevector(a, b, 0, 1, 4, 5) + __builtin_shufflevector(a, b, 2, 3, 6, 7);
}

// out[m] = the sum of lanes[m] from kFrom on, of four at a time.
template <std::size_t N, std::size_t kFrom = 0>
[[gnu::always_inline]] inline void totals(const Lanes (&lanes)[N], double* out) {
  if constexpr (kFrom < N) {
    constexpr std::size_t kLast = N - 1;
    Quads half[4];
    addHalves(lanes[kFrom], half[0]);
    addHalves(lanes[std::min(kFrom + 1, kLast)], half[1]);
    addHalves(lanes[std::min(kFrom + 2, kLast)], half[2]);
    addHalves(lanes[std::min(kFrom + 3, kLast)], half[3]);
    Quads left;
    Quads right;
    addQuarters(half[0], half[1], left);
    addQuarters(half[2], half[3], right);
    const Quads sum = __builtin_shufflevector(left, right, 0, 4, 2, 6) +
                      __builtin_shufflevector(left, right, 1, 5, 3, 7);
    out[kFrom] = sum[0];
    if constexpr (kFrom + 1 < N) out[kFrom + 1] = sum[2];
    if constexpr (kFrom + 2 < N) out[kFrom + 2] = sum[1];
    if constexpr (kFrom + 3 < N) out[kFrom + 3] = sum[3];
    totals<N, kFrom + 4>(lanes, out);
  }
}

// out[a * B + b] = sum over the rows of left column a times right column b, for a panel on the
// diagonal those with b <= a.
template <std::size_t A, std::size_t B, bool kDiagonal>
[[gnu::always_inline]] inline void panel(const double* left, const double* right, std::size_t rows,
                                         double* out) {
  Lanes sums[A * B] = {};
  for (std::size_t i = 0; i < rows; i += kLanes) {
    Lanes l[A];
    Lanes r[B];
    for (std::size_t a = 0; a < A; ++a) load(left + a * kBlock + i, l[a]);
    for (std::size_t b = 0; b < B; ++b) load(right + b * kBlock + i, r[b]);
    for (std::size_t a = 0; a < A; ++a) {
      for (std::size_t b = 0; b < B && (!kDiagonal || b <= a); ++b) sums[a * B + b] += l[a] * r[b];
    }
  }
  totals(sums, out);
}

// Of a panel with kPanel columns on its right side, or on the diagonal.
template <std::size_t A>
[[gnu::always_inline]] inline void panelOf(bool diagonal, const double* left, const double* right,
                                           std::size_t rows, double* out) {
  return diagonal ? panel<A, A, true>(left, right, rows, out)
                  : panel<A, kPanel, false>(left, right, rows, out);
}

// Lower triangle of x' W x, added to `sum` p x p with the sign. The rows are a multiple of eight.
SURVMETH_HOT void addProducts(const double* x, const double* weight, std::size_t p,
                              std::size_t rows, double sign, double* sum) {
  alignas(kLanes * sizeof(double)) double weighted[kPanel * kBlock];
  double out[kPanel * kPanel];
  for (std::size_t j = 0; j < p; j += kPanel) {
    const std::size_t a = std::min(kPanel, p - j);
    for (std::size_t m = 0; m < a; ++m) {
      for (std::size_t i = 0; i < rows; ++i) {
        weighted[m * kBlock + i] = weight[i] * x[(j + m) * kBlock + i];
      }
    }
    for (std::size_t k = 0; k <= j; k += kPanel) {
      const bool diagonal = k == j;
      const double* right = x + k * kBlock;
      switch (a) {
        case 1:
          panelOf<1>(diagonal, weighted, right, rows, out);
          break;
        case 2:
          panelOf<2>(diagonal, weighted, right, rows, out);
          break;
        case 3:
          panelOf<3>(diagonal, weighted, right, rows, out);
          break;
        default:
          panelOf<4>(diagonal, weighted, right, rows, out);
          break;
      }
      const std::size_t b = diagonal ? a : kPanel;
      for (std::size_t m = 0; m < a; ++m) {
        double* row = sum + (j + m) * p + k;
        const std::size_t last = diagonal ? m + 1 : b;
        for (std::size_t q = 0; q < last; ++q) row[q] += sign * out[m * b + q];
      }
    }
  }
}

// result += c[0] x[0] + c[1] x[1] + ..., one after the other, of kColumns columns.
template <std::size_t kColumns>
[[gnu::always_inline]] inline void addColumnsOf(const double* x, const double* c, std::size_t rows,
                                                double* result) {
  for (std::size_t i = 0; i < rows; ++i) {
    double sum = result[i];
    for (std::size_t m = 0; m < kColumns; ++m) sum += c[m] * x[m * kBlock + i];
    result[i] = sum;
  }
}

SURVMETH_HOT void addColumns(const double* x, const double* c, std::size_t columns,
                             std::size_t rows, double* result) {
  std::size_t j = 0;
  for (; j + kPanel <= columns; j += kPanel) {
    addColumnsOf<kPanel>(x + j * kBlock, c + j, rows, result);
  }
  for (; j < columns; ++j) addColumnsOf<1>(x + j * kBlock, c + j, rows, result);
}

constexpr std::size_t kAbreast = 8;  // columns that are summed up side by side

// out = sum over the rows of weight times each of B columns.
template <std::size_t B>
[[gnu::always_inline]] inline void sumsOf(const double* weight, const double* x, std::size_t rows,
                                          double* out) {
  Lanes sums[B] = {};
  for (std::size_t i = 0; i < rows; i += kLanes) {
    Lanes of, column;
    load(weight + i, of);
    for (std::size_t b = 0; b < B; ++b) {
      load(x + b * kBlock + i, column);
      sums[b] += of * column;
    }
  }
  totals(sums, out);
}

[[gnu::always_inline]] inline void sumsOf(std::size_t b, const double* weight, const double* x,
                                          std::size_t rows, double* out) {
  switch (b) {
    case 1:
      return sumsOf<1>(weight, x, rows, out);
    case 2:
      return sumsOf<2>(weight, x, rows, out);
    case 3:
      return sumsOf<3>(weight, x, rows, out);
    case 4:
      return sumsOf<4>(weight, x, rows, out);
    case 5:
      return sumsOf<5>(weight, x, rows, out);
    case 6:
      return sumsOf<6>(weight, x, rows, out);
    case 7:
      return sumsOf<7>(weight, x, rows, out);
    default:
      return sumsOf<8>(weight, x, rows, out);
  }
}

// sum[j] += sum over the rows of weight x column j; the rows behind the last eight one by one.
SURVMETH_HOT void addSums(const double* x, const double* weight, std::size_t p, std::size_t rows,
                          double* sum) {
  const std::size_t whole = rows / kLanes * kLanes;
  double out[kAbreast];
  // Groups of like size: ten columns are five and five.
  const std::size_t groups = (p + kAbreast - 1) / kAbreast;
  for (std::size_t group = 0; group < groups; ++group) {
    const std::size_t j = group * p / groups;
    const std::size_t b = (group + 1) * p / groups - j;
    sumsOf(b, weight, x + j * kBlock, whole, out);
    for (std::size_t m = 0; m < b; ++m) {
      for (std::size_t i = whole; i < rows; ++i) out[m] += weight[i] * x[(j + m) * kBlock + i];
      sum[j + m] += out[m];
    }
  }
}

}  // namespace

void addProduct(const BlockedColumns& x, std::span<const double> coefficient,
                std::span<double> result) {
  for (std::size_t block = 0; block < x.blocks(); ++block) {
    addProduct(x.column(block, 0), coefficient, x.rowsOf(block), result.data() + block * kBlock);
  }
}

void addProduct(const double* x, std::span<const double> coefficient, std::size_t rows,
                double* result) {
  addColumns(x, coefficient.data(), coefficient.size(), rows, result);
}

void addWeightedGram(const double* x, const double* weight, std::size_t rows, double sign,
                     SquareMatrix& sum) {
  const std::size_t p = sum.size();
  if (rows == 0 || p == 0) return;
  // Weights of 0 behind the rows that count, up to a multiple of eight.
  const std::size_t whole = (rows + kLanes - 1) / kLanes * kLanes;
  double padded[kBlock];
  if (rows != whole) {
    std::copy_n(weight, rows, padded);
    std::fill(padded + rows, padded + whole, 0.0);
  }
  addProducts(x, rows == whole ? weight : padded, p, whole, sign, sum.row(0).data());
}

void addWeightedSums(const double* x, const double* weight, std::size_t rows,
                     std::span<double> sum) {
  addSums(x, weight, sum.size(), rows, sum.data());
}

void mirror(SquareMatrix& matrix) {
  for (std::size_t i = 0; i < matrix.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) matrix(j, i) = matrix(i, j);
  }
}

}  // namespace survmeth::numerics
