// The interval of sensitivity and specificity, one meaning of the method codes for the curve and
// for the single table.
#ifndef SURVIVAL_ROC_INTERVALS_H_
#define SURVIVAL_ROC_INTERVALS_H_

#include <cmath>

#include "Dist/Dist"
#include "Klikro/utilities.h"

namespace survival::roc {

struct Bounds {
  double lower;
  double upper;
};

// What every interval of a call shares.
struct IntervalOptions {
  IntervalOptions(double significance, int code, short correction)
      : alpha(significance),
        z(std::fabs(InvCDFNormalStd(1.0 - significance / 2.0))),
        method(code),
        continuity(correction == kTrue ? 0.5 : 0.0) {}

  double alpha;
  double z;
  int method;
  double continuity;
};

// The adjusted Wald interval adds two successes and two failures to the m cases.
inline double intervalCases(const IntervalOptions& options, double m) {
  return options.method == 1 ? m + 4.0 : m;
}

// Interval of a rate p seen on m cases: 0 Wald, 1 adjusted Wald, 2 Wilson, any other code
// Clopper and Pearson.
inline Bounds rateInterval(const IntervalOptions& options, double p, double m) {
  Bounds bounds{};
  switch (options.method) {
    case 0:
      GetInfSupWald(options.z, p, m, &bounds.lower, &bounds.upper);
      break;
    case 1:
      GetInfSupWald(options.z, (p * m + 2.0) / (m + 4.0), intervalCases(options, m), &bounds.lower,
                    &bounds.upper);
      break;
    case 2:
      GetInfSupWilson(options.z, p, m, options.continuity, &bounds.lower, &bounds.upper);
      break;
    default:
      GetInfSupClopper(p * m, m, options.alpha, &bounds.lower, &bounds.upper);
  }
  return bounds;
}

}  // namespace survival::roc

#endif  // SURVIVAL_ROC_INTERVALS_H_
