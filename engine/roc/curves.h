// ROC curves of markers of a two-valued class: areas with their errors, the table of thresholds,
// and the comparison of markers measured on the same subjects.
#ifndef ENGINE_ROC_CURVES_H_
#define ENGINE_ROC_CURVES_H_

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "engine/input.h"

namespace survmeth::engine::roc {

inline constexpr double kAbsent = std::numeric_limits<double>::quiet_NaN();

// Limits of a sensitivity or specificity x / m, z the normal quantile at 1 - alpha / 2, always
// within [0, 1]:
//   Wilson           his score interval, without continuity correction
//   Wald             p -+ z sqrt(p (1 - p) / m)
//   Clopper-Pearson  exact: quantiles of the beta law
//   Agresti          Agresti and Coull's: Wald's on x + z^2 / 2 of m + z^2
enum class RateInterval { kWilson, kWald, kClopperPearson, kAgresti };
const char* intervalName(RateInterval interval);  // "Wilson's score"

struct Marker {
  std::span<const double> values;  // finite; NaN where it is missing
  bool lowerIsPositive = false;
};

// What one case of each outcome costs.
struct Costs {
  double tp = 0, fp = 0, fn = 0, tn = 0;
};

struct Request {
  std::span<const std::uint8_t> positive;  // 0 negative, anything else positive
  std::vector<Marker> markers;             // at least one
  std::span<const double> weight;          // frequencies, finite, not negative; empty: 1 each
  double alpha = 0.05;                     // in (0, 1); intervals have level 1 - alpha
  RateInterval interval = RateInterval::kWilson;
  // In (0, 1), for predictive values and costs; else that of the rows.
  std::optional<double> prevalence;
  Costs costs;  // finite, also for all rows together
};

struct Estimate {
  double value = kAbsent, lower = kAbsent, upper = kAbsent;
};

// Positive is called who has a value at or above the threshold, or at or below it where lower is
// positive.
struct Threshold {
  double threshold = kAbsent;             // absent: nobody is called positive
  double tp = 0, fp = 0, fn = 0, tn = 0;  // sums of weights
  Estimate sensitivity, specificity;
  double youden = kAbsent;         // sensitivity + specificity - 1
  double positiveRatio = kAbsent;  // likelihood ratios; infinite, or none at 0 / 0
  double negativeRatio = kAbsent;
  double positiveValue = kAbsent;  // predictive values; none where nobody is called so
  double negativeValue = kAbsent;
  double cost = 0;  // of as many subjects as there are rows, at the prevalence
};

struct Curve {
  std::size_t rows = 0;                  // with the marker and a weight above 0
  double positives = 0, negatives = 0;   // sums of weights
  Estimate area;                         // limits area -+ z error, within [0, 1]
  double standardError = kAbsent;        // DeLong's
  double z = kAbsent, pValue = kAbsent;  // of an area of 0.5, two-sided
  std::string reason;                    // why limits and test do not exist
  std::vector<Threshold> thresholds;     // by ascending value
  // Thresholds with the largest Youden index, empty where none is above 0: calling everybody the
  // same is no worse then.
  std::vector<std::size_t> best;
  // Thresholds of least cost, to rounding, and that cost; empty where calling nobody positive costs
  // less.
  std::vector<std::size_t> cheapest;
  double leastCost = kAbsent;
  bool lowerIsPositive = false;

  // The thresholds themselves. Where calling nobody positive costs least that is the only row.
  std::vector<Threshold> bestCuts() const;
  std::vector<Threshold> cheapestCuts() const;

  // The area is below 1/2 by more than rounding: the marker speaks for the other class.
  bool belowHalf() const;

  // 1 - specificity and sensitivity from (0, 0) to (1, 1); points closer than `step` in both to the
  // one before are left out, by default those that are one in print.
  struct Points {
    std::vector<double> x, y;
  };
  Points points(double step = 1.0 / 2000) const;
};

// Two markers on the rows that have both.
struct Comparison {
  std::size_t first = 0, second = 0;  // markers
  std::size_t rows = 0;
  double positives = 0, negatives = 0;  // sums of weights
  double firstArea = kAbsent, secondArea = kAbsent;
  Estimate difference;  // first less second, limits difference -+ z error, within [-1, 1]
  double standardError = kAbsent, z = kAbsent, pValue = kAbsent;
  std::string reason;  // why limits and test do not exist
};

struct Result {
  std::vector<Curve> curves;
  std::vector<Comparison> comparisons;  // of each pair, in order
  // Weights that are not whole numbers, or very large: areas and rates are weighted, but what
  // takes them for counts of subjects (intervals, standard errors, tests) does not exist.
  bool weightsAreCounts = true;
  std::string reason;    // why they are not
  std::size_t rows = 0;  // with a weight above 0
};

// Whole weights count for as many rows each. Areas and errors depend on the order of the values
// only, in whatever unit.
//
// Throws Refusal: no rows or columns of different length (kClass), no marker (kMarker), a value
// that is infinite (kMarker), a weight, prevalence, cost or alpha out of its range (kWeight, with
// the row; kPrevalence; kCost; kAlpha); a marker without a positive or without a negative row
// (kMarker, with its index).
// Cost O(n) for each marker and each pair, besides the sum of whole weights, at most 10^7; exact
//      limits O(distinct values) quantiles
// Source DeLong, DeLong & Clarke-Pearson, Biometrics 44 (1988) 837-845; Youden, Cancer 3 (1950)
//        32-35; Agresti & Coull, American Statistician 52 (1998) 119-126
Result curves(const Request& request);

}  // namespace survmeth::engine::roc

#endif  // ENGINE_ROC_CURVES_H_
