// The actuarial table against R's arithmetic and by hand.
#include "analysis/life/actuarial.h"

#include <limits>

#include "tests/analysis/life/data.h"
#include "tests/support/role.h"

namespace survmeth {
namespace {

using test::Columns;
using test::Csv;
using test::near;
using test::oneGroup;

std::vector<LifeInterval> byWidth(const Columns& columns, double width) {
  analysis::LifeRequest request;
  request.width = width;
  return test::lifeOf(columns, request).intervals[0];
}
std::vector<LifeInterval> byBounds(const Columns& columns, std::vector<double> bounds) {
  analysis::LifeRequest request;
  request.bounds = std::move(bounds);
  return test::lifeOf(columns, request).intervals[0];
}

TEST(LifeTable, IsThatOfTheReference) {
  const std::map<int, Columns> sets = test::randomData();
  const Csv csv(SURVMETH_REFERENCE + std::string("/curves_actuarial.csv"));
  ASSERT_GT(csv.rows(), 100u);
  for (std::size_t row = 0; row < csv.rows(); ++row) {
    SCOPED_TRACE(csv.text("id", row) + " interval " + csv.text("row", row));
    const auto table =
        byWidth(sets.at(static_cast<int>(csv.number("id", row))), csv.number("width", row));
    const LifeInterval& interval = table.at(static_cast<std::size_t>(csv.number("row", row)));
    EXPECT_EQ(interval.entering, csv.number("entering", row));
    EXPECT_EQ(interval.events, csv.number("events", row));
    EXPECT_EQ(interval.censored, csv.number("censored", row));
    EXPECT_TRUE(near(interval.survivalAtStart, csv.number("start", row), 1e-10));
    EXPECT_TRUE(near(interval.survivalAtEnd, csv.number("end", row), 1e-10));
    EXPECT_TRUE(near(interval.standardError, csv.number("error", row), 1e-10));
    EXPECT_TRUE(near(interval.density, csv.number("density", row), 1e-10));
    EXPECT_TRUE(near(interval.densityError, csv.number("densityError", row), 1e-10));
    EXPECT_TRUE(near(interval.hazard, csv.number("hazard", row), 1e-10));
    // The reference takes the root of 1 - (h w / 2)^2, which cancels where everybody has an event.
    EXPECT_TRUE(near(interval.hazardError, csv.number("hazardError", row), 1e-7));
  }
}

TEST(LifeTable, AnEventOnABoundBelongsToTheIntervalThatBeginsThere) {
  const auto table = byWidth(oneGroup({10, 20}, {1, 1}), 10);
  ASSERT_EQ(table.size(), 3u);
  EXPECT_EQ(table[0].events, 0);
  EXPECT_EQ(table[1].events, 1);
  EXPECT_EQ(table[2].events, 1);
}

// 3 * 0.1 is above 0.3 in binary; the reader's 0.3 must not fall below that bound.
TEST(LifeTable, BoundsAreDecimalMultiplesOfTheWidth) {
  const auto table = byWidth(oneGroup({0.3, 0.7}, {1, 1}), 0.1);
  ASSERT_EQ(table.size(), 8u);
  EXPECT_EQ(table[3].lower, 0.3);
  EXPECT_EQ(table[3].events, 1);
  EXPECT_EQ(table[7].lower, 0.7);
  EXPECT_EQ(table[7].events, 1);
}

TEST(LifeTable, HalfOfTheCensoredCountAsAtRisk) {
  const auto table = byWidth(oneGroup({1, 2, 3, 4, 12}, {1, 0, 0, 1, 1}), 10);
  EXPECT_EQ(table[0].effective, 4);
  EXPECT_EQ(table[0].conditional, 0.5);
  EXPECT_EQ(table[0].survivalAtEnd, 0.5);
  EXPECT_EQ(table[1].survivalAtStart, 0.5);
  EXPECT_EQ(table[1].survivalAtEnd, 0);
  EXPECT_TRUE(std::isnan(table[1].standardError));
  EXPECT_EQ(table[1].hazardError, 0);
}

TEST(LifeTable, MedianResidualLifeIsInterpolated) {
  // Survival 1, 3/4, 1/4, 0 at 0, 10, 20, 30.
  const auto table = byWidth(oneGroup({5, 15, 15, 25}, {1, 1, 1, 1}), 10);
  EXPECT_TRUE(near(table[0].medianResidual, 15, 1e-14));
  // Half of 3/4 is 3/8: at 10 + 10 (3/4 - 3/8) / (1/2) = 17.5, which is 7.5 after 10.
  EXPECT_TRUE(near(table[1].medianResidual, 7.5, 1e-14));
  // The density of [10, 20) is 1/20: (3/8) / (1/20 sqrt(3)).
  EXPECT_TRUE(near(table[1].medianResidualError, 7.5 / std::sqrt(3.0), 1e-14));
}

TEST(LifeTable, ASurvivalThatNeverHalvesHasNoMedianResidualLife) {
  const auto table = byWidth(oneGroup({5, 15, 15, 15}, {1, 0, 0, 0}), 10);
  EXPECT_TRUE(std::isnan(table[0].medianResidual));
  EXPECT_TRUE(std::isnan(table[0].medianResidualError));
}

TEST(LifeTable, GivenBoundsBeginAtZeroAndEndOpen) {
  for (const auto& bounds : {std::vector<double>{10, 20}, std::vector<double>{0, 10, 20}}) {
    const auto table = byBounds(oneGroup({5, 10, 20, 100}, {1, 1, 1, 0}), bounds);
    ASSERT_EQ(table.size(), 3u);
    EXPECT_EQ(table[0].lower, 0);
    EXPECT_EQ(table[0].upper, 10);
    EXPECT_EQ(table[1].events, 1);
    EXPECT_EQ(table[2].lower, 20);
    EXPECT_TRUE(std::isinf(table[2].upper));
    EXPECT_EQ(table[2].entering, 2);
    EXPECT_TRUE(std::isnan(table[2].hazard));
    EXPECT_TRUE(std::isnan(table[2].density));
    EXPECT_TRUE(near(table[2].survivalAtEnd, 1.0 / 6, 1e-15));
  }
}

TEST(LifeTable, AnIntervalThatNobodyEntersHasNoEstimates) {
  const auto table = byBounds(oneGroup({5, 6}, {1, 1}), {10, 20});
  EXPECT_EQ(table[1].entering, 0);
  EXPECT_TRUE(std::isnan(table[1].survivalAtEnd));
  EXPECT_TRUE(std::isnan(table[1].hazard));
}

TEST(LifeTable, RefusesIntervalsThatAreNone) {
  const auto refused = [](double width, const std::vector<double>& bounds) -> std::string {
    try {
      intervalBounds(width, bounds, 6);
    } catch (const survmeth::engine::Refusal& error) {
      return nameOf(error.role());
    }
    return "accepted";
  };
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(refused(-1, {}), "intervals");
  EXPECT_EQ(refused(infinity, {}), "intervals");
  EXPECT_EQ(refused(kNone, {}), "intervals");
  EXPECT_EQ(refused(1e-6, {}), "intervals");
  EXPECT_EQ(refused(1, {1}), "intervals");
  EXPECT_EQ(refused(0, {}), "intervals");
  EXPECT_EQ(refused(0, {2, 1}), "intervals");
  EXPECT_EQ(refused(0, {1, 1}), "intervals");
  EXPECT_EQ(refused(0, {-1, 1}), "intervals");
  EXPECT_EQ(refused(0, {1, kNone}), "intervals");
  EXPECT_EQ(refused(0, {1, infinity}), "intervals");
  EXPECT_EQ(refused(0, {1, 2}), "accepted");
  EXPECT_EQ(refused(1e-4, {}), "accepted");
}

}  // namespace
}  // namespace survmeth
