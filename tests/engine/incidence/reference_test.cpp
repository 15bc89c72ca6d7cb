// Incidences, times lost and Gray's tests of public data sets against R's cmprsk, etm and survival
// (tests/reference/incidence/make.R).
//
// Both sides sum the same terms in double precision, R's variances by sums that cancel; what is
// left is below 1e-9 of the larger of the value and its standard error.
#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "engine/incidence/gray.h"
#include "engine/incidence/lost.h"
#include "tests/engine/incidence/data.h"

namespace survmeth {
namespace {

using engine::incidence::Curve;
using engine::incidence::Variance;
using test::Csv;

const std::string kFolder = std::string(SURVMETH_REFERENCE) + "/incidence/";

using Item = std::map<std::string, std::vector<double>>;  // of one cause; cause 0: of the group
using Groups = std::map<std::size_t, std::map<std::size_t, Item>>;

const std::map<std::string, Groups>& allCells() {
  static const std::map<std::string, Groups> cells = [] {
    const Csv file(kFolder + "cells.csv");
    const std::vector<double> group = file.numbers("group");
    const std::vector<double> cause = file.numbers("cause");
    const std::vector<double> value = file.numbers("value");
    std::map<std::string, Groups> result;
    for (std::size_t i = 0; i < file.rows(); ++i) {
      result[file.text("case", i)][static_cast<std::size_t>(group[i])]
            [static_cast<std::size_t>(cause[i])][file.text("item", i)]
                .push_back(value[i]);
    }
    return result;
  }();
  return cells;
}

const Csv& cases() {
  static const Csv file(kFolder + "cases.csv");
  return file;
}

Variance varianceOf(const std::string& word) {
  if (word == "aalen") return Variance::kAalen;
  return word == "delta" ? Variance::kDelta : Variance::kRobust;
}

class IncidenceReference : public testing::TestWithParam<std::size_t> {};

void expectValues(const char* item, const Item& of, const std::vector<double>& actual,
                  const std::vector<double>& scale) {
  const auto found = of.find(item);
  if (found == of.end()) return;
  ASSERT_EQ(found->second.size(), actual.size()) << item;
  for (std::size_t i = 0; i < actual.size(); ++i) {
    EXPECT_NEAR(actual[i], found->second[i], 1e-9 * std::max(std::fabs(found->second[i]), scale[i]))
        << item << " " << i;
  }
}

TEST_P(IncidenceReference, HasTheSameNumbers) {
  const std::size_t at = GetParam();
  const auto text = [&](const char* column) { return cases().text(column, at); };
  const test::CauseData data =
      test::causeData(text("data"), text("group"), text("weight"), text("cluster"));
  const Variance variance = varianceOf(text("variance"));
  const engine::incidence::Causes sorted = data.sorted();
  const std::vector<Curve> curves = engine::incidence::estimate(sorted, data.rows(), variance);
  const double tau = cases().number("tau", at);
  for (const auto& [group, causes] : allCells().at(text("case"))) {
    const Curve& curve = curves[group];
    const std::vector<double>& times = causes.at(0).at("time");
    for (const auto& [cause, items] : causes) {
      if (cause == 0) continue;
      SCOPED_TRACE(text("case") + " group " + std::to_string(group) + " cause " +
                   std::to_string(cause));
      const engine::incidence::CauseCurve& of = curve.causes[cause - 1];
      std::vector<double> incidence, error, hazard, hazardError;
      for (const double time : times) {
        const auto after = std::upper_bound(curve.time.begin(), curve.time.end(), time);
        const auto i = static_cast<std::size_t>(after - curve.time.begin()) - 1;
        incidence.push_back(of.incidence[i]);
        error.push_back(of.standardError(i));
        hazard.push_back(of.hazard[i]);
        hazardError.push_back(std::sqrt(of.hazardVariance[i]));
      }
      expectValues("incidence", items, incidence, error);
      expectValues("error", items, error, incidence);
      expectValues("hazard", items, hazard, hazardError);
      expectValues("hazardError", items, hazardError, hazard);
      const auto lost = engine::incidence::timesLost(sorted, data.rows(), curves, cause - 1,
                                                     variance, tau, 0.95)[group];
      expectValues("lost", items, {lost.lost}, {lost.standardError});
      expectValues("lostError", items, {lost.standardError}, {lost.lost});
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Cases, IncidenceReference, testing::Range<std::size_t>(0, cases().rows()),
                         [](const auto& of) { return cases().text("case", of.param); });

// Each test's statistic is a quadratic form in the inverse of a covariance, formed in another order.
TEST(GrayReference, TestsOfAllGroupsAndOfPairsAgreeWithCmprsk) {
  const Csv tests(kFolder + "tests.csv");
  std::map<std::string, test::CauseData> sets;
  for (std::size_t i = 0; i < tests.rows(); ++i) {
    const std::string stratum = tests.text("stratum", i), weight = tests.text("weight", i);
    const std::string name = tests.text("data", i);
    SCOPED_TRACE(name + " " + stratum + weight + " cause " + tests.text("cause", i) + " rho " +
                 tests.text("rho", i));
    test::CauseData& data = sets[name + "/" + stratum + weight];
    if (data.exit.empty()) data = test::causeData(name, "group", weight, "", stratum);
    engine::incidence::GrayOptions options;
    options.cause = static_cast<std::uint32_t>(tests.number("cause", i));
    options.rho = tests.number("rho", i);
    const double statistic = tests.number("stat", i), first = tests.number("first", i);
    if (first < 0) {
      const auto found =
          engine::incidence::grayTest(data.response(), data.rows(), data.groups(), options);
      EXPECT_EQ(found.reason, "");
      EXPECT_NEAR(found.chiSquare, statistic, 1e-9 * std::max(statistic, 1.0));
      EXPECT_NEAR(found.pValue, tests.number("pv", i), 1e-9);
      EXPECT_EQ(found.degreesOfFreedom, tests.number("df", i));
      continue;
    }
    const auto pairs = engine::incidence::grayPairs(data.response(), data.rows(), data.groups(),
                                                    options, engine::curves::Adjustment::kHolm);
    const auto pair = std::find_if(pairs.begin(), pairs.end(), [&](const auto& each) {
      return each.first == first && each.second == tests.number("second", i);
    });
    ASSERT_NE(pair, pairs.end());
    EXPECT_NEAR(pair->chiSquare, statistic, 1e-9 * std::max(statistic, 1.0));
    EXPECT_NEAR(pair->pValue, tests.number("pv", i), 1e-9);
  }
}

}  // namespace
}  // namespace survmeth
