// Values in closed form, values published, and properties that hold whatever the parameters.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "Dist/Dist"

namespace {

constexpr double kPi = 3.14159265358979323846;

void expectRelative(double computed, double exact, double tolerance) {
  EXPECT_NEAR(computed, exact, tolerance * std::fabs(exact));
}

TEST(ChiSquare, TwoDegreesOfFreedomIsTheExponentialLaw) {
  for (const double x : {1e-10, 0.5, 2.0, 30.0, 800.0, 1400.0}) {
    expectRelative(pValChiSq(x, 2.0), std::exp(-0.5 * x), 1e-15);
  }
  for (const double p : {1e-200, 0.1, 0.5, 0.95}) {
    expectRelative(InvCDFChiSq(p, 2.0), -2.0 * std::log1p(-p), 1e-15);
  }
}

TEST(ChiSquare, OneDegreeOfFreedomIsTheSquareOfANormal) {
  for (const double x : {0.01, 1.0, 3.84, 100.0}) {
    expectRelative(pValChiSq(x, 1.0), std::erfc(std::sqrt(0.5 * x)), 1e-14);
  }
  const double z = InvCDFNormalStd(0.975);
  expectRelative(InvCDFChiSq(0.95, 1.0), z * z, 1e-15);
}

// exp(-h) (1 + h + h^2 / 2! + ...), h = x / 2, has df / 2 terms.
TEST(ChiSquare, EvenDegreesOfFreedomAreAPoissonSum) {
  for (const int df : {4, 10, 24, 60}) {
    for (const double x : {1.0, 10.0, 30.0, 90.0}) {
      double term = 1.0;
      double sum = 1.0;
      for (int k = 1; k < df / 2; ++k) {
        term *= 0.5 * x / k;
        sum += term;
      }
      expectRelative(pValChiSq(x, df), std::exp(-0.5 * x) * sum, 5e-15);
    }
  }
}

TEST(ChiSquare, TheUpperTailIsNotOneMinusTheLower) {
  // exp(-h) (1 + h) at h = 700: 1 - CDF would be 0.
  expectRelative(pValChiSq(1400.0, 4.0), 701.0 * std::exp(-700.0), 1e-13);
}

// Pearson and Hartley, Biometrika Tables I, table 8.
TEST(ChiSquare, PublishedPercentagePoints) {
  EXPECT_NEAR(InvCDFChiSq(0.95, 1.0), 3.84146, 5e-6);
  EXPECT_NEAR(InvCDFChiSq(0.99, 5.0), 15.0863, 5e-5);
  EXPECT_NEAR(InvCDFChiSq(0.005, 10.0), 2.15586, 5e-6);
  EXPECT_NEAR(InvCDFChiSq(0.95, 100.0), 124.342, 5e-4);
}

TEST(Student, OneDegreeOfFreedomIsCauchysLaw) {
  for (const double t : {1e-5, 0.3, 1.0, 20.0, 1e9}) {
    expectRelative(CDFStudent(-t, 1.0), std::atan(1.0 / t) / kPi, 1e-15);
  }
  for (const double p : {1e-100, 0.01, 0.2, 0.4}) {
    expectRelative(InvCDFStudent(p, 1.0), -1.0 / std::tan(kPi * p), 1e-14);
  }
}

TEST(Student, TwoDegreesOfFreedomInClosedForm) {
  for (const double t : {0.01, 0.5, 2.0, 5.0}) {
    const double root = std::sqrt(2.0 + t * t);
    expectRelative(CDFStudent(-t, 2.0), 1.0 / (root * (root + t)), 1e-15);
    expectRelative(CDFStudent(t, 2.0), 0.5 + 0.5 * t / root, 1e-15);
  }
  for (const double p : {1e-50, 0.025, 0.3, 0.7, 0.975}) {
    expectRelative(InvCDFStudent(p, 2.0), (2.0 * p - 1.0) / std::sqrt(2.0 * p * (1.0 - p)), 1e-14);
  }
}

TEST(Student, PublishedPercentagePoints) {
  EXPECT_NEAR(InvCDFStudent(0.975, 5.0), 2.571, 5e-4);
  EXPECT_NEAR(InvCDFStudent(0.995, 30.0), 2.750, 5e-4);
  EXPECT_NEAR(InvCDFStudent(0.95, 120.0), 1.658, 5e-4);
}

TEST(Student, TheLawIsSymmetric) {
  for (const double df : {0.7, 3.0, 41.5, 1e8}) {
    for (const double t : {0.1, 1.0, 6.0}) {
      EXPECT_NEAR(CDFStudent(t, df) + CDFStudent(-t, df), 1.0, 0x1p-52);
    }
    for (const double p : {0.125, 0.375, 0.0078125}) {
      EXPECT_EQ(InvCDFStudent(p, df), -InvCDFStudent(1.0 - p, df));
    }
  }
}

TEST(Normal, PublishedPercentagePoints) {
  EXPECT_NEAR(InvCDFNormalStd(0.975), 1.959963984540054, 1e-15);
  EXPECT_NEAR(InvCDFNormalStd(0.95), 1.6448536269514722, 1e-15);
  // Algorithm AS 241's own checks.
  EXPECT_NEAR(InvCDFNormalStd(0.25), -0.6744897501960817, 1e-16);
  EXPECT_NEAR(InvCDFNormalStd(0.001), -3.090232306167814, 1e-15);
  EXPECT_NEAR(InvCDFNormalStd(1e-20), -9.262340089798408, 2e-15);
}

TEST(Normal, TheQuantileIsSymmetric) {
  for (const double p : {0.125, 0.25, 0.375, 0.0009765625}) {
    EXPECT_EQ(InvCDFNormalStd(p), -InvCDFNormalStd(1.0 - p));
  }
}

TEST(Normal, TheSmallestDoublesHaveQuantiles) {
  const double least = std::numeric_limits<double>::denorm_min();
  EXPECT_NEAR(InvCDFNormalStd(least), -38.467405617144344, 1e-13);
  EXPECT_EQ(CDFNormalStd(-38.46), least);
  EXPECT_EQ(CDFNormalStd(-38.6), 0.0);
}

// Smirnov's table: the 1, 5 and 10 % points of the limiting law.
TEST(Kolmogorov, PublishedCriticalValues) {
  EXPECT_NEAR(1.0 - CDFKolmogorov(1.62762361151), 0.01, 1e-12);
  EXPECT_NEAR(1.0 - CDFKolmogorov(1.35809863932), 0.05, 1e-12);
  EXPECT_NEAR(1.0 - CDFKolmogorov(1.2238478702091), 0.10, 5e-12);  // wrong in its last digits
}

// Both theta series at the same point.
TEST(Kolmogorov, TheTwoSeriesMeet) {
  for (const double x : {0.7, 0.9, 0.999, 1.0, 1.001, 1.3}) {
    double alternating = 1.0;
    for (int k = 12; k >= 1; --k) {
      alternating -= 2.0 * (k % 2 == 1 ? 1.0 : -1.0) * std::exp(-2.0 * k * k * x * x);
    }
    EXPECT_NEAR(CDFKolmogorov(x), alternating, 1e-15);
  }
}

template <class F>
void expectMonotone(F f, double from, double to, int steps, bool rising) {
  double previous = f(from);
  for (int i = 1; i <= steps; ++i) {
    const double x = from + (to - from) * i / steps;
    const double value = f(x);
    // Two neighbouring values may be exchanged by their rounding only.
    const double slack = 8.0 * 0x1p-52 * std::fabs(previous);
    if (rising) {
      EXPECT_GE(value, previous - slack) << "at " << x;
    } else {
      EXPECT_LE(value, previous + slack) << "at " << x;
    }
    previous = value;
  }
}

// The grids cross every change of method.
TEST(Monotone, DistributionFunctions) {
  expectMonotone(CDFNormalStd, -38.0, 9.0, 4000, true);
  expectMonotone(CDFKolmogorov, 0.04, 5.0, 4000, true);
  for (const double df : {0.5, 1.0, 7.0, 31.999, 32.0, 500.0}) {
    expectMonotone([=](double x) { return pValChiSq(x, df); }, 0.0, 20.0 + 3.0 * df, 2000, false);
  }
  for (const double df : {0.5, 1.0, 2.0, 31.999, 32.0, 500.0, 1e9}) {
    expectMonotone([=](double t) { return CDFStudent(t, df); }, -15.0, 6.0, 2000, true);
  }
}

TEST(Monotone, QuantilesInTheProbability) {
  expectMonotone(InvCDFNormalStd, 1e-4, 1.0 - 1e-4, 3000, true);
  for (const double df : {0.5, 1.0, 31.999, 32.0, 500.0}) {
    expectMonotone([=](double p) { return InvCDFChiSq(p, df); }, 1e-4, 1.0 - 1e-4, 500, true);
    expectMonotone([=](double p) { return InvCDFStudent(p, df); }, 1e-4, 1.0 - 1e-4, 500, true);
  }
}

TEST(Monotone, ChiSquareTailAndQuantileInTheDegreesOfFreedom) {
  for (const double x : {0.5, 10.0, 40.0}) {
    expectMonotone([=](double df) { return pValChiSq(x, df); }, 0.01, 80.0, 1500, true);
  }
  for (const double p : {0.001, 0.5, 0.999}) {
    expectMonotone([=](double df) { return InvCDFChiSq(p, df); }, 0.5, 80.0, 700, true);
  }
}

// The quantile of the tail comes back; its relative error is that of the tail over the relative
// change of the tail with x, which a step of 1 % shows.
TEST(RoundTrip, QuantileOfTheDistributionFunction) {
  std::mt19937_64 random(4);
  std::uniform_real_distribution<double> uniform;
  for (int i = 0; i < 1500; ++i) {
    const double df = std::exp(uniform(random) * 14.0 - 0.7);
    const double z = 8.0 * uniform(random) - 4.0;
    const double spread = std::sqrt(2.0 / (9.0 * df));
    const double root = 1.0 - spread * spread + z * spread;
    if (root > 0.05) {
      const double x = df * root * root * root;
      const double upper = pValChiSq(x, df);
      if (upper > 0.5) continue;  // 1 - upper is not exact
      const double p = 1.0 - upper;
      const double size = (upper - pValChiSq(x * 1.001, df)) / 0.001;  // -d upper / d log x
      const double lost = (0x1p-53 + 16.0 * 0x1p-53 * upper) / size;   // 1 - upper was rounded
      expectRelative(InvCDFChiSq(p, df), x, 1.3 * lost + 8.0 * 0x1p-53);
    }
    const double t = -std::exp(4.0 * uniform(random) - 1.5);
    const double tail = CDFStudent(t, df);
    if (tail > 1e-290) expectRelative(InvCDFStudent(tail, df), t, 1e-14);
    const double x = -36.0 * uniform(random);
    const double below = CDFNormalStd(x);
    // Near 0 the probability has lost the digits of x.
    EXPECT_NEAR(InvCDFNormalStd(below), x, 4.0 * 0x1p-53 * (1.0 + std::fabs(x)));
  }
}

TEST(Student, ApproachesTheNormalLaw) {
  // The difference is phi(t) (t^3 + t) / (4 df) to first order.
  for (const double t : {-3.0, -1.0, -0.2}) {
    const double df = 1e6;
    const double first = PDFNormalStd(t) * (t * t * t + t) / (4.0 * df);
    EXPECT_NEAR(CDFStudent(t, df) - CDFNormalStd(t), -first, 1e-4 * std::fabs(first));
  }
}

}  // namespace
