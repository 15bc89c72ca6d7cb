// Tests of equal survival against survdiff and against sums over tables of everybody
// (tests/reference/curves/make_tests.R).
#include "engine/curves/comparison.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <map>
#include <string>

#include "tests/engine/curves/data.h"

namespace survmeth {
namespace {

using engine::curves::Adjustment;
using engine::curves::Contrast;
using engine::curves::WeightedTest;
using engine::curves::Weighting;
using test::Csv;
using test::CurveData;
using Kind = Weighting::Kind;

const std::string kFolder = std::string(SURVMETH_REFERENCE) + "/curves/";

const std::map<std::string, Weighting>& weightings() {
  static const std::map<std::string, Weighting> all = {
      {"logRank", {}},
      {"gehanBreslow", {Kind::kGehanBreslow}},
      {"taroneWare", {Kind::kTaroneWare}},
      {"petoPeto", {Kind::kPetoPeto}},
      {"modifiedPetoPeto", {Kind::kModifiedPetoPeto}},
      {"fh10", {Kind::kFlemingHarrington, 1, 0}},
      {"fh01", {Kind::kFlemingHarrington, 0, 1}},
      {"fh11", {Kind::kFlemingHarrington, 1, 1}},
      {"fhHalf", {Kind::kFlemingHarrington, 0.5, 0}}};
  return all;
}

const Csv& cases() {
  static const Csv file(kFolder + "test_cases.csv");
  return file;
}

// By case, test and item.
const std::map<std::string, std::vector<double>>& allCells() {
  static const std::map<std::string, std::vector<double>> cells = [] {
    const Csv file(kFolder + "tests.csv");
    const std::vector<double> value = file.numbers("value");
    std::map<std::string, std::vector<double>> result;
    for (std::size_t i = 0; i < file.rows(); ++i) {
      result[file.text("case", i) + " " + file.text("test", i) + " " + file.text("item", i)]
          .push_back(value[i]);
    }
    return result;
  }();
  return cells;
}

class ComparisonReference : public testing::TestWithParam<std::size_t> {
 protected:
  ComparisonReference() {
    const std::size_t at = GetParam();
    const auto text = [&](const char* column) { return cases().text(column, at); };
    name_ = text("case");
    data_ = test::curveData(text("data"), text("group"), text("weight"), "", text("stratum"));
    const Csv file(std::string(SURVMETH_REFERENCE) + "/cox/data/" + text("data") + ".csv");
    const std::vector<double> group = file.numbers(text("group"));
    scores_.resize(data_.groupCount);
    for (std::size_t i = 0; i < group.size(); ++i) scores_[data_.group[i]] = group[i];
  }

  const std::vector<double>& cells(const std::string& test, const std::string& item) const {
    return allCells().at(name_ + " " + test + " " + item);
  }
  // To 1e-9 of the larger of the value and `unit`.
  void expectNear(double actual, double expected, double unit, const std::string& where) const {
    EXPECT_NEAR(actual, expected, 1e-9 * std::max(std::fabs(expected), unit))
        << name_ << " " << where;
  }

  std::string name_;
  CurveData data_;
  std::vector<double> scores_;
};

TEST_P(ComparisonReference, TestsAreThoseOfTheDefinitions) {
  for (const auto& [name, weighting] : weightings()) {
    const auto comparison = engine::curves::compare(data_.response(), data_.rows(), data_.groups(),
                                                    std::span(&weighting, 1), scores_);
    const WeightedTest& test = comparison.tests.at(0);
    const std::size_t k = data_.groupCount;
    double spread = 0.0;  // the unit of covariances that nearly cancel
    for (std::size_t g = 0; g < k; ++g) spread = std::max(spread, test.covariance(g, g));
    for (std::size_t g = 0; g < k; ++g) {
      expectNear(test.observed[g], cells(name, "observed").at(g), 0.0, name + " observed");
      expectNear(test.expected[g], cells(name, "expected").at(g), 0.0, name + " expected");
      for (std::size_t h = 0; h < k; ++h) {
        expectNear(test.covariance(g, h), cells(name, "covariance").at(g * k + h), spread,
                   name + " covariance");
      }
    }
    // A difference that vanishes is good to 1e-9 of its standard error.
    expectNear(test.chiSquare, cells(name, "chiSquare").at(0), 1e-9, name + " chi-square");
    EXPECT_EQ(static_cast<double>(test.degreesOfFreedom), cells(name, "degreesOfFreedom").at(0));
    // A p-value multiplies the error of the statistic by half of it.
    EXPECT_NEAR(test.pValue, cells(name, "pValue").at(0),
                1e-9 * std::max(1.0, test.chiSquare) * cells(name, "pValue").at(0));
    expectNear(test.trend, cells(name, "trend").at(0), 1.0, name + " trend");
    expectNear(test.trendPValue, cells(name, "trendPValue").at(0), 1.0, name + " trend's p");
  }
}

TEST_P(ComparisonReference, ObservedAndExpectedByStratumAddUp) {
  const std::vector<Weighting> weighting = {{}};
  const auto comparison =
      engine::curves::compare(data_.response(), data_.rows(), data_.groups(), weighting);
  const auto& events = comparison.events;
  ASSERT_EQ(events.size(), cells("logRank", "n").size());
  std::vector<double> observed(data_.groupCount);
  std::vector<double> expected(data_.groupCount);
  for (std::size_t i = 0; i < events.size(); ++i) {
    EXPECT_EQ(events[i].n, cells("logRank", "n")[i]) << i;
    EXPECT_EQ(events[i].observed, cells("logRank", "observedBy")[i]) << i;
    expectNear(events[i].expected, cells("logRank", "expectedBy")[i], 0.0, "by stratum");
    observed[events[i].group] += events[i].observed;
    expected[events[i].group] += events[i].expected;
  }
  EXPECT_EQ(observed, comparison.tests[0].observed);
  for (std::size_t g = 0; g < observed.size(); ++g) {
    EXPECT_DOUBLE_EQ(expected[g], comparison.tests[0].expected[g]);
  }
}

TEST_P(ComparisonReference, PairsAreTestsOfTheirOwnRows) {
  const std::map<std::string, Adjustment> adjustments = {{"none", Adjustment::kNone},
                                                         {"holm", Adjustment::kHolm},
                                                         {"bonferroni", Adjustment::kBonferroni},
                                                         {"BH", Adjustment::kBenjaminiHochberg}};
  for (const std::string name : {"logRank", "petoPeto"}) {
    for (const auto& [adjustmentName, adjustment] : adjustments) {
      const auto pairs = engine::curves::comparePairs(
          data_.response(), data_.rows(), data_.groups(), weightings().at(name), adjustment);
      const std::vector<double>& chiSquare = cells(name, "pairs");
      ASSERT_EQ(pairs.size(), chiSquare.size());
      for (std::size_t i = 0; i < pairs.size(); ++i) {
        if (std::isnan(chiSquare[i])) {
          EXPECT_TRUE(std::isnan(pairs[i].chiSquare));
          EXPECT_TRUE(std::isnan(pairs[i].adjusted));
          continue;
        }
        // A difference that nearly vanishes is good to 1e-9 of its standard error.
        expectNear(pairs[i].chiSquare, chiSquare[i], 1e-3, name + " pair");
        expectNear(pairs[i].adjusted, cells(name, "pairs-" + adjustmentName)[i], 1.0,
                   adjustmentName);
      }
    }
  }
}

TEST_P(ComparisonReference, HazardRatiosAreThoseOfTheFormulas) {
  if (data_.groupCount != 2) return;
  const auto ratios =
      engine::curves::hazardRatios(data_.response(), data_.rows(), data_.groups(), 0.95);
  const auto compare = [&](const Contrast& c, const std::string& name) {
    const std::vector<double>& expected = cells("ratio", name);
    const double actual[] = {c.estimate, c.standardError, c.lower, c.upper, c.pValue};
    for (std::size_t i = 0; i < 5; ++i) {
      expectNear(actual[i], expected[i], i == 4 ? 1.0 : 0.0, name + " " + std::to_string(i));
    }
  };
  compare(ratios.peto, "peto");
  compare(ratios.mantelHaenszel, "mantelHaenszel");
}

// Klein & Moeschberger, Survival Analysis, 2nd ed. (2003), table 7.3: the first group's score, its
// variance and the chi-square, two decimals.
TEST(ComparisonPublished, KidneyInfectionsHaveThePrintedTests) {
  const Csv file(kFolder + "kidney.csv");
  CurveData data;
  data.exit = file.numbers("time");
  for (const double event : file.numbers("event")) data.event.push_back(event != 0.0 ? 1 : 0);
  data.group = test::codesOf(file.numbers("type"), data.groupCount);
  const std::map<std::string, std::array<double, 3>> printed = {
      {"logRank", {3.96, 6.21, 2.53}},      {"taroneWare", {13.20, 432.83, 0.40}},
      {"petoPeto", {2.47, 4.36, 1.40}},     {"modifiedPetoPeto", {2.31, 4.20, 1.28}},
      {"gehanBreslow", {-9, 38862, 0.002}}, {"fh10", {2.55, 4.69, 1.39}},
      {"fh01", {1.41, 0.21, 9.67}},         {"fh11", {1.02, 0.11, 9.83}}};
  for (const auto& [name, numbers] : printed) {
    const auto test = engine::curves::compare(data.response(), data.rows(), data.groups(),
                                              std::span(&weightings().at(name), 1))
                          .tests.at(0);
    const bool whole = name == "gehanBreslow";  // printed without decimals
    EXPECT_NEAR(test.observed[0] - test.expected[0], numbers[0], whole ? 0.5 : 0.0051) << name;
    EXPECT_NEAR(test.covariance(0, 0), numbers[1], whole ? 0.5 : 0.0055) << name;
    EXPECT_NEAR(test.chiSquare, numbers[2], whole ? 0.0005 : 0.0051) << name;
  }
}

INSTANTIATE_TEST_SUITE_P(Cases, ComparisonReference, testing::Range<std::size_t>(0, cases().rows()),
                         [](const auto& test) { return cases().text("case", test.param); });

}  // namespace
}  // namespace survmeth
