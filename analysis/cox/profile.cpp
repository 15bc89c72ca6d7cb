#include "analysis/cox/profile.h"

#include <cmath>
#include <memory>

#include "engine/cox/profile.h"

namespace survmeth::analysis {
namespace {

namespace cox = engine::cox;

// What the procedure asks of one coefficient, answered by the engine.
class CoxProfiled : public procedures::Profiled {
 public:
  CoxProfiled(const cox::Fit& fit, const cox::PenalisedFit* penalised, std::size_t column,
              numerics::Progress& progress)
      : fit_(fit), penalised_(penalised), column_(column), progress_(progress) {}

  double logLikelihood() const override {
    return penalised_ != nullptr ? penalised_->logLikelihood : fit_.logLikelihood;
  }

  procedures::Estimate estimate() const override {
    const bool infinite = fit_.column[column_] == cox::Column::kInfinite;
    return {fit_.working[column_], std::sqrt(fit_.covariance(column_, column_)),
            cox::kFarApart / fit_.problem->spread[column_],
            !infinite                        ? 0
            : fit_.coefficients[column_] > 0 ? 1
                                             : -1};
  }

  std::function<procedures::Held(double)> search() override {
    const std::shared_ptr<cox::Profile> profile =
        penalised_ != nullptr ? cox::profileOf(*penalised_, column_, progress_)
                              : cox::profileOf(fit_, column_, progress_);
    return [profile](double value) -> procedures::Held {
      const cox::Held held = profile->at(value);
      return {held.exists, held.logLikelihood, held.slope};
    };
  }

 private:
  const cox::Fit& fit_;
  const cox::PenalisedFit* penalised_;
  std::size_t column_;
  numerics::Progress& progress_;
};

}  // namespace

procedures::ProfileLimits coxProfileLimits(const cox::Fit& fit, const cox::PenalisedFit* penalised,
                                           std::size_t column, double level,
                                           numerics::Progress& progress) {
  const bool ridge = penalised != nullptr && penalised->penalty.kind == cox::Penalty::Kind::kRidge;
  if (!fit.converged || fit.column[column] == cox::Column::kAliased || ridge) {
    return {.found = false};
  }
  CoxProfiled profiled(fit, penalised, column, progress);
  return procedures::profileLimits(profiled, level);
}

}  // namespace survmeth::analysis
