// P-values of groups that do not differ are uniform, and bands cover the curve as often as they say:
// simulated samples with fixed seeds. What is found stands in docs/statistics/curves.md.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "engine/curves/bands.h"
#include "engine/curves/permutation.h"
#include "numerics/elementary.h"
#include "numerics/random.h"
#include "tests/engine/curves/data.h"
#include "tests/support/page.h"

namespace survmeth {
namespace {

using engine::curves::Permutations;
using engine::curves::Weighting;
using test::CurveData;

// `size` rows, a share of which is in the second group. Times to the event and to the censoring are
// exponential, censoring in the second group `haste` times as fast.
CurveData simulated(std::uint64_t number, std::size_t size, double share, double haste) {
  numerics::Random random(2026, number);
  const auto exponential = [&] { return -numerics::log1p(-random.uniform()); };
  CurveData data;
  data.groupCount = 2;
  for (std::size_t i = 0; i < size; ++i) {
    const bool second = static_cast<double>(i) < share * static_cast<double>(size);
    const double event = exponential();
    const double censoring = 2.0 * exponential() / (second ? haste : 1.0);
    data.exit.push_back(std::min(event, censoring));
    data.event.push_back(event <= censoring ? 1 : 0);
    data.group.push_back(second ? 1 : 0);
  }
  return data;
}

// The largest distance between the shares of p-values up to p, and p.
double kolmogorovDistance(std::vector<double> pValues) {
  std::sort(pValues.begin(), pValues.end());
  const auto n = static_cast<double>(pValues.size());
  double distance = 0.0;
  for (std::size_t i = 0; i < pValues.size(); ++i) {
    const auto before = static_cast<double>(i);
    distance = std::max({distance, pValues[i] - before / n, (before + 1.0) / n - pValues[i]});
  }
  return distance;
}

double shareBelow(const std::vector<double>& pValues, double alpha) {
  const auto below =
      std::count_if(pValues.begin(), pValues.end(), [&](double p) { return p <= alpha; });
  return static_cast<double>(below) / static_cast<double>(pValues.size());
}

TEST(Uniformity, OfTheTestsWithoutADifference) {
  std::vector<double> logRank;
  std::vector<double> combination;
  std::vector<double> permutation;
  for (std::uint64_t i = 0; i < 500; ++i) {
    const CurveData data = simulated(i, 100, 0.5, 1.0);
    const std::vector<Weighting> one(1);
    logRank.push_back(
        engine::curves::compare(data.response(), data.rows(), data.groups(), one).tests[0].pValue);
    const Permutations few = {.count = 199, .seed = i};
    permutation.push_back(
        engine::curves::permute(data.response(), data.rows(), data.groups(), one, few)
            .tests[0]
            .pValue);
    if (i >= 100) continue;
    combination.push_back(engine::curves::combine(data.response(), data.rows(), data.groups(),
                                                  engine::curves::usualCombination())
                              .pValue);
  }
  // 1.36 / sqrt(n) is exceeded in one of twenty sets of n uniform numbers.
  EXPECT_LT(kolmogorovDistance(logRank), 1.36 / std::sqrt(500.0));
  EXPECT_LT(kolmogorovDistance(permutation), 1.36 / std::sqrt(500.0));
  EXPECT_LT(kolmogorovDistance(combination), 1.36 / std::sqrt(100.0));
  const test::Page page("curves");
  page.says(
      "log-rank test %.3f, the permutation test %.3f, the maximum combination (100 of them) %.3f",
      kolmogorovDistance(logRank), kolmogorovDistance(permutation),
      kolmogorovDistance(combination));
}

// Whether the band holds exp(-t), which falls from one time of the curve to the next while the band
// is level.
bool covers(const engine::curves::Curve& curve, const engine::curves::Band& band) {
  for (std::size_t i = 0; i < curve.time.size(); ++i) {
    if (std::isnan(band.lower[i])) continue;
    const double end = i + 1 < curve.time.size() ? curve.time[i + 1] : curve.time[i];
    if (numerics::exp(-curve.time[i]) > band.upper[i]) return false;
    if (numerics::exp(-std::min(end, band.to)) < band.lower[i]) return false;
  }
  return true;
}

TEST(Coverage, OfTheBands) {
  using engine::curves::BandKind;
  constexpr int kSamples = 200;
  int hallWellner = 0;
  int equalPrecision = 0;
  for (std::uint64_t i = 0; i < kSamples; ++i) {
    CurveData data = simulated(20'000 + i, 200, 0.0, 1.0);
    data.groupCount = 1;
    const auto curve = data.curves()[0];
    const auto held = [&](BandKind kind) {
      return covers(curve, engine::curves::band(curve, data.rows(), {}, kind, 0.2, 1.5));
    };
    hallWellner += held(BandKind::kHallWellner) ? 1 : 0;
    equalPrecision += held(BandKind::kEqualPrecision) ? 1 : 0;
  }
  // Three standard errors of a share of 19/20.
  const double within = 3 * std::sqrt(0.05 * 0.95 / kSamples);
  EXPECT_NEAR(1.0 * hallWellner / kSamples, 0.95, within);
  EXPECT_NEAR(1.0 * equalPrecision / kSamples, 0.95, within);
  const test::Page page("curves");
  page.says("%.1f %% of Hall and Wellner's and %.1f %% of those of equal precision",
            100.0 * hallWellner / kSamples, 100.0 * equalPrecision / kSamples);
}

TEST(Uniformity, IsLostToPermutationsWhereCensoringDiffers) {
  std::vector<double> logRank;
  std::vector<double> permutation;
  for (std::uint64_t i = 0; i < 1000; ++i) {
    const CurveData data = simulated(10'000 + i, 200, 0.2, 20.0);
    const std::vector<Weighting> one(1);
    logRank.push_back(
        engine::curves::compare(data.response(), data.rows(), data.groups(), one).tests[0].pValue);
    permutation.push_back(
        engine::curves::permute(data.response(), data.rows(), data.groups(), one, {.count = 1})
            .tests[0]
            .asymptotic);
  }
  // Three standard errors of a share of 1/20.
  EXPECT_NEAR(shareBelow(logRank, 0.05), 0.05, 3 * std::sqrt(0.05 * 0.95 / 1000));
  EXPECT_LT(shareBelow(permutation, 0.05), 0.03);
  const test::Page page("curves");
  page.says("%.1f %% of the log-rank tests and %.1f %% of those with the permutational variance",
            100 * shareBelow(logRank, 0.05), 100 * shareBelow(permutation, 0.05));
}

}  // namespace
}  // namespace survmeth
