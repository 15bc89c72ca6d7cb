// Deming regression of replicates and with weights.
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

}  // namespace
