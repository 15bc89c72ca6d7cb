#include "engine/curves/weights.h"

#include <cmath>

#include "numerics/elementary.h"

namespace survmeth::engine::curves {
namespace {

using Kind = Weighting::Kind;

double power(double base, double exponent) {
  if (exponent == 0.0) return 1.0;
  return exponent == 1.0 ? base : numerics::pow(base, exponent);
}

}  // namespace

void requireWeighting(const Weighting& weighting) {
  if (weighting.kind != Kind::kFlemingHarrington || (weighting.p >= 0.0 && weighting.q >= 0.0)) {
    return;
  }
  throw Refusal(Role::kRho, Refusal::kNone, "the powers of the weights are not numbers from 0");
}

std::vector<double> weightsOf(const Weighting& weighting, std::span<const PooledTime> times) {
  std::vector<double> weights;
  weights.reserve(times.size());
  double survival = 1.0;
  for (const PooledTime& time : times) {
    const double n = time.atRisk;
    switch (weighting.kind) {
      case Kind::kLogRank:
        weights.push_back(1.0);
        break;
      case Kind::kGehanBreslow:
        weights.push_back(n);
        break;
      case Kind::kTaroneWare:
        weights.push_back(std::sqrt(n));
        break;
      case Kind::kPetoPeto:
      case Kind::kModifiedPetoPeto:
        survival *= (time.surviving + 1.0) / (n + 1.0);
        weights.push_back(weighting.kind == Kind::kPetoPeto ? survival
                                                            : survival * (n / (n + 1.0)));
        break;
      case Kind::kFlemingHarrington:
        weights.push_back(power(survival, weighting.p) * power(1.0 - survival, weighting.q));
        survival *= time.surviving / n;
        break;
    }
  }
  return weights;
}

}  // namespace survmeth::engine::curves
