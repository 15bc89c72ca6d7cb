// What every function does with NaN, infinities, arguments outside its domain and numbers at the
// ends of the range of a double.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "Dist/Dist"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kLeast = std::numeric_limits<double>::denorm_min();
constexpr double kMax = std::numeric_limits<double>::max();

// Both signs of zero, one, ordinary, tiny and huge numbers, infinities and NaN.
const std::vector<double>& awkward() {
  static const std::vector<double> kValues = {
      0.0,    -0.0,  kLeast, -kLeast, 1e-310, 1e-300, 1e-160,     1e-20, 0x1p-53, 1e-9,
      0.3,    0.5,   1.0,    1.5,     -1.0,   -0.25,  2.0,        15.9,  16.0,    700.0,
      1e5,    3.7e9, 1e16,   1e24,    1e41,   1e60,   1e101,      1e150, 1e155,   1e300,
      -1e300, kMax,  -kMax,  kInf,    -kInf,  kNaN,   1 - 0x1p-53};
  return kValues;
}

enum class Range { kProbability, kQuantile, kDensity };

struct OneArgument {
  const char* name;
  double (*compute)(double);
  bool (*inDomain)(double);
  Range range;
};

struct TwoArguments {
  const char* name;
  double (*compute)(double, double);
  bool (*inDomain)(double, double);
  Range range;
};

bool number(double x) { return !std::isnan(x); }
bool probability(double p) { return p >= 0.0 && p <= 1.0; }

const OneArgument kOne[] = {
    {"CDFNormalStd", CDFNormalStd, number, Range::kProbability},
    {"PDFNormalStd", PDFNormalStd, number, Range::kDensity},
    {"InvCDFNormalStd", InvCDFNormalStd, probability, Range::kQuantile},
    {"CDFKolmogorov", CDFKolmogorov, number, Range::kProbability},
};

const TwoArguments kTwo[] = {
    {"CDFStudent", CDFStudent, [](double t, double df) { return number(t) && df > 0.0; },
     Range::kProbability},
    {"InvCDFStudent", InvCDFStudent, [](double p, double df) { return probability(p) && df > 0.0; },
     Range::kQuantile},
    {"pValChiSq", pValChiSq,
     [](double x, double df) { return number(x) && df >= 0.0 && !(x == kInf && df == kInf); },
     Range::kProbability},
    {"InvCDFChiSq", InvCDFChiSq, [](double p, double df) { return probability(p) && df >= 0.0; },
     Range::kQuantile},
};

void expectWithin(Range range, double value) {
  switch (range) {
    case Range::kProbability:
      EXPECT_TRUE(probability(value)) << value;
      break;
    case Range::kDensity:
      EXPECT_TRUE(value >= 0.0 && value < 0.4) << value;
      break;
    case Range::kQuantile:
      EXPECT_FALSE(std::isnan(value));
      break;
  }
}

void expectContract(const OneArgument& f, double x) {
  SCOPED_TRACE(std::string(f.name) + "(" + std::to_string(x) + ")");
  const double value = f.compute(x);
  if (f.inDomain(x)) {
    expectWithin(f.range, value);
  } else {
    EXPECT_TRUE(std::isnan(value)) << value;
  }
}

void expectContract(const TwoArguments& f, double x, double y) {
  const double value = f.compute(x, y);
  SCOPED_TRACE(std::string(f.name) + "(" + std::to_string(x) + ", " + std::to_string(y) + ")");
  if (f.inDomain(x, y)) {
    expectWithin(f.range, value);
  } else {
    EXPECT_TRUE(std::isnan(value)) << value;
  }
}

TEST(Contract, AwkwardNumbersGiveAValueOfTheRangeOrNaNOutsideTheDomain) {
  for (const OneArgument& f : kOne) {
    for (const double x : awkward()) expectContract(f, x);
  }
  for (const TwoArguments& f : kTwo) {
    for (const double x : awkward()) {
      for (const double y : awkward()) expectContract(f, x, y);
    }
  }
}

TEST(Contract, AnyBitPatternGivesAValueOfTheRangeOrNaNOutsideTheDomain) {
  std::mt19937_64 random(20);
  const auto draw = [&] { return std::bit_cast<double>(random()); };
  for (int i = 0; i < 2000; ++i) {
    for (const OneArgument& f : kOne) expectContract(f, draw());
    for (const TwoArguments& f : kTwo) {
      expectContract(f, draw(), draw());
      expectContract(f, std::fabs(draw()), std::fabs(draw()));
      const double p = std::ldexp(static_cast<double>(random() >> 11), -53);
      expectContract(f, p, std::fabs(draw()));
    }
  }
}

// Proportion intervals lie within [0, 1], lower below upper, for every count and level.
TEST(Contract, ClopperPearsonStaysWithinZeroAndOneOrIsNaN) {
  std::vector<double> counts = awkward();
  for (const double x : counts) {
    for (const double m : counts) {
      for (const double alpha : counts) {
        double lower = 7.0;
        double upper = 7.0;
        GetInfSupClopper(x, m, alpha, &lower, &upper);
        SCOPED_TRACE(testing::Message() << x << ' ' << m << ' ' << alpha);
        EXPECT_TRUE(std::isnan(lower) || probability(lower)) << lower;
        EXPECT_TRUE(std::isnan(upper) || probability(upper)) << upper;
        if (std::isnan(x) || std::isnan(m) || !(alpha >= 0.0 && alpha <= 2.0)) {
          EXPECT_TRUE(std::isnan(lower) && std::isnan(upper));
        } else if (x >= 0.0 && x <= m && std::isfinite(m) && alpha <= 1.0) {
          EXPECT_LE(lower, upper);  // neither is NaN
        }
      }
    }
  }
}

TEST(Contract, WilsonStaysWithinZeroAndOneForProportionsOfPositiveCounts) {
  for (const double z : awkward()) {
    for (const double p : awkward()) {
      for (const double m : awkward()) {
        for (const double c : {0.0, 0.5}) {
          double lower = 7.0;
          double upper = 7.0;
          GetInfSupWilson(z, p, m, c, &lower, &upper);
          SCOPED_TRACE(testing::Message() << z << ' ' << p << ' ' << m << ' ' << c);
          if (!number(z) || !number(p) || !(m > 0.0)) {
            EXPECT_TRUE(std::isnan(lower) && std::isnan(upper));
          } else if (probability(p) && std::fabs(z) < 1e100 && m > 1e-9 && std::isfinite(m)) {
            EXPECT_TRUE(probability(lower)) << lower;
            EXPECT_TRUE(probability(upper)) << upper;
            EXPECT_LE(lower, upper);
          }
        }
      }
    }
  }
}

TEST(Contract, OneNaNMakesBothBoundsOfEveryIntervalNaN) {
  for (int which = 0; which < 3; ++which) {
    double a[3] = {1.96, 0.3, 40.0};
    a[which] = kNaN;
    double lower = 7.0;
    double upper = 7.0;
    GetInfSupWald(a[0], a[1], a[2], &lower, &upper);
    EXPECT_TRUE(std::isnan(lower) && std::isnan(upper)) << "Wald " << which;
    lower = upper = 7.0;
    GetInfSupLog(a[0], a[1], a[2], &lower, &upper);
    EXPECT_TRUE(std::isnan(lower) && std::isnan(upper)) << "log " << which;
    lower = upper = 7.0;
    GetInfSupWilson(a[0], a[1], a[2], 0.5, &lower, &upper);
    EXPECT_TRUE(std::isnan(lower) && std::isnan(upper)) << "Wilson " << which;
    double b[3] = {3.0, 10.0, 0.05};
    b[which] = kNaN;
    lower = upper = 7.0;
    GetInfSupClopper(b[0], b[1], b[2], &lower, &upper);
    EXPECT_TRUE(std::isnan(lower) && std::isnan(upper)) << "Clopper-Pearson " << which;
  }
  double lower = 7.0;
  double upper = 7.0;
  GetInfSupWilson(1.96, 0.3, 40.0, kNaN, &lower, &upper);
  EXPECT_TRUE(std::isnan(lower) && std::isnan(upper));
}

TEST(Contract, TheEndsOfTheNormalLaw) {
  EXPECT_EQ(CDFNormalStd(-kInf), 0.0);
  EXPECT_EQ(CDFNormalStd(kInf), 1.0);
  EXPECT_EQ(CDFNormalStd(0.0), 0.5);
  EXPECT_EQ(PDFNormalStd(kInf), 0.0);
  EXPECT_EQ(InvCDFNormalStd(0.0), -kInf);
  EXPECT_EQ(InvCDFNormalStd(1.0), kInf);
  EXPECT_EQ(InvCDFNormalStd(0.5), 0.0);
  EXPECT_TRUE(std::isnan(InvCDFNormalStd(-kLeast)));
  EXPECT_TRUE(std::isnan(InvCDFNormalStd(1.0 + 0x1p-52)));
}

TEST(Contract, TheEndsOfStudentsLaw) {
  EXPECT_EQ(CDFStudent(-kInf, 3.0), 0.0);
  EXPECT_EQ(CDFStudent(kInf, 3.0), 1.0);
  EXPECT_EQ(CDFStudent(0.0, 3.0), 0.5);
  EXPECT_EQ(InvCDFStudent(0.0, 3.0), -kInf);
  EXPECT_EQ(InvCDFStudent(1.0, 3.0), kInf);
  EXPECT_EQ(InvCDFStudent(0.5, 3.0), 0.0);
  EXPECT_TRUE(std::isnan(InvCDFStudent(0.975, 0.0)));
  EXPECT_TRUE(std::isnan(InvCDFStudent(0.5, 0.0)));
  EXPECT_TRUE(std::isnan(InvCDFStudent(0.975, -1.0)));
  EXPECT_TRUE(std::isnan(CDFStudent(1.0, 0.0)));
}

TEST(Contract, StudentsLawWithInfinitelyManyDegreesOfFreedomIsNormal) {
  for (const double df : {1e25, 1e300, kInf}) {
    EXPECT_EQ(CDFStudent(-1.5, df), CDFNormalStd(-1.5));
    EXPECT_EQ(InvCDFStudent(0.975, df), InvCDFNormalStd(0.975));
  }
}

TEST(Contract, TheEndsOfTheChiSquareLaw) {
  EXPECT_EQ(pValChiSq(0.0, 3.0), 1.0);
  EXPECT_EQ(pValChiSq(-5.0, 3.0), 1.0);
  EXPECT_EQ(pValChiSq(0.0, 0.0), 1.0);
  EXPECT_EQ(pValChiSq(-1.0, 0.0), 1.0);
  EXPECT_EQ(pValChiSq(kLeast, 0.0), 0.0);
  EXPECT_EQ(pValChiSq(3.0, 0.0), 0.0);
  EXPECT_EQ(pValChiSq(kInf, 3.0), 0.0);
  EXPECT_EQ(pValChiSq(-kInf, 3.0), 1.0);
  EXPECT_TRUE(std::isnan(pValChiSq(1.0, -1.0)));
  EXPECT_TRUE(std::isnan(pValChiSq(-1.0, -1.0)));
  for (const double p : {0.0, 0.3, 1.0}) EXPECT_EQ(InvCDFChiSq(p, 0.0), 0.0);
  EXPECT_EQ(InvCDFChiSq(0.0, 3.0), 0.0);
  EXPECT_EQ(InvCDFChiSq(1.0, 3.0), kInf);
  EXPECT_TRUE(std::isnan(InvCDFChiSq(0.5, -1.0)));
  EXPECT_TRUE(std::isnan(InvCDFChiSq(1.5, 0.0)));
}

TEST(Contract, AHugeChiSquareLawIsAPoint) {
  EXPECT_EQ(InvCDFChiSq(0.975, 1e300), 1e300);
  EXPECT_EQ(pValChiSq(1.01e300, 1e300), 0.0);
  EXPECT_EQ(pValChiSq(0.99e300, 1e300), 1.0);
  EXPECT_EQ(pValChiSq(kMax, 1e40), 0.0);
}

TEST(Contract, AQuantileBelowTheLeastDoubleIsZero) {
  EXPECT_EQ(InvCDFChiSq(1e-300, 0.5), 0.0);  // near 1e-1200
  EXPECT_EQ(InvCDFChiSq(0.5, 1e-300), 0.0);
}

TEST(Contract, TheEndsOfKolmogorovsLaw) {
  EXPECT_EQ(CDFKolmogorov(0.0), 0.0);
  EXPECT_EQ(CDFKolmogorov(-1.0), 0.0);
  EXPECT_EQ(CDFKolmogorov(-kInf), 0.0);
  EXPECT_EQ(CDFKolmogorov(kLeast), 0.0);
  EXPECT_EQ(CDFKolmogorov(kInf), 1.0);
  EXPECT_EQ(CDFKolmogorov(1e300), 1.0);
}

}  // namespace
