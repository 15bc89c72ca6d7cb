// Limits around a survival or a cumulative hazard, on the scale on which they are symmetric.
#ifndef ENGINE_CURVES_LIMITS_H_
#define ENGINE_CURVES_LIMITS_H_

#include <span>

#include "engine/curves/sample.h"

namespace survmeth::engine::curves {

enum class Scale { kPlain, kLog, kLogLog, kLogit, kArcsine };

struct Interval {
  double lower = kAbsent, upper = kAbsent;
};

// An estimate with its standard error, limits and the test of its value against that of equality
// (0, or 1 for a ratio). The standard error of a ratio is that of its logarithm.
struct Contrast {
  double estimate = kAbsent, standardError = kAbsent;
  double lower = kAbsent, upper = kAbsent;
  double z = kAbsent, pValue = kAbsent;  // two-sided
};

// The standard normal quantile that belongs to two-sided limits of this level.
//
// Edge Refusal(kAlpha) for a level outside (0, 1)
double normalQuantile(double level);

// Limits of a survival whose logarithm has the standard error e, z the normal quantile or a band's
// critical value, `spread` = z e:
//
//   plain    S (1 -+ spread)                              within [0, 1]
//   log      S exp(-+ spread)                             at most 1
//   log-log  S^exp(+- spread / log S)
//   logit    S / (S + (1 - S) exp(+- spread / (1 - S)))
//   arcsine  sin^2(arcsin(sqrt S) -+ spread sqrt(S / (1 - S)) / 2), the angle within [0, pi / 2]
//
// Edge none at S = 0; at S = 1 none but for plain and log
// Source Kalbfleisch & Prentice, The Statistical Analysis of Failure Time Data (1980);
//        Borgan & Liestol, Scand J Statist 17 (1990) 35-41; Nair, Technometrics 26 (1984) 265-275
Interval survivalLimits(double survival, double spread, Scale scale);

// The same of n survivals, bit for bit, in a fraction of the time.
//
// In   survival[n]; spread[n]
// Out  lower[n]; upper[n]
void survivalLimits(std::span<const double> survival, std::span<const double> spread, Scale scale,
                    std::span<double> lower, std::span<double> upper);

// Limits of a cumulative hazard H with the standard error e: plain H -+ z e, at least 0, or log
// H exp(-+ z e / H).
//
// Edge none for log at H = 0; other scales throw std::invalid_argument
Interval hazardLimits(double hazard, double standardError, double z, Scale scale);

// An estimate, normal as it is or in its logarithm; a ratio not above 0 has neither limits nor test.
Contrast difference(double estimate, double standardError, double z);
Contrast ratio(double estimate, double standardErrorOfLog, double z);

// The second survival less the first at one time, of independent groups, each transformed: S, log S,
// log(-log S), log(S / (1 - S)) or arcsin(sqrt S). `logVariance` is that of log S, as a curve has it.
//
// Edge nothing where S is 0 or 1, but for plain at 1
// Source Klein, Logan, Harhoff & Andersen, Stat Med 26 (2007) 4505-4519
struct SurvivalAt {
  double survival = kAbsent, logVariance = kAbsent;
};
Contrast compareAt(const SurvivalAt& first, const SurvivalAt& second, Scale scale, double level);

}  // namespace survmeth::engine::curves

#endif  // ENGINE_CURVES_LIMITS_H_
