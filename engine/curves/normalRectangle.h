// The normal law of up to four correlated variables over a rectangle.
#ifndef ENGINE_CURVES_NORMAL_RECTANGLE_H_
#define ENGINE_CURVES_NORMAL_RECTANGLE_H_

#include <cstddef>
#include <span>

#include "numerics/squareMatrix.h"

namespace survmeth::engine::curves {

inline constexpr std::size_t kMostNormals = 4;

// The probability that X[i] <= lower[i] or X[i] >= upper[i] for some i, X normal with mean 0, variance
// 1 and this correlation. Of the outside, so that a small one has its digits.
//
// In   lower[d], upper[d]   d from 1 to kMostNormals, else std::invalid_argument; may be infinite
//      correlation          d x d, symmetric, 1 on the diagonal; singular ones too
// Edge 1 where some lower >= upper; NaN where a number is none. Correlations within 2^-50 of 1 or
//      -1 are that: the result is 1e-8 off at most, as their last digits are worth as much
// Cost relative error below 1e-12, singular correlations included. Of a correlation of 1 - e a last
//      digit moves the result by 1e-17 / sqrt(e). Some milliseconds for d = 4, more where the
//      correlations nearly are singular
// Source Plackett, Biometrika 41 (1954) 351-360; Drezner & Wesolowsky, J Statist Comput Simul 35
//        (1990) 101-107; Genz, Stat Comput 14 (2004) 251-260
double normalOutside(std::span<const double> lower, std::span<const double> upper,
                     const numerics::SquareMatrix& correlation);

// P(X > h, Y > k) of two with this correlation, error below 1e-15.
double normalAbove(double h, double k, double correlation);

}  // namespace survmeth::engine::curves

#endif  // ENGINE_CURVES_NORMAL_RECTANGLE_H_
