// Deming regression, both estimators.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <numeric>
#include <string>
#include <vector>

#include "Dist/Dist"
#include "Klikro/Klikro"
#include "survival/methcomp/methcomp.h"
#include "survival/survival.h"
#include "tests/support/csv.h"
#include "tests/support/matrices.h"
#include "tests/support/page.h"
#include "tests/survival/methcomp/demingFit.h"

namespace {

using survmeth::test::Column;
using survmeth::test::Fit;
using survmeth::test::IntColumn;
using survmeth::test::Page;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

std::map<std::string, double> reference() {
  const survmeth::test::Csv csv(SURVMETH_REFERENCE "/methcomp/methcomp.csv");
  std::map<std::string, double> values;
  for (std::size_t i = 0; i < csv.rows(); ++i) values[csv.text("name", i)] = csv.number("value", i);
  return values;
}

const std::vector<double> kWright = {494, 395, 516, 434, 476, 557, 413, 442, 650,
                                     433, 417, 656, 267, 478, 178, 423, 427};
const std::vector<double> kMini = {512, 430, 520, 428, 500, 600, 364, 380, 658,
                                   445, 432, 626, 260, 477, 259, 350, 451};

TEST(Deming, WithEqualVariancesIsOrthogonalRegression) {
  const auto expected = reference();
  ASSERT_EQ(expected.size(), 14u);
  Fit f(kWright, kMini);
  f.run();
  const auto near = [&](double value, const char* name) {
    EXPECT_NEAR(value, expected.at(name), 1e-9 * std::fabs(expected.at(name))) << name;
  };
  near(f.a, "intercept");
  near(f.aLower, "intercept.lower");
  near(f.aUpper, "intercept.upper");
  near(f.b, "slope");
  near(f.bLower, "slope.lower");
  near(f.bUpper, "slope.upper");
  near(f.r, "correlation");
  Page("methcomp")
      .says("slope %.4f (%.4f to %.4f), intercept %.2f (%.2f to %.2f)", f.b, f.bLower, f.bUpper,
            f.a, f.aLower, f.aUpper);
}

TEST(Deming, AgreementAndRepeatabilityMatchTheReference) {
  const auto expected = reference();
  std::vector<double> x = kWright, y = kMini, d(17), mean(17);
  double bias, sd, lower, upper, loaLower, loaUpper;
  Cpp_BlandAltman(x.data(), y.data(), 17, 0, 0.05, d.data(), mean.data(), &bias, &sd, &lower,
                  &upper, &loaLower, &loaUpper);
  EXPECT_NEAR(bias, expected.at("bias"), 1e-12);
  EXPECT_NEAR(sd, expected.at("sd"), 1e-11);
  EXPECT_NEAR(lower, expected.at("bias.lower"), 1e-10);
  EXPECT_NEAR(upper, expected.at("bias.upper"), 1e-10);
  // The page gives the first method less the second, as published; the routine the reverse.
  std::swap(x, y);
  Cpp_BlandAltman(x.data(), y.data(), 17, 0, 0.05, d.data(), mean.data(), &bias, &sd, &lower,
                  &upper, &loaLower, &loaUpper);
  const Page page("methcomp");
  page.says("of %zu subjects by two meters", x.size());
  // As published: Bland & Altman, Lancet 1 (1986) 307-310.
  const double publishedBias = -2.1, publishedSd = 38.8;
  page.says("| bias | %.1f | %.1f |", bias, publishedBias);
  page.says("| standard deviation | %.1f | %.1f |", sd, publishedSd);
  page.says("| limits of agreement | %.1f and %.1f | %.1f and %.1f |", loaLower, loaUpper,
            publishedBias - 2 * publishedSd, publishedBias + 2 * publishedSd);
  page.says("A 95 %% prediction interval from %zu pairs takes %.2f standard deviations", x.size(),
            InvCDFStudent(0.975, 16) * std::sqrt(1 + 1 / 17.0));

  std::vector<double> values = kWright;
  for (const double second : {490., 397., 512., 401., 470., 611., 415., 431., 638., 429., 420.,
                              633., 275., 492., 165., 372., 421.}) {
    values.push_back(second);
  }
  std::vector<double> subjects(34);
  for (int i = 0; i < 34; ++i) subjects[i] = i % 17 + 1;
  double within;
  Cpp_GetRepeatability(values.data(), 34, subjects.data(), 0.05, &within, &lower, &upper);
  EXPECT_NEAR(within, expected.at("within.sd"), 1e-13 * within);
  EXPECT_NEAR(lower, expected.at("within.sd.lower"), 1e-12 * lower);
  EXPECT_NEAR(upper, expected.at("within.sd.upper"), 1e-12 * upper);
  page.says("within-subject standard deviation %.2f (%.2f to %.2f)", within, lower, upper);
}

TEST(Deming, WorkedByHand) {
  // Sums around the means (1, 4/3): xx 2, yy 14/3, xy 3. d = 8/3, b = (8/3 + sqrt(64/9 + 36)) / 6.
  Fit f({0, 1, 2}, {0, 1, 3});
  f.run();
  const double b = (8.0 / 3 + std::sqrt(64.0 / 9 + 36)) / 6;
  EXPECT_NEAR(f.b, b, 1e-14);
  EXPECT_NEAR(f.a, 4.0 / 3 - b, 1e-14);
  for (int i = 0; i < 3; ++i) {
    const double projected = f.x[i] + (f.y[i] - f.a - b * f.x[i]) * b / (b * b + 1);
    EXPECT_NEAR(f.fitted[i], f.a + b * projected, 1e-14);
    EXPECT_NEAR(f.residuals[i], f.y[i] - f.fitted[i], 1e-15);
    EXPECT_NEAR(f.bias[i], f.a + (b - 1) * f.x[i], 1e-14);
  }
  EXPECT_EQ(f.difference, (std::vector<double>{0, 0, 1}));
  EXPECT_EQ(f.maxAbs, 1);
  EXPECT_EQ(f.xMin, 0);
  EXPECT_EQ(f.xMax, 2);
  EXPECT_EQ(f.yMax, 3);
  EXPECT_EQ(f.xMean, 1);
  EXPECT_NEAR(f.xSd, std::sqrt(2.0 / 3), 1e-15);  // divisor n
  EXPECT_NEAR(f.ySd, std::sqrt(14.0 / 9), 1e-15);
  EXPECT_NEAR(f.p1, f.a + f.b, 1e-15);
}

TEST(Deming, TheRatioIsXErrorOverYError) {
  // The estimator's lambda is 1 / ratio: with a vanishing x error it is least squares of y on x.
  Fit f({0, 1, 2}, {0, 1, 3});
  f.ratio = 1e-12;
  f.run();
  EXPECT_NEAR(f.b, 1.5, 1e-9);  // 3 / 2
  f.ratio = 1e12;               // and of x on y the other way round: 14/3 / 3
  f.run();
  EXPECT_NEAR(f.b, 14.0 / 9, 1e-9);
}

TEST(Deming, VarianceComponentsFollowTheirFormulas) {
  Fit f({0, 1, 2, 4}, {0, 1, 3, 3});
  f.run();
  const double xMean = 7.0 / 4, xVar = 35.0 / 16, yVar = 27.0 / 16;
  const double c = (0 * 0 + 1 * 1 + 2 * 3 + 4 * 3) / 4.0 - xMean * 7.0 / 4;  // 27/16
  EXPECT_NEAR(c, 27.0 / 16, 1e-15);
  const double rest = yVar * xVar - c * c;
  const double b = f.b;
  EXPECT_NEAR(f.varA,
              (yVar - 2 * b * c + b * b * xVar + xMean * xMean * b * b / (c * c) * rest) / 4,
              1e-14);
  EXPECT_NEAR(f.varB, b * b / (c * c) / 4 * rest, 1e-14);
  EXPECT_EQ(f.covAB, -f.varB * f.xMean);
  for (int r = 0; r < 4; ++r) {
    const double x = f.x[r];
    EXPECT_NEAR(f.bias[4 + r], std::sqrt(f.varA + f.varB * x * x + 2 * x * f.covAB), 1e-14);
  }
  const double half = InvCDFStudent(0.975, 2) * std::sqrt(2 * f.covAB + f.varB + f.varA);
  EXPECT_NEAR(f.p1Upper - f.p1, half, 1e-13);
}

TEST(Deming, ForFallingLinesTheComponentsUseTheAbsoluteCovariance) {
  Fit f({0, 1, 2, 4}, {0, -1, -3, -3});
  f.run();
  EXPECT_LT(f.b, 0);
  // - 2 b |c| adds where - 2 b c would subtract.
  const double c = 27.0 / 16, xVar = 35.0 / 16, yVar = 27.0 / 16, xMean = 7.0 / 4;
  const double rest = yVar * xVar - c * c;
  EXPECT_NEAR(
      f.varA,
      (yVar - 2 * f.b * c + f.b * f.b * xVar + xMean * xMean * f.b * f.b / (c * c) * rest) / 4,
      1e-13);
}

TEST(Deming, PointsOnALineHaveNoJackknifeInterval) {
  Fit f({0, 12, 24, 36}, {1, 25, 49, 73});  // every mean is a whole number
  f.run();
  EXPECT_EQ(f.b, 2);
  EXPECT_EQ(f.a, 1);
  EXPECT_EQ(f.aLower, kMissing);
  EXPECT_EQ(f.aUpper, kMissing);
  EXPECT_EQ(f.bLower, kMissing);
  EXPECT_EQ(f.bUpper, kMissing);
}

TEST(Deming, TheBandUsesTheFullSlopeInTheNumerator) {
  Fit f({0, 1, 2, 4, 7}, {0, 1.5, 1.5, 4.5, 6});
  f.run();
  const std::size_t m = 5;
  const double t = InvCDFStudent(0.975, 3);
  std::vector<double> a(m), b(m);
  for (std::size_t j = 0; j < m; ++j) {
    Fit without(f.x, f.y);
    without.x.erase(without.x.begin() + static_cast<std::ptrdiff_t>(j));
    without.y.erase(without.y.begin() + static_cast<std::ptrdiff_t>(j));
    without.ids.pop_back();
    without.run();
    a[j] = without.a;
    b[j] = without.b;
  }
  for (std::size_t r = 0; r < m; ++r) {
    double sum = 0, squares = 0, mended = 0, mendedSum = 0;
    std::vector<double> fits(m), others(m);
    for (std::size_t j = 0; j < m; ++j) {
      const double gap = f.y[r] - a[j] - b[j] * f.x[r];
      fits[j] = a[j] + b[j] * (f.x[r] + gap * f.b / (b[j] * b[j] + 1));
      others[j] = a[j] + b[j] * (f.x[r] + gap * b[j] / (b[j] * b[j] + 1));
      sum += fits[j];
      mendedSum += others[j];
    }
    for (std::size_t j = 0; j < m; ++j) {
      squares += (fits[j] - sum / m) * (fits[j] - sum / m);
      mended += (others[j] - mendedSum / m) * (others[j] - mendedSum / m);
    }
    const double half = t * std::sqrt(squares / (m - 1) * (m - 1));
    EXPECT_NEAR(f.band[r], f.fitted[r] - half, 1e-10);
    EXPECT_NEAR(f.band[m + r], f.fitted[r] + half, 1e-10);
    EXPECT_GT(std::fabs(t * std::sqrt(mended) - half), 1e-6);  // the textbook's band is another
  }
}

TEST(Deming, TheClosedFormTakesWeights) {
  Column x({0, 1, 2, 50}), y({0, 1, 3, -9}), w({1, 1, 1, 0});
  double a = 77, b = 77;
  EXPECT_EQ(Deming(&x, &y, &w, 4, 1.0, &a, &b), 0);
  EXPECT_NEAR(b, (8.0 / 3 + std::sqrt(64.0 / 9 + 36)) / 6, 1e-14);
}

TEST(Deming, TooFewRowsDoNotCrash) {
  for (const std::size_t n : {0u, 1u, 2u}) {
    Fit f(std::vector<double>(n, 1.5), std::vector<double>(n, 2.5));
    f.run();
    EXPECT_TRUE(std::isnan(f.b));
  }
  Fit f({1, 2, 3}, {1, 2, 4});
  f.m = -7;
  f.hasReplicates = -1;
  f.run();
  EXPECT_TRUE(std::isnan(f.b));
}

TEST(Deming, CusumIsThatOfTheResidualsAlongTheLine) {
  Fit f({0, 1, 2, 3, 4}, {0.1, 1.2, 1.7, 3.3, 3.8});
  f.run();
  EXPECT_NEAR(f.critical, 1.35809863932 * std::sqrt(5.0), 1e-14);
  EXPECT_NEAR(f.p, 1 - CDFKolmogorov(f.cusum / std::sqrt(5.0)), 1e-15);
  f.alpha = 2;
  f.run();
  EXPECT_EQ(f.critical, kMissing);
}

}  // namespace
