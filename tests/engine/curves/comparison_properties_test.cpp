// What holds for every comparison of groups, cases worked by hand, and the words of refusals.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <random>

#include "engine/curves/comparison.h"
#include "tests/engine/curves/data.h"

namespace survmeth {
namespace {

using engine::Refusal;
using engine::Role;
using engine::curves::Comparison;
using engine::curves::Weighting;
using test::CurveData;
using Kind = Weighting::Kind;

const std::vector<Weighting> kSome = {
    {}, {Kind::kGehanBreslow}, {Kind::kPetoPeto}, {Kind::kFlemingHarrington, 1, 1}};

CurveData random(std::size_t groups, std::size_t strata) {
  std::mt19937 engine(static_cast<std::uint32_t>(7 * groups + strata));
  CurveData data;
  data.groupCount = groups;
  data.stratumCount = strata;
  for (int i = 0; i < 600; ++i) {
    data.entry.push_back(static_cast<double>(engine() % 15));
    data.exit.push_back(data.entry.back() + 1 + static_cast<double>(engine() % 30));
    data.event.push_back(engine() % 2);
    data.group.push_back(static_cast<std::uint32_t>(engine() % groups));
    data.stratum.push_back(static_cast<std::uint32_t>(engine() % strata));
  }
  return data;
}

Comparison compared(const CurveData& data, const std::vector<Weighting>& weightings = kSome,
                    const std::vector<double>& scores = {}) {
  return engine::curves::compare(data.response(), data.rows(), data.groups(), weightings, scores);
}

// Sums of the same terms in another order.
void expectSame(const Comparison& expected, const Comparison& actual) {
  for (std::size_t w = 0; w < expected.tests.size(); ++w) {
    const auto& a = expected.tests[w];
    const auto& b = actual.tests[w];
    EXPECT_EQ(a.degreesOfFreedom, b.degreesOfFreedom);
    EXPECT_NEAR(b.chiSquare, a.chiSquare, 1e-11 * a.chiSquare);
    for (std::size_t g = 0; g < a.observed.size(); ++g) {
      EXPECT_NEAR(b.observed[g], a.observed[g], 1e-12 * a.observed[g]);
      EXPECT_NEAR(b.expected[g], a.expected[g], 1e-12 * a.expected[g]);
    }
  }
}

TEST(Comparison, SixRowsByHand) {
  // Group 0 fails at 1 and 3, is censored at 5; group 1 fails at 2, 4 and 6.
  CurveData data;
  data.exit = {1, 3, 5, 2, 4, 6};
  data.event = {1, 1, 0, 1, 1, 1};
  data.group = {0, 0, 0, 1, 1, 1};
  data.groupCount = 2;
  const auto comparison = compared(data, {{}, {Kind::kTaroneWare}});
  const auto& test = comparison.tests[0];
  // Shares of group 0 at 1, 2, 3, 4, 6: 3/6, 2/5, 2/4, 1/3, 0.
  EXPECT_DOUBLE_EQ(test.expected[0], 0.5 + 0.4 + 0.5 + 1.0 / 3);
  EXPECT_DOUBLE_EQ(test.observed[0], 2);
  EXPECT_DOUBLE_EQ(test.covariance(0, 0), 0.25 + 0.24 + 0.25 + 2.0 / 9);
  EXPECT_DOUBLE_EQ(test.covariance(0, 1), -test.covariance(0, 0));
  EXPECT_DOUBLE_EQ(comparison.tests[1].observed[0], std::sqrt(6.0) + 2);
  EXPECT_EQ(comparison.events.size(), 2U);
}

TEST(Comparison, SplittingFollowUpChangesNothing) {
  const CurveData whole = random(3, 4);
  CurveData split = whole;
  for (std::size_t i = 0; i < whole.exit.size(); ++i) {
    const double at = 0.5 * (split.entry[i] + split.exit[i]);
    split.entry.push_back(split.entry[i]);
    split.exit.push_back(at);
    split.event.push_back(0);
    split.group.push_back(split.group[i]);
    split.stratum.push_back(split.stratum[i]);
    split.entry[i] = at;
  }
  expectSame(compared(whole), compared(split));
}

TEST(Comparison, WholeFrequenciesAreRepetition) {
  CurveData weighted = random(5, 2);
  CurveData repeated = weighted;
  for (std::size_t i = 0; i < weighted.exit.size(); ++i) {
    weighted.weight.push_back(i % 2 == 0 ? 1.0 : 2.0);
    if (i % 2 == 0) continue;
    repeated.entry.push_back(weighted.entry[i]);
    repeated.exit.push_back(weighted.exit[i]);
    repeated.event.push_back(weighted.event[i]);
    repeated.group.push_back(weighted.group[i]);
    repeated.stratum.push_back(weighted.stratum[i]);
  }
  expectSame(compared(repeated), compared(weighted));
}

TEST(Comparison, ObservedAndExpectedHaveOneSum) {
  for (const auto& test : compared(random(6, 3)).tests) {
    double difference = 0;
    double sum = 0;
    for (std::size_t g = 0; g < 6; ++g) {
      difference += test.observed[g] - test.expected[g];
      sum += test.observed[g];
      double row = 0;
      for (std::size_t h = 0; h < 6; ++h) row += test.covariance(g, h);
      EXPECT_NEAR(row, 0, 1e-12 * test.covariance(g, g));
    }
    EXPECT_NEAR(difference, 0, 1e-12 * sum);
  }
}

TEST(Comparison, OfTwoGroupsEveryTrendIsTheTestItself) {
  for (const auto& test : compared(random(2, 3), kSome, {1e6, 1e6 + 3}).tests) {
    EXPECT_NEAR(test.trend * test.trend, test.chiSquare, 1e-9 * test.chiSquare);
    EXPECT_EQ(test.trend > 0, test.observed[1] > test.expected[1]);
  }
}

TEST(Comparison, GroupsThatNeverMeetAreNotCompared) {
  // Groups 0 and 1 in stratum 0, groups 2 and 3 in stratum 1, group 4 alone in stratum 2.
  CurveData data = random(2, 1);
  data.groupCount = 5;
  data.stratumCount = 3;
  for (std::size_t i = 0; i < data.exit.size(); ++i) {
    data.stratum[i] = static_cast<std::uint32_t>(i % 3);
    data.group[i] = data.stratum[i] == 2 ? 4 : 2 * data.stratum[i] + data.group[i];
  }
  const auto comparison = compared(data);
  EXPECT_EQ(comparison.tests[0].degreesOfFreedom, 2U);
  EXPECT_DOUBLE_EQ(comparison.tests[0].expected[4], comparison.tests[0].observed[4]);
}

TEST(Comparison, WithoutAnEventThereIsNoTest) {
  CurveData data = random(2, 1);
  for (std::uint32_t& event : data.event) event = 0;
  const auto comparison = compared(data);
  EXPECT_EQ(comparison.tests[0].degreesOfFreedom, 0U);
  EXPECT_TRUE(std::isnan(comparison.tests[0].chiSquare));
  EXPECT_TRUE(std::isnan(comparison.tests[0].pValue));
  const auto ratios =
      engine::curves::hazardRatios(data.response(), data.rows(), data.groups(), 0.95);
  EXPECT_TRUE(std::isnan(ratios.peto.estimate));
  EXPECT_TRUE(std::isnan(ratios.mantelHaenszel.estimate));
}

TEST(Comparison, ManyStrataOfTwoCostNoMoreThanTheirRows) {
  CurveData data;
  std::mt19937 engine(3);
  data.groupCount = 2;
  data.stratumCount = 50000;
  for (std::uint32_t i = 0; i < 100000; ++i) {
    data.exit.push_back(1 + static_cast<double>(engine() % 1000));
    data.event.push_back(engine() % 4 != 0 ? 1 : 0);
    data.group.push_back(i % 2);
    data.stratum.push_back(i / 2);
  }
  // McNemar's test: of the pairs of which one fails first, those of group 1, less half.
  double first = 0;
  double second = 0;
  for (std::size_t i = 0; i < 100000; i += 2) {
    if (data.exit[i] < data.exit[i + 1] && data.event[i] != 0) ++first;
    if (data.exit[i] > data.exit[i + 1] && data.event[i + 1] != 0) ++second;
    if (data.exit[i] == data.exit[i + 1] && data.event[i] != data.event[i + 1]) {
      ++(data.event[i] != 0 ? first : second);
    }
  }
  const auto comparison = compared(data, {{}});
  const double expected = (first - second) * (first - second) / (first + second);
  EXPECT_NEAR(comparison.tests[0].chiSquare, expected, 1e-10 * std::max(1.0, expected));
}

TEST(HazardRatios, OfAGroupWithoutEventsAreZeroWithoutLimits) {
  CurveData data;
  data.exit = {1, 2, 3, 4};
  data.event = {1, 1, 0, 0};
  data.group = {0, 0, 1, 1};
  data.groupCount = 2;
  const auto ratios =
      engine::curves::hazardRatios(data.response(), data.rows(), data.groups(), 0.95);
  EXPECT_EQ(ratios.mantelHaenszel.estimate, 0);
  EXPECT_TRUE(std::isnan(ratios.mantelHaenszel.lower));
  // E = 2/4 + 2/3, V = 1/4 + 2/9.
  EXPECT_NEAR(ratios.peto.estimate, std::exp(-(7.0 / 6) / (17.0 / 36)), 1e-15);
  for (std::uint32_t& group : data.group) group = 1 - group;
  const auto turned =
      engine::curves::hazardRatios(data.response(), data.rows(), data.groups(), 0.95);
  EXPECT_EQ(turned.mantelHaenszel.estimate, std::numeric_limits<double>::infinity());
}

TEST(Adjustment, ByHand) {
  using engine::curves::adjust;
  using engine::curves::Adjustment;
  const double none = std::numeric_limits<double>::quiet_NaN();
  const std::vector<double> p = {0.04, none, 0.01, 0.03};
  const std::vector<double> holm = adjust(p, Adjustment::kHolm);
  EXPECT_DOUBLE_EQ(holm[0], 0.06);
  EXPECT_TRUE(std::isnan(holm[1]));
  EXPECT_DOUBLE_EQ(holm[2], 0.03);
  EXPECT_DOUBLE_EQ(holm[3], 0.06);
  EXPECT_DOUBLE_EQ(adjust(p, Adjustment::kBonferroni)[0], 0.12);
  EXPECT_DOUBLE_EQ(adjust(p, Adjustment::kBenjaminiHochberg)[0], 0.04);
  EXPECT_DOUBLE_EQ(adjust(p, Adjustment::kBenjaminiHochberg)[2], 0.03);
  EXPECT_EQ(adjust(p, Adjustment::kNone)[3], 0.03);
}

void expectRefusal(const std::function<void()>& call, Role role, const std::string& text) {
  try {
    call();
    ADD_FAILURE() << "not refused: " << text;
  } catch (const Refusal& refusal) {
    EXPECT_EQ(refusal.what(), text);
    EXPECT_EQ(refusal.role(), role);
  }
}

TEST(ComparisonRefusals, NameWhatIsWrong) {
  CurveData data = random(3, 1);
  expectRefusal(
      [&] {
        compared(data, {{Kind::kFlemingHarrington, -1, 0}});
      },
      Role::kRho, "the powers of the weights are not numbers from 0");
  expectRefusal(
      [&] {
        compared(data, kSome, {1, 2});
      },
      Role::kValue, "the scores are not one number for each group");
  expectRefusal(
      [&] { engine::curves::hazardRatios(data.response(), data.rows(), data.groups(), 0.95); },
      Role::kGroup, "a hazard ratio is of two groups");
  data.weight.assign(data.exit.size(), 1.5);
  data.weightKind = engine::WeightKind::kSampling;
  expectRefusal([&] { compared(data); }, Role::kWeight,
                "Tests of equal survival take no sampling weights");
  data.weight.clear();
  data.cluster.assign(data.exit.size(), 0);
  data.clusterCount = 1;
  expectRefusal([&] { compared(data); }, Role::kCluster,
                "Tests of equal survival take no clusters");
}

}  // namespace
}  // namespace survmeth
