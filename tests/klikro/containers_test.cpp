// The containers: one linear position, -1 sentinels, views and copies.
#include <gtest/gtest.h>

#include <limits>
#include <new>
#include <type_traits>
#include <vector>

#include "Klikro/Klikro"
#include "tests/support/matrices.h"

namespace {

using survmeth::test::Column;
using survmeth::test::elements;
using survmeth::test::Rows;

TEST(Matrix, ElementsAreStoredColumnByColumn) {
  std::vector<double> block = {1, 2, 3, 4, 5, 6};
  const matrix m(3, 2, block.data(), 0, 0);
  EXPECT_EQ(m.vbget(1, 1), 1);
  EXPECT_EQ(m.vbget(3, 1), 3);
  EXPECT_EQ(m.vbget(1, 2), 4);
  EXPECT_EQ(m.vbget(3, 2), 6);
  EXPECT_EQ(m.rows(), 3);
  EXPECT_EQ(m.cols(), 2);
  EXPECT_EQ(m.count(), 6);
}

TEST(Matrix, ReadsOutsideGiveMinusOne) {
  const Column v({7, 8, 9});
  EXPECT_EQ(v.vbget(4, 1), -1.0);
  EXPECT_EQ(v.vbget(0, 1), -1.0);
  EXPECT_EQ(v.vbget(-5, 1), -1.0);
  EXPECT_EQ(v.vbget(1, 2), -1.0);
  EXPECT_EQ(v.vbget(std::numeric_limits<int>::max(), 1), -1.0);
  EXPECT_EQ(v.vbget(std::numeric_limits<int>::min(), 1), -1.0);
}

TEST(Matrix, OnlyTheLinearPositionIsChecked) {
  const Rows m({{1, 4}, {2, 5}, {3, 6}});
  EXPECT_EQ(m.vbget(4, 1), 4);  // the first element of the second column
  EXPECT_EQ(m.vbget(0, 2), 3);  // the last element of the first
  EXPECT_EQ(m.vbget(4, 2), -1.0);
  EXPECT_EQ(m.vbget(1, 0), -1.0);
  EXPECT_EQ(m.vbget(4, 0), 1);
}

TEST(Matrix, WritesOutsideAreDropped) {
  Column v({7, 8, 9});
  v.vbset(4, 1, 1);
  v.vbset(0, 1, 1);
  v.vbset(1, 2, 1);
  v.vbset(-1, 1, 1);
  EXPECT_EQ(elements(v), (std::vector<double>{7, 8, 9}));
  v.vbset(2, 1, 5);
  EXPECT_EQ(elements(v), (std::vector<double>{7, 5, 9}));
}

TEST(Matrix, WithoutElementsEveryReadIsMinusOne) {
  for (const auto& shape : std::vector<std::pair<int, int>>{{0, 0}, {3, 0}, {0, 3}, {-2, 3}}) {
    matrix m(shape.first, shape.second, 5);
    EXPECT_EQ(m.count(), 0);
    m.vbset(1, 1, 4);
    EXPECT_EQ(m.vbget(1, 1), -1.0);
    EXPECT_EQ(m.vbget(0, 0), -1.0);
  }
}

TEST(Matrix, TwoNegativeCountsMakeNoElements) {
  const matrix m(-3, -4, 1);
  EXPECT_EQ(m.count(), 0);
}

TEST(Matrix, FillsWithAWholeNumberOrAReal) {
  EXPECT_EQ(elements(matrix(2, 2, 1)), (std::vector<double>(4, 1.0)));
  EXPECT_EQ(elements(matrix(2, 1, 0.25)), (std::vector<double>(2, 0.25)));
}

TEST(Matrix, ACopyReachesTheCallerOnlyWhenCopiedBack) {
  std::vector<double> block = {1, 2};
  matrix m(2, 1, block.data(), 0, 0);
  m.vbset(1, 1, 9);
  EXPECT_EQ(block[0], 1);
  m.copyMatTo(block.data());
  EXPECT_EQ(block, (std::vector<double>{9, 2}));
}

TEST(Matrix, AViewWritesIntoTheCallersBlock) {
  std::vector<double> block = {1, 2};
  {
    matrix view(2, 1, block.data(), true);
    view.vbset(2, 1, 9);
    EXPECT_EQ(block[1], 9);
    block[0] = 4;
    EXPECT_EQ(view.vbget(1, 1), 4);
  }
  EXPECT_EQ(block, (std::vector<double>{4, 9}));  // and the destructor leaves it alone
}

TEST(Matrix, NotBorrowedIsACopy) {
  std::vector<double> block = {1, 2};
  matrix copy(2, 1, block.data(), false);
  copy.vbset(2, 1, 9);
  EXPECT_EQ(block[1], 2);
}

TEST(Matrix, CopiesAnotherVector) {
  Column source({1, 2, 3});
  matrix copy(3, &source);
  copy.vbset(1, 1, 9);
  EXPECT_EQ(elements(copy), (std::vector<double>{9, 2, 3}));
  EXPECT_EQ(source.vbget(1, 1), 1);
}

TEST(Matrix, CopiesIntoAMatrixOfTheSameShape) {
  const Column source({1, 2, 3});
  Column target({0, 0, 0});
  source.copyMatTo(&target);
  EXPECT_EQ(elements(target), (std::vector<double>{1, 2, 3}));
}

TEST(Matrix, CopyingIntoASmallerMatrixStaysInside) {
  const Column source({1, 2, 3});
  Column small({0, 0});
  source.copyMatTo(&small);
  EXPECT_EQ(elements(small), (std::vector<double>{1, 2}));
  Column large({0, 0, 0, 7});
  source.copyMatTo(&large);
  EXPECT_EQ(elements(large), (std::vector<double>{1, 2, 3, 7}));
}

TEST(Matrix, CopiesOneColumn) {
  const Rows m({{1, 4}, {2, 5}});
  Column target({0, 0});
  m.copyCol(&target, 2, 0);
  EXPECT_EQ(elements(target), (std::vector<double>{4, 5}));
}

TEST(Matrix, MatCheckCreatesWhereThereIsNone) {
  matrix* target = nullptr;
  matrix::matCheck(target, 2, 1, 0.5);
  EXPECT_EQ(elements(*target), (std::vector<double>{0.5, 0.5}));
  delete target;
}

TEST(Matrix, MatCheckKeepsABufferThatFits) {
  auto* target = new matrix(2, 1, 7);
  const double* buffer = target->data();
  matrix::matCheck(target, 2, 1, 0.0);
  EXPECT_EQ(target->data(), buffer);
  EXPECT_EQ(elements(*target), (std::vector<double>{0, 0}));
  delete target;
}

TEST(Matrix, MatCheckReshapesInPlace) {
  auto* target = new matrix(2, 3, 7);
  matrix* const before = target;
  matrix::matCheck(target, 4, 1, 1.0);
  EXPECT_EQ(target, before);  // routines hand the pointer on by value
  EXPECT_EQ(target->rows(), 4);
  EXPECT_EQ(target->cols(), 1);
  EXPECT_EQ(elements(*target), (std::vector<double>(4, 1.0)));
  delete target;
}

TEST(Matrix, MatCheckOfAViewThatFitsWritesTheCallersBlock) {
  std::vector<double> block = {5, 6};
  matrix view(2, 1, block.data(), true);
  matrix* target = &view;
  matrix::matCheck(target, 2, 1, 0.0);
  EXPECT_EQ(block, (std::vector<double>{0, 0}));
}

TEST(Matrix, MatCheckOfAViewThatDoesNotFitLeavesTheCallersBlock) {
  std::vector<double> block = {5, 6};
  matrix view(2, 1, block.data(), true);
  matrix* target = &view;
  matrix::matCheck(target, 3, 1, 0.0);
  EXPECT_EQ(block, (std::vector<double>{5, 6}));
  EXPECT_EQ(view.count(), 3);
}

TEST(Matrix, MatCheckToANegativeShapeLeavesNoElements) {
  auto* target = new matrix(2, 2, 1);
  matrix::matCheck(target, -1, 2, 0.0);
  EXPECT_EQ(target->count(), 0);
  delete target;
}

TEST(Matrix, MoreElementsThanAnIntCountsFailAsAnAllocation) {
  EXPECT_THROW(matrix(100000, 100000, 0), std::bad_alloc);
  EXPECT_THROW(matrixInt(100000, 100000, 0), std::bad_alloc);
}

TEST(Matrix, IsDestroyedThroughItsBase) {
  EXPECT_TRUE(std::has_virtual_destructor_v<matrix>);
  EXPECT_TRUE(std::has_virtual_destructor_v<matrixInt>);
  EXPECT_FALSE(std::is_polymorphic_v<Smatrix>);
}

TEST(MatrixInt, FollowsTheSameRules) {
  std::vector<int> block = {1, 2, 3, 4};
  matrixInt copy(2, 2, block.data(), false);
  EXPECT_EQ(copy.vbget(1, 2), 3);
  EXPECT_EQ(copy.vbget(3, 1), 3);
  EXPECT_EQ(copy.vbget(3, 2), -1);
  EXPECT_EQ(copy.vbget(0, 1), -1);
  copy.vbset(5, 1, 9);
  copy.vbset(2, 2, 8);
  EXPECT_EQ(block[3], 4);
  copy.copyMatTo(block.data());
  EXPECT_EQ(block, (std::vector<int>{1, 2, 3, 8}));

  matrixInt view(2, 2, block.data(), true);
  view.vbset(1, 1, 7);
  EXPECT_EQ(block[0], 7);

  matrixInt filled(1, 2, 3);
  copy.copyMatTo(&filled);
  EXPECT_EQ(survmeth::test::elements(filled), (std::vector<int>{1, 2}));
}

TEST(MatrixInt, ReInitZeroesEveryElement) {
  matrixInt m(2, 2, 5);
  m.ReInit();
  EXPECT_EQ(survmeth::test::elements(m), (std::vector<int>(4, 0)));
}

TEST(MatrixInt, MatCheckTruncatesTheFill) {
  matrixInt* target = nullptr;
  matrixInt::matCheck(target, 2, 1, -1.9);
  EXPECT_EQ(survmeth::test::elements(*target), (std::vector<int>{-1, -1}));
  matrixInt::matCheck(target, 1, 3, 0.0);
  EXPECT_EQ(survmeth::test::elements(*target), (std::vector<int>{0, 0, 0}));
  delete target;
}

TEST(Smatrix, ReadsCopiesAndEmptyStringsOutside) {
  wchar_t first[] = L"ill";
  wchar_t second[] = L"";
  wchar_t third[] = L"gesund ü";
  wchar_t* labels[] = {first, second, third};
  const Smatrix m(3, 1, labels, 0, 0);
  first[0] = L'a';
  EXPECT_EQ(m.vbget(1, 1), L"ill");
  EXPECT_EQ(m.vbget(2, 1), L"");
  EXPECT_EQ(m.vbget(3, 1), L"gesund ü");
  EXPECT_EQ(m.vbget(4, 1), L"");
  EXPECT_EQ(m.vbget(0, 1), L"");
  EXPECT_EQ(m.vbget(1, 2), L"");
}

TEST(Smatrix, ANegativeCountMakesNoElements) {
  const Smatrix m(-1, 1, nullptr, 0, 0);
  EXPECT_EQ(m.count(), 0);
  EXPECT_EQ(m.vbget(1, 1), L"");
}

TEST(Inverse, OfATwoByTwoMatrix) {
  const Rows m({{4, 7}, {2, 6}});  // determinant 10
  matrix result(2, 2, 9);
  short status = 5;
  m.inverse1(&result, status, 0.0);
  EXPECT_EQ(status, 0);
  EXPECT_NEAR(result.vbget(1, 1), 0.6, 1e-15);
  EXPECT_NEAR(result.vbget(1, 2), -0.7, 1e-15);
  EXPECT_NEAR(result.vbget(2, 1), -0.2, 1e-15);
  EXPECT_NEAR(result.vbget(2, 2), 0.4, 1e-15);
}

TEST(Inverse, PivotsByRows) {
  const Rows m({{0, 2}, {4, 0}});
  matrix result(2, 2, 9);
  short status = 5;
  m.inverse1(&result, status, 0.0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(elements(result), (std::vector<double>{0, 0.5, 0.25, 0}));
}

TEST(Inverse, OfASingularMatrixIsAllZeros) {
  const Rows m({{1, 2}, {2, 4}});
  matrix result(2, 2, 9);
  short status = 5;
  m.inverse1(&result, status, 0.0);
  EXPECT_EQ(status, -1);
  EXPECT_EQ(elements(result), (std::vector<double>(4, 0.0)));
}

TEST(Inverse, APivotAtTheToleranceIsSingular) {
  const Column tiny({1e-12});
  matrix result(1, 1, 9);
  short status = 5;
  tiny.inverse1(&result, status, 1e-12);
  EXPECT_EQ(status, -1);
  EXPECT_EQ(result.vbget(1, 1), 0.0);
  tiny.inverse1(&result, status, 0.99e-12);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(result.vbget(1, 1), 1e12);
}

TEST(Inverse, WithToleranceZeroATinyPivotIsRegular) {
  const Column tiny({1e-300});
  matrix result(1, 1, 9);
  short status = 5;
  tiny.inverse1(&result, status, 0.0);
  EXPECT_EQ(status, 0);
  EXPECT_DOUBLE_EQ(result.vbget(1, 1), 1e300);
}

TEST(Inverse, APivotThatIsNotANumberIsSingular) {
  const Column nan({std::numeric_limits<double>::quiet_NaN()});
  matrix result(1, 1, 9);
  short status = 5;
  nan.inverse1(&result, status, 0.0);
  EXPECT_EQ(status, -1);
  EXPECT_EQ(result.vbget(1, 1), 0.0);
}

TEST(Inverse, OfNothingSucceeds) {
  const matrix none(0, 0, 0);
  matrix result(0, 0, 0);
  short status = 5;
  none.inverse1(&result, status, 1e-12);
  EXPECT_EQ(status, 0);
}

TEST(Inverse, TimesTheMatrixIsTheIdentity) {
  const int n = 6;
  matrix hilbertLike(n, n, 0);
  for (int i = 1; i <= n; ++i) {
    for (int j = 1; j <= n; ++j) hilbertLike.vbset(i, j, (i == j ? 3.0 : 0.0) + 1.0 / (i + j));
  }
  matrix result(n, n, 0);
  short status = 5;
  hilbertLike.inverse1(&result, status, 0.0);
  ASSERT_EQ(status, 0);
  for (int i = 1; i <= n; ++i) {
    for (int j = 1; j <= n; ++j) {
      double product = 0;
      for (int k = 1; k <= n; ++k) product += hilbertLike.vbget(i, k) * result.vbget(k, j);
      EXPECT_NEAR(product, i == j ? 1.0 : 0.0, 1e-14);
    }
  }
}

}  // namespace
