#include "dense.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <initializer_list>

#include "accuracy.h"
#include "numerics/doubleDoubleFunctions.h"
#include "numerics/elementary.h"

namespace accuracy_tests {
namespace {

using survmeth::numerics::DoubleDouble;
namespace numerics = survmeth::numerics;

constexpr int kDraws = 100'000;

// The same arguments everywhere: a linear congruential generator, Knuth's multiplier.
class Draws {
 public:
  double uniform(double low, double high) {
    state_ = state_ * 6364136223846793005U + 1442695040888963407U;
    return low + (high - low) * (static_cast<double>(state_ >> 11) * 0x1p-53);
  }
  // The exponent drawn evenly.
  double byExponent(double low, double high) {
    const double mantissa = uniform(1.0, 2.0);
    return std::ldexp(mantissa, static_cast<int>(std::floor(uniform(low, high))));
  }
  double eitherSign(double x) { return uniform(0.0, 1.0) < 0.5 ? -x : x; }

 private:
  std::uint64_t state_ = 1;
};

double errorAgainst(double computed, DoubleDouble exact) {
  return std::fabs((computed - exact.hi) - exact.lo) / unitInLastPlace(exact.hi);
}

// Largest error over kDraws calls of error().
template <class Error>
double worst(Error error) {
  double largest = 0.0;
  for (int i = 0; i < kDraws; ++i) {
    const double e = error();
    if (!(e <= largest)) largest = e;
  }
  return largest;
}

double largestOf(std::initializer_list<double> errors) { return std::max(errors); }

DoubleDouble longExp(DoubleDouble x) { return toDoubleDouble(numerics::exponentialFull(x)); }

double expError(double x) { return errorAgainst(numerics::exp(x), longExp(x)); }

double expm1Error(double x) {
  return errorAgainst(numerics::expm1(x),
                      std::fabs(x) <= 0.35 ? numerics::exponentialMinusOne(x) : longExp(x) - 1.0);
}

double logError(double x) { return errorAgainst(numerics::log(x), numerics::logarithm(x)); }

double log1pError(double x) {
  return errorAgainst(numerics::log1p(x), numerics::logarithmOnePlus(x));
}

// Of x to the power that makes e^exponent of it.
double powError(double x, double exponent) {
  const double y = exponent / numerics::log(x);
  return errorAgainst(numerics::pow(x, y), longExp(numerics::logarithm(x) * y));
}

}  // namespace

double denseExp() {
  Draws d;
  return largestOf({worst([&] { return expError(d.uniform(-650.0, 709.0)); }),
                    worst([&] { return expError(d.uniform(-1.0, 1.0)); }),
                    worst([&] { return expError(d.uniform(-0.01, 0.01)); }),
                    worst([&] { return expError(d.eitherSign(d.byExponent(-60, 9))); })});
}

double denseExpm1() {
  Draws d;
  return largestOf({worst([&] { return expm1Error(d.uniform(-40.0, 700.0)); }),
                    worst([&] { return expm1Error(d.uniform(-1.0, 1.0)); }),
                    worst([&] { return expm1Error(d.eitherSign(d.uniform(0.09, 0.125))); }),
                    worst([&] { return expm1Error(d.eitherSign(d.byExponent(-60, -3))); })});
}

double denseLog() {
  Draws d;
  return largestOf({worst([&] { return logError(d.byExponent(-1022, 1023)); }),
                    worst([&] { return logError(d.uniform(0.5, 2.0)); }),
                    worst([&] { return logError(d.uniform(0.97, 1.03)); }),
                    worst([&] { return logError(1.0 + d.eitherSign(d.byExponent(-52, -6))); })});
}

double denseLog1p() {
  Draws d;
  return largestOf({worst([&] { return log1pError(d.uniform(-1.0, 1.0)); }),
                    worst([&] { return log1pError(d.uniform(0.005, 0.01)); }),
                    worst([&] { return log1pError(d.eitherSign(d.byExponent(-54, -51))); }),
                    worst([&] { return log1pError(d.eitherSign(d.byExponent(-60, -1))); }),
                    worst([&] { return log1pError(d.byExponent(0, 900)); })});
}

double densePow() {
  Draws d;
  return largestOf(
      {worst([&] { return powError(d.byExponent(-1022, 1023), d.uniform(-650.0, 709.0)); }),
       worst([&] { return powError(d.uniform(0.5, 2.0), d.uniform(-650.0, 709.0)); }),
       worst([&] { return powError(d.uniform(1.006, 1.0079), d.uniform(690.0, 709.0)); }),
       worst([&] { return powError(d.uniform(0.0, 1.0), d.uniform(-3.0, 3.0)); })});
}

}  // namespace accuracy_tests
