// Incidences, their errors and the time lost, by hand.
#include <gtest/gtest.h>

#include <cmath>

#include "engine/incidence/lost.h"
#include "tests/engine/incidence/data.h"
#include "tests/support/role.h"

namespace survmeth {
namespace {

using engine::curves::Scale;
using engine::incidence::Curve;
using engine::incidence::Variance;
using test::CauseData;

using Numbers = std::vector<double>;

CauseData small(Numbers exit, std::vector<std::uint32_t> event) {
  CauseData data;
  data.exit = std::move(exit);
  data.event = std::move(event);
  return data;
}

// 5 at risk: 1 of cause 1 at 2, S = 4/5; at 3 one of each of 4, then 2 left; one censored at 5; the
// last has cause 1 at 8.
const CauseData& five() {
  static const CauseData data = small({3, 2, 8, 3, 5}, {2, 1, 1, 1, 0});
  return data;
}

// A few roundings of numbers below 1.
void expectNear(const Numbers& actual, const Numbers& expected) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < actual.size(); ++i) EXPECT_NEAR(actual[i], expected[i], 1e-15) << i;
}

TEST(Incidence, IsTheSumOfSurvivalTimesTheShareThatHasTheEvent) {
  const Curve curve = five().curves()[0];
  EXPECT_EQ(curve.time, (Numbers{2, 3, 5, 8}));
  EXPECT_EQ(curve.atRisk, (Numbers{5, 4, 2, 1}));
  EXPECT_EQ(curve.censoredAt, (Numbers{0, 0, 1, 0}));
  EXPECT_EQ(curve.rows, 5u);
  EXPECT_EQ(curve.n, 5);
  EXPECT_EQ(curve.censored, 1);
  EXPECT_EQ(curve.causes[0].events, 3);
  EXPECT_EQ(curve.causes[1].events, 1);
  expectNear(curve.survival, {4.0 / 5, 2.0 / 5, 2.0 / 5, 0});
  expectNear(curve.causes[0].incidence, {1.0 / 5, 2.0 / 5, 2.0 / 5, 4.0 / 5});
  expectNear(curve.causes[1].incidence, {0, 1.0 / 5, 1.0 / 5, 1.0 / 5});
  expectNear(curve.causes[0].hazard, {1.0 / 5, 9.0 / 20, 9.0 / 20, 29.0 / 20});
  expectNear(curve.causes[1].hazardVariance, {0, 1.0 / 16, 1.0 / 16, 1.0 / 16});
}

TEST(Incidence, LiesBelowTheKaplanMeierComplement) {
  const Curve curve = five().curves()[0];
  expectNear(engine::incidence::kaplanMeierComplement(curve, 0), {1.0 / 5, 2.0 / 5, 2.0 / 5, 1});
  expectNear(engine::incidence::kaplanMeierComplement(curve, 1), {0, 1.0 / 4, 1.0 / 4, 1.0 / 4});
}

TEST(Incidence, WithoutCensoringHasBinomialDeltaAndRobustVariances) {
  const CauseData data = small({1, 2, 2, 3, 4, 5}, {1, 2, 1, 1, 2, 2});
  for (const Variance variance : {Variance::kDelta, Variance::kRobust}) {
    const Curve curve = data.curves(variance)[0];
    for (std::size_t i = 0; i < curve.time.size(); ++i) {
      const double p = curve.causes[0].incidence[i];
      EXPECT_NEAR(curve.causes[0].variance[i], p * (1 - p) / 6, 1e-16);  // below 1/24, rounded
    }
  }
}

TEST(Incidence, AalensVarianceTakesCausesOneByOne) {
  // At 2: S = 1, d / n^2 = 1/25. At 3: 1/25 (1 - (2/5 - 1/5) / (4/5))^2 of time 2, and (4/5)^2 / 16
  // twice: for the own event (1 - 0)^2, for the other's 0.
  const Curve curve = five().curves()[0];
  EXPECT_NEAR(curve.causes[0].variance[0], 1.0 / 25, 1e-16);
  EXPECT_NEAR(curve.causes[0].variance[1], 9.0 / 16 / 25 + 1.0 / 25, 1e-16);
}

TEST(Incidence, OfRowsThatAreAllCensoredStaysAtZero) {
  const Curve curve = small({1, 2}, {0, 0}).curves()[0];
  EXPECT_EQ(curve.causes[0].incidence, (Numbers{0, 0}));
  EXPECT_EQ(curve.causes[1].variance, (Numbers{0, 0}));
}

TEST(Incidence, AGroupWithoutRowsHasACurveWithoutTimes) {
  CauseData data = five();
  data.group = {0, 0, 2, 2, 0};
  data.groupCount = 3;
  const std::vector<Curve> curves = data.curves();
  EXPECT_TRUE(curves[1].time.empty());
  EXPECT_EQ(curves[1].causes.size(), 2u);
  const Numbers at = {1.0};
  EXPECT_TRUE(
      std::isnan(engine::incidence::readings(curves[1], 0, at, 1.96, Scale::kPlain)[0].incidence));
  const auto lost = engine::incidence::timesLost(data.sorted(), data.rows(), curves, 0,
                                                 Variance::kAalen, 5, 0.95);
  EXPECT_TRUE(std::isnan(lost[1].lost));
  EXPECT_FALSE(std::isnan(lost[2].lost));
}

TEST(Incidence, AFrequencyStandsForAsManyRows) {
  const CauseData weighted = test::causeData("melanoma", "group", "count");
  CauseData rows = test::causeData("melanoma", "group");
  const CauseData once = rows;
  rows.exit.clear();
  rows.event.clear();
  rows.group.clear();
  for (std::size_t i = 0; i < once.exit.size(); ++i) {
    for (int k = 0; k < static_cast<int>(weighted.weight[i]); ++k) {
      rows.exit.push_back(once.exit[i]);
      rows.event.push_back(once.event[i]);
      rows.group.push_back(once.group[i]);
    }
  }
  for (const Variance variance : {Variance::kAalen, Variance::kDelta}) {
    const Curve a = weighted.curves(variance)[1], b = rows.curves(variance)[1];
    EXPECT_EQ(a.causes[0].incidence, b.causes[0].incidence);  // the same whole numbers
    EXPECT_EQ(a.causes[0].variance, b.causes[0].variance);
  }
}

TEST(Incidence, ClustersAndSamplingWeightsMakeVariancesRobust) {
  engine::Rows rows;
  EXPECT_EQ(engine::incidence::varianceFor(rows, Variance::kDelta), Variance::kDelta);
  const Numbers weight = {1, 2};
  rows.weight = weight;
  EXPECT_EQ(engine::incidence::varianceFor(rows, Variance::kAalen), Variance::kAalen);
  rows.weightKind = engine::WeightKind::kSampling;
  EXPECT_EQ(engine::incidence::varianceFor(rows, Variance::kAalen), Variance::kRobust);
  const std::vector<std::uint32_t> cluster = {0, 0};
  rows = {};
  rows.cluster = cluster;
  EXPECT_EQ(engine::incidence::varianceFor(rows, Variance::kAalen), Variance::kRobust);
}

TEST(Incidence, LimitsAreSymmetricOnTheirScale) {
  // F = 0.2, e = 0.05, z = 2.
  const auto limits = [](Scale scale) { return engine::incidence::limits(0.2, 0.05, 2, scale); };
  const double tolerance = 1e-15;  // roundings of numbers below 1
  EXPECT_NEAR(limits(Scale::kPlain).lower, 0.1, tolerance);
  EXPECT_NEAR(limits(Scale::kPlain).upper, 0.3, tolerance);
  EXPECT_NEAR(limits(Scale::kLog).lower, 0.2 * std::exp(-0.5), tolerance);
  EXPECT_NEAR(limits(Scale::kLog).upper, 0.2 * std::exp(0.5), tolerance);
  const double shift = 0.5 / std::log(0.2);  // of log(-log F)
  EXPECT_NEAR(limits(Scale::kLogLog).lower, std::exp(std::log(0.2) * std::exp(-shift)), tolerance);
  EXPECT_NEAR(limits(Scale::kLogLog).upper, std::exp(std::log(0.2) * std::exp(shift)), tolerance);
  const double angle = std::asin(std::sqrt(0.2)), turn = 0.1 / (2 * std::sqrt(0.2 * 0.8));
  EXPECT_NEAR(limits(Scale::kArcsine).lower, std::pow(std::sin(angle - turn), 2), tolerance);
  EXPECT_NEAR(limits(Scale::kArcsine).upper, std::pow(std::sin(angle + turn), 2), tolerance);
  EXPECT_TRUE(std::isnan(engine::incidence::limits(0, 0, 2, Scale::kLog).lower));
}

TEST(Incidence, ReadingsKnowNothingBeyondSurvivorsWhoLeave) {
  const Curve curve = small({1, 2, 4}, {1, 2, 0}).curves()[0];
  const Numbers at = {0.5, 1, 3, 4, 5};
  const auto readings = engine::incidence::readings(curve, 0, at, 2, Scale::kPlain);
  EXPECT_EQ(readings[0].incidence, 0);
  EXPECT_EQ(readings[0].standardError, 0);
  EXPECT_TRUE(std::isnan(readings[0].lower));
  EXPECT_NEAR(readings[1].incidence, 1.0 / 3, 1e-16);
  EXPECT_EQ(readings[2].incidence, readings[3].incidence);
  EXPECT_TRUE(std::isnan(readings[4].incidence));
  const Curve ended = small({1, 2}, {1, 2}).curves()[0];
  EXPECT_EQ(engine::incidence::readings(ended, 0, at, 2, Scale::kPlain)[4].incidence, 0.5);
}

TEST(Incidence, DifferencesAreOfIndependentGroups) {
  engine::incidence::Reading first, second;
  first.incidence = 0.2, first.standardError = 0.03;
  second.incidence = 0.5, second.standardError = 0.04;
  const auto difference = engine::incidence::difference(first, second, 2);
  EXPECT_NEAR(difference.estimate, 0.3, 1e-16);
  EXPECT_NEAR(difference.standardError, 0.05, 1e-16);
  EXPECT_NEAR(difference.lower, 0.2, 1e-15);
  EXPECT_NEAR(difference.z, 6, 1e-14);
}

TEST(TimesLost, AreAreasUnderTheCurves) {
  const CauseData& data = five();
  const auto lost = [&](std::size_t cause, double horizon) {
    return engine::incidence::timesLost(data.sorted(), data.rows(), data.curves(), cause,
                                        Variance::kAalen, horizon, 0.95)[0];
  };
  EXPECT_NEAR(lost(0, 4).lost, 1.0 / 5 + 2.0 / 5, 1e-15);
  EXPECT_NEAR(lost(0, 10).lost, 1.0 / 5 + 5 * 2.0 / 5 + 2 * 4.0 / 5, 1e-15);
  EXPECT_NEAR(lost(1, 4).lost, 1.0 / 5, 1e-15);
  EXPECT_EQ(lost(0, 1).lost, 0);
  EXPECT_FALSE(lost(0, 10).extended);  // nobody is left
  // Alone the first event counts up to 3: 1/25 times the length.
  EXPECT_NEAR(lost(0, 3).standardError, 1.0 / 5, 1e-15);
  const auto open = small({1, 2, 4}, {1, 2, 0});
  EXPECT_TRUE(engine::incidence::timesLost(open.sorted(), open.rows(), open.curves(), 0,
                                           Variance::kAalen, 5, 0.95)[0]
                  .extended);
}

TEST(TimesLost, AreComparedByDifferenceAndRatio) {
  engine::incidence::TimeLost first, second;
  first.lost = 2, first.standardError = 0.3;
  second.lost = 4, second.standardError = 0.4;
  const auto contrasts = engine::incidence::compareLost(first, second, 0.95);
  EXPECT_EQ(contrasts.difference.estimate, 2);
  EXPECT_NEAR(contrasts.difference.standardError, 0.5, 1e-16);
  EXPECT_EQ(contrasts.ratio.estimate, 2);
  EXPECT_NEAR(contrasts.ratio.standardError, std::sqrt(0.0225 + 0.01), 1e-16);
}

TEST(TimesLost, RefuseAHorizonThatIsNone) {
  const CauseData& data = five();
  for (const double horizon : {0.0, -1.0, std::numeric_limits<double>::infinity()}) {
    try {
      engine::incidence::timesLost(data.sorted(), data.rows(), data.curves(), 0, Variance::kAalen,
                                   horizon, 0.95);
      ADD_FAILURE() << horizon;
    } catch (const engine::Refusal& refusal) {
      EXPECT_STREQ(refusal.what(), "the horizon is not after the origin of time");
      EXPECT_EQ(refusal.role(), engine::Role::kValue);
    }
  }
}

}  // namespace
}  // namespace survmeth
