// Simultaneous confidence bands of a survival curve.
#ifndef ENGINE_CURVES_BANDS_H_
#define ENGINE_CURVES_BANDS_H_

#include <vector>

#include "engine/curves/curve.h"

namespace survmeth::engine::curves {

enum class BandKind {
  kHallWellner,     // Hall & Wellner, Biometrika 67 (1980) 133-143
  kEqualPrecision,  // proportional to the pointwise limits; Nair, Technometrics 26 (1984) 265-275
};

struct Band {
  double from = kAbsent, to = kAbsent;                // the interval in which it holds
  double critical = kAbsent;                          // in place of a normal quantile
  double lowerShare = kAbsent, upperShare = kAbsent;  // a = n v / (1 + n v) at its ends
  std::vector<double> lower, upper;                   // of each time of the curve; NaN outside
};

// The band of one group for all times from `from` to `to` together, with v the variance of log S:
//
//   equal precision   the limits of the scale with c sqrt(v)
//   Hall-Wellner      the limits of the scale with k (1 + n v) / sqrt(n)
//
// c and k are quantiles of the largest deviation of a Brownian bridge between the shares a of the
// two ends (bridge.h), for any level.
//
// In   from, to   the interval, drawn in to the first event and to the last with survivors; NaN:
//                 these
// Edge Refusal(kRequest) for robust variances, whose limit is no Brownian bridge; a curve without
//      an interval, or one over which v grows by less than a factor exp(2 kShortestBand), has no
//      band and `critical` is NaN. One time: the normal quantile, with equal precision
// Cost O(times) and bridge.h's
// Source Borgan & Liestol, Scand J Statist 17 (1990) 35-41
Band band(const Curve& curve, const Rows& rows, const Options& options, BandKind kind,
          double from = kAbsent, double to = kAbsent);

}  // namespace survmeth::engine::curves

#endif  // ENGINE_CURVES_BANDS_H_
