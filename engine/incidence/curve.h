// Cumulative incidence of each cause in each group, with its errors and limits.
#ifndef ENGINE_INCIDENCE_CURVE_H_
#define ENGINE_INCIDENCE_CURVE_H_

#include <cstddef>
#include <span>
#include <vector>

#include "engine/curves/limits.h"
#include "engine/incidence/causes.h"

namespace survmeth::engine::incidence {

// What is uncertain about the events of one time: d of the cause, e of any, n at risk.
enum class Variance {
  kAalen,   // each cause, and the others together, by itself: d (n - d) / ((n - 1) n^2)
            // (Aalen, Ann Statist 6 (1978) 534-545)
  kDelta,   // all causes together multinomial: variances d (n - d) / n^3, covariance
            // d (n - e) / n^3 of cause and any (Marubini & Valsecchi 1995, 10.2; for whole numbers
            // the Greenwood-type estimate of the Aalen-Johansen matrix, Andersen, Borgan, Gill &
            // Keiding 1993, IV.4.1.3)
  kRobust,  // the influence of each cluster's weight, or each row's (infinitesimal jackknife)
};

// One cause in one group, an element for each distinct exit of the group.
struct CauseCurve {
  double events = 0;                   // sum of weights
  std::vector<double> eventsAt;        // weight
  std::vector<double> incidence;       // just after the time
  std::vector<double> variance;        // of the incidence
  std::vector<double> hazard;          // cumulative, cause-specific: the sum of d / n
  std::vector<double> hazardVariance;  // the sum of d / n^2, or robust
  double standardError(std::size_t i) const;
};

// One group. What holds at a time holds until the next.
struct Curve {
  std::size_t rows = 0;        // that take part
  double n = 0, censored = 0;  // sums of weights
  std::vector<double> time;    // ascending
  std::vector<double> atRisk;  // just before the time
  std::vector<double> censoredAt;
  std::vector<double> survival;  // free of any event, just after the time (Kaplan-Meier)
  std::vector<CauseCurve> causes;
};

// Clusters and sampling weights make variances robust whatever is asked for.
Variance varianceFor(const Rows& rows, Variance asked);

// The curves of all groups: the sum over the event times of S(t-) d / n.
//
// In   rows   weightKind and clusters of the caller's rows
// Edge a group without rows has a curve without times. The variance of the cause-specific hazard
//      is robust with the incidence's
// Cost O(n causes); robust the same, and memory for some numbers a cluster
// Source Aalen & Johansen, Scand J Statist 5 (1978) 141-150
std::vector<Curve> estimate(const Causes& data, const Rows& rows, Variance asked);

// What one time adds: the cause's share of those at risk, and variances and covariance of its
// error and that of the share of all events.
struct Spread {
  double own = 0.0, covariance = 0.0, any = 0.0;
};
Spread spreadAt(const Causes& data, std::size_t cause, std::size_t time, Variance variance);

// The incidence F with the standard error e: plain, log, log-log (of -log F), logit or arcsine.
//
// In   z   the normal quantile
// Edge none at F = 0; at F = 1 none but for plain and log
// Source Choudhury, Stat Med 21 (2002) 1129-1144
curves::Interval limits(double incidence, double standardError, double z, curves::Scale scale);

// 1 - Kaplan-Meier of one cause, the others taken for censored: never below the incidence, and no
// probability of the event where others compete.
std::vector<double> kaplanMeierComplement(const Curve& curve, std::size_t cause);

// How many times of the curve are at or before this one.
std::size_t timesUntil(const Curve& curve, double time);

// The curve at one time.
struct Reading {
  double time = kAbsent;
  double incidence = kAbsent, standardError = kAbsent;
  double lower = kAbsent, upper = kAbsent;
};

// The incidence of one cause at each time, the time's own events included; before the first time
// 0 with error 0 and no limits.
//
// In   time   finite, in any order
// Edge beyond the last time nothing is known, unless nobody is left to have an event
// Cost O(log n) a time
std::vector<Reading> readings(const Curve& curve, std::size_t cause, std::span<const double> time,
                              double z, curves::Scale scale);

// The second incidence less the first at one time, of independent groups.
curves::Contrast difference(const Reading& first, const Reading& second, double z);

}  // namespace survmeth::engine::incidence

#endif  // ENGINE_INCIDENCE_CURVE_H_
