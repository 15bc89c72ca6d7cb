// Survival curves by group: product-limit estimate, limits, median, and the tests that compare the
// groups.
#ifndef ANALYSIS_SURVIVAL_CURVES_H_
#define ANALYSIS_SURVIVAL_CURVES_H_

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "analysis/estimate.h"
#include "analysis/survivalData.h"

namespace survmeth {

// How limits are set around a survival S from the Greenwood sum G, z the normal quantile:
//   log-log   exp(-exp(ln(-ln S) +- z sqrt(G) / ln S))
//   log       S exp(-+ z sqrt(G)), at most 1
//   plain     S -+ z S sqrt(G), within [0, 1]
// None exist at S = 0, and for log-log none at S = 1 either.
enum class CurveLimits { kLogLog, kLog, kPlain };
std::string limitsName(CurveLimits limits);  // "log-log"

struct CurveRequest {
  SurvivalData data;
  double alpha = 0.05;  // in (0, 1); limits have level 1 - alpha
  CurveLimits limits = CurveLimits::kLogLog;
};

// One group. The vectors have one element for each distinct time, ascending.
struct SurvivalCurve {
  std::size_t rows = 0;                    // of the data
  double n = 0, events = 0, censored = 0;  // sums of weights
  // The time at which the curve crosses 1/2, the middle of the stretch where it runs at 1/2 (to
  // the last time, if it ends there). "At 1/2" means within 1.5e-8, the square root of the
  // precision: a product such as 19/20 18/19 ... 10/11 rarely is 1/2 to the last bit. Lower and
  // upper limit: where the curve's lower and upper limit cross 1/2 in the same sense.
  Estimate median;

  std::vector<double> time;
  std::vector<double> atRisk;  // just before the time
  std::vector<double> eventsAt, censoredAt;
  std::vector<double> survival;      // just after it
  std::vector<double> greenwoodSum;  // sum of d / (n (n - d)); does not exist at S = 0
  std::vector<double> lower, upper;

  // Of the survival.
  double standardError(std::size_t i) const;
  std::vector<double> standardErrors() const;
};

enum class CurveTest { kLogRank, kGehanBreslow, kTaroneWare };

// Comparison of the groups. A group in which nobody is at risk at any event time has no part in
// it, and none of the events. Where no test exists, `reason` says why and the numbers are NaN.
struct Comparison {
  std::string reason;
  std::array<Test, 3> tests;               // in the order of CurveTest
  std::vector<bool> included;              // of each group
  std::vector<double> observed, expected;  // events of each group, as in the log-rank test
  const Test& operator[](CurveTest test) const { return tests[static_cast<std::size_t>(test)]; }
};

struct CurveResult {
  std::vector<SurvivalCurve> curves;
  Comparison comparison;
  double n = 0, events = 0, censored = 0;  // of all curves
};

// In   data     see SurvivalData and Tally for what is refused (engine::Refusal)
// Edge all rows events, all rows censored: valid; one group or no event: no test
// Cost O(n log n), about 200 bytes a row while it works, 64 bytes a distinct time in the result.
//      The tests of K groups besides: O(K^2) for each event time and O(K^3) up to 16 groups; above
//      them O(K n) and K^3 / 6 for each test, 4 K^2 bytes
// Source Kaplan & Meier, JASA 53 (1958) 457-481; Greenwood (1926); Brookmeyer & Crowley,
//        Biometrics 38 (1982) 29-41 (median); Tarone & Ware, Biometrika 64 (1977) 156-160
CurveResult survivalCurves(const CurveRequest& request);

// The pieces, for callers that have a curve already. z is the normal quantile of the level.
struct SurvivalLimits {
  double lower = kNone, upper = kNone;
};
SurvivalLimits survivalLimits(double survival, double greenwoodSum, double z, CurveLimits kind);
Comparison compareCurves(const std::vector<SurvivalCurve>& curves);
Estimate medianOf(const SurvivalCurve& curve);

}  // namespace survmeth

#endif  // ANALYSIS_SURVIVAL_CURVES_H_
