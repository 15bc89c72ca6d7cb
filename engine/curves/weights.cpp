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

WeightsInTime::WeightsInTime(std::span<const Weighting> weightings) : weightings_(weightings) {
  for (const Weighting& each : weightings) {
    peto_ = peto_ || each.kind == Kind::kPetoPeto || each.kind == Kind::kModifiedPetoPeto;
  }
}

void WeightsInTime::next(const PooledTime& time, double* weights) {
  const double n = time.atRisk;
  if (peto_) estimate_ *= (time.surviving + 1.0) / (n + 1.0);
  for (const Weighting& each : weightings_) {
    double& weight = *weights++;
    switch (each.kind) {
      case Kind::kLogRank:
        weight = 1.0;
        break;
      case Kind::kGehanBreslow:
        weight = n;
        break;
      case Kind::kTaroneWare:
        weight = std::sqrt(n);
        break;
      case Kind::kPetoPeto:
        weight = estimate_;
        break;
      case Kind::kModifiedPetoPeto:
        weight = estimate_ * (n / (n + 1.0));
        break;
      case Kind::kFlemingHarrington:
        weight = power(survival_, each.p) * power(1.0 - survival_, each.q);
        break;
    }
  }
  survival_ *= time.surviving / n;
}

std::vector<double> weightsOf(const Weighting& weighting, std::span<const PooledTime> times) {
  WeightsInTime inTime(std::span(&weighting, 1));
  std::vector<double> weights(times.size());
  for (std::size_t k = 0; k < times.size(); ++k) inTime.next(times[k], &weights[k]);
  return weights;
}

}  // namespace survmeth::engine::curves
