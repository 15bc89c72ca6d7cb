// The times by which shares have failed, read off a curve of survival that is formed piece by piece.
#ifndef ANALYSIS_COX_PREDICT_QUANTILES_H_
#define ANALYSIS_COX_PREDICT_QUANTILES_H_

#include <cstddef>
#include <vector>

#include "analysis/cox/predict.h"
#include "engine/cox/baseline.h"
#include "engine/curves/quantiles.h"

namespace survmeth::analysis {

// Quantiles of the survival exp(-H) and of its limits as curves::quantiles has them. Levels are
// compared with exponents; the exponential of one is taken where it is at the level to 1e-9.
class CoxQuantiles {
 public:
  // In   z  the normal quantile of the limits
  CoxQuantiles(const CoxPredictRequest& request, double z);

  // Takes the next event times; whether more are wanted.
  // Cost one exponential a time for log-log limits, else none
  bool add(const engine::cox::HazardPiece& piece);

  // In   last  the curve ends there, event or not, with the value that it has
  std::vector<engine::curves::Quantile> quantiles(double last);

 private:
  // Survival and its limits, in this order.
  static constexpr std::size_t kCurves = 3;
  static constexpr std::size_t kTimes = 1024;

  // A number that values are compared with: those above `never` are above it, those below `surely`
  // below.
  struct Bound {
    double level, never, surely;
  };
  // What is known of a level's crossing.
  struct Search {
    Bound from, until;  // the curve is at the level from the first on, until it is below the second
    bool at = false, done = false;
    double time = 0, last = 0;  // the crossing, or where the curve came to the level; so far
  };

  bool exponents() const;
  Bound boundOf(double level) const;
  double valueOf(double value) const;
  void form(const double* hazard, const double* error, std::size_t count);
  void addSome(const double* time, const double* hazard, const double* error, std::size_t count);
  void follow(const double* value, const double* time, std::size_t count, Search& search) const;

  const CoxPredictRequest& request_;
  double z_;
  std::vector<Search> searches_;  // curves of the first share, those of the next
  double values_[kCurves][kTimes];
  double lastTime_ = engine::curves::kAbsent, lastValue_[kCurves] = {};
};

}  // namespace survmeth::analysis

#endif  // ANALYSIS_COX_PREDICT_QUANTILES_H_
