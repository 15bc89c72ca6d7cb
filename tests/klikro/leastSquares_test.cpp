// OLSBasic: least squares, weighted or not, with an intercept or without.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "Klikro/Klikro"
#include "tests/support/matrices.h"

namespace {

using survmeth::test::Column;
using survmeth::test::elements;
using survmeth::test::Rows;

TEST(LeastSquares, FitsALineExactly) {
  Column x({1, 2, 3, 4});
  Column y({5, 7, 9, 11});  // 3 + 2 x
  Column w({1, 1, 1, 1});
  matrix coefficients(2, 1, 9);
  matrix residuals(4, 1, 9);
  OLSBasic(4, 1, &x, &y, &w, 1, 0, 0, 1e-4, &coefficients, &residuals);
  EXPECT_NEAR(coefficients.vbget(1, 1), 2, 1e-14);
  EXPECT_NEAR(coefficients.vbget(2, 1), 3, 1e-14);
  for (int i = 1; i <= 4; ++i) EXPECT_NEAR(residuals.vbget(i, 1), 0, 1e-13);
}

TEST(LeastSquares, WeightsActAsRepeatedRows) {
  Column x({0, 1, 2});
  Column y({0, 1, 5});
  Column w({1, 2, 1});
  matrix coefficients(2, 1, 0);
  matrix residuals(3, 1, 0);
  OLSBasic(3, 1, &x, &y, &w, 1, 0, 0, 1e-4, &coefficients, &residuals);
  // rows (0,0), (1,1), (1,1), (2,5): slope 5/2, intercept 7/4 - 5/2 = -3/4
  EXPECT_NEAR(coefficients.vbget(1, 1), 2.5, 1e-14);
  EXPECT_NEAR(coefficients.vbget(2, 1), -0.75, 1e-14);
  EXPECT_NEAR(residuals.vbget(3, 1), 0.75, 1e-14);
}

TEST(LeastSquares, WithoutInterceptGoesThroughTheOrigin) {
  Column x({1, 2});
  Column y({2, 5});
  Column w({1, 1});
  matrix coefficients(2, 1, 9);
  matrix residuals(2, 1, 9);
  OLSBasic(2, 1, &x, &y, &w, 1, 0, -1, 1e-4, &coefficients, &residuals);
  EXPECT_NEAR(coefficients.vbget(1, 1), 12.0 / 5.0, 1e-14);
  EXPECT_EQ(coefficients.vbget(2, 1), 0.0);
  EXPECT_NEAR(residuals.vbget(1, 1), -0.4, 1e-14);
}

TEST(LeastSquares, AnInterceptFlagOfOneIsFalse) {
  Column x({1, 2});
  Column y({2, 5});
  Column w({1, 1});
  matrix coefficients(2, 1, 9);
  matrix residuals(2, 1, 9);
  OLSBasic(2, 1, &x, &y, &w, 1, 0, 1, 1e-4, &coefficients, &residuals);
  EXPECT_NEAR(coefficients.vbget(1, 1), 3, 1e-14);
  EXPECT_NEAR(coefficients.vbget(2, 1), -1, 1e-14);
}

TEST(LeastSquares, ADependentColumnGetsZero) {
  Rows x({{1, 2}, {2, 4}, {3, 6}});
  Column y({1, 2, 3});
  Column w({1, 1, 1});
  matrix coefficients(3, 1, 9);
  matrix residuals(3, 1, 9);
  OLSBasic(3, 2, &x, &y, &w, 1, 0, 0, 1e-4, &coefficients, &residuals);
  EXPECT_NEAR(coefficients.vbget(1, 1), 1, 1e-14);
  EXPECT_EQ(coefficients.vbget(2, 1), 0.0);
  EXPECT_NEAR(coefficients.vbget(3, 1), 0, 1e-14);
}

TEST(LeastSquares, AConstantColumnTakesThePlaceOfTheIntercept) {
  Rows x({{5}, {5}});
  Column y({10, 20});
  Column w({1, 1});
  matrix coefficients(2, 1, 9);
  matrix residuals(2, 1, 9);
  OLSBasic(2, 1, &x, &y, &w, 1, 0, 0, 1e-4, &coefficients, &residuals);
  EXPECT_NEAR(coefficients.vbget(1, 1), 3, 1e-14);
  EXPECT_EQ(coefficients.vbget(2, 1), 0.0);
}

TEST(LeastSquares, AColumnOfZerosGetsZero) {
  Rows x({{0}, {0}});
  Column y({10, 20});
  Column w({1, 1});
  matrix coefficients(2, 1, 9);
  matrix residuals(2, 1, 9);
  OLSBasic(2, 1, &x, &y, &w, 1, 0, 0, 1e-4, &coefficients, &residuals);
  EXPECT_EQ(coefficients.vbget(1, 1), 0.0);
  EXPECT_NEAR(coefficients.vbget(2, 1), 15, 1e-13);
}

TEST(LeastSquares, ScalesOfTheColumnsDoNotMatter) {
  // Rows (0, 1), (1, 3), (2, 4), (3, 8): slope 11/5, intercept 7/10; powers of two change nothing.
  const double slope = 2.2, intercept = 0.7;
  for (const int scale : {0, -565, 532, -1000, 1000}) {  // 1, 1e-170, 1e160 and further
    for (const int height : {0, -500, 500}) {
      const double s = std::ldexp(1.0, scale), h = std::ldexp(1.0, height);
      Column x({0, s, 2 * s, 3 * s});
      Column y({h, 3 * h, 4 * h, 8 * h});
      Column w({1, 1, 1, 1});
      matrix coefficients(2, 1, 9);
      matrix residuals(4, 1, 9);
      OLSBasic(4, 1, &x, &y, &w, 1, 0, 0, 1e-4, &coefficients, &residuals);
      const double expected = std::ldexp(slope, height - scale);
      if (std::isnormal(expected)) {
        EXPECT_NEAR(coefficients.vbget(1, 1) / expected, 1, 1e-14) << scale << ", " << height;
        EXPECT_NEAR(residuals.vbget(4, 1) / h, 0.7, 1e-13) << scale << ", " << height;
      }
      EXPECT_NEAR(coefficients.vbget(2, 1) / h, intercept, 1e-13) << scale << ", " << height;
    }
  }
}

TEST(LeastSquares, ScalesOfTheWeightsDoNotMatter) {
  for (const double scale : {1.0, 1e-320, 1e-300, 1e300}) {
    Column x({0, 1, 2});
    Column y({0, 1, 5});
    Column w({scale, 2 * scale, scale});
    matrix coefficients(2, 1, 0);
    matrix residuals(3, 1, 0);
    OLSBasic(3, 1, &x, &y, &w, 1, 0, 0, 1e-4, &coefficients, &residuals);
    // As with weights 1, 2, 1; those below the normal numbers keep some digits only.
    const double digits = scale < 1e-310 ? 1e-3 : 1e-13;
    EXPECT_NEAR(coefficients.vbget(1, 1), 2.5, digits) << scale;
    EXPECT_NEAR(coefficients.vbget(2, 1), -0.75, digits) << scale;
  }
}

TEST(LeastSquares, OfNoRowsIsZero) {
  matrix none(0, 1, 0);
  matrix coefficients(2, 1, 9);
  matrix residuals(0, 1, 9);
  OLSBasic(0, 1, &none, &none, &none, 1, 0, 0, 1e-4, &coefficients, &residuals);
  EXPECT_EQ(elements(coefficients), (std::vector<double>{0, 0}));
}

}  // namespace
