// What is read off a curve: survival at given times, and the times at which it falls to given
// levels.
#ifndef ENGINE_CURVES_QUANTILES_H_
#define ENGINE_CURVES_QUANTILES_H_

#include <span>
#include <vector>

#include "engine/curves/curve.h"

namespace survmeth::engine::curves {

// The curve at one time.
struct Reading {
  double time = kAbsent;
  double survival = kAbsent, standardError = kAbsent;
  double lower = kAbsent, upper = kAbsent;
  double hazard = kAbsent, hazardError = kAbsent;
};

// The curve at each time, the time's own events included. Before the first time: survival 1 with
// error 0 and no limits but on the plain and log scales, where they are 1.
//
// In   time     finite, in any order
//      extend   whether the last value is carried beyond the last time; else nothing is known there
//               but a survival of 0
// Edge a curve without times has no readings
// Cost O(log n) a time
std::vector<Reading> readings(const Curve& curve, std::span<const double> time, bool extend,
                              Scale scale);

// Which time a level has that the curve runs along.
enum class Flat { kMidpoint, kFirst, kLast };

struct Quantile {
  double probability = kAbsent;
  double time = kAbsent, lower = kAbsent, upper = kAbsent;
};

// The times by which a share p has failed: where the curve falls to 1 - p or below. Where it runs
// at 1 - p, from one time to the next at which it falls (or to its last), the convention decides.
// The limits are where the curve's own limits cross 1 - p, by the same rule. "At" means within
// 2^-26: products such as 19/20 18/19 ... 10/11 are rarely 1/2 to the last bit.
//
// In   probability   each in (0, 1), else Refusal(kValue)
// Edge NaN where the curve, or its limit, never falls so far
// Cost O(n)
// Source Brookmeyer & Crowley, Biometrics 38 (1982) 29-41
std::vector<Quantile> quantiles(const Curve& curve, std::span<const double> probability,
                                Flat flat = Flat::kMidpoint);

// The time by which a share p of those followed up are no longer so: the quantile of the curve with
// censorings as events (reverse Kaplan-Meier). Rows that fail at the time of a censoring are still
// at risk of it.
//
// In   curve         its numbers at risk and censored
//      probability   in (0, 1), else Refusal(kValue)
// Edge NaN where follow-up never falls so far
// Cost O(times)
// Source Schemper & Smith, Control Clin Trials 17 (1996) 343-346
double followUp(const Curve& curve, double probability, Flat flat = Flat::kMidpoint);

}  // namespace survmeth::engine::curves

#endif  // ENGINE_CURVES_QUANTILES_H_
