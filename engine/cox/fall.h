// Where a profile likelihood has fallen by a given amount.
#ifndef ENGINE_COX_FALL_H_
#define ENGINE_COX_FALL_H_

#include <functional>

namespace survmeth::engine::cox {

// Predictors that a coefficient moves further apart than this change no likelihood any more.
inline constexpr double kFarApart = 600.0;

// The root of twice the fall of a profile likelihood at one value of its coefficient, and its slope.
struct Fall {
  double root, slope;
  bool exists;
};

// Where a limit is looked for: on the side `sign` of `inside`, from `first` on, up to `far`.
struct FallSearch {
  double inside, first;
  double z;  // the wanted root
  double sign, far;
};

// The coefficient at which the root is z; infinity with the sign where it lies beyond `far`.
//
// Out  exists  false where the profile has no maximum on the way, and nothing is returned
// Source Venzon & Moolgavkar, Applied Statistics 37 (1988) 87-94
double limitOfFall(const std::function<Fall(double)>& fall, const FallSearch& search, bool& exists);

}  // namespace survmeth::engine::cox

#endif  // ENGINE_COX_FALL_H_
