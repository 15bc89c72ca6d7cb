// What holds for every sample: splitting, repeating, permuting rows; and cases worked by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <random>

#include "engine/curves/means.h"
#include "engine/curves/quantiles.h"
#include "tests/engine/curves/data.h"

namespace survmeth {
namespace {

using engine::curves::Curve;
using engine::curves::Options;
using engine::curves::Scale;
using test::CurveData;
using test::small;

// 400 rows of four groups with ties.
CurveData random(bool late) {
  std::mt19937 engine(late ? 5 : 6);
  CurveData data;
  data.groupCount = 4;
  for (int i = 0; i < 400; ++i) {
    const double entry = late ? static_cast<double>(engine() % 20) : 0.0;
    data.entry.push_back(entry);
    data.exit.push_back(entry + 1 + static_cast<double>(engine() % 40));
    data.event.push_back(engine() % 3 != 0 ? 1 : 0);
    data.group.push_back(engine() % 4);
  }
  if (!late) data.entry.clear();
  return data;
}

void expectSame(const std::vector<double>& expected, const std::vector<double>& actual) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    if (std::isnan(expected[i])) {
      EXPECT_TRUE(std::isnan(actual[i])) << i;
    } else {
      EXPECT_EQ(actual[i], expected[i]) << i;
    }
  }
}

// Survival, variance and hazard at the times of events.
void expectSameAtEvents(const Curve& expected, const Curve& actual) {
  std::size_t j = 0;
  for (std::size_t i = 0; i < expected.time.size(); ++i) {
    if (expected.eventsAt[i] == 0.0) continue;
    while (j < actual.time.size() && actual.time[j] < expected.time[i]) ++j;
    ASSERT_LT(j, actual.time.size());
    ASSERT_EQ(actual.time[j], expected.time[i]);
    EXPECT_EQ(actual.atRisk[j], expected.atRisk[i]);
    EXPECT_EQ(actual.eventsAt[j], expected.eventsAt[i]);
    EXPECT_EQ(actual.survival[j], expected.survival[i]);
    EXPECT_EQ(actual.hazard[j], expected.hazard[i]);
    EXPECT_EQ(actual.hazardVariance[j], expected.hazardVariance[i]);
    EXPECT_EQ(actual.logVariance[j], expected.logVariance[i]);
  }
}

TEST(Curves, FiveRowsByHand) {
  const Curve curve = small({2, 3, 3, 5, 8}, {1, 1, 0, 0, 1}).curves()[0];
  EXPECT_EQ(curve.time, (std::vector<double>{2, 3, 5, 8}));
  EXPECT_EQ(curve.atRisk, (std::vector<double>{5, 4, 2, 1}));
  const double survival[] = {4.0 / 5, 3.0 / 5, 3.0 / 5, 0};
  const double hazard[] = {1.0 / 5, 9.0 / 20, 9.0 / 20, 29.0 / 20};
  const double greenwood[] = {1.0 / 20, 2.0 / 15, 2.0 / 15};
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_DOUBLE_EQ(curve.survival[i], survival[i]);
    EXPECT_DOUBLE_EQ(curve.hazard[i], hazard[i]);
    if (i < 3) {
      EXPECT_DOUBLE_EQ(curve.logVariance[i], greenwood[i]);
    }
  }
  EXPECT_EQ(curve.logVariance[3], std::numeric_limits<double>::infinity());
  EXPECT_TRUE(std::isnan(curve.standardError(3)));
  EXPECT_TRUE(std::isnan(curve.lower[3]));
  EXPECT_EQ(curve.n, 5);
  EXPECT_EQ(curve.events, 3);
  EXPECT_EQ(curve.censored, 2);
}

TEST(Curves, BinomialVariancesOfTheHazardByHand) {
  Options options;
  options.hazardVariance = engine::curves::HazardVariance::kBinomial;
  const Curve curve = small({2, 3, 3, 5, 8}, {1, 1, 0, 0, 1}).curves(options)[0];
  EXPECT_DOUBLE_EQ(curve.hazardVariance[0], 4.0 / 125);
  EXPECT_DOUBLE_EQ(curve.hazardVariance[1], 4.0 / 125 + 3.0 / 64);
  EXPECT_DOUBLE_EQ(curve.hazardVariance[3], 4.0 / 125 + 3.0 / 64);
}

TEST(Curves, SplittingFollowUpChangesNothing) {
  for (const bool late : {false, true}) {
    const CurveData whole = random(late);
    CurveData split = whole;
    split.entry.resize(whole.exit.size(), 0.0);
    for (std::size_t i = 0; i < whole.exit.size(); ++i) {
      const double at = 0.5 * (split.entry[i] + split.exit[i]);
      split.entry.push_back(split.entry[i]);
      split.exit.push_back(at);
      split.event.push_back(0);
      split.group.push_back(split.group[i]);
      split.entry[i] = at;
    }
    const std::vector<Curve> expected = whole.curves();
    const std::vector<Curve> actual = split.curves();
    for (std::size_t g = 0; g < 4; ++g) expectSameAtEvents(expected[g], actual[g]);
  }
}

TEST(Curves, SplitRowsOfOneClusterHaveTheRobustVarianceOfTheWhole) {
  CurveData whole = random(true);
  whole.clusterCount = 60;
  for (std::size_t i = 0; i < whole.exit.size(); ++i) {
    whole.cluster.push_back(static_cast<std::uint32_t>(i * 7 % 60));
  }
  CurveData split = whole;
  for (std::size_t i = 0; i < whole.exit.size(); ++i) {
    const double at = 0.5 * (split.entry[i] + split.exit[i]);
    split.entry.push_back(split.entry[i]);
    split.exit.push_back(at);
    split.event.push_back(0);
    split.group.push_back(split.group[i]);
    split.cluster.push_back(split.cluster[i]);
    split.entry[i] = at;
  }
  const std::vector<Curve> expected = whole.curves();
  const std::vector<Curve> actual = split.curves();
  for (std::size_t g = 0; g < 4; ++g) {
    for (std::size_t i = 0; i < expected[g].time.size(); ++i) {
      const std::size_t j = indexAt(actual[g], expected[g].time[i]);
      EXPECT_NEAR(actual[g].hazardVariance[j], expected[g].hazardVariance[i],
                  1e-14 * expected[g].hazardVariance[i]);
    }
  }
}

TEST(Curves, WholeFrequenciesAreRepetition) {
  for (const bool late : {false, true}) {
    CurveData weighted = random(late);
    CurveData repeated = weighted;
    for (std::size_t i = 0; i < weighted.exit.size(); ++i) {
      const std::size_t times = i % 4;  // 0 among them
      weighted.weight.push_back(static_cast<double>(times));
    }
    repeated.exit.clear();
    repeated.entry.clear();
    repeated.event.clear();
    repeated.group.clear();
    for (std::size_t i = 0; i < weighted.exit.size(); ++i) {
      for (std::size_t r = 0; r < i % 4; ++r) {
        if (late) repeated.entry.push_back(weighted.entry[i]);
        repeated.exit.push_back(weighted.exit[i]);
        repeated.event.push_back(weighted.event[i]);
        repeated.group.push_back(weighted.group[i]);
      }
    }
    const std::vector<Curve> expected = repeated.curves();
    const std::vector<Curve> actual = weighted.curves();
    for (std::size_t g = 0; g < 4; ++g) {
      expectSameAtEvents(expected[g], actual[g]);
      expectSame(expected[g].lower, actual[g].lower);
      EXPECT_EQ(actual[g].censoredAt, expected[g].censoredAt);
    }
  }
}

TEST(Curves, TheOrderOfRowsDoesNotMatter) {
  const CurveData data = random(true);
  CurveData reversed = data;
  std::reverse(reversed.entry.begin(), reversed.entry.end());
  std::reverse(reversed.exit.begin(), reversed.exit.end());
  std::reverse(reversed.event.begin(), reversed.event.end());
  std::reverse(reversed.group.begin(), reversed.group.end());
  const std::vector<Curve> expected = data.curves();
  const std::vector<Curve> actual = reversed.curves();
  for (std::size_t g = 0; g < 4; ++g) {
    EXPECT_EQ(actual[g].survival, expected[g].survival);
    expectSame(expected[g].lower, actual[g].lower);
  }
}

TEST(Curves, HugeWeightsThatHaveLeftTakeNoDigitsFromTheRest) {
  CurveData data = small({1, 2, 3, 4}, {0, 1, 1, 0});
  data.entry = {0, 0, 0, 0};
  data.weight = {1e20, 0.1, 0.2, 0.3};
  const Curve curve = data.curves()[0];
  EXPECT_DOUBLE_EQ(curve.atRisk[1], 0.6);
  EXPECT_DOUBLE_EQ(curve.survival[2], 0.5 / 0.6 * 0.3 / 0.5);
}

TEST(Curves, ALastEventOfUnevenWeightsEndsAtZero) {
  CurveData data = small({1, 2, 3, 3, 3}, {0, 1, 1, 1, 1});
  data.entry = {0, 0, 1, 0, 0.5};
  data.weight = {0.7, 0.1, 0.3, 0.1, 1.0 / 3};
  EXPECT_EQ(data.curves()[0].survival.back(), 0.0);
}

TEST(Curves, TimesWithinTheToleranceAreOne) {
  const Curve curve = small({0.3, 0.1 + 0.2, 1}, {1, 1, 0}).curves()[0];
  EXPECT_EQ(curve.time, (std::vector<double>{0.3, 1}));
  EXPECT_EQ(curve.eventsAt[0], 2);
}

TEST(Curves, AGroupWithoutRowsHasACurveWithoutTimes) {
  CurveData data = small({1, 2}, {1, 0});
  data.group = {0, 2};
  data.groupCount = 3;
  const std::vector<Curve> curves = data.curves();
  EXPECT_EQ(curves[1].rows, 0U);
  EXPECT_TRUE(curves[1].time.empty());
  EXPECT_TRUE(std::isnan(
      engine::curves::readings(curves[1], std::vector<double>{1}, true, Scale::kLog)[0].survival));
  EXPECT_TRUE(std::isnan(engine::curves::quantiles(curves[1], std::vector<double>{0.5})[0].time));
  EXPECT_EQ(engine::curves::commonHorizon(curves), 1);
}

TEST(Curves, ReversedCurvesAreThoseOfCensorings) {
  const CurveData data = random(false);
  CurveData swapped = data;
  for (std::uint32_t& event : swapped.event) event = 1 - event;
  const engine::curves::Sample reversed(data.response(), data.rows(), data.groups(),
                                        engine::risk::kTieTolerance,
                                        engine::curves::Ending::kCensoring);
  const auto actual = engine::curves::estimate(reversed, data.rows(), {});
  const std::vector<Curve> expected = swapped.curves();
  for (std::size_t g = 0; g < 4; ++g) EXPECT_EQ(actual[g].survival, expected[g].survival);
}

}  // namespace
}  // namespace survmeth
