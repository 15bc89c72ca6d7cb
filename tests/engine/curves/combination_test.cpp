// The largest of weighted tests against sums over tables of everybody and another program's joint
// law (tests/reference/curves/make_combination.R), its properties, and the words of its refusals.
#include "engine/curves/combination.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <map>
#include <string>

#include "Dist/Dist"
#include "engine/curves/normalRectangle.h"
#include "tests/engine/curves/data.h"

namespace survmeth {
namespace {

using engine::Refusal;
using engine::Role;
using engine::curves::Adjustment;
using engine::curves::Alternative;
using engine::curves::Combination;
using engine::curves::CombinationPair;
using engine::curves::Weighting;
using test::Csv;
using test::CurveData;
using Kind = Weighting::Kind;

const std::string kFolder = std::string(SURVMETH_REFERENCE) + "/curves/";
const std::map<std::string, Alternative> kSides = {{"twoSided", Alternative::kTwoSided},
                                                   {"greater", Alternative::kGreater},
                                                   {"less", Alternative::kLess}};

// By case, pair and item.
const std::map<std::string, std::vector<double>>& allCells() {
  static const std::map<std::string, std::vector<double>> cells = [] {
    const Csv file(kFolder + "combination.csv");
    const std::vector<double> value = file.numbers("value");
    std::map<std::string, std::vector<double>> result;
    for (std::size_t i = 0; i < file.rows(); ++i) {
      result[file.text("case", i) + " " + file.text("first", i) + " " + file.text("second", i) +
             " " + file.text("item", i)]
          .push_back(value[i]);
    }
    return result;
  }();
  return cells;
}

const Csv& cases() {
  static const Csv file(kFolder + "test_cases.csv");
  return file;
}

CurveData dataOf(std::size_t at) {
  const auto text = [&](const char* column) { return cases().text(column, at); };
  return test::curveData(text("data"), text("group"), text("weight"), "", text("stratum"));
}

std::vector<CombinationPair> pairsOf(const CurveData& data, Alternative alternative) {
  return engine::curves::combinePairs(data.response(), data.rows(), data.groups(),
                                      engine::curves::usualCombination(), alternative,
                                      Adjustment::kHolm);
}

Combination combined(const CurveData& data,
                     std::span<const Weighting> weightings = engine::curves::usualCombination(),
                     Alternative alternative = Alternative::kTwoSided) {
  return engine::curves::combine(data.response(), data.rows(), data.groups(), weightings,
                                 alternative);
}

class CombinationReference : public testing::TestWithParam<std::size_t> {};

TEST_P(CombinationReference, IsThatOfTheDefinitionAndTheJointLaw) {
  const std::string name = cases().text("case", GetParam());
  const CurveData data = dataOf(GetParam());
  for (const auto& [side, alternative] : kSides) {
    for (const CombinationPair& pair : pairsOf(data, alternative)) {
      const std::string key =
          name + " " + std::to_string(pair.first) + " " + std::to_string(pair.second) + " ";
      const auto found = allCells().find(key + "z");
      if (found == allCells().end()) {
        EXPECT_TRUE(std::isnan(pair.test.pValue)) << key;
        continue;
      }
      for (std::size_t i = 0; i < 4; ++i) {
        if (std::isnan(found->second[i])) {
          EXPECT_TRUE(std::isnan(pair.test.z[i])) << key << i;
          continue;
        }
        // A score that nearly vanishes is good to 1e-9 of its standard error.
        EXPECT_NEAR(pair.test.z[i], found->second[i],
                    1e-9 * std::max(1.0, std::fabs(found->second[i])))
            << key << i;
        for (std::size_t j = 0; j < 4; ++j) {
          EXPECT_NEAR(pair.test.correlation(i, j), allCells().at(key + "correlation")[4 * i + j],
                      1e-9)
              << key << i << j;
        }
      }
      if (allCells().count(key + side) == 0) {
        EXPECT_TRUE(std::isnan(pair.test.pValue)) << key;
        continue;
      }
      // The other program's value is random, and so is the bound of the error that goes with it.
      const std::vector<double>& expected = allCells().at(key + side);
      if (std::isnan(expected[0])) continue;  // it has none for weights that nearly agree
      EXPECT_NEAR(pair.test.pValue, expected[0], std::max(3.0 * expected[1], 1e-12)) << key << side;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Cases, CombinationReference,
                         testing::Range<std::size_t>(0, cases().rows()),
                         [](const auto& test) { return cases().text("case", test.param); });

// Group 1 fails later at first and sooner in the end: all of it from 18 to 23, of group 0 most
// before and the others after.
CurveData crossing() {
  CurveData data;
  data.groupCount = 2;
  for (int i = 0; i < 20; ++i) {
    data.exit.push_back(i < 16 ? 1.0 + i : 31.0 + i);
    data.group.push_back(0);
    data.exit.push_back(18.0 + 0.25 * i);
    data.group.push_back(1);
  }
  data.event.assign(40, 1);
  return data;
}

TEST(Combination, CostsLessThanBonferroniAndMoreThanTheSmallestAlone) {
  const CurveData data = crossing();
  const Combination test = combined(data);
  const double smallest = *std::min_element(test.alone.begin(), test.alone.end());
  EXPECT_EQ(test.alone[test.largest], smallest);
  EXPECT_GT(test.pValue, smallest);
  EXPECT_LT(test.pValue, 4.0 * smallest);
}

TEST(Combination, EarlyAndLateDifferencesHaveOppositeSignsWhereCurvesCross) {
  const Combination test = combined(crossing());
  EXPECT_LT(test.z[1], -1.9);
  EXPECT_GT(test.z[2], 1.9);
}

TEST(Combination, OfOneWeightIsThatTest) {
  const CurveData data = crossing();
  const std::vector<Weighting> one = {{}};
  const Combination test = combined(data, one);
  const auto compared =
      engine::curves::compare(data.response(), data.rows(), data.groups(), one).tests[0];
  EXPECT_NEAR(test.pValue, compared.pValue, 1e-12 * compared.pValue);
  EXPECT_NEAR(test.z[0] * test.z[0], compared.chiSquare, 1e-12 * compared.chiSquare);
}

TEST(Combination, TheSameWeightTwiceChangesNothing) {
  const CurveData data = crossing();
  const std::vector<Weighting> once = {{Kind::kFlemingHarrington, 1, 0}, {Kind::kGehanBreslow}};
  const std::vector<Weighting> twice = {
      {Kind::kFlemingHarrington, 1, 0}, {Kind::kGehanBreslow}, {Kind::kFlemingHarrington, 1, 0}};
  const double expected = combined(data, once).pValue;
  EXPECT_NEAR(combined(data, twice).pValue, expected, 1e-12);
}

TEST(Combination, ExchangingTheGroupsTurnsTheSigns) {
  CurveData data = crossing();
  const Combination test = combined(data);
  const double less = combined(data, engine::curves::usualCombination(), Alternative::kLess).pValue;
  for (std::uint32_t& group : data.group) group = 1 - group;
  const Combination turned = combined(data);
  EXPECT_NEAR(turned.pValue, test.pValue, 1e-12);
  for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(turned.z[i], -test.z[i], 1e-12);
  EXPECT_NEAR(combined(data, engine::curves::usualCombination(), Alternative::kGreater).pValue,
              less, 1e-12);
}

TEST(Combination, AWeightWithoutVarianceTakesNoPart) {
  // All events at one time: the curve is at 1 before it, so late differences have no weight.
  CurveData data;
  data.exit = {1, 1, 2, 1, 2, 2};
  data.event = {1, 1, 0, 1, 0, 0};
  data.group = {0, 0, 0, 1, 1, 1};
  data.groupCount = 2;
  const Combination test = combined(data);
  EXPECT_TRUE(std::isnan(test.z[2]));
  EXPECT_TRUE(std::isnan(test.alone[3]));
  // One of three of the second group fails, 3/2 expected; variance 3 (3 / 5) / 4.
  EXPECT_DOUBLE_EQ(test.z[0], -0.5 / std::sqrt(0.45));
  EXPECT_NEAR(test.pValue, 2 * CDFNormalStd(-0.5 / std::sqrt(0.45)), 1e-15);
}

TEST(Combination, WithoutAnEventThereIsNoTest) {
  CurveData data = crossing();
  data.event.assign(40, 0);
  const Combination test = combined(data);
  EXPECT_TRUE(std::isnan(test.statistic));
  EXPECT_TRUE(std::isnan(test.pValue));
}

TEST(Combination, PairsOfTwoGroupsAreTheTestItself) {
  const CurveData data = crossing();
  const auto pairs = pairsOf(data, Alternative::kTwoSided);
  ASSERT_EQ(pairs.size(), 1U);
  EXPECT_EQ(pairs[0].test.pValue, combined(data).pValue);
  EXPECT_EQ(pairs[0].adjusted, pairs[0].test.pValue);
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

TEST(CombinationRefusals, NameWhatIsWrong) {
  CurveData data = crossing();
  const std::vector<Weighting> five(5);
  expectRefusal([&] { combined(data, five); }, Role::kRho, "a combination is of 1 to 4 weights");
  expectRefusal([&] { combined(data, {}); }, Role::kRho, "a combination is of 1 to 4 weights");
  const std::vector<Weighting> negative = {{Kind::kFlemingHarrington, 0, -1}};
  expectRefusal([&] { combined(data, negative); }, Role::kRho,
                "the powers of the weights are not numbers from 0");
  data.groupCount = 3;
  expectRefusal([&] { combined(data); }, Role::kGroup, "a combination of tests is of two groups");
}

}  // namespace
}  // namespace survmeth
