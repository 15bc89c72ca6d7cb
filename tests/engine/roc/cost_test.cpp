// Costs of thresholds: at which prevalence, and which of them cost the same.
#include <gtest/gtest.h>

#include <vector>

#include "engine/roc/curves.h"
#include "tests/support/role.h"

namespace survmeth::engine::roc {
namespace {

struct Data {
  std::vector<std::uint8_t> positive;
  std::vector<double> values;

  Curve curve(const Costs& costs, std::optional<double> prevalence = std::nullopt) const {
    Request request;
    request.positive = positive;
    request.markers = {{values, false}};
    request.costs = costs;
    request.prevalence = prevalence;
    return curves(request).curves.at(0);
  }
};

// False positives and false negatives of 3 each at thresholds 1..5: (3, 0), (2, 0), (1, 0), (1, 2),
// (0, 2).
const Data kSix = {{0, 1, 0, 1, 0, 1}, {4, 3, 1, 5, 2, 3}};
// At or above 1 three negatives of four and both positives, at or above 5 one positive.
const Data kThreeForOne = {{1, 1, 0, 0, 0, 0}, {5, 1, 2, 3, 4, 0}};

TEST(RocCost, IsOfAllRowsWithoutAPrevalence) {
  const Curve curve = kSix.curve({.fp = 1, .fn = 2});
  EXPECT_EQ(curve.thresholds[3].cost, 5);
  EXPECT_EQ(curve.leastCost, 1);
  EXPECT_EQ(curve.cheapest, std::vector<std::size_t>{2});
}

TEST(RocCost, IsThatOfAsManySubjectsAtThePrevalence) {
  // 6 (0.1 2 fn / 3 + 0.9 fp / 3).
  const Curve curve = kSix.curve({.fp = 1, .fn = 2}, 0.1);
  const std::vector<double> expected = {5.4, 3.6, 1.8, 2.6, 0.8};
  for (std::size_t k = 0; k < 5; ++k) EXPECT_NEAR(curve.thresholds[k].cost, expected[k], 1e-14);
  EXPECT_EQ(curve.cheapest, std::vector<std::size_t>{4});
  EXPECT_NEAR(curve.leastCost, 0.8, 1e-15);
  // Calling nobody positive costs 6 0.2 = 1.2, and with a prevalence of 0.01 least of all: 0.12
  // where a threshold of 5 costs 0.08 for the missed and 6 0.01 3 / 3 for those found.
  EXPECT_TRUE(kSix.curve({.tp = 3, .fp = 1, .fn = 2}, 0.01).cheapest.empty());
}

TEST(RocCost, OfTheRowsOwnPrevalenceIsThatOfTheRows) {
  const Costs costs{.tp = 1, .fp = 2, .fn = 7, .tn = 0.5};
  const Curve rows = kThreeForOne.curve(costs), stated = kThreeForOne.curve(costs, 1 / 3.0);
  for (std::size_t k = 0; k < rows.thresholds.size(); ++k) {
    EXPECT_NEAR(stated.thresholds[k].cost, rows.thresholds[k].cost, 1e-13);
  }
  EXPECT_EQ(stated.cheapest, rows.cheapest);
}

TEST(RocCost, TheUnitOfTheCostsDoesNotMatter) {
  // 3 x 0.1 and 0.3 are not the same double.
  const std::vector<std::size_t> both = {1, 5};
  for (const double unit : {1.0, 0.1, 0.01, 1e-5, 7.0, 1e100}) {
    EXPECT_EQ(kThreeForOne.curve({.fp = unit, .fn = 3 * unit}).cheapest, both) << unit;
  }
  EXPECT_EQ(kThreeForOne.curve({.fp = 0.1, .fn = 0.3}).cheapest, both);
  // With three times as many negatives for each positive one of them weighs a third.
  EXPECT_EQ(kThreeForOne.curve({.fp = 0.1, .fn = 0.3 / 2 * 3}, 0.25).cheapest, both);
}

TEST(RocCost, ADifferenceBeyondRoundingCounts) {
  const Curve curve = kThreeForOne.curve({.fp = 0.1, .fn = 0.3 * (1 + 1e-13)});
  EXPECT_EQ(curve.cheapest, std::vector<std::size_t>{1});
}

TEST(RocCost, RefusesWhatAddsUpBeyondTheLargestNumber) {
  try {
    kSix.curve({.fn = 1e308});
    ADD_FAILURE() << "accepted";
  } catch (const Refusal& refused) {
    EXPECT_EQ(nameOf(refused.role()), "cost");
    EXPECT_STREQ(refused.what(), "the cost of all rows is beyond the largest number");
  }
}

}  // namespace
}  // namespace survmeth::engine::roc
