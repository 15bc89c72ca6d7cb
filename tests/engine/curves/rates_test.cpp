// Rates, restricted means and smoothed hazards against R and the published formulas
// (tests/reference/curves/make_rates.R).
#include "engine/curves/rates.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "engine/curves/hazardRate.h"
#include "engine/curves/means.h"
#include "tests/engine/curves/data.h"

namespace survmeth {
namespace {

using engine::curves::Contrast;
using engine::curves::Options;
using engine::curves::Rate;
using test::Csv;
using test::CurveData;

// All cells of an item in the order of the file.
std::vector<double> cells(const std::string& item) {
  static const Csv file(std::string(SURVMETH_REFERENCE) + "/curves/rates.csv");
  static const std::vector<std::string> items = file.texts("item");
  std::vector<double> result;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (items[i] != item) continue;
    const std::string text = file.text("value", i);
    result.push_back(text == "Inf" ? std::numeric_limits<double>::infinity()
                                   : file.number("value", i));
  }
  return result;
}

void expectNear(double actual, double expected, double tolerance, const std::string& where) {
  if (std::isfinite(expected)) {
    EXPECT_NEAR(actual, expected, tolerance * std::fabs(expected)) << where;
  } else if (std::isnan(expected)) {
    EXPECT_TRUE(std::isnan(actual)) << where << " " << actual;
  } else {
    EXPECT_EQ(actual, expected) << where;
  }
}

constexpr double kCounts[] = {0, 1, 3, 12, 150, 4000};
constexpr double kTimes[] = {10, 2.5, 700, 31, 1000, 123456};

TEST(Rates, LimitsAreThoseOfPoissonTest) {
  for (const double level : {0.95, 0.9}) {
    const std::vector<double> expected = cells(level == 0.95 ? "poisson95" : "poisson90");
    ASSERT_EQ(expected.size(), 12U);
    for (std::size_t i = 0; i < 6; ++i) {
      const auto limits = engine::curves::poissonLimits(kCounts[i], kTimes[i], level);
      // Quantiles of the gamma law are good to some 1e-13 on both sides.
      expectNear(limits.lower, expected[2 * i], 1e-12, "lower " + std::to_string(i));
      expectNear(limits.upper, expected[2 * i + 1], 1e-12, "upper " + std::to_string(i));
    }
  }
}

TEST(Rates, RatiosAreThoseOfPoissonTest) {
  const std::vector<double> expected = cells("ratio");
  const std::size_t pairs[][2] = {{1, 2}, {2, 3}, {3, 4}, {4, 5}, {5, 6}, {6, 5}, {4, 1}, {2, 2}};
  ASSERT_EQ(expected.size(), 32U);
  for (std::size_t k = 0; k < 8; ++k) {
    Rate rate[2];
    for (int side = 0; side < 2; ++side) {
      rate[side].events = kCounts[pairs[k][side] - 1];
      rate[side].personTime = kTimes[pairs[k][side] - 1];
    }
    const auto ratio = engine::curves::rateRatio(rate[1], rate[0], 0.95);
    const std::string where = "pair " + std::to_string(k);
    expectNear(ratio.ratio, expected[4 * k], 1e-12, where);
    // R finds its binomial limits through beta quantiles to some 1e-12.
    expectNear(ratio.lower, expected[4 * k + 1], 1e-10, where);
    expectNear(ratio.upper, expected[4 * k + 2], 1e-10, where);
    expectNear(ratio.pValue, expected[4 * k + 3], 1e-9, where);
  }
}

TEST(Rates, PersonTimeWithinIntervalsIsThatOfSplitRows) {
  for (const std::string name : {"lung", "heart"}) {
    const CurveData data = test::curveData(name, name == "lung" ? "male" : "transplant", "", "");
    const std::vector<double> events = cells(name + "Events");
    const std::vector<double> time = cells(name + "Time");
    const auto rates = engine::curves::rates(data.response(), data.rows(), data.groups(),
                                             std::vector<double>{100, 250, 500}, 0.95);
    ASSERT_EQ(events.size(), 8U);
    for (std::size_t g = 0; g < 2; ++g) {
      for (std::size_t k = 0; k < 4; ++k) {
        const Rate& rate = rates[g][k];
        EXPECT_EQ(rate.events, events[4 * g + k]) << name;
        EXPECT_EQ(rate.personTime, time[4 * g + k]) << name;
        EXPECT_EQ(rate.rate, rate.events / rate.personTime);
        EXPECT_EQ(rate.upper,
                  engine::curves::poissonLimits(rate.events, rate.personTime, 0.95).upper);
      }
    }
  }
}

TEST(Rates, WithoutCutsAllTimeIsOneInterval) {
  const CurveData data = test::curveData("heart", "", "count", "");
  const auto rates = engine::curves::rates(data.response(), data.rows(), data.groups(), {}, 0.95);
  double time = 0;
  for (std::size_t i = 0; i < data.exit.size(); ++i) {
    time += data.weight[i] * (data.exit[i] - data.entry[i]);
  }
  ASSERT_EQ(rates[0].size(), 1U);
  EXPECT_EQ(rates[0][0].personTime, time);
  EXPECT_EQ(rates[0][0].from, -std::numeric_limits<double>::infinity());
  EXPECT_EQ(rates[0][0].to, std::numeric_limits<double>::infinity());
}

TEST(Means, DifferencesAndRatiosAreThoseOfTheFormulas) {
  const std::vector<double> expected = cells("means");
  std::size_t at = 0;
  for (const std::string name : {"lung", "veteran"}) {
    const CurveData data = test::curveData(name, name == "lung" ? "male" : "test", "", "");
    const Options options;
    const auto means = engine::curves::restrictedMeans(
        data.sample(), data.rows(), data.curves(options), options, name == "lung" ? 600 : 300);
    const auto contrasts = engine::curves::compareMeans(means[0], means[1], 0.95);
    for (const Contrast& c : {contrasts.difference, contrasts.ratio, contrasts.lostRatio}) {
      for (const double value : {c.estimate, c.standardError, c.lower, c.upper, c.pValue}) {
        // A p-value multiplies the error of its statistic by no more than ten here.
        expectNear(value, expected.at(at), 1e-9, name + " " + std::to_string(at));
        ++at;
      }
    }
  }
  EXPECT_EQ(at, expected.size());
}

TEST(FixedTime, DifferencesAreThoseOfThePublishedTransforms) {
  using engine::curves::Scale;
  const std::vector<double> expected = cells("fixed");
  std::size_t at = 0;
  for (const std::string name : {"lung", "veteran"}) {
    const CurveData data = test::curveData(name, name == "lung" ? "male" : "test", "", "");
    const auto curves = data.curves();
    engine::curves::SurvivalAt side[2];
    for (std::size_t g = 0; g < 2; ++g) {
      const std::size_t i = indexAt(curves[g], name == "lung" ? 365 : 90);
      side[g] = {curves[g].survival[i], curves[g].logVariance[i]};
    }
    for (const Scale scale :
         {Scale::kPlain, Scale::kLog, Scale::kLogLog, Scale::kLogit, Scale::kArcsine}) {
      const Contrast c = engine::curves::compareAt(side[0], side[1], scale, 0.95);
      for (const double value : {c.estimate, c.standardError, c.lower, c.upper, c.pValue}) {
        // A difference of two numbers of the size of 1 in units of its error of some 0.1.
        EXPECT_NEAR(value, expected.at(at), 1e-12) << name << " " << at;
        ++at;
      }
    }
  }
  EXPECT_EQ(at, expected.size());
}

TEST(FixedTime, WithoutASurvivalBetweenZeroAndOneThereIsNoTransform) {
  using engine::curves::Scale;
  const engine::curves::SurvivalAt one{1.0, 0.0};
  const engine::curves::SurvivalAt half{0.5, 0.04};
  EXPECT_TRUE(std::isnan(engine::curves::compareAt(one, half, Scale::kLogLog, 0.95).estimate));
  EXPECT_EQ(engine::curves::compareAt(one, half, Scale::kPlain, 0.95).estimate, -0.5);
  EXPECT_NEAR(engine::curves::compareAt(one, half, Scale::kPlain, 0.95).z, -5, 1e-15);
}

TEST(HazardRates, AreThoseOfThePublishedFormulas) {
  const std::map<std::string, double> bandwidth = {
      {"lung", 120}, {"veteran", 80}, {"kidtran", 600}};
  for (const auto& [name, b] : bandwidth) {
    const CurveData data = test::curveData(name, "", "", "");
    const std::vector<double> time = cells(name + "HazardTime");
    const std::vector<double> rate = cells(name + "Hazard");
    const std::vector<double> error = cells(name + "HazardError");
    const std::vector<double> lower = cells(name + "HazardLower");
    const std::vector<double> upper = cells(name + "HazardUpper");
    const auto rates =
        engine::curves::hazardRates(data.sample(), 0, data.rows(), Options(), time, b);
    ASSERT_EQ(rates.size(), 8U);
    for (std::size_t i = 0; i < rates.size(); ++i) {
      const std::string where = name + " " + std::to_string(i);
      // Near the ends the kernel changes its sign and the sums cancel by some hundred at most.
      expectNear(rates[i].rate, rate[i], 1e-11, where);
      expectNear(rates[i].standardError, error[i], 1e-11, where);
      expectNear(rates[i].lower, lower[i], 1e-10, where);
      expectNear(rates[i].upper, upper[i], 1e-10, where);
    }
  }
}

TEST(HazardRates, RobustErrorsOfSingleRowsWithoutTiesAreNearTheModelsOwn) {
  // Three rows, one event at 4 with 3 at risk, another at 6 with 2: dH = 1/3, 1/2. The influences
  // on the kernel sum k1 dH1 + k2 dH2 are k1 2/9, k2 1/4 - k1 / 9 and -k1 / 9 - k2 / 4.
  CurveData data;
  data.exit = {4, 6, 9};
  data.event = {1, 1, 0};
  Options options;
  options.robust = true;
  const double b = 3;
  const auto rates = engine::curves::hazardRates(data.sample(), 0, data.rows(), options,
                                                 std::vector<double>{3.0}, b);
  const double k1 = 0.75 * (1 - 1.0 / 9) / b;  // (3 - 4) / 3; 6 is at the edge
  EXPECT_NEAR(rates[0].rate, k1 / 3, 1e-16);
  EXPECT_NEAR(rates[0].standardError, k1 * std::sqrt(4.0 / 81 + 1.0 / 81 + 1.0 / 81), 1e-16);
}

}  // namespace
}  // namespace survmeth
