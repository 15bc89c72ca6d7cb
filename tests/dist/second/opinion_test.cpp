// Another library's values at random arguments. Compiled where that library is installed.
#include <gtest/gtest.h>

#include <boost/math/distributions/beta.hpp>
#include <boost/math/distributions/binomial.hpp>
#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/normal.hpp>
#include <boost/math/distributions/students_t.hpp>
#include <cmath>
#include <random>

#include "Dist/Dist"

namespace {

namespace oracle = boost::math;

// Its own errors are larger in the tails and for large parameters; they set this bound.
constexpr double kTolerance = 2e-13;

class SecondOpinion : public testing::Test {
 protected:
  double uniform(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random_);
  }
  double logUniform(double low, double high) {
    return std::exp(uniform(std::log(low), std::log(high)));
  }
  static void expectClose(double computed, double other) {
    EXPECT_NEAR(computed, other, kTolerance * std::fabs(other));
  }

 private:
  std::mt19937_64 random_{11};
};

TEST_F(SecondOpinion, NormalLaw) {
  const oracle::normal law;
  for (int i = 0; i < 2000; ++i) {
    const double x = uniform(-37.0, 9.0);
    expectClose(CDFNormalStd(x), cdf(law, x));
    expectClose(PDFNormalStd(x), pdf(law, x));
    const double p = logUniform(1e-300, 1.0);
    expectClose(InvCDFNormalStd(p), quantile(law, p));
  }
}

TEST_F(SecondOpinion, ChiSquareLaw) {
  for (int i = 0; i < 2000; ++i) {
    const double df = logUniform(0.5, 1e4);
    const oracle::chi_squared law(df);
    const double p = logUniform(1e-12, 0.999);
    const double x = quantile(law, p);
    if (x < 1e-290) continue;
    SCOPED_TRACE(testing::Message() << "df " << df << " p " << p);
    expectClose(InvCDFChiSq(p, df), x);
    const double y = quantile(complement(law, p));
    expectClose(pValChiSq(y, df), cdf(complement(law, y)));
    expectClose(pValChiSq(x, df), cdf(complement(law, x)));
  }
}

TEST_F(SecondOpinion, StudentsLaw) {
  for (int i = 0; i < 2000; ++i) {
    const double df = logUniform(0.5, 1e5);
    const oracle::students_t law(df);
    const double t = -logUniform(1e-3, 30.0);
    SCOPED_TRACE(testing::Message() << "df " << df << " t " << t);
    expectClose(CDFStudent(t, df), cdf(law, t));
    const double p = logUniform(1e-10, 0.49);
    expectClose(InvCDFStudent(p, df), quantile(law, p));
  }
}

TEST_F(SecondOpinion, ClopperPearson) {
  for (int i = 0; i < 2000; ++i) {
    const double m = logUniform(1.0, 2000.0);
    const double x = m * uniform(0.01, 0.99);
    const double alpha = logUniform(1e-6, 0.9);
    SCOPED_TRACE(testing::Message() << x << " of " << m << " alpha " << alpha);
    double lower = 0.0;
    double upper = 0.0;
    GetInfSupClopper(x, m, alpha, &lower, &upper);
    expectClose(lower, quantile(oracle::beta_distribution<>(x, m - x + 1.0), 0.5 * alpha));
    expectClose(upper,
                quantile(complement(oracle::beta_distribution<>(x + 1.0, m - x), 0.5 * alpha)));
  }
}

TEST_F(SecondOpinion, ClopperPearsonAsTheBinomialLawHasIt) {
  using Binomial = oracle::binomial_distribution<>;
  for (int m = 2; m <= 60; ++m) {
    for (int x = 1; x < m; ++x) {
      double lower = 0.0;
      double upper = 0.0;
      GetInfSupClopper(x, m, 0.05, &lower, &upper);
      expectClose(lower, Binomial::find_lower_bound_on_p(m, x, 0.025));
      expectClose(upper, Binomial::find_upper_bound_on_p(m, x, 0.025));
    }
  }
}

}  // namespace
