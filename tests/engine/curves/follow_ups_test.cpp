// What is read off curves by hand, and the words of every refusal.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <limits>

#include "engine/curves/bands.h"
#include "engine/curves/hazardRate.h"
#include "engine/curves/means.h"
#include "engine/curves/quantiles.h"
#include "engine/curves/rates.h"
#include "numerics/bits.h"
#include "tests/engine/curves/data.h"

namespace survmeth {
namespace {

using engine::Refusal;
using engine::Role;
using engine::curves::Curve;
using engine::curves::Options;
using engine::curves::Scale;
using test::CurveData;
using test::small;

TEST(Quantiles, AFlatCurvesTimeIsChosenByTheConvention) {
  // 1/2 from time 2 until 4, with a censoring between them.
  const Curve curve = small({1, 2, 3, 4}, {1, 1, 0, 1}).curves()[0];
  using engine::curves::Flat;
  const std::vector<double> half = {0.5};
  EXPECT_EQ(engine::curves::quantiles(curve, half)[0].time, 3);
  EXPECT_EQ(engine::curves::quantiles(curve, half, Flat::kFirst)[0].time, 2);
  EXPECT_EQ(engine::curves::quantiles(curve, half, Flat::kLast)[0].time, 4);
  EXPECT_EQ(engine::curves::quantiles(curve, std::vector<double>{0.6})[0].time, 4);
  EXPECT_EQ(engine::curves::quantiles(curve, std::vector<double>{0.4})[0].time, 2);
}

TEST(Readings, BeyondTheLastTimeNothingIsKnownUnlessCarriedOn) {
  const Curve curve = small({1, 2, 4}, {1, 1, 0}).curves()[0];
  const std::vector<double> time = {0.5, 1, 3, 4, 5};
  const auto readings = engine::curves::readings(curve, time, false, Scale::kLog);
  EXPECT_EQ(readings[0].survival, 1);
  EXPECT_EQ(readings[0].standardError, 0);
  EXPECT_EQ(readings[0].lower, 1);
  EXPECT_DOUBLE_EQ(readings[1].survival, 2.0 / 3);
  EXPECT_DOUBLE_EQ(readings[3].survival, 1.0 / 3);
  EXPECT_TRUE(std::isnan(readings[4].survival));
  EXPECT_DOUBLE_EQ(engine::curves::readings(curve, time, true, Scale::kLog)[4].survival, 1.0 / 3);
}

TEST(Readings, ACurveThatHasEndedAtZeroStaysThere) {
  const Curve curve = small({1, 2}, {1, 1}).curves()[0];
  const auto reading =
      engine::curves::readings(curve, std::vector<double>{7}, false, Scale::kLog)[0];
  EXPECT_EQ(reading.survival, 0);
  EXPECT_TRUE(std::isnan(reading.upper));
}

TEST(RiskTable, CountsJustBeforeEachTimeAndUpToIt) {
  CurveData data = small({2, 3, 3, 5, 8}, {1, 1, 0, 0, 1});
  data.entry = {0, 0, 2, 1, 3};
  const auto table = engine::curves::riskTable(data.response(), data.rows(), data.groups(),
                                               std::vector<double>{0, 2, 3, 6, 9})[0];
  const double atRisk[] = {0, 3, 3, 1, 0};
  const double events[] = {0, 1, 1, 0, 1};
  const double cumulative[] = {0, 1, 2, 2, 3};
  const double censored[] = {0, 0, 1, 2, 2};
  for (std::size_t i = 0; i < 5; ++i) {
    EXPECT_EQ(table[i].atRisk, atRisk[i]) << i;
    EXPECT_EQ(table[i].events, events[i]) << i;
    EXPECT_EQ(table[i].cumulativeEvents, cumulative[i]) << i;
    EXPECT_EQ(table[i].cumulativeCensored, censored[i]) << i;
  }
}

TEST(Means, AHorizonBeyondFollowUpIsSaid) {
  const CurveData data = small({1, 2, 4}, {1, 1, 0});
  const auto curves = data.curves();
  const auto beyond = engine::curves::restrictedMeans(data.sample(), data.rows(), curves, {}, 7)[0];
  EXPECT_TRUE(beyond.extended);
  EXPECT_DOUBLE_EQ(beyond.mean, 1 + 2.0 / 3 + 5.0 / 3);
  EXPECT_DOUBLE_EQ(beyond.lost, 7 - beyond.mean);
  const auto within = engine::curves::restrictedMeans(data.sample(), data.rows(), curves, {}, 4)[0];
  EXPECT_FALSE(within.extended);
  // Areas from 1 and 2 on: 4/3 and 2/3; variance (4/3)^2 / 6 + (2/3)^2 / 2.
  EXPECT_DOUBLE_EQ(within.standardError, std::sqrt(16.0 / 54 + 4.0 / 18));
}

TEST(Means, NegativeTimesMoveTheOrigin) {
  const CurveData data = small({-2, 1}, {1, 0});
  const auto mean =
      engine::curves::restrictedMeans(data.sample(), data.rows(), data.curves(), {}, 1)[0];
  EXPECT_EQ(mean.origin, -2);
  EXPECT_EQ(mean.mean, 1.5);
}

TEST(Limits, OfManySurvivalsAreThoseOfEach) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
  std::vector<double> survival, spread;
  for (const double s : {1.0, 0.999999, 0.75, 0.5, 1e-3, 1e-300, 5e-324, 0.0, kNone}) {
    for (const double by : {0.0, 1e-9, 0.25, 3.0, 800.0, kInfinity, kNone}) {
      survival.push_back(s);
      spread.push_back(by);
    }
  }
  const auto bits = [](double value) {
    return std::isnan(value) ? ~std::uint64_t{0} : numerics::bitCast<std::uint64_t>(value);
  };
  for (const Scale scale :
       {Scale::kPlain, Scale::kLog, Scale::kLogLog, Scale::kLogit, Scale::kArcsine}) {
    std::vector<double> lower(survival.size()), upper(survival.size());
    engine::curves::survivalLimits(survival, spread, scale, lower, upper);
    for (std::size_t i = 0; i < survival.size(); ++i) {
      const auto own = engine::curves::survivalLimits(survival[i], spread[i], scale);
      EXPECT_EQ(bits(lower[i]), bits(own.lower)) << survival[i] << ' ' << spread[i];
      EXPECT_EQ(bits(upper[i]), bits(own.upper)) << survival[i] << ' ' << spread[i];
    }
  }
}

TEST(Limits, OfTheHazardArePlainOrOnTheLogScale) {
  using engine::curves::hazardLimits;
  EXPECT_EQ(hazardLimits(0.5, 0.5, 2, Scale::kPlain).lower, 0);
  EXPECT_EQ(hazardLimits(0.5, 0.5, 2, Scale::kPlain).upper, 1.5);
  EXPECT_NEAR(hazardLimits(0.5, 0.25, 2, Scale::kLog).upper, 0.5 * std::exp(1.0), 1e-15);
  EXPECT_TRUE(std::isnan(hazardLimits(0, 0, 2, Scale::kLog).lower));
  EXPECT_THROW(hazardLimits(0.5, 0.25, 2, Scale::kLogit), std::invalid_argument);
}

TEST(Limits, StayWithinZeroAndOneHoweverWide) {
  for (const Scale scale :
       {Scale::kPlain, Scale::kLog, Scale::kLogLog, Scale::kLogit, Scale::kArcsine}) {
    const auto limits = engine::curves::survivalLimits(0.3, 1e5, scale);
    EXPECT_EQ(limits.lower, 0) << static_cast<int>(scale);
    EXPECT_EQ(limits.upper, 1) << static_cast<int>(scale);
  }
}

TEST(Bands, EqualPrecisionIsPointwiseWithAnotherQuantile) {
  const CurveData data = test::curveData("veteran", "", "", "");
  for (const Scale scale : {Scale::kPlain, Scale::kLogLog, Scale::kArcsine}) {
    Options options;
    options.scale = scale;
    const Curve curve = data.curves(options)[0];
    const auto band = engine::curves::band(curve, data.rows(), options,
                                           engine::curves::BandKind::kEqualPrecision, 20, 300);
    EXPECT_GT(band.critical, 2.5);
    for (std::size_t i = 0; i < curve.time.size(); ++i) {
      if (curve.time[i] < 20 || curve.time[i] > 300) {
        EXPECT_TRUE(std::isnan(band.lower[i])) << curve.time[i];
        continue;
      }
      const auto limits = engine::curves::survivalLimits(
          curve.survival[i], band.critical * std::sqrt(curve.logVariance[i]), scale);
      EXPECT_EQ(band.lower[i], limits.lower);
      EXPECT_EQ(band.upper[i], limits.upper);
    }
  }
}

// Klein & Moeschberger (2003), 4.4.5 and 4.4.6, at one time.
TEST(Bands, HallAndWellnersIsThatOfThePublishedFormulas) {
  const CurveData data = test::curveData("veteran", "", "", "");
  Options options;
  options.scale = Scale::kPlain;
  const Curve curve = data.curves(options)[0];
  const std::size_t at = indexAt(curve, 100);
  const double s = curve.survival[at];
  const double v = curve.logVariance[at];
  const double n = 137;
  const auto kind = engine::curves::BandKind::kHallWellner;
  const auto plain = engine::curves::band(curve, data.rows(), options, kind, 20, 300);
  const double half = plain.critical * (1 + n * v) / std::sqrt(n) * s;
  EXPECT_NEAR(plain.lower[at], s - half, 1e-15);
  EXPECT_NEAR(plain.upper[at], s + half, 1e-15);
  options.scale = Scale::kLogLog;
  const auto other = engine::curves::band(curve, data.rows(), options, kind, 20, 300);
  const double theta = std::exp(plain.critical * (1 + n * v) / (std::sqrt(n) * std::log(s)));
  EXPECT_NEAR(other.lower[at], std::pow(s, 1 / theta), 1e-14);
  EXPECT_NEAR(other.upper[at], std::pow(s, theta), 1e-14);
  const std::size_t first = indexAt(curve, 20);
  EXPECT_DOUBLE_EQ(plain.lowerShare,
                   n * curve.logVariance[first] / (1 + n * curve.logVariance[first]));
}

TEST(Bands, WithoutAnIntervalThereIsNone) {
  const auto kind = engine::curves::BandKind::kEqualPrecision;
  const CurveData censored = small({1, 2}, {0, 0});
  EXPECT_TRUE(
      std::isnan(engine::curves::band(censored.curves()[0], censored.rows(), {}, kind).critical));
  // One event with survivors: one time, and the normal quantile.
  const CurveData one = small({1, 2}, {1, 0});
  EXPECT_NEAR(engine::curves::band(one.curves()[0], one.rows(), {}, kind).critical,
              1.959963984540054, 1e-15);
  EXPECT_TRUE(std::isnan(
      engine::curves::band(one.curves()[0], one.rows(), {}, engine::curves::BandKind::kHallWellner)
          .critical));
}

// The words of every refusal, and whom they are about.
void expectRefusal(const std::function<void()>& call, Role role, const std::string& text) {
  try {
    call();
    ADD_FAILURE() << "not refused: " << text;
  } catch (const Refusal& refusal) {
    EXPECT_EQ(refusal.what(), text);
    EXPECT_EQ(refusal.role(), role);
  }
}

TEST(CurveRefusals, NameWhatIsWrong) {
  CurveData data = small({1, 2, 4}, {1, 1, 0});
  const auto response = data.response();
  expectRefusal(
      [&] {
        auto causes = response;
        causes.causes = 2;
        engine::curves::Sample(causes, {}, {});
      },
      Role::kEvent, "Curves take one kind of event");
  expectRefusal(
      [&] {
        engine::Rows rows;
        rows.offset = data.exit;
        engine::curves::rates(response, rows, {}, {}, 0.95);
      },
      Role::kOffset, "Rates take no offset");
  const std::vector<std::uint32_t> group = {0, 1, 2};
  expectRefusal(
      [&] {
        engine::curves::Sample(response, {}, {group, 2});
      },
      Role::kGroup, "group code 2 is not below 2");
  expectRefusal(
      [&] {
        engine::curves::Sample(response, {}, {std::span(group).first(2), 3});
      },
      Role::kGroup, "group has 2 rows, the response has 3");
  Options options;
  options.level = 1;
  expectRefusal([&] { data.curves(options); }, Role::kAlpha,
                "the level of limits is not between 0 and 1");
  options = {};
  options.hazardVariance = engine::curves::HazardVariance::kBinomial;
  options.robust = true;
  expectRefusal([&] { data.curves(options); }, Role::kRequest,
                "binomial variances are for plain ties and are not robust");
  options = {};
  options.robust = true;
  expectRefusal(
      [&] {
        engine::curves::band(data.curves(options)[0], data.rows(), options,
                             engine::curves::BandKind::kHallWellner);
      },
      Role::kRequest, "simultaneous bands are not for robust variances");
  const Curve curve = data.curves()[0];
  expectRefusal([&] { engine::curves::quantiles(curve, std::vector<double>{1}); }, Role::kValue,
                "the quantile is not between 0 and 1");
  const auto sample = data.sample();
  expectRefusal([&] { engine::curves::restrictedMeans(sample, {}, std::span(&curve, 1), {}, 0); },
                Role::kValue, "the horizon is not after the origin of time");
  for (const double bandwidth : {0.0, 1.01, std::numeric_limits<double>::quiet_NaN()}) {
    expectRefusal(
        [&] { engine::curves::hazardRates(sample, 0, {}, {}, std::vector<double>{1}, bandwidth); },
        Role::kValue, "the bandwidth is not between 0 and half of the last event time");
  }
  expectRefusal(
      [&] {
        engine::curves::rates(response, {}, {}, std::vector<double>{1, 1}, 0.95);
      },
      Role::kIntervals, "the cuts of time are not ascending numbers");
  expectRefusal(
      [&] {
        engine::curves::riskTable(response, {}, {}, std::vector<double>{2, 1});
      },
      Role::kIntervals, "the times of the table are not ascending numbers");
  CurveData negative = small({-1, 2}, {1, 1});
  expectRefusal([&] { engine::curves::rates(negative.response(), {}, {}, {}, 0.95); }, Role::kTime,
                "person-time without entries runs from 0, exit is negative");
}

}  // namespace
}  // namespace survmeth
