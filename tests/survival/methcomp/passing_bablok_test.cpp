// Passing-Bablok regression.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "Dist/Dist"
#include "Klikro/Klikro"
#include "survival/survival.h"

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

struct Fit {
  std::vector<double> x, y, residuals, difference, distance, fitted;
  double a = 77, aLower = 77, aUpper = 77, b = 77, bLower = 77, bUpper = 77;
  double cusum = 77, critical = 77, p = 77;
  Fit(std::vector<double> first, std::vector<double> second, double alpha = 0.05)
      : x(std::move(first)),
        y(std::move(second)),
        residuals(x.size(), 77),
        difference(x.size(), 77),
        distance(x.size(), 77),
        fitted(x.size(), 77) {
    EXPECT_EQ(VB_PassingBablok(x.data(), static_cast<int>(x.size()), y.data(), alpha, &a, &aLower,
                               &aUpper, &b, &bLower, &bUpper, residuals.data(), difference.data(),
                               distance.data(), fitted.data(), &cusum, &critical, &p),
              0);
  }
};

TEST(PassingBablok, FitsALineExactly) {
  const Fit f({1, 2, 3, 4, 5, 6, 7, 8}, {5, 7, 9, 11, 13, 15, 17, 19});
  EXPECT_EQ(f.b, 2);
  EXPECT_EQ(f.a, 3);
  EXPECT_EQ(f.bLower, 2);
  EXPECT_EQ(f.bUpper, 2);
  EXPECT_EQ(f.distance, (std::vector<double>(8, 0.0)));
  EXPECT_EQ(f.fitted, f.y);
  EXPECT_EQ(f.difference[7], 11);
  EXPECT_EQ(f.cusum, 0);
  EXPECT_TRUE(std::isnan(f.p));  // no residual on either side: 0 / 0
}

TEST(PassingBablok, TwoRowsGiveTheirSlope) {
  const Fit f({1, 3}, {2, 8});
  EXPECT_EQ(f.b, 3);
  EXPECT_EQ(f.a, -1);
  EXPECT_EQ(f.bLower, 3);   // position max(1, M1) with M1 below 1
  EXPECT_EQ(f.bUpper, -1);  // position past the list
}

TEST(PassingBablok, AnOddNumberOfSlopesTakesTheMiddleOne) {
  // Slopes of (0,0), (1,1), (3,7): 1, 7/3, 3.
  const Fit f({0, 1, 3}, {0, 1, 7});
  EXPECT_NEAR(f.b, 7.0 / 3, 1e-15);
}

TEST(PassingBablok, SlopesBelowMinusOneShiftTheMedian) {
  // (0,0), (1,-5), (2,1): slopes -5, 1/2, 6; one below -1, so the median moves one place up.
  const Fit f({0, 1, 2}, {0, -5, 1});
  EXPECT_EQ(f.b, 6);
}

TEST(PassingBablok, AllSlopesBelowMinusOneReadPastTheList) {
  const Fit f({0, 1, 2}, {0, -2, -5});  // slopes -3, -2.5, -2
  EXPECT_EQ(f.b, -1);
  EXPECT_EQ(f.bLower, -2);  // position max(1, 0 + 3), the last
  EXPECT_EQ(f.bUpper, -1);
}

TEST(PassingBablok, PairsTiedInEitherMethodAreDropped) {
  // (0,0), (0,4), (2,4): tied in x, tied in y, and 2.
  const Fit f({0, 0, 2}, {0, 4, 4});
  EXPECT_EQ(f.b, 2);  // one slope, not an infinite, a zero and a 2
}

TEST(PassingBablok, SlopesOfMinusOneAreDropped) {
  // (0,0), (1,-1), (2,6): slopes -1, 3, 7; the mean of 3 and 7 is left.
  const Fit f({0, 1, 2}, {0, -1, 6});
  EXPECT_EQ(f.b, 5);
}

TEST(PassingBablok, NoSlopesGiveMinusOne) {
  const Fit f({4, 4, 4}, {1, 2, 3});
  EXPECT_EQ(f.b, -1);
  EXPECT_EQ(f.a, 6);  // median of y + 4
}

TEST(PassingBablok, ScoresBalanceTheTwoSidesOfTheLine) {
  const Fit f({0, 1, 2, 3, 4}, {0.1, 0.9, 2.3, 2.8, 4.4});
  int above = 0, below = 0;
  for (const double r : f.residuals) {
    if (r > 1e-12) ++above;
    if (r < -1e-12) ++below;
  }
  ASSERT_GT(above, 0);
  ASSERT_GT(below, 0);
  EXPECT_NEAR(f.critical, 1.35809863932 * std::sqrt(above + below), 1e-14);
  EXPECT_EQ(f.p, 1 - CDFKolmogorov(f.cusum / std::sqrt(above + below)));
}

TEST(PassingBablok, ResidualsOfOneSignOnlyScoreZero) {
  // Slopes of (0,0), (1,1), (2,4): 1, 2, 3. b = 2; y - 2 x = 0, -1, 0: a = 0, one residual, below.
  const Fit f({0, 1, 2}, {0, 1, 4});
  EXPECT_EQ(f.b, 2);
  EXPECT_EQ(f.a, 0);
  EXPECT_EQ(f.residuals, (std::vector<double>{0, -1, 0}));
  EXPECT_EQ(f.cusum, 0);  // -sqrt(0 / 1)
  EXPECT_EQ(f.p, 1);
  EXPECT_EQ(f.critical, 1.35809863932);
}

TEST(PassingBablok, TabulatedLevelsUseThePrintedDigits) {
  const std::vector<double> x = {0, 1, 2, 3, 4};
  const std::vector<double> y = {0.1, 0.9, 2.3, 2.8, 4.4};
  const double scale = Fit(x, y, 0.05).critical / 1.35809863932;
  EXPECT_NEAR(Fit(x, y, 0.01).critical, 1.62762361151 * scale, 1e-13);
  EXPECT_NEAR(Fit(x, y, 0.1).critical, 1.2238478702091 * scale, 1e-13);
}

TEST(PassingBablok, OtherLevelsAreFoundByBisection) {
  const std::vector<double> x = {0, 1, 2, 3, 4};
  const std::vector<double> y = {0.1, 0.9, 2.3, 2.8, 4.4};
  const double scale = Fit(x, y, 0.05).critical / 1.35809863932;
  for (const double alpha : {0.2, 0.049, 0.3, 0.9, 0.99, 1e-6}) {
    const double h = Fit(x, y, alpha).critical / scale;
    EXPECT_NEAR(1 - CDFKolmogorov(h), alpha, 1e-11) << alpha;
  }
}

TEST(PassingBablok, ALevelOutsideHasNoCriticalValue) {
  const std::vector<double> x = {0, 1, 2, 3};
  const std::vector<double> y = {0.1, 0.9, 2.3, 2.8};
  for (const double alpha : {-1e-300, -0.5, std::nextafter(1.0, 2.0), 1.5}) {
    EXPECT_EQ(Fit(x, y, alpha).critical, kMissing) << alpha;
  }
  EXPECT_TRUE(std::isfinite(Fit(x, y, 1.0).critical));
}

TEST(PassingBablok, LevelsThatEndTheSearchAtOnceHaveTheValueThatItStandsAt) {
  // Slopes 2/5, 3/5 and 1 thrice: the line is y = x, two rows lie off it, on either side, and the
  // scale is sqrt(2). The tail is 0 in double precision from 4.5 on, the first middle of 1 and 8;
  // with a level that is not a number the search never leaves 1.
  const std::vector<double> x = {0, 1, 2, 3, 4, 5};
  const std::vector<double> y = {0, 1, 2.5, 2.5, 4, 5};
  const Fit zero(x, y, 0.0);
  ASSERT_EQ(zero.a, 0);
  ASSERT_EQ(zero.b, 1);
  EXPECT_DOUBLE_EQ(zero.critical, 4.5 * std::sqrt(2.0));
  EXPECT_DOUBLE_EQ(Fit(x, y, kNan).critical, std::sqrt(2.0));
}

TEST(PassingBablok, DistancesArePerpendicular) {
  const Fit f({0, 1, 2, 3}, {0.2, 1.4, 1.9, 3.3});
  for (std::size_t i = 0; i < f.x.size(); ++i) {
    EXPECT_NEAR(f.distance[i], f.residuals[i] / std::sqrt(1 + f.b * f.b), 1e-13);
  }
}

TEST(PassingBablok, TooFewRowsDoNotCrash) {
  EXPECT_EQ(Fit({}, {}).b, -1);
  const Fit one({2}, {5});
  EXPECT_EQ(one.b, -1);
  EXPECT_EQ(one.a, 7);
  double none = 5, out[9];
  EXPECT_EQ(VB_PassingBablok(&none, -4, &none, 0.05, out, out + 1, out + 2, out + 3, out + 4,
                             out + 5, &none, &none, &none, &none, out + 6, out + 7, out + 8),
            0);
  EXPECT_EQ(none, 5);
}

TEST(PassingBablok, NanRowsHaveNoSlope) {
  const Fit f({0, kNan, 2}, {0, 4, 4});
  EXPECT_EQ(f.b, 2);
}

// Median slope of the first `cap` pairs in the order (1, 2), (1, 3), ..., all slopes above -1.
double medianSlope(const std::vector<double>& x, const std::vector<double>& y, std::size_t cap) {
  std::vector<double> slopes;
  for (std::size_t i = 0; i < x.size(); ++i) {
    for (std::size_t j = i + 1; j < x.size() && slopes.size() < cap; ++j) {
      slopes.push_back((y[i] - y[j]) / (x[i] - x[j]));
    }
  }
  std::sort(slopes.begin(), slopes.end());
  const std::size_t n = slopes.size();
  return n % 2 == 0 ? (slopes[n / 2 - 1] + slopes[n / 2]) / 2 : slopes[n / 2];
}

TEST(PassingBablok, LooksAtTheFirstTwoMillionPairsInRowOrder) {
  const int n = 2100;  // 2,203,950 pairs
  std::mt19937 random(11);
  std::vector<double> x(n), y(n);
  for (int i = 0; i < n; ++i) {
    x[i] = i;
    y[i] = 2.0 * i + static_cast<double>(random()) / 4294967296.0;  // slopes between 1 and 3
  }
  const Fit f(x, y);
  EXPECT_EQ(f.b, medianSlope(x, y, 2000000));
  EXPECT_NE(f.b, medianSlope(x, y, 3000000));
}

// The slope whose angle is the median of all pairs' angles, counted from -45 degrees on: ties in x
// or y and slopes of -1 aside, the published shifted median.
double medianByAngles(const std::vector<double>& x, const std::vector<double>& y) {
  std::vector<double> angles;
  int steep = 0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    for (std::size_t j = i + 1; j < x.size(); ++j) {
      double angle = std::atan((y[j] - y[i]) / (x[j] - x[i]));
      if (angle < -std::acos(-1.0) / 4) ++steep;
      angles.push_back(angle);
    }
  }
  std::sort(angles.begin(), angles.end());
  const std::size_t n = angles.size();
  const auto slope = [&](std::size_t position) { return std::tan(angles.at(position - 1)); };
  return n % 2 == 0 ? (slope(n / 2 + steep) + slope(n / 2 + steep + 1)) / 2
                    : slope((n + 1) / 2 + steep);
}

TEST(PassingBablok, IsTheShiftedMedianOfTheAngles) {
  std::mt19937 random(7);
  std::normal_distribution<double> normal;
  for (int trial = 0; trial < 200; ++trial) {
    const int n = 4 + trial % 30;
    std::vector<double> x(n), y(n);
    for (int i = 0; i < n; ++i) {
      x[i] = 10 * normal(random);
      y[i] = 0.9 * x[i] + 3 * normal(random);
    }
    EXPECT_NEAR(Fit(x, y).b, medianByAngles(x, y), 1e-10 * std::fabs(medianByAngles(x, y)));
  }
}

}  // namespace
