#include "engine/roc/rates.h"

#include <algorithm>
#include <cmath>

#include "Dist/Dist"

namespace survmeth::engine::roc {
namespace {

// A cost is the sum of four products of factors that are rounded themselves: a decimal cost, a
// share of the rows formed by four operations. Costs closer than that are the same.
constexpr double kCostRounding = 8 * std::numeric_limits<double>::epsilon();

double ratio(double numerator, double denominator) {
  if (denominator == 0) return numerator > 0 ? INFINITY : kAbsent;
  return numerator / denominator;
}

}  // namespace

const char* intervalName(RateInterval interval) {
  constexpr const char* kNames[] = {"Wilson's score", "Wald", "Clopper-Pearson (exact)",
                                    "Agresti-Coull"};
  return kNames[static_cast<std::size_t>(interval)];
}

Rates::Rates(const Request& request, double P, double N, bool counts)
    : request_(request),
      P_(P),
      N_(N),
      counts_(counts),
      z_(InvCDFNormalStd(1 - request.alpha / 2)) {}

// Of x in m cases.
Estimate Rates::rate(double x, double m) const {
  Estimate rate{x / m, kAbsent, kAbsent};
  if (!counts_) return rate;
  switch (request_.interval) {
    case RateInterval::kWilson:
      GetInfSupWilson(z_, rate.value, m, 0, &rate.lower, &rate.upper);
      break;
    case RateInterval::kWald:
      GetInfSupWald(z_, rate.value, m, &rate.lower, &rate.upper);
      break;
    case RateInterval::kClopperPearson:
      GetInfSupClopper(rate.value * m, m, request_.alpha, &rate.lower, &rate.upper);
      break;
    case RateInterval::kAgresti: {
      const double cases = m + z_ * z_;
      GetInfSupWald(z_, (x + z_ * z_ / 2) / cases, cases, &rate.lower, &rate.upper);
      break;
    }
  }
  rate.lower = std::clamp(rate.lower, 0.0, 1.0);
  rate.upper = std::clamp(rate.upper, 0.0, 1.0);
  return rate;
}

void Rates::complete(Threshold& row) const {
  row.sensitivity = rate(row.tp, P_);
  row.specificity = rate(row.tn, N_);
  // Of whole counts the one over the common denominator: ties are then ties to the bit.
  row.youden = counts_ ? (row.tp * N_ - row.fp * P_) / (P_ * N_) : row.tp / P_ - row.fp / N_;
  row.positiveRatio = ratio(row.tp / P_, row.fp / N_);
  row.negativeRatio = ratio(row.fn / P_, row.tn / N_);
  if (request_.prevalence) {
    const double ill = *request_.prevalence, well = 1 - ill;
    row.positiveValue = ill * row.tp / P_ / (ill * row.tp / P_ + well * row.fp / N_);
    row.negativeValue = well * row.tn / N_ / (ill * row.fn / P_ + well * row.tn / N_);
  } else {
    row.positiveValue = row.tp / (row.tp + row.fp);
    row.negativeValue = row.tn / (row.tn + row.fn);
  }
  row.cost = costOf(row).value;
}

Rates::Cost Rates::costOf(const Threshold& row) const {
  // As many positives and negatives as the rows would hold at the prevalence, for each there is.
  double positives = 1, negatives = 1;
  if (request_.prevalence) {
    positives = (P_ + N_) * *request_.prevalence / P_;
    negatives = (P_ + N_) * (1 - *request_.prevalence) / N_;
  }
  const Costs& costs = request_.costs;
  const double parts[] = {positives * row.tp * costs.tp, negatives * row.fp * costs.fp,
                          positives * row.fn * costs.fn, negatives * row.tn * costs.tn};
  Cost cost{0, 0};
  for (const double part : parts) {
    cost.value += part;
    cost.rounding += kCostRounding * std::fabs(part);
  }
  return cost;
}

}  // namespace survmeth::engine::roc
