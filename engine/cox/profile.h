// The likelihood of a fit with one of its coefficients held: what a profile is made of.
#ifndef ENGINE_COX_PROFILE_H_
#define ENGINE_COX_PROFILE_H_

#include <cstddef>
#include <memory>

#include "engine/cox/fit.h"
#include "engine/cox/penalised.h"

namespace survmeth::engine::cox {

// The log-likelihood, maximised over the other coefficients, and its derivative with respect to the one
// that is held.
struct Held {
  bool exists = false;
  double logLikelihood = kAbsent, slope = kAbsent;
};

class Profile {
 public:
  Profile() = default;
  Profile(const Profile&) = delete;
  Profile& operator=(const Profile&) = delete;
  virtual ~Profile() = default;

  // Starts where the last value ended, the first time at the fit's maximum.
  // Cost one fit of the other coefficients
  virtual Held at(double value) = 0;
};

// Predictors that a coefficient moves further apart than this change no likelihood any more.
inline constexpr double kFarApart = 600.0;

// In   fit      converged; outlives the profile
//      column   not aliased; other infinite coefficients stay where they are
std::unique_ptr<Profile> profileOf(const Fit& fit, std::size_t column,
                                   numerics::Progress& progress);

// Of the penalised likelihood; all columns stay in the penalty.
std::unique_ptr<Profile> profileOf(const PenalisedFit& penalised, std::size_t column,
                                   numerics::Progress& progress);

}  // namespace survmeth::engine::cox

#endif  // ENGINE_COX_PROFILE_H_
