// The keyed sorts: stable, NaN last, companions aligned, nothing outside the range touched.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include "Klikro/Klikro"
#include "tests/support/matrices.h"

namespace {

using survmeth::test::Column;
using survmeth::test::elements;
using survmeth::test::Rows;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(SortQ, MovesCompanionsAndKeyTogether) {
  Column a({1, 2, 3, 4});
  Column key({30, 10, 40, 20});
  Column b({-1, -2, -3, -4});
  SortQ(&a, 4, 1, 1, 4, &key, &b, 1, 0, -1);
  EXPECT_EQ(elements(a), (std::vector<double>{2, 4, 1, 3}));
  EXPECT_EQ(elements(b), (std::vector<double>{-2, -4, -1, -3}));
  EXPECT_EQ(elements(key), (std::vector<double>{10, 20, 30, 40}));
}

TEST(SortQ, LeavesTheKeyUnlessTheFlagIsMinusOne) {
  for (const short flag : {short{0}, short{1}}) {
    Column a({1, 2, 3});
    Column key({3, 2, 1});
    Column b({4, 5, 6});
    SortQ(&a, 3, 1, 1, 3, &key, &b, 1, 0, flag);
    EXPECT_EQ(elements(a), (std::vector<double>{3, 2, 1}));
    EXPECT_EQ(elements(b), (std::vector<double>{6, 5, 4}));
    EXPECT_EQ(elements(key), (std::vector<double>{3, 2, 1}));
  }
}

TEST(SortQ, EqualKeysKeepTheirOrder) {
  Column a({1, 2, 3, 4, 5});
  Column key({1, 0, 1, 0, 1});
  SortQ(&a, 5, 1, 1, 5, &key, nullptr, 0, 0, -1);
  EXPECT_EQ(elements(a), (std::vector<double>{2, 4, 1, 3, 5}));
}

TEST(SortQ, BothZerosAreEqual) {
  Column a({1, 2, 3});
  Column key({0.0, -0.0, -1});
  SortQ(&a, 3, 1, 1, 3, &key, nullptr, 0, 0, 0);
  EXPECT_EQ(elements(a), (std::vector<double>{3, 1, 2}));
}

TEST(SortQ, NanKeysComeLastInInputOrder) {
  Column a({1, 2, 3, 4, 5});
  Column key({kNan, kInf, -kNan, 0, -kInf});
  SortQ(&a, 5, 1, 1, 5, &key, nullptr, 0, 0, 0);
  EXPECT_EQ(elements(a), (std::vector<double>{5, 4, 2, 1, 3}));
}

TEST(SortQ, DescendingIsStableWithNanLast) {
  Column a({1, 2, 3, 4, 5, 6});
  Column key({1, kNan, 2, 1, -kInf, 2});
  SortQ(&a, 6, 1, 1, 6, &key, nullptr, 0, -1, 0);
  EXPECT_EQ(elements(a), (std::vector<double>{3, 6, 1, 4, 5, 2}));
}

TEST(SortQ, ADescendingFlagOfOneIsFalse) {
  Column a({1, 2});
  Column key({1, 2});
  SortQ(&a, 2, 1, 1, 2, &key, nullptr, 0, 1, 0);
  EXPECT_EQ(elements(a), (std::vector<double>{1, 2}));
}

TEST(SortQ, LeavesRowsOutsideTheRange) {
  Rows a({{9, 90}, {3, 30}, {2, 20}, {1, 10}, {0, 0}});
  Column key({9, 3, 2, 1, 0});
  Column b({9, 3, 2, 1, 0});
  SortQ(&a, 5, 2, 2, 4, &key, &b, 1, 0, -1);
  EXPECT_EQ(elements(a), (std::vector<double>{9, 1, 2, 3, 0, 90, 10, 20, 30, 0}));
  EXPECT_EQ(elements(key), (std::vector<double>{9, 1, 2, 3, 0}));
  EXPECT_EQ(elements(b), (std::vector<double>{9, 1, 2, 3, 0}));
}

TEST(SortQ, MovesOnlyTheColumnsNamed) {
  Rows a({{1, 10}, {2, 20}});
  Rows b({{1, 10}, {2, 20}});
  Column key({2, 1});
  SortQ(&a, 2, 1, 1, 2, &key, &b, 0, 0, 0);
  EXPECT_EQ(elements(a), (std::vector<double>{2, 1, 10, 20}));
  EXPECT_EQ(elements(b), (std::vector<double>{1, 2, 10, 20}));
}

TEST(SortQ, OneRowChangesNothing) {
  Column a({1, 2});
  Column key({2, 1});
  SortQ(&a, 2, 1, 1, 1, &key, nullptr, 0, 0, -1);
  EXPECT_EQ(elements(a), (std::vector<double>{1, 2}));
  EXPECT_EQ(elements(key), (std::vector<double>{2, 1}));
}

TEST(SortQ, ARangeIsCutToTheRowsThatExist) {
  Column a({3, 2, 1});
  Column key({3, 2, 1});
  SortQ(&a, 3, 1, 2, 9, &key, nullptr, 0, 0, -1);
  EXPECT_EQ(elements(a), (std::vector<double>{3, 1, 2}));
  SortQ(&a, 3, 1, 5, 2, &key, nullptr, 0, 0, -1);
  SortQ(&a, 0, 1, 1, 0, &key, nullptr, 0, 0, -1);
  EXPECT_EQ(elements(a), (std::vector<double>{3, 1, 2}));
}

TEST(SortQ, AMatrixThatIsItsOwnKeyIsSortedOnce) {
  Column a({3, 1, 2});
  SortQ(&a, 3, 1, 1, 3, &a, nullptr, 0, 0, -1);
  EXPECT_EQ(elements(a), (std::vector<double>{1, 2, 3}));
}

// Long runs are sorted by digits and short ones by comparison; both are the one stable order.
class LongAndShortRuns : public testing::TestWithParam<int> {};

TEST_P(LongAndShortRuns, AreSortedAsAStableSortOfTheRowNumbers) {
  const int n = GetParam();
  std::mt19937 random(n);
  const auto integer = [&](int bound) { return static_cast<int>(random() % bound); };
  for (const int kinds : {1, 3, 1 << 30}) {
    std::vector<double> keys(n);
    for (double& key : keys) {
      key = (integer(kinds) - kinds / 2) * std::ldexp(1.0, integer(40) - 20);
      if (integer(50) == 0) key = kNan;
      if (integer(50) == 0) key = integer(2) == 0 ? kInf : -kInf;
    }
    for (const short descending : {short{0}, short{-1}}) {
      std::vector<int> expected(n);
      std::iota(expected.begin(), expected.end(), 0);
      std::stable_sort(expected.begin(), expected.end(), [&](int a, int b) {
        if (std::isnan(keys[a])) return false;
        if (std::isnan(keys[b])) return true;
        return descending == 0 ? keys[a] < keys[b] : keys[a] > keys[b];
      });
      matrix rows(n, 1, 0);
      V_Set1toN(&rows, n);
      Column key(keys);
      SortQ(&rows, n, 1, 1, n, &key, nullptr, 0, descending, -1);
      for (int i = 0; i < n; ++i) {
        ASSERT_EQ(rows.vbget(i + 1, 1), expected[i] + 1) << "n " << n << ", row " << i;
      }
    }
  }
}
INSTANTIATE_TEST_SUITE_P(Lengths, LongAndShortRuns, testing::Values(2, 17, 2047, 2048, 5000));

TEST(SortQVector, SortsARange) {
  auto* v = new Column({5, 4, 3, 2});
  matrix* pointer = v;
  SortQVector(pointer, 4, 2, 4, 0);
  EXPECT_EQ(elements(*v), (std::vector<double>{5, 2, 3, 4}));
  SortQVector(pointer, 4, 1, 4, -1);
  EXPECT_EQ(elements(*v), (std::vector<double>{5, 4, 3, 2}));
  delete v;
}

TEST(SortQMatrixCol, MovesWholeRows) {
  Rows a({{1, 3}, {2, 1}, {3, 2}});
  EXPECT_EQ(SortQMatrixCol<matrix>(&a, 3, 2, 2, 1, 3, 0), 0);
  EXPECT_EQ(elements(a), (std::vector<double>{2, 3, 1, 1, 2, 3}));
  EXPECT_EQ(SortQMatrixCol<matrix>(&a, 3, 2, 1, 1, 2, -1), 0);
  EXPECT_EQ(elements(a), (std::vector<double>{3, 2, 1, 2, 1, 3}));
}

TEST(SortQMatrixCol, AColumnThatDoesNotExistSortsNothing) {
  Rows a({{2, 3}, {1, 1}});
  EXPECT_EQ(SortQMatrixCol<matrix>(&a, 2, 2, 3, 1, 2, 0), 0);
  EXPECT_EQ(SortQMatrixCol<matrix>(&a, 2, 2, 0, 1, 2, 0), 0);
  EXPECT_EQ(elements(a), (std::vector<double>{2, 1, 3, 1}));
}

}  // namespace
