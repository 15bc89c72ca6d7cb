// The vector and matrix utilities.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "Klikro/Klikro"
#include "tests/support/matrices.h"

namespace {

using survmeth::test::Column;
using survmeth::test::elements;
using survmeth::test::IntColumn;
using survmeth::test::Rows;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

std::uint64_t bitsOf(double x) {
  std::uint64_t bits;
  std::memcpy(&bits, &x, sizeof bits);
  return bits;
}

TEST(Constants, HaveTheBitsThatCallersCompareWith) {
  EXPECT_EQ(bitsOf(kMissing), 0xFFEFFFFFFFFFFFE2u);
  EXPECT_EQ(bitsOf(kInfinite), 0x7FEFFFFFFFFFFFE2u);
  EXPECT_EQ(kEpsilon, std::ldexp(1.0, -52));
  EXPECT_TRUE(isMissing(kMissing));
  EXPECT_TRUE(isMissing(-kInf));
  EXPECT_FALSE(isMissing(-1.7e308));
  EXPECT_FALSE(isMissing(kNan));
}

TEST(Truncated, DropsTheFraction) {
  EXPECT_EQ(truncated(2.9), 2);
  EXPECT_EQ(truncated(-2.9), -2);
  EXPECT_EQ(truncated(2147483647.5), INT_MAX);
  EXPECT_EQ(truncated(-2147483648.5), INT_MIN);
}

TEST(Truncated, GivesTheLowestIntWhereNoneFits) {
  EXPECT_EQ(truncated(2147483648.0), INT_MIN);
  EXPECT_EQ(truncated(-1e300), INT_MIN);
  EXPECT_EQ(truncated(kNan), INT_MIN);
  EXPECT_EQ(truncated(kInf), INT_MIN);
}

TEST(Sum, AddsFromTheLeft) {
  Column v({1e16, 1, -1e16, 1});
  EXPECT_EQ(V_Sum2(&v, 4), 1.0);  // the first 1 is lost against 1e16
  EXPECT_EQ(V_Sum2(&v, 2), 1e16);
  EXPECT_EQ(V_Sum2(&v, 0), 0.0);
  EXPECT_EQ(V_Sum2(&v, -3), 0.0);
  EXPECT_EQ(V_Sum2(&v, 6), -1.0);  // two reads past the end, -1 each
}

TEST(Sum, OfIntsIsAReal) {
  IntColumn v({INT_MAX, INT_MAX, 1});
  EXPECT_EQ(V_Sum2(&v, 3), 4294967295.0);
}

TEST(IsConstant, ComparesTheFirstNElements) {
  Column v({2, 2, 3});
  EXPECT_EQ(V_IsConstant(&v, 2, -1), -1);
  EXPECT_EQ(V_IsConstant(&v, 3, -1), 0);
  EXPECT_EQ(V_IsConstant(&v, 1, -1), -1);
  EXPECT_EQ(V_IsConstant(&v, 0, -1), -1);
  Column nan({kNan, kNan});
  EXPECT_EQ(V_IsConstant(&nan, 2, -1), 0);
}

TEST(Largest, OfTheRowsWhoseFlagIsFalse) {
  Column v({4, 9, 7});
  short none[] = {0, 0, 0};
  short skipNine[] = {0, -1, 0};
  short ones[] = {1, 1, 1};
  short all[] = {-1, -1, -1};
  EXPECT_EQ(V_Max(&v, 3, none), 9);
  EXPECT_EQ(V_Max(&v, 3, skipNine), 7);
  EXPECT_EQ(V_Max(&v, 3, ones), 9);
  EXPECT_EQ(V_Max(&v, 3, all), kMissing);
  EXPECT_EQ(V_Max(&v, 0, none), kMissing);
  EXPECT_EQ(V_Max2(&v, 1), 4);
  EXPECT_EQ(V_Max2(&v, 3), 9);
  EXPECT_EQ(V_Max2(&v, 0), kMissing);
}

TEST(Largest, OfNegativeNumbersIsNegative) {
  Column v({-4, -9});
  EXPECT_EQ(V_Max2(&v, 2), -4);
}

TEST(Largest, PassesOverNan) {
  Column v({kNan, 3, kNan, 5, kNan});
  EXPECT_EQ(V_Max2(&v, 5), 5);
  Column infinite({-kInf, -kInf});
  EXPECT_EQ(V_Max2(&infinite, 2), -kInf);
}

TEST(Set1toN, IsTheIdentityPermutation) {
  Column v({0, 0, 0});
  V_Set1toN(&v, 2);
  EXPECT_EQ(elements(v), (std::vector<double>{1, 2, 0}));
}

TEST(InitVectorToFalse, SetsZero) {
  short flags[] = {-1, 1, 5};
  InitVectorToFalse(flags, 2);
  EXPECT_EQ(flags[0], 0);
  EXPECT_EQ(flags[1], 0);
  EXPECT_EQ(flags[2], 5);
  InitVectorToFalse(flags, -1);
  EXPECT_EQ(flags[2], 5);
}

TEST(Duplicate, CopiesPartOfAColumn) {
  Rows src({{1, 4}, {2, 5}, {3, 6}});
  Rows dst({{0, 0}, {0, 0}, {0, 0}});
  V_Duplicate(&src, 2, 2, 2, &dst, 1, 2);
  EXPECT_EQ(elements(dst), (std::vector<double>{0, 0, 0, 5, 6, 0}));
}

TEST(Duplicate, CopiesABlock) {
  Rows src({{1, 4, 7}, {2, 5, 8}, {3, 6, 9}});
  Rows dst({{0, 0, 0}, {0, 0, 0}, {0, 0, 0}});
  M_Duplicate(&src, 2, 2, &dst, 2, 1, 1, 2);
  EXPECT_EQ(elements(dst), (std::vector<double>{0, 0, 0, 2, 3, 0, 5, 6, 0}));
}

TEST(CopyBlock, GoesToTheFirstCell) {
  Rows src({{1, 4, 7}, {2, 5, 8}, {3, 6, 9}});
  Rows dst({{0, 0}, {0, 0}});
  M_CopyBlock(&src, 2, 3, 2, 3, &dst);
  EXPECT_EQ(elements(dst), (std::vector<double>{5, 6, 8, 9}));
}

TEST(QuadraticForm, IsTheDoubleSum) {
  Column v({1, 2, 99});
  Rows B({{1, 2}, {3, 4}});
  EXPECT_EQ(M_ProductTrVBV(&v, 2, &B), 1 + 2 * 2 + 2 * 3 + 4 * 4);
  EXPECT_EQ(M_ProductTrVBV(&v, 0, &B), 0.0);
}

TEST(Remove, ColumnsWhoseEntryIsSet) {
  Rows a({{1, 2, 3}, {4, 5, 6}});
  Column list({0, 1, 0});
  Rows dst({{9, 9, 9}, {9, 9, 9}});
  M_RemoveColsInList(&a, 2, 3, &list, &dst);
  EXPECT_EQ(elements(dst), (std::vector<double>{1, 4, 3, 6, 9, 9}));
}

TEST(Remove, RowsWhoseFlagIsSet) {
  Rows a({{1, 4}, {2, 5}, {3, 6}});
  IntColumn flags({0, 1, 0});
  Rows dst({{9, 9}, {9, 9}, {9, 9}});
  M_RemoveRowsInList(&a, 3, 2, &flags, &dst);
  EXPECT_EQ(elements(dst), (std::vector<double>{1, 3, 9, 4, 6, 9}));
}

TEST(Remove, OneColumn) {
  Rows a({{1, 2, 3}});
  Rows dst({{9, 9, 9}});
  M_RemoveCol(&a, 1, 3, 2, &dst);
  EXPECT_EQ(elements(dst), (std::vector<double>{1, 3, 9}));
}

TEST(SumByCols, AddsTheFirstRows) {
  Rows a({{1, 4}, {2, 5}, {3, 6}});
  Column sums({0, 0, 7});
  M_SumByCols(&a, 2, 2, &sums);
  EXPECT_EQ(elements(sums), (std::vector<double>{3, 9, 7}));
}

TEST(Extract, TakesARangeOfColumns) {
  Rows a({{1, 2, 3}, {4, 5, 6}});
  Rows dst({{0, 0}, {0, 0}});
  M_ExtractMatToMatByColDbl(&a, 2, 2, 3, &dst);
  EXPECT_EQ(elements(dst), (std::vector<double>{2, 5, 3, 6}));
}

TEST(GroupBy, GivesCountAndMeanOfEachKeyInAscendingOrder) {
  Rows a({{10, 2}, {20, 1}, {30, 2}, {kMissing, 1}, {kMissing, 3}});
  Rows groups({{0, 0, 0}, {0, 0, 0}, {0, 0, 0}, {7, 7, 7}});
  EXPECT_EQ(M_GroupBy(&a, 5, 2, 1, &groups), 3);
  EXPECT_EQ(elements(groups), (std::vector<double>{1, 2, 3, 7, 1, 2, 0, 7, 20, 20, kMissing, 7}));
}

TEST(GroupBy, LeavesOutRowsWithoutAKey) {
  Rows a({{10, kMissing}, {20, 1}});
  Rows groups({{0, 0, 0}, {7, 7, 7}});
  EXPECT_EQ(M_GroupBy(&a, 2, 2, 1, &groups), 1);
  EXPECT_EQ(elements(groups), (std::vector<double>{1, 7, 1, 7, 20, 7}));
}

TEST(GroupBy, OfNothingIsNothing) {
  Rows a({{1, 1}});
  Rows groups({{7, 7, 7}});
  EXPECT_EQ(M_GroupBy(&a, 0, 2, 1, &groups), 0);
  EXPECT_EQ(elements(groups), (std::vector<double>{7, 7, 7}));
}

TEST(Mean, IsWeightedAndSkipsFlaggedRows) {
  Column v({1, 5, 100});
  Column w({3, 1, 1});
  short skipLast[] = {0, 0, -1};
  short ones[] = {1, 1, 1};
  EXPECT_EQ(V_Mean(&v, 3, skipLast, &w), 2.0);
  EXPECT_EQ(V_Mean(&v, 3, ones, &w), 108.0 / 5.0);
  EXPECT_TRUE(std::isnan(V_Mean(&v, 0, skipLast, &w)));
}

TEST(Mean, LeavesOutMissingValues) {
  Column v({1, kMissing, 5, -kInf});
  EXPECT_EQ(V_Mean2(&v, 4), 3.0);
  EXPECT_EQ(V_Mean2(&v, 2), 1.0);
}

TEST(Variance, DividesByTheWeightLessOne) {
  Column v({1, 5, 100});
  Column w({3, 1, 1});
  short skipLast[] = {0, 0, -1};
  EXPECT_EQ(V_Var(&v, 3, skipLast, &w), 12.0 / 3.0);  // mean 2: 3 * 1 + 9
  double mean = 0;
  double sd = 0;
  V_MeanStdev(&v, 3, skipLast, &w, &mean, &sd);
  EXPECT_EQ(mean, 2.0);
  EXPECT_EQ(sd, 2.0);
}

TEST(Variance, DividesByNOrByOneLess) {
  Column v({1, 3, kMissing, 5});
  EXPECT_EQ(V_Var2(&v, 4, 0, 0), 8.0 / 3.0);
  EXPECT_EQ(V_Var2(&v, 4, -1, 0), 4.0);
  EXPECT_EQ(V_Var2(&v, 4, 1, 0), 8.0 / 3.0);
}

TEST(Counts, LeaveOutMissingValues) {
  Column v({2, kMissing, 2, 3, -kInf});
  EXPECT_EQ(V_NbNonMissing(&v, 5), 3);
  EXPECT_EQ(V_NbDistinct(&v, 5), 2);
  EXPECT_EQ(V_NbDistinct(&v, 0), 0);
  Column zeros({0.0, -0.0});
  EXPECT_EQ(V_NbDistinct(&zeros, 2), 1);
}

TEST(Quantile, InterpolatesBetweenOrderStatistics) {
  Column v({40, 10, 30, 20});
  EXPECT_EQ(V_Quantile(&v, 4, 0.5), 25.0);
  EXPECT_EQ(V_Quantile(&v, 4, 0.0), 10.0);
  EXPECT_EQ(V_Quantile(&v, 4, 1.0), 40.0);
  EXPECT_EQ(V_Quantile(&v, 4, 0.25), 17.5);  // position 1.75
  EXPECT_EQ(V_Quantile(&v, 3, 0.5), 30.0);
  EXPECT_EQ(V_Quantile(&v, 1, 0.5), 40.0);
  EXPECT_EQ(V_Quantile(&v, 0, 0.5), kMissing);
}

TEST(Quantile, OfTwoZerosTheNegativeOneIsFirst) {
  Column positive({0.0, -0.0, 1.0}), negative({-0.0, 0.0, 1.0});
  for (Column* zeros : {&positive, &negative}) {
    EXPECT_TRUE(std::signbit(V_Quantile(zeros, 3, 0.0)));
    EXPECT_FALSE(std::signbit(V_Quantile(zeros, 3, 0.5)));
  }
}

TEST(Quantile, AtNotANumberIsNotANumber) {
  Column v({1, 2});
  EXPECT_TRUE(std::isnan(V_Quantile(&v, 2, std::numeric_limits<double>::quiet_NaN())));
  EXPECT_EQ(V_Quantile(&v, 0, std::numeric_limits<double>::quiet_NaN()), kMissing);
}

TEST(Quantile, OutsideZeroToOneEndsAtTheExtremes) {
  Column v({40, 10, 30});
  EXPECT_EQ(V_Quantile(&v, 3, -0.5), 10.0);
  EXPECT_EQ(V_Quantile(&v, 3, 1.5), 40.0);
  EXPECT_EQ(V_Quantile(&v, 3, -kInf), 10.0);
  EXPECT_EQ(V_Quantile(&v, 3, kInf), 40.0);
  // Of one value every position is the first, infinite ones included.
  EXPECT_EQ(V_Quantile(&v, 1, -kInf), 40.0);
  EXPECT_EQ(V_Quantile(&v, 1, kInf), 40.0);
}

TEST(Quantile, LeavesOutFlaggedRows) {
  Column v({40, 10, 30, 20});
  short skip[] = {-1, 0, 1, 0};
  EXPECT_EQ(V_QuantileM(&v, 4, skip, 0.5), 20.0);
  short all[] = {-1, -1, -1, -1};
  EXPECT_EQ(V_QuantileM(&v, 4, all, 0.5), kMissing);
}

TEST(Quantile, WithInfinitiesAtAnOrderStatisticIsThatOne) {
  Column v({-kInf, 1, kInf});
  EXPECT_EQ(V_Quantile(&v, 3, 0.5), 1.0);
  EXPECT_EQ(V_Quantile(&v, 3, 1.0), kInf);
  EXPECT_EQ(V_Quantile(&v, 3, 0.0), -kInf);
}

TEST(Quantile, BetweenValuesFurtherApartThanADoubleReachesIsTheirMixture) {
  constexpr double large = 1.7e308;
  Column v({large, -large});
  EXPECT_EQ(V_Quantile(&v, 2, 0.5), 0.0);
  EXPECT_DOUBLE_EQ(V_Quantile(&v, 2, 0.25), -large / 2);  // 3/4 of the one, 1/4 of the other
  EXPECT_DOUBLE_EQ(V_Quantile(&v, 2, 0.75), large / 2);
  short none[] = {0, 0};
  EXPECT_EQ(V_QuantileM(&v, 2, none, 0.5), 0.0);
  Column infinite({-kInf, large});
  EXPECT_EQ(V_Quantile(&infinite, 2, 1.0), large);
}

TEST(SuperMatrix, MakesAndDeletesZeroMatrices) {
  matrix* arr[3];
  iniSuperMat(arr, 3, 2, 2);
  for (const matrix* m : arr) EXPECT_EQ(elements(*m), (std::vector<double>(4, 0.0)));
  EXPECT_NE(arr[0], arr[1]);
  deletecascade(arr, 3);
  EXPECT_EQ(arr[0], nullptr);
  iniSuperMat(arr, 0, 2, 2);
  deletecascade(arr, 0);
  for (const int count : {-1, std::numeric_limits<int>::min()}) deletecascade(nullptr, count);
}

}  // namespace
