// One row of the validation table.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "Klikro/Klikro"
#include "survival/calls/validation.h"
#include "survival/validation/validation.h"
#include "tests/support/csv.h"
#include "tests/support/page.h"

namespace {

using survmeth::test::Csv;
using survmeth::test::Page;
using Vector = std::vector<double>;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

// Twelve rows with one covariate, which orders the times perfectly: nu = 10.
struct Model {
  int n = 12;
  int p = 1;
  Vector time, status, X, beta = {-1}, H = Vector(9, 50.0), F = Vector(12, 60.0);

  Model(double F31, double F32, double H11 = 1, double H12 = 4) {
    for (int i = 1; i <= n; ++i) {
      time.push_back(i);
      status.push_back(1);
      X.push_back(i);
    }
    F[2] = F31;
    F[8] = F32;
    H[0] = H11;
    H[3] = H12;
  }

  Vector table(int row = 1, int nOut = 1, double left = 70.0) {
    Vector cells(static_cast<std::size_t>(nOut > 0 ? nOut : 1) * 5, left);
    Cpp_ComputeCVTable(n, p, time.data(), status.data(), X.data(), beta.data(), H.data(), F.data(),
                       row, nOut, cells.data());
    return cells;
  }
};

TEST(ComputeCVTable, TheMeasuresByTheirFormulas) {
  const Vector row = Model(20, 15).table();
  // 2/10 (20 - 15) = 1
  EXPECT_DOUBLE_EQ(row[0], 1 - std::exp(-1.0));
  EXPECT_DOUBLE_EQ(row[1], (1 - std::exp(-1.0)) / (1 - std::exp(-40.0) / 10));
  EXPECT_DOUBLE_EQ(row[2], 3 / 4.0);
  EXPECT_EQ(row[3], 1.0);
  EXPECT_EQ(row[4], 1.0);
}

TEST(ComputeCVTable, NuDividesTheExponentialAndNotItsExponent) {
  const Vector row = Model(0.5, 0.25).table();
  const double measure = 1 - std::exp(-0.05);
  EXPECT_DOUBLE_EQ(row[0], measure);
  EXPECT_DOUBLE_EQ(row[1], measure / (1 - std::exp(-1.0) / 10));
  EXPECT_GT(std::fabs(row[1] - measure / (1 - std::exp(-0.1))), 0.1);
}

TEST(ComputeCVTable, AMuchWorseModelReadsOne) {
  // 2/10 (F31 - F32) is -700 exactly, then below.
  const Vector at = Model(0, 3500).table();
  EXPECT_DOUBLE_EQ(at[0], 1 - std::exp(700.0));
  const Vector below = Model(0, 3500.5).table();
  EXPECT_EQ(below[0], 1.0);
  EXPECT_DOUBLE_EQ(below[1], 1 / (1 - 1 / 10.0));
}

TEST(ComputeCVTable, TheSecondMeasureEqualsTheFirstBelowItsOwnBound) {
  // 2 F31 / 10 is -700 exactly: the exponential is infinite, and the measure minus 0.
  const Vector at = Model(-3500, -3505).table();
  EXPECT_EQ(at[1], 0.0);
  EXPECT_TRUE(std::signbit(at[1]));
  const Vector below = Model(-3500.5, -3505.5).table();
  EXPECT_EQ(below[1], below[0]);
  EXPECT_DOUBLE_EQ(below[0], 1 - std::exp(-1.0));
}

TEST(ComputeCVTable, TheImprovementIsNeverNegative) {
  EXPECT_EQ(Model(20, 15, 5, 4).table()[2], 0.0);
  EXPECT_EQ(Model(20, 15, 4, 4).table()[2], 0.0);
  EXPECT_EQ(Model(20, 15, -4, 4).table()[2], 2.0);
  EXPECT_EQ(Model(20, 15, 1, 0).table()[2], 0.0);
  EXPECT_EQ(Model(20, 15, 1, -4).table()[2], 0.0);
  EXPECT_EQ(Model(20, 15, 1, kNan).table()[2], 0.0);
  EXPECT_EQ(Model(20, 15, kNan, 4).table()[2], 0.0);
  EXPECT_EQ(Model(20, 15, -kInf, 4).table()[2], kInf);
}

TEST(ComputeCVTable, ReversedAndConstantScores) {
  Model model(20, 15);
  model.beta = {1};
  EXPECT_EQ(model.table()[3], 0.0);
  EXPECT_EQ(model.table()[4], -1.0);
  model.beta = {0};
  EXPECT_EQ(model.table()[3], 0.0);
  EXPECT_EQ(model.table()[4], -1.0);
}

TEST(ComputeCVTable, WithoutAUsablePairTheSecondLastIsMissingAndTheLastOverflows) {
  Model model(20, 15);
  model.status = Vector(12, 0.0);
  const Vector row = model.table();
  EXPECT_EQ(row[3], kMissing);
  EXPECT_EQ(row[4], -kInf);
}

TEST(ComputeCVTable, OnlyItsRowIsWritten) {
  const Vector cells = Model(20, 15).table(2, 3);
  for (int column = 0; column < 5; ++column) {
    EXPECT_EQ(cells[3 * column], 70.0);
    EXPECT_NE(cells[3 * column + 1], 70.0);
    EXPECT_EQ(cells[3 * column + 2], 70.0);
  }
}

TEST(ComputeCVTable, ARowOutsideTheTableFollowsItsLinearPositions) {
  // Row 3 of a table of two is row 1 of the next column; the last column is dropped.
  const Vector next = Model(20, 15).table(3, 2);
  EXPECT_EQ(next[0], 70.0);
  EXPECT_DOUBLE_EQ(next[2], 1 - std::exp(-1.0));
  EXPECT_EQ(next[8], 1.0);
  for (const int i : {1, 3, 5, 7, 9}) EXPECT_EQ(next[i], 70.0);
  for (const int row : {11, -9, std::numeric_limits<int>::max()}) {
    EXPECT_EQ(Model(20, 15).table(row, 2), Vector(10, 70.0));
  }
  for (const int nOut : {0, -3}) EXPECT_EQ(Model(20, 15).table(1, nOut), Vector(5, 70.0));
}

TEST(ComputeCVTable, NuOfZeroFollowsTheArithmeticOfInfinities) {
  Model model(20, 15);
  model.p = 11;
  model.X.resize(12 * 11);
  model.beta = Vector(11, 0.0);
  model.beta[0] = -1;
  Vector row = model.table();
  EXPECT_EQ(row[0], 1.0);  // 1 - exp(-inf)
  EXPECT_EQ(row[1], 0.0);  // 1 / (1 - exp(-40) / 0)
  EXPECT_EQ(row[3], 1.0);
  model.F[8] = 20;  // no gain: inf 0
  row = model.table();
  EXPECT_TRUE(std::isnan(row[0]));
  EXPECT_TRUE(std::isnan(row[1]));
  model.F[8] = 25;  // worse: -inf
  EXPECT_EQ(model.table()[0], 1.0);
}

TEST(ComputeCVTable, NotANumberPassesThrough) {
  const Vector row = Model(kNan, 15).table();
  EXPECT_TRUE(std::isnan(row[0]));
  EXPECT_TRUE(std::isnan(row[1]));
  EXPECT_EQ(row[2], 3 / 4.0);
  EXPECT_EQ(row[3], 1.0);
}

TEST(ComputeCVTable, WithoutCovariatesOneElementIsEnough) {
  Model model(20, 15);
  model.p = 0;
  model.n = 11;
  model.X.resize(11);
  model.beta.resize(1);
  const Vector row = model.table();
  EXPECT_DOUBLE_EQ(row[0], 1 - std::exp(-1.0));  // nu = 10
  EXPECT_EQ(row[3], 0.0);
}

TEST(ComputeCVTable, WithoutRowsTheIndexIsMissing) {
  for (const int n : {0, -1, std::numeric_limits<int>::min()}) {
    Model model(20, 15);
    model.n = n;
    const Vector row = model.table();
    const double nu = static_cast<double>(n) - 2.0;
    EXPECT_DOUBLE_EQ(row[0], 1 - std::exp(-2 / nu * 5));
    EXPECT_EQ(row[3], kMissing);
    EXPECT_EQ(row[4], -kInf);
  }
}

TEST(ComputeCVTable, SmallerMatricesReadMinusOne) {
  matrix time(2, 1, 1), status(2, 1, 1), X(2, 1, 1), beta(1, 1, 1), none(0, 0, 0);
  matrix table(1, 5, 70);
  EXPECT_EQ(ComputeCVTable(12, 1, &time, &status, &X, &beta, &none, &none, 1, &table), 0);
  EXPECT_EQ(table.vbget(1, 1), 0.0);  // equal criteria
  EXPECT_EQ(table.vbget(1, 3), 0.0);
  EXPECT_EQ(ComputeCVTable(12, 1, &time, &status, &X, &beta, &none, &none, 1, &none), 0);
}

// The worked example of docs/statistics/validation.md.
TEST(ComputeCVTable, LungCancerExample) {
  const Csv data(SURVMETH_DATA "/lung.csv");
  const Csv coefficients(SURVMETH_REFERENCE "/cox_lung_coefficients.csv");
  const Csv fit(SURVMETH_REFERENCE "/cox_lung_fit.csv");
  const Csv pairs(SURVMETH_REFERENCE "/concordance_lung.csv");
  Vector time, status, X;
  std::vector<Vector> columns(3);
  for (std::size_t i = 0; i < data.rows(); ++i) {
    if (data.text("ph.ecog", i).empty()) continue;
    time.push_back(data.number("time", i));
    status.push_back(data.number("status", i));
    columns[0].push_back(data.number("age", i));
    columns[1].push_back(data.text("sex", i) == "male" ? 1 : 0);
    columns[2].push_back(data.number("ph.ecog", i));
  }
  for (const Vector& column : columns) X.insert(X.end(), column.begin(), column.end());
  Vector beta = coefficients.numbers("coef");
  Vector H(9, 0.0), F(12, 0.0), table(5, 0.0);
  H[0] = 3;
  H[3] = fit.number("lr", 0);
  F[2] = -2 * fit.number("loglik.null", 0);
  F[8] = -2 * fit.number("loglik", 0);
  Cpp_ComputeCVTable(static_cast<int>(time.size()), 3, time.data(), status.data(), X.data(),
                     beta.data(), H.data(), F.data(), 1, 1, table.data());
  const Page page("validation");
  const int rows = static_cast<int>(time.size());
  page.says("the %d rows with a performance score; Cox scores %.4f age + %.4f male + %.4f ph.ecog",
            rows, beta[0], beta[1], beta[2]);
  page.says("is %.2f on %.0f degrees of freedom, nu = %d", H[3], H[0], rows - 1 - 3);
  page.says("| 1 | %.4f | the usual 1 - exp(-%.2f / %d) is %.4f |", table[0], H[3], rows,
            1 - std::exp(-H[3] / rows));
  page.says("| 2 | %.4f | |", table[1]);
  page.says("| 3 | %.4f | |", table[2]);
  const auto count = [&](const char* name) { return static_cast<int>(pairs.number(name, 0)); };
  const int concordant = count("concordant"), usable = count("usable");
  page.says("| 4 | %.4f | %d,%03d of %d,%03d pairs;", table[3], concordant / 1000,
            concordant % 1000, usable / 1000, usable % 1000);
  page.says("| 5 | %.4f | |", table[4]);
  // What another program makes of the pairs.
  const int programs =
      count("program.concordant") + count("program.discordant") + count("program.tied");
  page.says("R's `concordance` gives %.4f, with half credit for %d tied pairs and %d more pairs",
            pairs.number("program.index", 0), count("program.tied"), programs - usable);
}

}  // namespace
