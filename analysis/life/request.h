// What survmeth life is asked.
#ifndef ANALYSIS_LIFE_REQUEST_H_
#define ANALYSIS_LIFE_REQUEST_H_

#include <optional>
#include <string>
#include <vector>

#include "analysis/pairs.h"
#include "engine/curves/bands.h"
#include "engine/curves/comparison.h"
#include "engine/curves/curve.h"
#include "engine/curves/permutation.h"
#include "engine/curves/quantiles.h"
#include "engine/input.h"
#include "frame/wanted.h"

namespace survmeth::analysis {

enum class LifeUnit { kDays, kWeeks, kMonths, kYears };
enum class LifeEstimate { kKaplanMeier, kNelsonAalen, kFlemingHarrington };
enum class LifeTable { kNone, kKaplanMeier, kCurves, kActuarial };

struct LifeRequest {
  std::string formula;
  // The parts of a formula in options of their own; either they or the formula.
  std::string time, event, entry;
  std::vector<std::string> group, strata;  // crossed

  std::string from, to;  // dates in place of times
  LifeUnit unit = LifeUnit::kDays;
  std::vector<std::string> eventValues;  // empty: those that mean so (model/coding.h)
  std::string weight;                    // frequencies, another name of weights
  std::string weights, cluster, id;
  engine::WeightKind weightsAre = engine::WeightKind::kFrequencies;
  bool robust = false;
  std::optional<double> tieTolerance;
  double alpha = 0.05;

  LifeEstimate estimate = LifeEstimate::kKaplanMeier;
  engine::curves::Scale limits = engine::curves::Scale::kLogLog;
  engine::curves::LowerLimit lowerLimit = engine::curves::LowerLimit::kUsual;
  std::optional<engine::curves::BandKind> band;
  std::optional<double> bandFrom, bandTo;
  LifeTable table = LifeTable::kNone;
  std::optional<double> width;
  std::vector<double> bounds;

  engine::curves::Flat flat = engine::curves::Flat::kMidpoint;
  std::vector<double> quantiles, at;
  std::optional<engine::curves::Scale> difference;  // of the groups' survival at these times
  bool means = false;
  std::optional<double> tau;
  std::optional<double> hazard;  // bandwidth
  bool rates = false;
  std::vector<double> cuts;
  std::vector<double> riskAt;
  std::vector<std::string> riskRows;

  std::vector<std::string> tests;  // empty: those that are usual
  bool trend = false;
  std::vector<double> scores;
  Pairs pairs = Pairs::kNone;
  bool hazardRatios = false;
  std::vector<std::string> combination;  // "usual", or tests; empty: none
  std::string permutations;              // a number, or "exact"; empty: none
  std::optional<double> seed;

  bool byDates() const { return !from.empty(); }
  bool intervals() const { return width || !bounds.empty(); }
  bool wantsMeans() const { return means || tau; }
  bool wantsRates() const { return rates || !cuts.empty(); }
  bool wantsTrend() const { return trend || !scores.empty(); }
  bool lateEntry() const { return !entry.empty(); }
  const std::string& weightColumn() const { return weights.empty() ? weight : weights; }
  bool sampling() const {
    return !weightColumn().empty() && weightsAre == engine::WeightKind::kSampling;
  }
  double tolerance() const { return tieTolerance.value_or(engine::risk::kTieTolerance); }
  engine::curves::Options curves() const;
  // That --tests names, in its order; throws BadOption.
  std::vector<engine::curves::Weighting> weightings() const;
  // Those of --combination, and what --permutations and --seed say, where they say something.
  std::vector<engine::curves::Weighting> combinationWeightings() const;
  engine::curves::Permutations permutationsAsked() const;
};

// Refuses options that do not go together; throws BadOption.
void checkLife(const LifeRequest& request);

// The request with the columns of its formula in the options that say the same, and with the unit
// for the time's name where there are dates.
// Throws frame::ExpressionError, BadOption
LifeRequest withColumns(const LifeRequest& request);

// Asks for the columns of the formula.
void wantLifeColumns(const LifeRequest& request, const std::vector<std::string>& header,
                     std::vector<frame::Wanted>& wanted);

// The days of a unit, and its name: "months".
double daysOf(LifeUnit unit);
const char* nameOf(LifeUnit unit);

// Words of --risk-rows.
const std::vector<std::string>& lifeRiskRows();

}  // namespace survmeth::analysis

#endif  // ANALYSIS_LIFE_REQUEST_H_
