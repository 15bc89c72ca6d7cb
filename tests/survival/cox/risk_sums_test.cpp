// The vectorised sums over risk sets against the plain loop, bit for bit.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "survival/cox/riskSums.h"

namespace {

using survival::cox::SumOverRiskSets;

struct Variant {
  const char* name;
  SumOverRiskSets sum[3];
};

std::vector<Variant> variants() {
  using namespace survival::cox;
  std::vector<Variant> all{
      {"plain", {sumPlain<1>, sumPlain<2>, sumPlain<3>}},
      {"chosen", {sumOverRiskSets(1), sumOverRiskSets(2), sumOverRiskSets(3)}}};
#if defined(SURVIVAL_COX_WIDE_LANES)
  if (__builtin_cpu_supports("avx2")) all.push_back({"avx2", {sumAvx2<1>, sumAvx2<2>, sumAvx2<3>}});
  if (__builtin_cpu_supports("avx512f")) {
    all.push_back({"avx512", {sumAvx512<1>, sumAvx512<2>, sumAvx512<3>}});
  }
#endif
  return all;
}

std::uint64_t bits(double x) {
  std::uint64_t b;
  std::memcpy(&b, &x, sizeof b);
  return b;
}

void expectPlainLoop(const std::vector<double>& tile, int terms, int rows,
                     const std::vector<double>& starts) {
  const int groups = static_cast<int>(starts.size());
  for (const Variant& variant : variants()) {
    std::vector<double> sums(static_cast<std::size_t>(terms) * groups + 1, 123.0);
    variant.sum[terms - 1](tile.data(), rows, starts.data(), groups, sums.data(), groups);
    for (int t = 0; t < terms; ++t) {
      for (int k = 0; k < groups; ++k) {
        double expected = 0.0;
        for (int i = static_cast<int>(starts[k]); i < rows; ++i) expected += tile[i * terms + t];
        const double got = sums[static_cast<std::size_t>(t) * groups + k];
        if (expected != expected) {
          EXPECT_TRUE(got != got) << variant.name;
        } else {
          ASSERT_EQ(bits(got), bits(expected))
              << variant.name << " terms " << terms << " rows " << rows << " group " << k;
        }
      }
    }
    EXPECT_EQ(sums.back(), 123.0) << variant.name;  // nothing is written past the sums
  }
}

TEST(RiskSums, HaveTheBitsOfAPlainLoop) {
  std::mt19937_64 random(20240229);
  std::normal_distribution<double> normal;
  for (const int groups : {0, 1, 2, 3, 7, 8, 9, 16, 17, 31, 64, 65, 130}) {
    for (const int rows : {0, 1, 5, 40, 131}) {
      for (int terms = 1; terms <= 3; ++terms) {
        std::vector<double> tile(static_cast<std::size_t>(rows) * terms);
        for (double& x : tile) x = normal(random) * 1e3;
        std::vector<double> ascending(groups), anywhere(groups);
        std::uniform_int_distribution<int> place(0, rows + 3);
        for (int k = 0; k < groups; ++k) {
          ascending[k] = k * (rows + 1) / (groups + 1);
          anywhere[k] = place(random);
        }
        expectPlainLoop(tile, terms, rows, ascending);
        expectPlainLoop(tile, terms, rows, anywhere);
      }
    }
  }
}

TEST(RiskSums, KeepInfinitiesNotNumbersAndSignedZerosWhereTheyBelong) {
  const double inf = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  // Groups that begin after such a row must not feel it.
  const std::vector<double> tile{-0.0, inf, -inf, 1.0, nan, -0.0, 2.0, -0.0, 5e-324, -5e-324};
  std::vector<double> starts;
  for (int i = 0; i <= 11; ++i) starts.push_back(i);
  expectPlainLoop(tile, 1, 10, starts);
}

TEST(RiskSums, AreSensitiveToOrder) {
  // 1 + 1e16 - 1e16 is 0 from the left and 1 from the right.
  const std::vector<double> tile{1.0, 1e16, -1e16};
  expectPlainLoop(tile, 1, 3, {0.0, 1.0, 2.0});
  double sum = 7.0;
  const double start = 0.0;
  survival::cox::sumOverRiskSets(1)(tile.data(), 3, &start, 1, &sum, 1);
  EXPECT_EQ(sum, 0.0);
}

}  // namespace
