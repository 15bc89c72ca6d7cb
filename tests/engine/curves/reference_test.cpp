// Curves of public data sets against R's survival (tests/reference/curves/make.R).
//
// Both sides sum the same terms in double precision; what is left after thousands of them is below
// 1e-9 of the larger of the value and its standard error.
#include <gtest/gtest.h>

#include <cmath>

#include "engine/curves/means.h"
#include "engine/curves/quantiles.h"
#include "engine/curves/rates.h"
#include "tests/engine/curves/data.h"

namespace survmeth {
namespace {

using engine::curves::Curve;
using engine::curves::Options;
using test::Csv;

const std::string kFolder = std::string(SURVMETH_REFERENCE) + "/curves/";

struct Cell {
  std::size_t index;
  double value;
};
using Cells = std::map<std::string, std::vector<Cell>>;  // by item

// The cells of each case's groups.
const std::map<std::string, std::vector<Cells>>& allCells() {
  static const std::map<std::string, std::vector<Cells>> cells = [] {
    const Csv file(kFolder + "cells.csv");
    const std::vector<double> group = file.numbers("group");
    const std::vector<double> index = file.numbers("index");
    const std::vector<double> value = file.numbers("value");
    std::map<std::string, std::vector<Cells>> result;
    for (std::size_t i = 0; i < file.rows(); ++i) {
      std::vector<Cells>& groups = result[file.text("case", i)];
      groups.resize(std::max(groups.size(), static_cast<std::size_t>(group[i]) + 1));
      groups[static_cast<std::size_t>(group[i])][file.text("item", i)].push_back(
          {static_cast<std::size_t>(index[i]), value[i]});
    }
    return result;
  }();
  return cells;
}

const Csv& cases() {
  static const Csv file(kFolder + "cases.csv");
  return file;
}

std::vector<double> numbers(const std::string& text) {
  std::vector<double> result;
  std::stringstream stream(text);
  for (std::string part; std::getline(stream, part, ';');) result.push_back(std::stod(part));
  return result;
}

class CurvesReference : public testing::TestWithParam<std::size_t> {
 protected:
  CurvesReference() {
    const std::size_t at = GetParam();
    const auto text = [&](const char* column) { return cases().text(column, at); };
    name_ = text("case");
    data_ = test::curveData(text("data"), text("group"), text("weight"), text("cluster"));
    using engine::curves::Scale;
    static const std::map<std::string, Scale> scales = {{"plain", Scale::kPlain},
                                                        {"log", Scale::kLog},
                                                        {"log-log", Scale::kLogLog},
                                                        {"logit", Scale::kLogit},
                                                        {"arcsin", Scale::kArcsine}};
    options_.scale = scales.at(text("conf"));
    options_.level = cases().number("level", at);
    options_.robust = text("robust") == "1";
    if (text("stype") == "2") options_.survival = engine::curves::Survival::kExponential;
    if (text("ctype") == "2") options_.ties = engine::curves::HazardTies::kFlemingHarrington;
  }

  template <typename Actual, typename Scale>
  void compare(const Cells& cells, const std::string& item, Actual actual, Scale scale) const {
    const auto found = cells.find(item);
    if (found == cells.end()) return;
    for (const Cell& cell : found->second) {
      const double value = actual(cell.index);
      const std::string where = name_ + ": " + item + " " + std::to_string(cell.index);
      if (std::isnan(cell.value)) {
        EXPECT_TRUE(std::isnan(value)) << where << ": " << value;
        continue;
      }
      EXPECT_NEAR(value, cell.value, 1e-9 * std::max(std::fabs(cell.value), scale(cell.index)))
          << where;
    }
  }
  template <typename Actual>
  void compare(const Cells& cells, const std::string& item, Actual actual) const {
    compare(cells, item, actual, [](std::size_t) { return 0.0; });
  }

  std::string name_;
  test::CurveData data_;
  Options options_;
};

TEST_P(CurvesReference, CurvesAreThoseOfSurvfit) {
  const std::vector<Curve> curves = data_.curves(options_);
  const std::vector<Cells>& groups = allCells().at(name_);
  ASSERT_EQ(curves.size(), groups.size());
  for (std::size_t g = 0; g < groups.size(); ++g) {
    const Curve& curve = curves[g];
    const Cells& cells = groups[g];
    ASSERT_EQ(curve.time.size(), static_cast<std::size_t>(cells.at("times")[0].value));
    const auto at = [](const std::vector<double>& column) {
      return [&column](std::size_t i) { return column.at(i); };
    };
    const auto error = [&](std::size_t i) {
      return std::isnan(curve.standardError(i)) ? 0.0 : curve.standardError(i);
    };
    compare(cells, "time", at(curve.time));
    compare(cells, "atRisk", at(curve.atRisk));
    compare(cells, "events", at(curve.eventsAt));
    compare(cells, "censored", at(curve.censoredAt));
    compare(cells, "survival", at(curve.survival), error);
    compare(cells, "survivalError", [&](std::size_t i) { return curve.standardError(i); });
    compare(cells, "lower", at(curve.lower), error);
    compare(cells, "upper", at(curve.upper), error);
    compare(cells, "hazard", at(curve.hazard));
    compare(cells, "hazardError", [&](std::size_t i) { return curve.hazardError(i); });
  }
}

TEST_P(CurvesReference, QuantilesAreThoseOfSurvfit) {
  const std::vector<Curve> curves = data_.curves(options_);
  const std::vector<Cells>& groups = allCells().at(name_);
  for (std::size_t g = 0; g < groups.size(); ++g) {
    const auto quantiles =
        engine::curves::quantiles(curves[g], std::vector<double>{0.1, 0.25, 0.5, 0.75, 0.9});
    compare(groups[g], "quantile", [&](std::size_t i) { return quantiles.at(i).time; });
    compare(groups[g], "quantileLower", [&](std::size_t i) { return quantiles.at(i).lower; });
    compare(groups[g], "quantileUpper", [&](std::size_t i) { return quantiles.at(i).upper; });
  }
}

TEST_P(CurvesReference, ReadingsAreThoseOfItsSummary) {
  const std::vector<Curve> curves = data_.curves(options_);
  const std::vector<Cells>& groups = allCells().at(name_);
  const std::vector<double> time = numbers(cases().text("at", GetParam()));
  const auto table =
      engine::curves::riskTable(data_.response(), data_.rows(), data_.groups(), time);
  for (std::size_t g = 0; g < groups.size(); ++g) {
    const auto readings = engine::curves::readings(curves[g], time, true, options_.scale);
    compare(groups[g], "survivalAt", [&](std::size_t i) { return readings.at(i).survival; });
    compare(groups[g], "lowerAt", [&](std::size_t i) { return readings.at(i).lower; });
    compare(groups[g], "upperAt", [&](std::size_t i) { return readings.at(i).upper; });
    compare(groups[g], "atRiskAt", [&](std::size_t i) { return table[g].at(i).atRisk; });
    compare(groups[g], "eventsAt", [&](std::size_t i) { return table[g].at(i).events; });
  }
}

TEST_P(CurvesReference, RestrictedMeansAreThoseOfItsSummary) {
  const std::vector<Curve> curves = data_.curves(options_);
  const std::vector<Cells>& groups = allCells().at(name_);
  const auto means = engine::curves::restrictedMeans(data_.sample(), data_.rows(), curves, options_,
                                                     cases().number("tau", GetParam()));
  for (std::size_t g = 0; g < groups.size(); ++g) {
    compare(groups[g], "mean", [&](std::size_t) { return means[g].mean; });
    compare(groups[g], "meanError", [&](std::size_t) { return means[g].standardError; });
  }
}

INSTANTIATE_TEST_SUITE_P(Cases, CurvesReference, testing::Range<std::size_t>(0, cases().rows()),
                         [](const auto& test) { return cases().text("case", test.param); });

}  // namespace
}  // namespace survmeth
