// A smooth curve through points with its band: what a figure of residuals shows.
#ifndef ANALYSIS_COX_SMOOTH_H_
#define ANALYSIS_COX_SMOOTH_H_

#include <cstddef>
#include <span>
#include <vector>

namespace survmeth::analysis {

struct Smooth {
  std::vector<double> x, fit, lower, upper;
};

// Least squares on a natural spline of four degrees of freedom (the constant counted), its inner
// knots at the terciles of x, at evenly spaced places from the smallest x to the largest.
//
// In   variance   of one y
//      z          half the band's width in standard errors
// Edge no points where x has too few different values for the knots
// Cost O(x)
Smooth smoothOf(std::span<const double> x, std::span<const double> y, double variance, double z,
                std::size_t places = 40);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_COX_SMOOTH_H_
