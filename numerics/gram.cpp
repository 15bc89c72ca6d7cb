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
typedef double LooseLanes __attribute__((vector_size(kLanes * sizeof(double)), aligned(8)));

// A reference to eight doubles in a row: vectors that are passed by value have no common form.
inline const LooseLanes& lanesAt(const double* values) {
  return *reinterpret_cast<const LooseLanes*>(values);
}

inline double total(const Lanes& lanes) {
  return ((lanes[0] + lanes[4]) + (lanes[2] + lanes[6])) +
         ((lanes[1] + lanes[5]) + (lanes[3] + lanes[7]));
}

// out[a][b] = sum over the rows of left column a times right column b.
template <std::size_t A, std::size_t B>
[[gnu::always_inline]] inline void panel(const double* left, const double* right, std::size_t rows,
                                         double (&out)[kPanel][kPanel]) {
  Lanes sums[A][B] = {};
  for (std::size_t i = 0; i < rows; i += kLanes) {
    Lanes l[A];
    Lanes r[B];
    for (std::size_t a = 0; a < A; ++a) l[a] = lanesAt(left + a * kBlock + i);
    for (std::size_t b = 0; b < B; ++b) r[b] = lanesAt(right + b * kBlock + i);
    for (std::size_t a = 0; a < A; ++a) {
      for (std::size_t b = 0; b < B; ++b) sums[a][b] += l[a] * r[b];
    }
  }
  for (std::size_t a = 0; a < A; ++a) {
    for (std::size_t b = 0; b < B; ++b) out[a][b] = total(sums[a][b]);
  }
}

template <std::size_t A>
[[gnu::always_inline]] inline void panelOf(std::size_t b, const double* left, const double* right,
                                           std::size_t rows, double (&out)[kPanel][kPanel]) {
  switch (b) {
    case 1:
      return panel<A, 1>(left, right, rows, out);
    case 2:
      return panel<A, 2>(left, right, rows, out);
    case 3:
      return panel<A, 3>(left, right, rows, out);
    default:
      return panel<A, 4>(left, right, rows, out);
  }
}

// Lower triangle of left' right, added to `sum` p x p with the sign.
SURVMETH_HOT void addProducts(const double* left, const double* right, std::size_t p,
                              std::size_t rows, double sign, double* sum) {
  double out[kPanel][kPanel];
  for (std::size_t j = 0; j < p; j += kPanel) {
    const std::size_t a = std::min(kPanel, p - j);
    for (std::size_t k = 0; k <= j; k += kPanel) {
      const std::size_t b = std::min(kPanel, p - k);
      const double* l = left + j * kBlock;
      const double* r = right + k * kBlock;
      switch (a) {
        case 1:
          panelOf<1>(b, l, r, rows, out);
          break;
        case 2:
          panelOf<2>(b, l, r, rows, out);
          break;
        case 3:
          panelOf<3>(b, l, r, rows, out);
          break;
        default:
          panelOf<4>(b, l, r, rows, out);
          break;
      }
      for (std::size_t m = 0; m < a; ++m) {
        double* row = sum + (j + m) * p + k;
        for (std::size_t q = 0; q < b && k + q <= j + m; ++q) row[q] += sign * out[m][q];
      }
    }
  }
}

SURVMETH_HOT void weightColumns(const double* x, const double* weight, std::size_t p,
                                std::size_t rows, double* out) {
  for (std::size_t j = 0; j < p; ++j) {
    for (std::size_t i = 0; i < rows; ++i) out[j * kBlock + i] = weight[i] * x[j * kBlock + i];
  }
}

SURVMETH_HOT void addTo(const double* x, double coefficient, std::size_t rows, double* result) {
  for (std::size_t i = 0; i < rows; ++i) result[i] += coefficient * x[i];
}

SURVMETH_HOT double weightedSum(const double* x, const double* weight, std::size_t rows) {
  Lanes sum = {};
  std::size_t i = 0;
  for (; i + kLanes <= rows; i += kLanes) sum += lanesAt(weight + i) * lanesAt(x + i);
  double rest = 0.0;
  for (; i < rows; ++i) rest += weight[i] * x[i];
  return total(sum) + rest;
}

}  // namespace

void addProduct(const BlockedColumns& x, std::span<const double> coefficient,
                std::span<double> result) {
  for (std::size_t block = 0; block < x.blocks(); ++block) {
    for (std::size_t j = 0; j < x.columns(); ++j) {
      if (coefficient[j] == 0.0) continue;
      addTo(x.column(block, j), coefficient[j], x.rowsOf(block), result.data() + block * kBlock);
    }
  }
}

void addWeightedGram(const double* x, const double* weight, std::size_t rows, double sign,
                     double* work, SquareMatrix& sum) {
  const std::size_t p = sum.size();
  if (rows == 0 || p == 0) return;
  weightColumns(x, weight, p, rows, work);
  const std::size_t whole = (rows + kLanes - 1) / kLanes * kLanes;
  for (std::size_t j = 0; j < p; ++j) {
    std::fill(work + j * kBlock + rows, work + j * kBlock + whole, 0.0);
  }
  addProducts(work, x, p, whole, sign, sum.row(0).data());
}

void addWeightedSums(const double* x, const double* weight, std::size_t rows,
                     std::span<double> sum) {
  for (std::size_t j = 0; j < sum.size(); ++j) sum[j] += weightedSum(x + j * kBlock, weight, rows);
}

void mirror(SquareMatrix& matrix) {
  for (std::size_t i = 0; i < matrix.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) matrix(j, i) = matrix(i, j);
  }
}

}  // namespace survmeth::numerics
