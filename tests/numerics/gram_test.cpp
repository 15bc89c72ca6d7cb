// Blocked outer products against plain loops; whole numbers, so that both are exact.
#include "numerics/gram.h"

#include <gtest/gtest.h>

#include <vector>

namespace survmeth::numerics {
namespace {

int digit(std::size_t i, std::size_t j) {
  return static_cast<int>((i * 7 + j * j * 5 + i * j) % 11) - 5;
}

BlockedColumns columnsOf(std::size_t n, std::size_t p) {
  BlockedColumns x(n, p);
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < p; ++j) x(i, j) = digit(i, j);
  }
  return x;
}

TEST(WeightedGram, EqualsThePlainLoopForEveryShape) {
  for (const std::size_t n : {1U, 7U, 255U, 256U, 257U, 700U}) {
    for (std::size_t p = 1; p <= 13; ++p) {
      const BlockedColumns x = columnsOf(n, p);
      std::vector<double> weight(x.blocks() * BlockedColumns::kBlock);
      for (std::size_t i = 0; i < n; ++i) weight[i] = digit(i, 3);
      SquareMatrix sum(p);
      std::vector<double> sums(p, 0.0);
      for (std::size_t block = 0; block < x.blocks(); ++block) {
        const double* w = weight.data() + block * BlockedColumns::kBlock;
        addWeightedGram(x.column(block, 0), w, x.rowsOf(block), -1.0, sum);
        addWeightedSums(x.column(block, 0), w, x.rowsOf(block), sums);
      }
      mirror(sum);
      for (std::size_t j = 0; j < p; ++j) {
        double single = 0.0;
        for (std::size_t i = 0; i < n; ++i) single += weight[i] * digit(i, j);
        EXPECT_EQ(sums[j], single);
        for (std::size_t k = 0; k < p; ++k) {
          double expected = 0.0;
          for (std::size_t i = 0; i < n; ++i) expected -= weight[i] * digit(i, j) * digit(i, k);
          EXPECT_EQ(sum(j, k), expected) << n << " x " << p << ": " << j << ", " << k;
        }
      }
    }
  }
}

// Eight partial sums, each of every eighth row, then their halves.
double inEight(const BlockedColumns& x, const std::vector<double>& weight, std::size_t j,
               std::size_t k) {
  double l[8] = {};
  for (std::size_t i = 0; i < x.rows(); ++i) l[i % 8] += (weight[i] * x(i, j)) * x(i, k);
  return ((l[0] + l[4]) + (l[2] + l[6])) + ((l[1] + l[5]) + (l[3] + l[7]));
}

TEST(WeightedGram, AddsUpInOneOrderForEveryShape) {
  constexpr std::size_t kColumns = 14;
  for (const std::size_t n : {5U, 8U, 100U, 250U, 256U}) {
    BlockedColumns x(n, kColumns);
    std::vector<double> weight(n);
    for (std::size_t i = 0; i < n; ++i) {
      weight[i] = 1.0 / static_cast<double>(3 + i);
      for (std::size_t j = 0; j < kColumns; ++j) x(i, j) = 1.0 / (digit(i, j) + 5.1);
    }
    for (std::size_t p = 1; p <= kColumns; ++p) {
      SquareMatrix sum(p);
      addWeightedGram(x.column(0, 0), weight.data(), n, 1.0, sum);
      for (std::size_t j = 0; j < p; ++j) {
        for (std::size_t k = 0; k <= j; ++k) {
          EXPECT_EQ(sum(j, k), inEight(x, weight, j, k))
              << n << " x " << p << ": " << j << ", " << k;
        }
      }
    }
  }
}

TEST(WeightedGram, LeavesTheUpperTriangleAlone) {
  for (std::size_t p = 1; p <= 9; ++p) {
    const BlockedColumns x = columnsOf(40, p);
    const std::vector<double> weight(40, 1.0);
    SquareMatrix sum(p, 0.5);
    addWeightedGram(x.column(0, 0), weight.data(), 40, 1.0, sum);
    for (std::size_t j = 0; j < p; ++j) {
      for (std::size_t k = j + 1; k < p; ++k) EXPECT_EQ(sum(j, k), 0.5);
    }
  }
}

TEST(BlockedColumns, ProductsAddUpOverColumns) {
  const BlockedColumns x = columnsOf(300, 3);
  std::vector<double> result(300, 1.0);
  addProduct(x, std::vector<double>{2.0, 0.0, -1.0}, result);
  for (std::size_t i = 0; i < 300; ++i) {
    EXPECT_EQ(result[i], 1.0 + 2.0 * digit(i, 0) - digit(i, 2));
  }
}

}  // namespace
}  // namespace survmeth::numerics
