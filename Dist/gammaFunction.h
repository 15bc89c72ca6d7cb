// The gamma function and Stirling's correction in double-double.
#ifndef DIST_GAMMA_FUNCTION_H_
#define DIST_GAMMA_FUNCTION_H_

#include "Dist/doubleDouble.h"

namespace dist {

// From here on Stirling's series, as far as it is taken, is good to 2^-82.
inline constexpr double kStirlingFrom = 16.0;

// log Gamma(a) - ((a - 1/2) log a - a + log(2 pi) / 2), a >= kStirlingFrom.
DoubleDouble stirling(DoubleDouble a);

// Gamma(1 + a) to about 2^-90, 0 <= a <= 2 kStirlingFrom.
DoubleDouble gammaOnePlus(DoubleDouble a);

// log Gamma(1 + a), relative accuracy also for small a; 0 <= a <= 1e-6.
DoubleDouble logGammaOnePlusSmall(double a);

}  // namespace dist

#endif  // DIST_GAMMA_FUNCTION_H_
