// Kolmogorov's limiting distribution function.
#include <cmath>
#include <limits>

#include "Dist/Dist"
#include "Dist/constants.h"
#include "Dist/elementary.h"

double CDFKolmogorov(double x) {
  using namespace dist;
  if (std::isnan(x)) return std::numeric_limits<double>::quiet_NaN();
  if (x < 0.04) return 0.0;  // exp(-pi^2 / (8 x^2)) underflows
  if (x > 5.0) return 1.0;   // 2 exp(-2 x^2) is nothing beside 1
  const DoubleDouble square = twoProduct(x, x);
  DoubleDouble sum;
  if (x < 1.0) {
    // sqrt(2 pi) / x times the sum of exp(-(2 k - 1)^2 pi^2 / (8 x^2)); the first term outside.
    const DoubleDouble exponent = kPiSquaredOver8 / square;
    sum = 1.0;
    for (int k = 2; k <= 4; ++k) {
      const double factor = (2.0 * k - 1.0) * (2.0 * k - 1.0) - 1.0;
      sum = sum + toDoubleDouble(exponential(-exponent * factor));
    }
    return toDouble(exponential(-exponent) * (kSqrt2Pi * sum / x));
  }
  // 1 - 2 times the sum of (-1)^(k - 1) exp(-2 k^2 x^2)
  for (int k = 5; k >= 1; --k) {
    const DoubleDouble term = toDoubleDouble(exponential(square * (-2.0 * k * k)));
    sum = term - sum;
  }
  return (DoubleDouble(1.0) - sum * 2.0).hi;
}
