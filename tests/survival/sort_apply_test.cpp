// Row permutations.
#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "survival/SortApply.h"
#include "tests/support/matrices.h"

namespace {

using survmeth::test::Column;
using survmeth::test::elements;
using survmeth::test::IntColumn;
using survmeth::test::Rows;

TEST(SortApply, TakesRowPermIForRowI) {
  Rows source({{1, 10}, {2, 20}, {3, 30}});
  Column perm({3, 1, 2});
  Rows target({{0, 0}, {0, 0}, {0, 0}});
  SortApply<matrix, matrix>(&source, 3, 2, &perm, &target);
  EXPECT_EQ(elements(target), (std::vector<double>{3, 1, 2, 30, 10, 20}));
}

TEST(SortApply, TruncatesTheRowNumber) {
  Column source({1, 2});
  Column perm({2.9, 1.1});
  Column target({0, 0});
  SortApply<matrix, matrix>(&source, 2, 1, &perm, &target);
  EXPECT_EQ(elements(target), (std::vector<double>{2, 1}));
}

TEST(SortApply, ARowNumberOutsideReadsAsMinusOne) {
  Column source({1, 2});
  Column perm({0, 3});
  Column target({0, 0});
  SortApply<matrix, matrix>(&source, 2, 1, &perm, &target);
  EXPECT_EQ(elements(target), (std::vector<double>{-1, -1}));
  IntColumn whole({1, 2});
  IntColumn wholeTarget({0, 0});
  Column wild({-7, std::numeric_limits<double>::quiet_NaN()});
  SortApply<matrixInt, matrixInt>(&whole, 2, 1, &wild, &wholeTarget);
  EXPECT_EQ(elements(wholeTarget), (std::vector<int>{-1, -1}));
}

TEST(SortApply, AnEntryThatIsNoRowGivesMinusOneInEveryColumn) {
  // By linear position 0 would be the last row of the column before, 4 the first of the next.
  Rows source({{1, 10}, {2, 20}, {3, 30}});
  Column perm({0, 4, -2});
  Rows target({{0, 0}, {0, 0}, {0, 0}});
  SortApply<matrix, matrix>(&source, 3, 2, &perm, &target);
  EXPECT_EQ(elements(target), std::vector<double>(6, -1));
  SortApply2<matrix>(&source, 3, 2, &perm);
  EXPECT_EQ(elements(source), std::vector<double>(6, -1));
  matrixInt whole(3, 2, 7);
  SortApply2<matrixInt>(&whole, 3, 2, &perm);
  EXPECT_EQ(elements(whole), std::vector<int>(6, -1));
}

TEST(SortApply, RowsPastTheOnesThatAreSortedDoNotCount) {
  Rows source({{1, 10}, {2, 20}, {3, 30}});
  Column perm({3, 2});
  Rows target({{0, 0}, {0, 0}});
  SortApply<matrix, matrix>(&source, 2, 2, &perm, &target);
  EXPECT_EQ(elements(target), (std::vector<double>{-1, 2, -1, 20}));
  // Nor do those that the source does not have.
  Rows shorter({{1, 10}, {2, 20}});
  Column wide({3, 1, 2});
  Rows wider({{0, 0}, {0, 0}, {0, 0}});
  SortApply<matrix, matrix>(&shorter, 3, 2, &wide, &wider);
  EXPECT_EQ(elements(wider), (std::vector<double>{-1, 1, 2, -1, 10, 20}));
}

TEST(SortApply, OfNoRowsOrColumnsDoesNothing) {
  Column source({1, 2});
  Column perm({2, 1});
  Column target({8, 9});
  SortApply<matrix, matrix>(&source, 0, 1, &perm, &target);
  SortApply<matrix, matrix>(&source, 2, 0, &perm, &target);
  SortApply<matrix, matrix>(&source, -1, -1, &perm, &target);
  EXPECT_EQ(elements(target), (std::vector<double>{8, 9}));
}

TEST(SortApply2, PermutesInPlace) {
  Rows m({{1, 10}, {2, 20}, {3, 30}});
  Column perm({2, 3, 1});
  SortApply2<matrix>(&m, 3, 2, &perm);
  EXPECT_EQ(elements(m), (std::vector<double>{2, 3, 1, 20, 30, 10}));
  IntColumn whole({1, 2, 3});
  SortApply2<matrixInt>(&whole, 3, 1, &perm);
  EXPECT_EQ(elements(whole), (std::vector<int>{2, 3, 1}));
}

TEST(SortApply2, TheIdentityChangesNothing) {
  Column m({4, 5, 6});
  Column identity({1, 2, 3});
  SortApply2<matrix>(&m, 3, 1, &identity);
  EXPECT_EQ(elements(m), (std::vector<double>{4, 5, 6}));
}

TEST(SortApply2, ARowNumberOfZeroMakesTheRowMinusOne) {
  Column m({4, 5, 6});
  Column perm({1, 0, 3});
  SortApply2<matrix>(&m, 3, 1, &perm);
  EXPECT_EQ(elements(m), (std::vector<double>{4, -1, 6}));
}

}  // namespace
