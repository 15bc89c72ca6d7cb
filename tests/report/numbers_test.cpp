// Digits for people, by what a number is.
#include "report/numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace survmeth::report {
namespace {

const double kNone = std::nan("");
constexpr double kInfinite = std::numeric_limits<double>::infinity();

std::vector<std::string> column(Kind kind, const std::vector<double>& values,
                                int digits = kEstimateDigits) {
  const Format format = formatOf(kind, values, digits);
  std::vector<std::string> texts;
  for (const double value : values) texts.push_back(shown(value, format));
  return texts;
}

using Texts = std::vector<std::string>;

TEST(PValue, HasFourDecimals) {
  EXPECT_EQ(pValue(0.03124), "0.0312");
  EXPECT_EQ(pValue(1), "1.0000");
}

TEST(PValue, BelowOneInTenThousandIsABound) {
  EXPECT_EQ(pValue(0.0001), "0.0001");
  EXPECT_EQ(pValue(std::nextafter(0.0001, 0)), "<0.0001");
  EXPECT_EQ(pValue(1e-300), "<0.0001");
  EXPECT_EQ(pValue(0), "<0.0001");
  EXPECT_EQ(pValue(0.00014999), "0.0001");
  EXPECT_EQ(pValue(0.00015001), "0.0002");
}

TEST(PValue, ThatDoesNotExistIsADash) { EXPECT_EQ(pValue(kNone), "-"); }

TEST(Estimates, OfOneColumnShareTheirDecimals) {
  EXPECT_EQ(column(Kind::kEstimate, {0.0110411, 0.55189, 0.462947}),
            (Texts{"0.01104", "0.55189", "0.46295"}));
  EXPECT_EQ(column(Kind::kEstimate, {2.11765, 38.7651, -73.8606}),
            (Texts{"2.118", "38.765", "-73.861"}));
}

TEST(Estimates, TheSmallestKeepsThreeDigits) {
  EXPECT_EQ(column(Kind::kEstimate, {0.000123456, 1.5}), (Texts{"0.000123", "1.500000"}));
}

TEST(Estimates, TooDifferentInSizeAreShownEachByItself) {
  EXPECT_EQ(column(Kind::kEstimate, {1e-300, 100.25}), (Texts{"1e-300", "100.25"}));
  EXPECT_EQ(column(Kind::kEstimate, {1.5, 1e300}), (Texts{"1.5", "1e+300"}));
}

TEST(Estimates, HaveTheDigitsThatAreAskedFor) {
  EXPECT_EQ(column(Kind::kEstimate, {1.7365314, 0.5518903}, 3), (Texts{"1.737", "0.552"}));
  EXPECT_EQ(column(Kind::kEstimate, {1.7365314}, 3), (Texts{"1.74"}));
  EXPECT_EQ(column(Kind::kEstimate, {1.7365314}, 8), (Texts{"1.7365314"}));
  EXPECT_EQ(column(Kind::kEstimate, {17.4}, 1), (Texts{"17"}));
}

TEST(Estimates, DropTheZerosThatAllHave) {
  EXPECT_EQ(column(Kind::kEstimate, {0.5, 2}), (Texts{"0.5", "2.0"}));
  EXPECT_EQ(column(Kind::kEstimate, {3, 20, -100}), (Texts{"3", "20", "-100"}));
}

TEST(Estimates, ThatRoundToAnotherPowerOfTenKeepTheirDigits) {
  EXPECT_EQ(column(Kind::kEstimate, {9.999996}), (Texts{"10"}));
  EXPECT_EQ(column(Kind::kEstimate, {0.09999994}, 3), (Texts{"0.1"}));
}

TEST(Numbers, ThatDoNotExistOrAreInfiniteDoNotCount) {
  EXPECT_EQ(column(Kind::kTime, {kNone, 23, kInfinite, -kInfinite}),
            (Texts{"-", "23", "inf", "-inf"}));
  EXPECT_EQ(column(Kind::kEstimate, {kNone}), (Texts{"-"}));
  EXPECT_EQ(column(Kind::kEstimate, {}), Texts{});
}

TEST(Numbers, NegativeZeroIsShownAsZero) {
  EXPECT_EQ(column(Kind::kEstimate, {-0.0, 1.5}), (Texts{"0.0", "1.5"}));
  EXPECT_EQ(column(Kind::kStatistic, {-0.0001}), (Texts{"0.000"}));
  EXPECT_EQ(column(Kind::kEstimate, {-0.0}), (Texts{"0"}));
}

TEST(Counts, WholeNumbersAreShownInFull) {
  EXPECT_EQ(column(Kind::kCount, {1234567, 3}), (Texts{"1234567", "3"}));
  EXPECT_EQ(column(Kind::kCount, {9007199254740993.0}), (Texts{"9.0072e+15"}));
}

TEST(Counts, SumsOfFractionalWeightsShareTheirDecimals) {
  EXPECT_EQ(column(Kind::kCount, {21, 10.5}), (Texts{"21.0", "10.5"}));
}

TEST(Times, HaveSixDigits) {
  EXPECT_EQ(column(Kind::kTime, {1095.726, 365.25}), (Texts{"1095.73", "365.25"}));
}

TEST(Probabilities, HaveFourDecimals) {
  EXPECT_EQ(column(Kind::kProbability, {0.857142857, 1, 0}), (Texts{"0.8571", "1.0000", "0.0000"}));
}

TEST(Statistics, HaveThreeDecimals) {
  EXPECT_EQ(column(Kind::kStatistic, {16.79294, -729.48870}), (Texts{"16.793", "-729.489"}));
}

TEST(Exact, ReadsBackAsTheSameDouble) {
  EXPECT_EQ(exact(0.1), "0.1");
  EXPECT_EQ(exact(1.0 / 3), "0.3333333333333333");
  EXPECT_EQ(exact(kNone), "-");
  EXPECT_EQ(exact(-kInfinite), "-inf");
}

}  // namespace
}  // namespace survmeth::report
