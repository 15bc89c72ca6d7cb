// Labels of columns: their order, what is one label, those that no row holds.
#include "frame/labels.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace survmeth::frame {
namespace {

constexpr auto kNone = Column::kMissing;
using Strings = std::vector<std::string>;
using Codes = std::vector<std::uint32_t>;
using Counts = std::vector<std::size_t>;

TEST(Labels, OfTextStandInTheOrderOfTheirBytes) {
  const Labels made = labelsOf(labelColumn("x", Type::kText, {0, 1, 2, 1}, {"b", "B", "a10"}));
  EXPECT_EQ(made.labels, (Strings{"B", "a10", "b"}));
  EXPECT_EQ(made.codes, (Codes{2, 0, 1, 0}));
  EXPECT_EQ(made.counts, (Counts{2, 1, 1}));
}

TEST(Labels, ThatAreAllNumbersStandInTheOrderOfNumbers) {
  const Labels made =
      labelsOf(labelColumn("x", Type::kText, {0, 1, 2, 3}, {"10", "9", "-1", "2e0"}));
  EXPECT_EQ(made.labels, (Strings{"-1", "2e0", "9", "10"}));
}

TEST(Labels, OfOneNumberInTwoSpellingsAreOneByTheShortest) {
  const Labels made =
      labelsOf(labelColumn("x", Type::kText, {0, 1, 2, 3, 4}, {"1.0", "2", "1", "+1", "01"}));
  EXPECT_EQ(made.labels, (Strings{"1", "2"}));
  EXPECT_EQ(made.codes, (Codes{0, 1, 0, 0, 0}));
  EXPECT_EQ(made.counts, (Counts{4, 1}));
}

TEST(Labels, AreToldApartByTheirTextWhereOneIsNoNumber) {
  const Labels made = labelsOf(labelColumn("x", Type::kText, {0, 1, 2}, {"1.0", "1", "x"}));
  EXPECT_EQ(made.labels, (Strings{"1", "1.0", "x"}));
}

TEST(Labels, OfMinusZeroAndZeroAreOne) {
  EXPECT_EQ(labelsOf(numberColumn("x", {-0.0, 0.0})).labels, (Strings{"0"}));
  EXPECT_EQ(labelsOf(labelColumn("x", Type::kText, {0, 1}, {"-0", "0"})).labels, (Strings{"0"}));
}

TEST(Labels, OfAFactorKeepItsOrder) {
  const Labels made = labelsOf(labelColumn("x", Type::kFactor, {2, 0, 1}, {"z", "10", "9"}));
  EXPECT_EQ(made.labels, (Strings{"z", "10", "9"}));
  EXPECT_EQ(made.codes, (Codes{2, 0, 1}));
}

TEST(Labels, ThatNoRowHoldsAreLeftOutOrCountedAsNone) {
  const Column column = labelColumn("x", Type::kFactor, {2, 0, kNone, 2}, {"z", "b", "a"});
  const Labels held = labelsOf(column), all = allLabelsOf(column);
  EXPECT_EQ(held.labels, (Strings{"z", "a"}));
  EXPECT_EQ(held.codes, (Codes{1, 0, kNone, 1}));
  EXPECT_EQ(held.counts, (Counts{1, 2}));
  EXPECT_EQ(all.labels, (Strings{"z", "b", "a"}));
  EXPECT_EQ(all.codes, (Codes{2, 0, kNone, 2}));
  EXPECT_EQ(all.counts, (Counts{1, 0, 2}));
}

TEST(Labels, OfNumbersAreTheirShortestText) {
  constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();
  const Labels made = labelsOf(numberColumn("x", {10, 0.1, kMissing, -2, 10}));
  EXPECT_EQ(made.labels, (Strings{"-2", "0.1", "10"}));
  EXPECT_EQ(made.codes, (Codes{2, 1, kNone, 0, 2}));
}

TEST(Labels, OfRoundNumbersHaveAllTheirDigits) {
  const Labels made = labelsByFirstUse(
      numberColumn("x", {100000, -200000, 1e6, 999999999999999, 1e15, 1e22, 1e-5, 0.1}));
  EXPECT_EQ(made.labels, (Strings{"100000", "-200000", "1000000", "999999999999999", "1e+15",
                                  "1e+22", "1e-05", "0.1"}));
}

TEST(Labels, ByFirstUseStandAsTheNumbersFirstDo) {
  constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();
  std::vector<double> numbers = {3, kMissing, -0.0, 3, 0};
  for (int i = 0; i < 2000; ++i) numbers.push_back(i % 500);  // more than are kept at hand
  const Labels made = labelsByFirstUse(numberColumn("x", numbers));
  ASSERT_EQ(made.labels.size(), 500u);
  EXPECT_EQ(Strings(made.labels.begin(), made.labels.begin() + 5),
            (Strings{"3", "0", "1", "2", "4"}));
  EXPECT_EQ(Codes(made.codes.begin(), made.codes.begin() + 10),
            (Codes{0, kNone, 1, 0, 1, 1, 2, 3, 0, 4}));
  for (std::size_t i = 5; i < numbers.size(); ++i) {
    EXPECT_EQ(made.labels[made.codes[i]], std::to_string((i - 5) % 500));
  }
}

TEST(Labels, ByFirstUseOfTwoNumbersAndOfWhatComesLater) {
  constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();
  std::vector<double> numbers;
  for (int i = 0; i < 5000; ++i) numbers.push_back(i % 3 == 0 ? 2 : 1);
  numbers[4000] = kMissing;  // among two numbers that stand thousands of times before
  numbers[4500] = 7.5;
  numbers[4999] = -0.0;
  const Labels made = labelsByFirstUse(numberColumn("x", numbers));
  EXPECT_EQ(made.labels, (Strings{"2", "1", "7.5", "0"}));
  ASSERT_EQ(made.codes.size(), numbers.size());
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    const std::uint32_t expected = i == 4000    ? kNone
                                   : i == 4500  ? 2
                                   : i == 4999  ? 3
                                   : i % 3 == 0 ? 0
                                                : 1;
    ASSERT_EQ(made.codes[i], expected) << i;
  }
}

TEST(Labels, ByFirstUseOfOneNumberAndOfNone) {
  constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();
  const Labels one = labelsByFirstUse(numberColumn("x", std::vector<double>(3000, 4)));
  EXPECT_EQ(one.labels, (Strings{"4"}));
  EXPECT_EQ(one.codes, Codes(3000, 0));
  const Labels none = labelsByFirstUse(numberColumn("x", std::vector<double>(3000, kMissing)));
  EXPECT_TRUE(none.labels.empty());
  EXPECT_EQ(none.codes, Codes(3000, kNone));
}

TEST(Labels, OfNoRowsAreNone) {
  EXPECT_TRUE(labelsOf(labelColumn("x", Type::kText, {}, {"a"})).labels.empty());
  EXPECT_EQ(allLabelsOf(labelColumn("x", Type::kText, {}, {"a"})).counts, (Counts{0}));
}

TEST(CrossedLabels, AreTheCombinationsThatRowsHoldInTheOrderOfLabels) {
  Frame data;
  data.columns.push_back(labelColumn("sex", Type::kText, {1, 0, 1, 1}, {"m", "f"}));
  data.columns.push_back(labelColumn("rx", Type::kText, {0, 1, 0, 2}, {"10", "9", "2"}));
  data.rows = 4;
  const Labels made = crossedLabels(data, {"sex", "rx"});
  EXPECT_EQ(made.labels, (Strings{"sex=f, rx=2", "sex=f, rx=10", "sex=m, rx=9"}));
  EXPECT_EQ(made.codes, (Codes{1, 2, 1, 0}));
  EXPECT_EQ(made.counts, (Counts{1, 2, 1}));
}

}  // namespace
}  // namespace survmeth::frame
