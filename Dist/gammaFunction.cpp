// The gamma function and Stirling's correction in double-double.
#include "Dist/gammaFunction.h"

#include "Dist/constants.h"
#include "Dist/elementary.h"

namespace dist {

DoubleDouble stirling(DoubleDouble a) {
  const DoubleDouble inverse = DoubleDouble(1.0) / a;
  const DoubleDouble square = inverse * inverse;
  double rest = kStirlingRest[8];
  for (int k = 7; k >= 0; --k) rest = rest * square.hi + kStirlingRest[k];
  return inverse * (kStirling[0] + square * (kStirling[1] + square * rest));
}

DoubleDouble gammaOnePlus(DoubleDouble a) {
  constexpr double kRaisedTo = 24.0;  // here the series is good to 2^-92
  DoubleDouble product = 1.0;
  DoubleDouble raised = a;
  while (raised.hi < kRaisedTo) {
    raised = raised + 1.0;
    product = product * raised;
  }
  const DoubleDouble exponent = raised * logarithm(raised) - raised + stirling(raised);
  const DoubleDouble gamma = toDoubleDouble(exponentialFull(exponent)) * kSqrt2Pi;
  return gamma * squareRoot(raised) / product;
}

DoubleDouble logGammaOnePlusSmall(double a) {
  // Taylor's series, coefficients -Euler, zeta(k) / k with alternating sign.
  constexpr double kZeta3Over3 = 0x1.9a4d55beab2d7p-2;
  constexpr double kZeta4Over4 = 0x1.151322ac7d848p-2;
  return (-kEuler + (kHalfZeta2 + (-kZeta3Over3 + kZeta4Over4 * a) * a) * a) * a;
}

}  // namespace dist
