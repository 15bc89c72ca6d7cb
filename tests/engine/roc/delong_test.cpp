// DeLong's components and their products, by hand.
#include "engine/roc/delong.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "engine/roc/sample.h"
#include "tests/engine/roc/data.h"

namespace survmeth::engine::roc {
namespace {

// The sample of one marker, and its components.
struct Components {
  explicit Components(const Data& data)
      : request(data.request()),
        sample(request, {0}),
        ranks(request.markers[0], sample),
        values(componentsOf(sample, ranks)) {}
  Request request;
  Sample sample;
  Ranks ranks;
  std::vector<double> values;
};

TEST(Ranks, AscendTowardsPositive) {
  const Data high{{0, 1, 0, 1}, {{4, 3, -0.0, 3}}, {}, {}, {}};
  EXPECT_EQ(Components(high).ranks.rank, (std::vector<std::uint32_t>{2, 1, 0, 1}));
  EXPECT_EQ(Components(high).ranks.value, (std::vector<double>{0, 3, 4}));
  Data low = high;
  low.lower = {true};
  EXPECT_EQ(Components(low).ranks.rank, (std::vector<std::uint32_t>{0, 1, 2, 1}));
  EXPECT_EQ(Components(low).ranks.value, (std::vector<double>{4, 3, 0}));
}

TEST(Ranks, SumTheClassesBelowAndFromEachRankOn) {
  const Data data = byHand();
  const Components made(data);
  EXPECT_EQ(made.ranks.value, (std::vector<double>{1, 2, 3, 4, 5}));
  EXPECT_EQ(made.ranks.negatives.below, (std::vector<double>{0, 1, 2, 2, 3, 3}));
  EXPECT_EQ(made.ranks.positives.atOrAbove, (std::vector<double>{3, 3, 3, 1, 1, 0}));
}

TEST(DeLong, ComponentsAreTheSharesOfTheOtherClassInOrder) {
  const Data data = byHand();
  const Components made(data);
  // Negatives 4, 1, 2 have 1, 3 and 3 of the positives above them; positives 3, 5, 3 have 2, 3 and
  // 2 of the negatives below them. The area is 7/9.
  const double shares[] = {1.0 / 3, 2.0 / 3, 1, 1, 1, 2.0 / 3};
  for (std::size_t i = 0; i < 6; ++i) EXPECT_EQ(made.values[i], shares[i] - 7.0 / 9) << i;
}

TEST(DeLong, ATieIsHalfAPair) {
  const Data data{{1, 0, 1, 0}, {{1, 1, 2, 0}}, {}, {}, {}};
  const Components made(data);
  const double shares[] = {0.75, 0.75, 1, 1};
  for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(made.values[i], shares[i] - 3.5 / 4) << i;
}

TEST(DeLong, TheVarianceByHand) {
  const Data data = byHand();
  const Components made(data);
  // Squares of positives (1 + 4 + 1) / 81 over 2 and 3, of negatives (16 + 4 + 4) / 81 over 2 and 3.
  // Sums of six rounded squares: a few units in the last place.
  EXPECT_NEAR(covarianceOf(made.sample, made.values, made.values) / (5.0 / 81), 1, 1e-15);
}

TEST(DeLong, AMarkerAndItsOppositeAreFullyCorrelated) {
  const Data data = byHand();
  Data turned = data;
  turned.lower = {true};
  const Components made(data), opposite(turned);
  // Shares are rounded at 1, deviations of a ninth so by a few 1e-16 of themselves.
  EXPECT_NEAR(covarianceOf(made.sample, made.values, opposite.values) /
                  covarianceOf(made.sample, made.values, made.values),
              -1, 1e-14);
}

TEST(DeLong, ARowOfWeightThreeIsAddedThreeTimes) {
  Data data = byHand();
  data.weight = {3, 1, 1, 2, 1, 1};
  const Data rows{{0, 0, 0, 1, 0, 1, 1, 0, 1}, {{4, 4, 4, 3, 1, 5, 5, 2, 3}}, {}, {}, {}};
  const Components weighted(data), repeated(rows);
  const Products products = productsOf(weighted.sample, weighted.values, weighted.values);
  const Products expected = productsOf(repeated.sample, repeated.values, repeated.values);
  EXPECT_EQ(products.ofNegatives, expected.ofNegatives);
  EXPECT_EQ(products.ofPositives, expected.ofPositives);
}

}  // namespace
}  // namespace survmeth::engine::roc
