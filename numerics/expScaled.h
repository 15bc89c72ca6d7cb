// The exponential at and beyond the ends of the range of doubles.
#ifndef NUMERICS_EXP_SCALED_H_
#define NUMERICS_EXP_SCALED_H_

namespace survmeth::numerics {

// e^(x + rest) for any x, rest a correction below the last place of x: infinity above the range, 0
// below it, rounded once where the result is subnormal. NaN for NaN.
double expScaled(double x, double rest);

}  // namespace survmeth::numerics

#endif  // NUMERICS_EXP_SCALED_H_
