// ROC curves of markers of a two-valued class: areas with their errors, the table of thresholds,
// and the comparison of markers measured on the same subjects.
#ifndef ANALYSIS_ROC_CURVE_H_
#define ANALYSIS_ROC_CURVE_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "analysis/estimate.h"

namespace survmeth {

// Limits of a sensitivity or specificity x / m, z the normal quantile at 1 - alpha / 2, always
// within [0, 1]:
//   Wilson           his score interval, without continuity correction
//   Wald             p -+ z sqrt(p (1 - p) / m)
//   Clopper-Pearson  exact: quantiles of the beta law
//   Agresti          Agresti and Coull's: Wald's on x + z^2 / 2 of m + z^2
enum class RateInterval { kWilson, kWald, kClopperPearson, kAgresti };

struct RocMarker {
  std::span<const double> values;  // finite; NaN where it is missing
  bool lowerIsPositive = false;
};

// What one case of each outcome costs.
struct RocCosts {
  double tp = 0, fp = 0, fn = 0, tn = 0;
};

struct RocRequest {
  std::span<const std::uint8_t> positive;  // 0 negative, anything else positive
  std::vector<RocMarker> markers;          // at least one
  std::span<const double> weight;          // frequencies, finite, not negative; empty: 1 each
  double alpha = 0.05;                     // in (0, 1); intervals have level 1 - alpha
  RateInterval interval = RateInterval::kWilson;
  // In (0, 1), for predictive values and costs; else that of the rows.
  std::optional<double> prevalence;
  RocCosts costs;  // finite, also for all rows together
};

// Positive is called who has a value at or above the threshold, or at or below it where lower is
// positive.
struct RocThreshold {
  double threshold = kNone;
  double tp = 0, fp = 0, fn = 0, tn = 0;  // sums of weights
  Estimate sensitivity, specificity;
  double youden = kNone;         // sensitivity + specificity - 1
  double positiveRatio = kNone;  // likelihood ratios; infinite, or none at 0 / 0
  double negativeRatio = kNone;
  double positiveValue = kNone;  // predictive values; none where nobody is called so
  double negativeValue = kNone;
  double cost = 0;  // of as many subjects as there are rows, at the prevalence
};

struct RocCurve {
  std::size_t rows = 0;                  // with the marker and a weight above 0
  double positives = 0, negatives = 0;   // sums of weights
  Estimate area;                         // limits area -+ z error, within [0, 1]
  double standardError = kNone;          // DeLong's
  double z = kNone, pValue = kNone;      // of an area of 0.5, two-sided
  std::string reason;                    // why limits and test do not exist
  std::vector<RocThreshold> thresholds;  // by ascending value
  // Thresholds with the largest Youden index, empty where none is above 0: calling everybody the
  // same is no worse then.
  std::vector<std::size_t> best;
  // Thresholds of least cost, to rounding, and that cost; empty where calling nobody positive costs
  // less.
  std::vector<std::size_t> cheapest;
  double leastCost = kNone;
  bool lowerIsPositive = false;

  // 1 - specificity and sensitivity from (0, 0) to (1, 1); points closer than `step` in both to the
  // one before are left out.
  struct Points {
    std::vector<double> x, y;
  };
  Points points(double step) const;
};

// Two markers on the rows that have both.
struct RocComparison {
  std::size_t first = 0, second = 0;  // markers
  std::size_t rows = 0;
  double positives = 0, negatives = 0;  // sums of weights
  double firstArea = kNone, secondArea = kNone;
  Estimate difference;  // first less second, limits difference -+ z error, within [-1, 1]
  double standardError = kNone, z = kNone, pValue = kNone;
  std::string reason;  // why limits and test do not exist
};

struct RocResult {
  std::vector<RocCurve> curves;
  std::vector<RocComparison> comparisons;  // of each pair, in order
  // Weights that are not whole numbers, or very large: areas and rates are weighted, but what
  // takes them for counts of subjects (intervals, standard errors, tests) does not exist.
  bool weightsAreCounts = true;
};

// Whole weights count for as many rows each. Areas and errors depend on the order of the values
// only, in whatever unit.
//
// Throws engine::Refusal: no rows or columns of different length ("positive"), no marker
// ("marker"), a value that is infinite ("marker"), a weight, prevalence, cost or alpha out of its
// range ("weight", with the row; "prevalence"; "cost"; "alpha"); a marker without a positive or
// without a negative row ("marker", with its index).
// Cost for each marker and each pair O(n log n), n the sum of whole weights, at most 10^7
// Source DeLong, DeLong & Clarke-Pearson, Biometrics 44 (1988) 837-845; Youden, Cancer 3 (1950)
//        32-35; Agresti & Coull, American Statistician 52 (1998) 119-126
RocResult rocCurves(const RocRequest& request);

}  // namespace survmeth

#endif  // ANALYSIS_ROC_CURVE_H_
