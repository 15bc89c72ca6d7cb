// Survival curves and cumulative hazards of groups, with their errors and pointwise limits.
#ifndef ENGINE_CURVES_CURVE_H_
#define ENGINE_CURVES_CURVE_H_

#include <cstddef>
#include <span>
#include <vector>

#include "engine/curves/limits.h"
#include "engine/curves/sample.h"

namespace survmeth::engine::curves {

// What the survival is made of.
enum class Survival {
  kProductLimit,  // Kaplan & Meier, JASA 53 (1958) 457-481
  kExponential,   // exp(-H) of the cumulative hazard (Breslow 1972; Fleming & Harrington 1984)
};

// How the cumulative hazard H takes d events of one time.
enum class HazardTies {
  kPlain,              // d / n (Nelson 1972; Aalen, Ann Statist 6 (1978) 701-726)
  kFlemingHarrington,  // one after the other: 1 / n + 1 / (n - 1) + ... + 1 / (n - d + 1)
                       // (Fleming & Harrington, Comm Statist 13 (1984) 2469-2486)
};

// The model-based variance of H.
enum class HazardVariance {
  kPoisson,   // sum of d / n^2, for ties in turn of 1 / (n - l)^2
  kBinomial,  // sum of d (n - d) / n^3 (Klein, Scand J Statist 18 (1991) 333-340); plain ties only
};

// The error that the lower limit of the survival is made with, n at risk at its time and m at the
// last event time up to it; the upper limit has the usual one.
enum class LowerLimit {
  kUsual,
  kModified,  // times sqrt(m / n): wider with each censoring since
  kPeto,      // of log S sqrt((1 - S) / n) (Peto et al., Br J Cancer 35 (1977) 1-39)
};

struct Options {
  Survival survival = Survival::kProductLimit;
  HazardTies ties = HazardTies::kPlain;
  HazardVariance hazardVariance = HazardVariance::kPoisson;
  Scale scale = Scale::kLogLog;
  LowerLimit lowerLimit = LowerLimit::kUsual;
  double level = 0.95;
  // Variances from the influence of each cluster (each row without clusters); clusters and
  // sampling weights imply them.
  bool robust = false;
};

// One group. The vectors have an element for each distinct exit, ascending; what holds at a time
// holds until the next.
struct Curve {
  std::size_t rows = 0;                    // that take part
  double n = 0, events = 0, censored = 0;  // sums of weights
  std::vector<double> time;
  std::vector<double> atRisk;  // just before the time
  std::vector<double> eventsAt, censoredAt;
  std::vector<double> survival;  // just after it
  // Of log S; Greenwood's sum of d / (n (n - d)) for the product-limit curve. Not a number where
  // S = 0 and the variance robust, infinite where S = 0 otherwise.
  std::vector<double> logVariance;
  std::vector<double> hazard, hazardVariance;
  std::vector<double> lower, upper;  // of the survival

  // Of the survival; NaN at S = 0.
  double standardError(std::size_t i) const;
  double hazardError(std::size_t i) const;
};

// Curves of all groups.
//
// In   sample         its weights: with ties one after the other the failing rows of a time share
//                     the weight of all of them
//      rows           weightKind and clusters of the caller's rows
// Edge a group without rows has a curve without times; Refusal for binomial variances of anything
//      but plain ties, or where they are to be robust
// Cost O(n); robust the same, and memory for five numbers a cluster
// Source Greenwood (1926); robust: Williams, Biometrics 51 (1995) 200-203
std::vector<Curve> estimate(const Sample& sample, const Rows& rows, const Options& options);

// What time k of the sample adds to H and to its model-based variance.
struct HazardTerm {
  double hazard = 0.0, variance = 0.0;
};
HazardTerm hazardTerm(const Sample& sample, std::size_t k, const Options& options);

// What time k of the sample adds to the model-based variance of log S; 0 where all at risk fail and
// the product-limit curve ends.
double logVarianceTerm(const Sample& sample, std::size_t k, const Options& options);

// Whether the variances are robust.
bool robust(const Rows& rows, const Options& options);

// The index of the last time at or before `time`, or Curve::time.size() before the first.
std::size_t indexAt(const Curve& curve, double time);

}  // namespace survmeth::engine::curves

#endif  // ENGINE_CURVES_CURVE_H_
