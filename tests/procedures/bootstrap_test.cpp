// The bootstrap: its limits against R's boot.ci, the same draws whatever the threads.
#include "procedures/bootstrap.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "numerics/threads.h"
#include "tests/support/csv.h"

namespace survmeth::procedures {
namespace {

// The replicates of make.R.
const std::vector<double> kReplicates = {
    2.31, 1.75, 2.02, 3.11, 1.20, 2.65, 1.94, 2.47, 0.88, 2.21, 2.90, 1.66, 2.15, 2.38,
    1.81, 2.56, 3.42, 1.49, 2.08, 2.27, 1.33, 2.72, 1.98, 2.44, 2.61, 1.58, 2.19, 2.83,
    1.88, 2.35, 2.11, 1.71, 2.52, 3.05, 1.05, 2.24, 1.90, 2.41, 2.78, 1.62};

Bootstrap given() {
  Bootstrap made;
  made.estimate = {2.05};
  for (const double each : kReplicates) made.replicates.push_back({each});
  return made;
}

TEST(BootstrapLimits, AreThoseOfR) {
  const test::Csv table(std::string(SURVMETH_REFERENCE) + "/procedures/limits.csv");
  for (std::size_t i = 0; i < table.rows(); ++i) {
    Bootstrap made = given();
    made.acceleration = {table.number("acceleration", i)};
    const std::string kind = table.text("limits", i);
    const BootstrapSummary summary = summarise(made, 0, table.number("level", i),
                                               kind == "percent" ? BootstrapLimits::kPercentile
                                               : kind == "basic" ? BootstrapLimits::kBasic
                                                                 : BootstrapLimits::kBca);
    // Both interpolate between numbers of two decimals; normal quantiles are good to 1e-13.
    EXPECT_NEAR(summary.lower, table.number("lower", i), 1e-11) << kind;
    EXPECT_NEAR(summary.upper, table.number("upper", i), 1e-11) << kind;
  }
}

TEST(BootstrapLimits, BiasAndErrorAreMomentsOfTheReplicates) {
  Bootstrap made;
  made.estimate = {2.0};
  made.replicates = {{1.0}, {2.0}, {6.0}};
  const BootstrapSummary summary = summarise(made, 0, 0.5, BootstrapLimits::kPercentile);
  EXPECT_EQ(summary.bias, 1.0);                             // mean 3
  EXPECT_DOUBLE_EQ(summary.standardError, std::sqrt(7.0));  // (4 + 1 + 9) / 2
}

TEST(BootstrapLimits, ReplicatesWithoutTheNumberDoNotCount) {
  constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
  Bootstrap made;
  made.estimate = {2.0, kNone};
  made.replicates = {{1.0, 1.0}, {kNone, 2.0}, {2.0, 3.0}, {6.0, 4.0}};
  const BootstrapSummary summary = summarise(made, 0, 0.5, BootstrapLimits::kPercentile);
  EXPECT_EQ(summary.replicates, 3u);
  EXPECT_EQ(summary.bias, 1.0);  // mean 3
  const BootstrapSummary unknown = summarise(made, 1, 0.5, BootstrapLimits::kPercentile);
  EXPECT_EQ(unknown.replicates, 4u);
  EXPECT_TRUE(std::isnan(unknown.bias));
  EXPECT_TRUE(std::isnan(unknown.lower));
}

TEST(BootstrapLimits, WhatDoesNotExistIsNotANumber) {
  Bootstrap made = given();
  EXPECT_TRUE(std::isnan(summarise(made, 0, 0.9, BootstrapLimits::kBca).lower));
  made.acceleration = {0.0};
  made.estimate = {0.5};  // below all replicates
  EXPECT_TRUE(std::isnan(summarise(made, 0, 0.9, BootstrapLimits::kBca).upper));
  made.replicates.resize(1);
  EXPECT_TRUE(std::isnan(summarise(made, 0, 0.9, BootstrapLimits::kBasic).standardError));
}

// The mean of the units' numbers, which are their squares.
std::vector<double> mean(std::span<const std::uint32_t> units) {
  double sum = 0.0;
  for (const std::uint32_t unit : units) sum += static_cast<double>(unit) * unit;
  return {sum / static_cast<double>(units.size())};
}

TEST(BootstrapDraws, AReplicateIsTheStatisticOfItsUnits) {
  numerics::Progress progress;
  const Bootstrap made = bootstrap(20, mean, {.replicates = 150, .seed = 9}, progress);
  EXPECT_EQ(made.estimate, (std::vector<double>{123.5}));  // 19 39 / 6
  ASSERT_EQ(made.replicates.size(), 150u);
  std::set<double> distinct;
  for (std::size_t r = 0; r < 150; ++r) {
    EXPECT_EQ(made.replicates[r], mean(drawnUnits(20, 9, r)));
    distinct.insert(made.replicates[r][0]);
  }
  EXPECT_GT(distinct.size(), 130u);
  EXPECT_NE(drawnUnits(20, 9, 0), drawnUnits(20, 10, 0));
}

TEST(BootstrapDraws, AreTheSameForEveryNumberOfThreads) {
  numerics::Progress progress;
  std::vector<Bootstrap> made;
  for (const unsigned threads : {1u, 2u, 5u}) {
    numerics::setThreads(threads);
    made.push_back(
        bootstrap(31, mean, {.replicates = 200, .seed = 3, .accelerated = true}, progress));
  }
  numerics::setThreads(0);
  for (const Bootstrap& each : made) {
    EXPECT_EQ(each.replicates, made[0].replicates);
    EXPECT_EQ(each.acceleration, made[0].acceleration);
  }
}

// Left-out values of the mean of 0, 1, 8: 4.5, 4, 0.5 about 3, so that the deviations are -1.5, -1
// and 2.5, their cubes 11.25 and their squares 9.5 in all.
TEST(BootstrapDraws, TheAccelerationIsTheJackknifes) {
  const auto statistic = [](std::span<const std::uint32_t> units) -> std::vector<double> {
    double sum = 0.0;
    for (const std::uint32_t unit : units) sum += unit == 2 ? 8.0 : unit;
    return {sum / static_cast<double>(units.size())};
  };
  numerics::Progress progress;
  const Bootstrap made =
      bootstrap(3, statistic, {.replicates = 5, .seed = 1, .accelerated = true}, progress);
  EXPECT_DOUBLE_EQ(made.acceleration[0], 11.25 / (6.0 * std::pow(9.5, 1.5)));
}

TEST(BootstrapDraws, ReplicatesWithoutAResultAreCounted) {
  const auto sometimes = [](std::span<const std::uint32_t> units) -> std::vector<double> {
    return units[0] == 0 && units[1] != 1 ? std::vector<double>() : mean(units);
  };
  numerics::Progress progress;
  // All units in order are 0, 1, ...: the statistic exists there.
  const Bootstrap made = bootstrap(4, sometimes, {.replicates = 400, .seed = 2}, progress);
  std::size_t expected = 0;
  for (std::size_t r = 0; r < 400; ++r) expected += sometimes(drawnUnits(4, 2, r)).empty() ? 1 : 0;
  EXPECT_GT(expected, 40u);
  EXPECT_EQ(made.failed, expected);
  EXPECT_EQ(made.replicates.size(), 400u - expected);
}

TEST(BootstrapDraws, CanBeCancelled) {
  class Stopped : public numerics::Progress {
   public:
    double last = 0.0;

   private:
    void show(double done) override { last = done; }
    bool stop() override { return last >= 0.5; }
  };
  Stopped progress;
  EXPECT_THROW(bootstrap(10, mean, {.replicates = 1000, .seed = 1}, progress), numerics::Cancelled);
  EXPECT_LT(progress.last, 0.6);
}

}  // namespace
}  // namespace survmeth::procedures
