// Events per person-time, and who is at risk at given times.
#ifndef ENGINE_CURVES_RATES_H_
#define ENGINE_CURVES_RATES_H_

#include <span>
#include <vector>

#include "engine/curves/limits.h"
#include "engine/curves/sample.h"

namespace survmeth::engine::curves {

struct Rate {
  double from = kAbsent, to = kAbsent;  // the interval (from, to]
  double events = 0.0, personTime = 0.0;
  double rate = kAbsent;
  double lower = kAbsent, upper = kAbsent;  // exact
};

// Rates of each group within (-infinity, cut 1], (cut 1, cut 2], ..., (last cut, infinity): an
// event at a cut belongs to the interval that ends there. Without cuts, over all time.
//
// In   cuts   ascending, finite, else Refusal(kIntervals)
// Out  groups x (cuts + 1)
// Edge sampling weights have no exact limits; frequencies need not be whole. Without person-time
//      no rate. Without entries everybody is at risk from 0: a negative exit is refused
// Cost O(n log cuts + groups x cuts)
// Source Garwood, Biometrika 28 (1936) 437-442
std::vector<std::vector<Rate>> rates(const Response& response, const Rows& rows,
                                     const Groups& groups, std::span<const double> cuts,
                                     double level);

// The rate of `second` over that of `first`, given the sum of their events: exact conditional
// limits and the exact test that sums the probabilities not above that of the events seen.
//
// Edge without events nothing is known; frequencies that are not whole have limits and no test
// Cost O(events)
// Source Lehmann & Romano, Testing Statistical Hypotheses (2005) 4.5; Clopper & Pearson,
//        Biometrika 26 (1934) 404-413
struct RateRatio {
  double ratio = kAbsent, lower = kAbsent, upper = kAbsent, pValue = kAbsent;
};
RateRatio rateRatio(const Rate& first, const Rate& second, double level);

// The limits of a Poisson count over its person-time.
Interval poissonLimits(double events, double personTime, double level);

// Who is at risk just before each time (entry < time <= exit), and what has happened until it.
struct RiskCount {
  double atRisk = 0.0;
  double events = 0.0;            // since the time before, its own included
  double cumulativeEvents = 0.0;  // up to and including it
  double cumulativeCensored = 0.0;
};

// In   time   ascending, finite, else Refusal(kIntervals)
// Out  groups x times; sums of weights
// Cost O(n log times + groups x times)
std::vector<std::vector<RiskCount>> riskTable(const Response& response, const Rows& rows,
                                              const Groups& groups, std::span<const double> time);

}  // namespace survmeth::engine::curves

#endif  // ENGINE_CURVES_RATES_H_
