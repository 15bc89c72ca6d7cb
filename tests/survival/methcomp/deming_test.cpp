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

namespace {

using survmeth::test::Column;
using survmeth::test::IntColumn;
using survmeth::test::Page;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// One call; outputs start at 77 so that what is not written shows.
struct Fit {
  std::vector<double> x, y, ids;
  short hasReplicates = 0;
  std::vector<int> counts{1};
  int m = 1;
  int mode = 1;
  short weighted = 0;
  double alpha = 0.05, ratio = 1, tolerance = 1e-10;
  int maxIterations = 100;
  std::vector<double> difference, bias, residuals, fitted, band;
  double a = 77, aLower = 77, aUpper = 77, b = 77, bLower = 77, bUpper = 77;
  double cusum = 77, critical = 77, p = 77, r = 77;
  double xMin = 77, xMax = 77, xMean = 77, xSd = 77, yMin = 77, yMax = 77, yMean = 77, ySd = 77;
  double maxAbs = 77;
  double p1 = 77, p1Lower = 77, p1Upper = 77, p2 = 77, p2Lower = 77, p2Upper = 77;
  double varA = 0.25, varB = 0, covAB = 0;

  Fit(std::vector<double> first, std::vector<double> second)
      : x(std::move(first)), y(std::move(second)), ids(x.size()) {
    std::iota(ids.begin(), ids.end(), 1);
  }
  Fit& run() {
    const std::size_t n = x.size();
    difference.assign(n, 77);
    bias.assign(2 * n, 77);
    residuals.assign(n, 77);
    fitted.assign(n, 77);
    band.assign(2 * n, 77);
    EXPECT_EQ(VB_DemingRegression(
                  x.data(), static_cast<int>(n), y.data(), ids.data(), hasReplicates, m,
                  counts.data(), mode, weighted, alpha, ratio, tolerance, maxIterations, 1, 2, &a,
                  &aLower, &aUpper, &b, &bLower, &bUpper, difference.data(), bias.data(),
                  residuals.data(), fitted.data(), band.data(), &cusum, &critical, &p, &r, &xMin,
                  &xMax, &xMean, &xSd, &yMin, &yMax, &yMean, &ySd, &maxAbs, &p1, &p1Lower, &p1Upper,
                  &p2, &p2Lower, &p2Upper, &varA, &varB, &covAB),
              0);
    return *this;
  }
};

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

struct Replicates : Fit {
  Replicates() : Fit({5, 1, 3, 9, 2, 8}, {6, 2, 5, 8, 2, 9}) {
    ids = {2, 1, 1, 3, 1, 3};  // subject 1: x 1, 3, 2; 2: 5; 3: 9, 8
    hasReplicates = -1;
    counts = {3, 1, 2};
    m = 3;
  }
  // The line through the subject values that the mode should give.
  void expect(int code, std::vector<double> xs, std::vector<double> ys) {
    Replicates fit;
    fit.mode = code;
    fit.run();
    Fit direct(std::move(xs), std::move(ys));
    direct.run();
    EXPECT_EQ(fit.b, direct.b) << code;
    EXPECT_EQ(fit.a, direct.a) << code;
    EXPECT_EQ(fit.r, direct.r) << code;
  }
};

TEST(DemingReplicates, EachModeTakesItsOwnSubjectValues) {
  Replicates f;
  f.expect(1, {2, 5, 8.5}, {3, 6, 8.5});
  f.expect(2, {1, 5, 9}, {2, 6, 8});
  f.expect(3, {1, 5, 9}, {3, 6, 8.5});
  f.expect(4, {2, 5, 8.5}, {2, 6, 8});
  f.expect(0, {2, 5, 8.5}, {2, 6, 8});
}

TEST(DemingReplicates, RowsComeBackSortedBySubject) {
  Replicates f;
  f.run();
  EXPECT_EQ(f.ids, (std::vector<double>{1, 1, 1, 2, 3, 3}));
  EXPECT_EQ(f.x, (std::vector<double>{1, 3, 2, 5, 9, 8}));
  EXPECT_EQ(f.y, (std::vector<double>{2, 5, 2, 6, 8, 9}));
  EXPECT_EQ(f.difference, (std::vector<double>{1, 1, 2, -1, 0, 1}));  // in the order passed
}

TEST(DemingReplicates, BandAndErrorsBelongToTheFirstRowsNotToSubjects) {
  Replicates f;
  f.run();
  for (int r = 0; r < 3; ++r) EXPECT_NEAR(f.band[r] + f.band[6 + r], 2 * f.fitted[r], 1e-9);
  for (int r = 3; r < 6; ++r) {
    EXPECT_EQ(f.band[r], 77);
    EXPECT_EQ(f.band[6 + r], 77);
    EXPECT_EQ(f.bias[6 + r], 77);
  }
}

TEST(DemingReplicates, AFlagOfOneMeansNone) {
  Replicates f;
  f.hasReplicates = 1;
  f.run();
  Fit direct({5, 1, 3, 9, 2, 8}, {6, 2, 5, 8, 2, 9});
  direct.run();
  EXPECT_EQ(f.b, direct.b);
  EXPECT_EQ(f.x[0], 5);  // nor is anything sorted
}

TEST(DemingReplicates, CountsPastTheRowsStopAtTheEnd) {
  Replicates f;
  f.counts = {3, 1, 2000000000};
  f.run();
  Replicates exact;
  exact.run();
  EXPECT_EQ(f.b, exact.b);
  f = Replicates();
  f.counts = {-5, 0, 9};
  f.run();
  EXPECT_TRUE(std::isnan(f.b));
}

// Two replicates of each of the ten points: the spread that gives variance 1 / weight with the
// divisor of one less than the number of subjects.
struct York {
  std::vector<double> x = {0, 0.9, 1.8, 2.6, 3.3, 4.4, 5.2, 6.1, 6.5, 7.4};
  std::vector<double> y = {5.9, 5.4, 4.4, 4.6, 3.5, 3.7, 2.8, 2.8, 2.4, 1.5};
  std::vector<double> xWeight = {1000, 1000, 500, 800, 200, 80, 60, 20, 1.8, 1};
  std::vector<double> yWeight = {1, 1.8, 4, 8, 20, 20, 70, 70, 100, 500};
  std::vector<double> xRows, yRows, ids;
  York() {
    for (int i = 0; i < 10; ++i) {
      for (const double sign : {-1.0, 1.0}) {
        xRows.push_back(x[i] + sign * std::sqrt(9 / (2 * xWeight[i])));
        yRows.push_back(y[i] + sign * std::sqrt(9 / (2 * yWeight[i])));
        ids.push_back(i + 1);
      }
    }
  }
};

TEST(WeightedDeming, SolvesPearsonsDataWithYorksWeights) {
  const York york;
  Column xs(york.x), ys(york.y), xRep(york.xRows), yRep(york.yRows);
  IntColumn counts(std::vector<int>(10, 2));
  double a = 77, b = 77;
  EXPECT_EQ(WeightedDeming(&xs, &ys, 10, &counts, &xRep, &yRep, 200, 1e-14, &a, &b), 0);
  EXPECT_NEAR(b, -0.480533407, 5e-10);  // York (1966)
  EXPECT_NEAR(a, 5.47991022, 5e-9);
}

TEST(WeightedDeming, ThroughTheRegressionLeavesTheComponentsAlone) {
  const York york;
  Fit f(york.xRows, york.yRows);
  f.ids = york.ids;
  f.hasReplicates = -1;
  f.m = 10;
  f.counts.assign(10, 2);
  f.weighted = -1;
  f.run();
  EXPECT_NEAR(f.b, -0.480533407, 5e-10);
  EXPECT_EQ(f.varA, 0.25);
  EXPECT_EQ(f.varB, 0);
  EXPECT_EQ(f.covAB, 0);
  EXPECT_NEAR(f.p1Upper - f.p1, InvCDFStudent(0.975, 8) * 0.5, 1e-13);  // what they held
  EXPECT_EQ(f.band, (std::vector<double>(40, 77)));
  EXPECT_EQ(f.bias[20], 77);
  EXPECT_LT(f.bLower, f.b);
}

TEST(WeightedDeming, WithoutReplicatesIsALineOfZeros) {
  Fit f({0, 1, 2}, {0, 1, 3});
  f.weighted = -1;
  f.run();
  EXPECT_EQ(f.a, 0);
  EXPECT_EQ(f.b, 0);
}

TEST(WeightedDeming, AWeightedFlagOfOneIsFalse) {
  Fit f({0, 1, 2}, {0, 1, 3});
  f.weighted = 1;
  f.run();
  EXPECT_GT(f.b, 1.5);
}

TEST(WeightedDeming, StopsAtTheIterationLimit) {
  const York york;
  Column xs(york.x), ys(york.y), xRep(york.xRows), yRep(york.yRows);
  IntColumn counts(std::vector<int>(10, 2));
  double none = 77, one = 77, many = 77, a = 77;
  WeightedDeming(&xs, &ys, 10, &counts, &xRep, &yRep, 0, 1e-14, &a, &none);
  EXPECT_EQ(none, 0);
  EXPECT_EQ(a, 0);
  WeightedDeming(&xs, &ys, 10, &counts, &xRep, &yRep, 1, 1e-14, &a, &one);
  WeightedDeming(&xs, &ys, 10, &counts, &xRep, &yRep, 50, 1e-14, &a, &many);
  // The first pass weighs by the y variances alone: weighted least squares of y on x.
  double w = 0, wx = 0, wy = 0, xy = 0, xx = 0;
  for (int i = 0; i < 10; ++i) {
    w += york.yWeight[i];
    wx += york.yWeight[i] * york.x[i];
    wy += york.yWeight[i] * york.y[i];
  }
  for (int i = 0; i < 10; ++i) {
    xy += york.yWeight[i] * (york.x[i] - wx / w) * (york.y[i] - wy / w);
    xx += york.yWeight[i] * (york.x[i] - wx / w) * (york.x[i] - wx / w);
  }
  EXPECT_NEAR(one, xy / xx, 1e-12);
  EXPECT_GT(std::fabs(one - many), 1e-3);
}

TEST(WeightedDeming, DataThatAreNotNumbersEnd) {
  Column xs({kNan, 1, 2}), ys({1, 2, 3}), xRep({kNan, 1, 1, 2, 2, 3}), yRep({1, 2, 2, 3, 3, 4});
  IntColumn counts({2, 2, 2});
  double a = 77, b = 77;
  WeightedDeming(&xs, &ys, 3, &counts, &xRep, &yRep, 2147483647, 0, &a, &b);
  EXPECT_TRUE(std::isnan(b));
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
