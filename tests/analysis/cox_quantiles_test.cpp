// Quantiles of curves that come in pieces: those of the whole curve, to the bit.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "analysis/cox/predictQuantiles.h"
#include "engine/curves/limits.h"
#include "numerics/elementary.h"
#include "tests/analysis/coxFits.h"

namespace survmeth::analysis {
namespace {

using engine::curves::Scale;

constexpr double kZ = 1.96;

struct Hazards {
  std::vector<double> time, hazard, error;
};

// Steps of the survival by `step` of itself with stretches on which nothing happens; the error runs
// up and down.
Hazards made(std::size_t count, double step) {
  Hazards all;
  double hazard = 0.0;
  for (std::size_t k = 0; k < count; ++k) {
    if (k % 7 < 4) hazard -= std::log(1.0 - step);
    all.time.push_back(1.0 + 0.25 * static_cast<double>(k));
    all.hazard.push_back(hazard);
    all.error.push_back(0.05 * hazard * (2.0 + std::sin(0.01 * static_cast<double>(k))));
  }
  return all;
}

engine::curves::Curve curveOf(const Hazards& all, Scale scale, double last) {
  engine::curves::Curve curve;
  curve.time = all.time;
  for (std::size_t k = 0; k < all.time.size(); ++k) {
    const double h = all.hazard[k];
    const double spread = kZ * all.error[k];
    const double s = numerics::exp(-h);
    double lower = s * (1 - spread) > 0.0 ? s * (1 - spread) : 0.0;
    double upper = s * (1 + spread) < 1.0 ? s * (1 + spread) : 1.0;
    if (scale == Scale::kLog) {
      lower = numerics::exp(-(h + spread));
      upper = numerics::exp(std::min(0.0, spread - h));
    } else if (scale == Scale::kLogLog) {
      const double factor = numerics::exp(spread / h);
      lower = numerics::exp(-h * factor);
      upper = numerics::exp(-h / factor);
    }
    const bool none = s == 0.0;
    curve.survival.push_back(s);
    curve.lower.push_back(none ? engine::curves::kAbsent : lower);
    curve.upper.push_back(none ? engine::curves::kAbsent : upper);
  }
  if (last > curve.time.back()) {
    curve.time.push_back(last);
    for (auto* values : {&curve.survival, &curve.lower, &curve.upper}) {
      values->push_back(values->back());
    }
  }
  return curve;
}

void expectWhole(const Hazards& all, const std::vector<double>& shares, double last) {
  for (const Scale scale : {Scale::kLogLog, Scale::kLog, Scale::kPlain}) {
    CoxPredictRequest request;
    request.quantiles = shares;
    request.survivalLimits = scale;
    const auto expected = engine::curves::quantiles(curveOf(all, scale, last), shares);
    for (const std::size_t each : {std::size_t{1}, std::size_t{700}, all.time.size()}) {
      CoxQuantiles quantiles(request, kZ);
      for (std::size_t k = 0; k < all.time.size(); k += each) {
        const std::size_t count = std::min(each, all.time.size() - k);
        if (!quantiles.add({{all.time.data() + k, count},
                            {all.hazard.data() + k, count},
                            {all.error.data() + k, count}})) {
          break;
        }
      }
      const auto found = quantiles.quantiles(last);
      std::vector<double> one, other;
      for (std::size_t q = 0; q < shares.size(); ++q) {
        one.insert(one.end(),
                   {found[q].probability, found[q].time, found[q].lower, found[q].upper});
        other.insert(other.end(), {expected[q].probability, expected[q].time, expected[q].lower,
                                   expected[q].upper});
      }
      EXPECT_TRUE(sameBits(one, other)) << each;
    }
  }
}

TEST(CoxQuantiles, OfPiecesAreThoseOfTheWholeCurve) {
  const Hazards all = made(5000, 1e-3);
  expectWhole(all, {0.1, 0.25, 0.5, 0.75, 0.9}, all.time.back());
  // Never so far.
  expectWhole(all, {0.5, 0.999}, all.time.back() + 1.0);
}

TEST(CoxQuantiles, OfACurveThatRunsAtALevelAreTheMiddle) {
  // 1/2 and 1/4 are met but for rounding, within a stretch, at the end of a piece and at the last.
  for (const std::size_t count : {30U, 1023U, 1024U, 1025U, 3000U}) {
    Hazards all = made(count, 1e-6);
    for (std::size_t k = count / 3; k < count; ++k) all.hazard[k] = std::log(2.0) + 1e-17;
    for (std::size_t k = count - 2; k < count; ++k) all.hazard[k] = std::log(4.0) - 1e-16;
    for (std::size_t k = count / 3; k < count; ++k) all.error[k] = 0.0;
    expectWhole(all, {0.25, 0.5, 0.75}, all.time.back() + 2.0);
    expectWhole(all, {0.25, 0.5, 0.75}, all.time.back());
  }
}

TEST(CoxQuantiles, OfACurveThatEndsAtZeroOrHasNoErrors) {
  Hazards all = made(2000, 1e-3);
  for (std::size_t k = 1200; k < all.time.size(); ++k) all.hazard[k] = 800.0;
  expectWhole(all, {0.1, 0.5, 0.99}, all.time.back());
  std::fill(all.error.begin(), all.error.end(), std::numeric_limits<double>::quiet_NaN());
  expectWhole(all, {0.1, 0.5, 0.99}, all.time.back());
}

}  // namespace
}  // namespace survmeth::analysis
