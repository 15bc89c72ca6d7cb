// Restricted means: the area under a curve up to a horizon, and what groups differ by.
#ifndef ENGINE_CURVES_MEANS_H_
#define ENGINE_CURVES_MEANS_H_

#include <span>
#include <vector>

#include "engine/curves/curve.h"

namespace survmeth::engine::curves {

// Survival time restricted to `horizon`, from time 0, or from the first time of all where one is
// negative. The time lost is horizon - origin - mean and has the same standard error.
struct RestrictedMean {
  double origin = 0.0, horizon = kAbsent;
  double mean = kAbsent, standardError = kAbsent;
  double lower = kAbsent, upper = kAbsent;
  double lost = kAbsent, lostLower = kAbsent, lostUpper = kAbsent;
  bool extended = false;  // follow-up ends before the horizon with survivors: carried on level
};

// The smallest of the groups' last times, up to which no curve has to be carried on; groups
// without rows do not count.
double commonHorizon(std::span<const Curve> curves);

// The restricted means of all groups. The variance is the sum over the times up to the horizon of
//
//   (integral of S from the time to the horizon)^2 d / (n (n - d)),
//
// for exp(-H) of the variance of H's increment in the last factor's place, or robust.
//
// In   curves   of estimate(sample, rows, options)
//      horizon  after the origin, else Refusal(kValue)
// Cost O(n)
// Source Klein & Moeschberger, Survival Analysis, 2nd ed. (2003) 4.5; Andersen, Hansen & Klein,
//        Lifetime Data Anal 10 (2004) 335-350
std::vector<RestrictedMean> restrictedMeans(const Sample& sample, const Rows& rows,
                                            std::span<const Curve> curves, const Options& options,
                                            double horizon);

// Second less first: of the means; the ratios of second to first of the means and of the times
// lost, their errors those of the logarithms. Of independent groups.
struct MeanContrasts {
  Contrast difference, ratio, lostRatio;
};
MeanContrasts compareMeans(const RestrictedMean& first, const RestrictedMean& second, double level);

}  // namespace survmeth::engine::curves

#endif  // ENGINE_CURVES_MEANS_H_
