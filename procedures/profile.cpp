#include "procedures/profile.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "Dist/Dist"

namespace survmeth::procedures {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// The root of twice the fall of a profile likelihood at one value of its coefficient, and its slope.
struct Fall {
  double root = 0.0, slope = 0.0;
};

Fall fallOf(double maximum, const Held& held) {
  const double root = std::sqrt(std::max(0.0, 2.0 * (maximum - held.logLikelihood)));
  return {root, root > 0.0 ? -held.slope / root : 0.0};
}

// Where a limit is looked for: on the side `sign` of `inside`, from `first` on, up to `far`.
struct Search {
  double inside, first;
  double z;  // the wanted root
  double sign, far;
};

// The coefficient at which the root is z, by Newton's steps on a function that is nearly a straight
// line, halved where they leave the bracket; infinity with the sign where it lies beyond `far`.
double limitOf(const std::function<Held(double)>& held, double maximum, const Search& search,
               bool& found) {
  const auto& [start, first, z, sign, far] = search;
  double inside = start;
  double outside = sign * kInfinity;
  double b = first;
  for (int step = 0; step < 100; ++step) {
    const Held here = held(b);
    if (!here.exists) break;
    const Fall fall = fallOf(maximum, here);
    if (std::fabs(fall.root - z) <= 1e-10 * z) return b;
    (fall.root < z ? inside : outside) = b;
    double next = b + (z - fall.root) / fall.slope;
    const bool bracketed = std::isfinite(outside);
    const bool within =
        sign * (next - inside) > 0.0 && (!bracketed || sign * (outside - next) > 0.0);
    if (!within || !std::isfinite(next)) {
      next = bracketed ? 0.5 * (inside + outside) : b + sign * (1.0 + std::fabs(b - first));
    }
    if (next == b) return b;
    if (sign * next > far) return sign * kInfinity;
    b = next;
  }
  found = false;
  return kAbsent;
}

}  // namespace

ProfileLimits profileLimits(Profiled& fit, double level) {
  ProfileLimits limits;
  const Estimate estimate = fit.estimate();
  const double z = std::sqrt(InvCDFChiSq(level, 1.0));
  for (const double sign : {-1.0, 1.0}) {
    double& bound = sign < 0.0 ? limits.lower : limits.upper;
    if (sign * estimate.infinite > 0.0) {
      bound = sign * kInfinity;
      continue;
    }
    // Beside an infinite estimate the limit lies where the covariate begins to matter.
    const double first =
        estimate.infinite != 0 ? 0.0 : estimate.coefficient + sign * z * estimate.standardError;
    bound = limitOf(fit.search(), fit.logLikelihood(),
                    {estimate.coefficient, first, z, sign, estimate.far}, limits.found);
  }
  return limits;
}

}  // namespace survmeth::procedures
