// The hazard itself, smoothed from the increments of the cumulative hazard.
#ifndef ENGINE_CURVES_HAZARD_RATE_H_
#define ENGINE_CURVES_HAZARD_RATE_H_

#include <span>
#include <vector>

#include "engine/curves/curve.h"

namespace survmeth::engine::curves {

struct HazardRate {
  double time = kAbsent, rate = kAbsent, standardError = kAbsent;
  double lower = kAbsent, upper = kAbsent;  // rate exp(-+ z error / rate)
};

// The kernel estimate of the hazard of one group at each time t,
//
//   1 / b  sum over the event times t_k of K((t - t_k) / b) dH(t_k),
//
// and of its variance with 1 / b^2, K^2 and dV. K is Epanechnikov's, 3/4 (1 - x^2) on [-1, 1];
// with t less than b from 0 or from the last event time, q b, it is K(x) (alpha + beta x) on
// [-1, q] or, mirrored, on [-q, 1]; alpha and beta make its integral 1 and its mean 0, and near an
// end the rate may fall below 0. Where variances are robust, the influences take dV's place.
//
// In   time       0 .. the last event time; elsewhere nothing is estimated
//      bandwidth  b > 0, at most half of the last event time, so that no time is near both ends;
//                 else Refusal(kValue)
// Edge a rate not above 0 has no limits
// Cost O(log n + events within b) for each time, O(n) where variances are robust
// Source Ramlau-Hansen, Ann Statist 11 (1983) 453-466; Gasser & Mueller (1979); Klein &
//        Moeschberger, Survival Analysis, 2nd ed. (2003) 6.2
std::vector<HazardRate> hazardRates(const Sample& sample, std::size_t group, const Rows& rows,
                                    const Options& options, std::span<const double> time,
                                    double bandwidth);

}  // namespace survmeth::engine::curves

#endif  // ENGINE_CURVES_HAZARD_RATE_H_
