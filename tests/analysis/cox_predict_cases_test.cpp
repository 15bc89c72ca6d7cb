// Predictions of many fits against R's: strata, factors, late entry, weights, clusters, all treatments
// of ties, subjects whose covariates change. tests/reference/predict/make_cases.R makes the numbers.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "analysis/all.h"
#include "analysis/cox/predict.h"
#include "frame/reader.h"
#include "tests/support/csv.h"

namespace survmeth::analysis {
namespace {

const std::string kFolder = std::string(SURVMETH_REFERENCE) + "/predict/";

// Estimates on both sides are at most 1e-10 standard errors from the maximum; what follows from them
// is compared to 1e-9 of itself, or, where it nearly vanishes, of its standard error.
constexpr double kTolerance = 1e-9;

frame::Frame dataOf(const Declaration& declaration, const void* request, const std::string& file) {
  return frame::readFrame(file, [&](const std::vector<std::string>& header) {
    return wantedColumns(declaration, request, header);
  });
}

// The cells of a line of cases.txt, by the header's names.
using Case = std::map<std::string, std::string>;

std::vector<Case> cases() {
  std::ifstream file(kFolder + "cases.txt");
  const auto cells = [&file] {
    std::vector<std::string> all;
    std::string line;
    std::getline(file, line);
    std::stringstream stream(line);
    for (std::string cell; std::getline(stream, cell, '\t');) all.push_back(cell);
    return all;
  };
  const std::vector<std::string> names = cells();
  std::vector<Case> made;
  for (auto values = cells(); !values.empty(); values = cells()) {
    Case& each = made.emplace_back();
    for (std::size_t i = 0; i < names.size(); ++i) each[names[i]] = values[i];
  }
  return made;
}

std::shared_ptr<const CoxSaved> fitOf(const Case& which) {
  const Declaration cox = coxDeclaration();
  const auto request = cox.request();
  const auto set = [&](const char* option, const std::string& text) {
    if (!text.empty()) cox.find(option)->set(request.get(), Setting(text));
  };
  set("formula", which.at("formula"));
  set("ties", which.at("ties") == "exact" ? "discrete" : which.at("ties"));
  set("weights", which.at("weights"));
  cox.find("robust")->set(request.get(), Setting(which.at("robust") == "yes"));
  const std::string file =
      std::string(SURVMETH_REFERENCE) + "/cox/data/" + which.at("data") + ".csv";
  const frame::Frame data = dataOf(cox, request.get(), file);
  numerics::Progress progress;
  const Fitted fitted = analyse(cox, data, request.get(), progress);
  return std::static_pointer_cast<const CoxSaved>(
      cox.lasting->of(data, fitted.result.get(), request.get(), progress));
}

class Predicted : public ::testing::TestWithParam<Case> {
 protected:
  Predicted()
      : fit_(fitOf(GetParam())),
        table_(kFolder + "cases/" + GetParam().at("case") + ".csv"),
        declaration_(coxPredictDeclaration()) {}

  CoxPredictions predicted(CoxPredictRequest request, bool bySubject = false) const {
    request.fit = fit_;
    if (bySubject) request.subject = "who";
    const std::string file = kFolder + "cases/" + GetParam().at("case") + "_new.csv";
    const frame::Frame data = dataOf(declaration_, &request, file);
    numerics::Progress progress;
    return predictCox(*fit_, data, request, progress);
  }

  // The lines of a quantity, by number.
  std::vector<std::size_t> lines(const std::string& quantity,
                                 const std::string& limits = "") const {
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < table_.rows(); ++i) {
      if (table_.text("quantity", i) == quantity && table_.text("limits", i) == limits) {
        found.push_back(i);
      }
    }
    return found;
  }

  void expectNear(double value, std::size_t line, const char* column) const {
    const double expected = table_.number(column, line);
    const std::string what = table_.text("who", line) + " " + table_.text("quantity", line) + " " +
                             table_.text("limits", line) + " " + table_.text("at", line) + " " +
                             column;
    if (std::isnan(expected)) {
      EXPECT_TRUE(std::isnan(value)) << what << " is " << value;
      return;
    }
    const double error = table_.number("error", line);
    const double size = std::max(std::fabs(expected), std::isnan(error) ? 0.0 : std::fabs(error));
    EXPECT_LE(std::fabs(value - expected), kTolerance * size) << what << " " << expected;
  }

  static std::size_t place(const std::vector<double>& values, double value) {
    return static_cast<std::size_t>(std::find(values.begin(), values.end(), value) -
                                    values.begin());
  }

  std::shared_ptr<const CoxSaved> fit_;
  test::Csv table_;
  Declaration declaration_;
};

TEST_P(Predicted, PredictorsAndTermsAreRs) {
  for (const auto& [name, reference] : {std::pair("sample", CoxReference::kMeans),
                                        {"strata", CoxReference::kStrata},
                                        {"zero", CoxReference::kZero}}) {
    const std::vector<std::size_t> predictors = lines(std::string("predictor ") + name);
    if (predictors.empty()) continue;  // without strata
    CoxPredictRequest request;
    request.centre = reference;
    request.parts = true;
    const CoxPredictions made = predicted(request);
    for (const std::size_t line : predictors) {
      const auto row = static_cast<std::size_t>(table_.number("who", line)) - 1;
      expectNear(made.predictor[row], line, "value");
      expectNear(made.standardError[row], line, "error");
    }
    for (const std::size_t line : lines(std::string("term ") + name)) {
      const auto row = static_cast<std::size_t>(table_.number("who", line)) - 1;
      const auto term = std::find_if(made.terms.begin(), made.terms.end(), [&](const auto& each) {
        std::string text = each.name;
        std::erase_if(text, [](char c) { return c == ' ' || c == ','; });
        return text == table_.text("at", line);
      });
      ASSERT_NE(term, made.terms.end()) << table_.text("at", line);
      expectNear(term->value[row], line, "value");
      expectNear(term->standardError[row], line, "error");
    }
  }
}

TEST_P(Predicted, CurvesAndQuantilesAreRs) {
  if (!fit_->hazard) return;
  for (const auto& [name, limits] : {std::pair("log-log", engine::curves::Scale::kLogLog),
                                     {"log", engine::curves::Scale::kLog},
                                     {"plain", engine::curves::Scale::kPlain}}) {
    CoxPredictRequest request;
    request.survivalLimits = limits;
    request.quantiles = {0.1, 0.25, 0.5};
    std::stringstream times(GetParam().at("times"));
    for (std::string time; std::getline(times, time, ';');) request.at.push_back(std::stod(time));
    const CoxPredictions rows = predicted(request);
    const bool late = GetParam().at("formula").find("start") != std::string::npos;
    const CoxPredictions subjects = late ? predicted(request, true) : CoxPredictions();
    const auto of = [&](std::size_t line) -> std::pair<const CoxPredictions&, std::size_t> {
      const std::string& who = table_.text("who", line);
      if (who == "a") return {subjects, 0};
      if (who == "b") return {subjects, 1};
      return {rows, static_cast<std::size_t>(std::stod(who)) - 1};
    };
    const std::vector<std::size_t> survivals = lines("survival", name);
    EXPECT_GT(survivals.size(), 0u);
    for (const std::size_t line : survivals) {
      const auto& [made, i] = of(line);
      const CoxSurvival& point = made.at[i][place(request.at, table_.number("at", line))];
      expectNear(point.survival, line, "value");
      expectNear(point.error, line, "error");
      expectNear(point.lower, line, "lower");
      expectNear(point.upper, line, "upper");
    }
    for (const std::size_t line : lines("hazard")) {
      const auto& [made, i] = of(line);
      const CoxSurvival& point = made.at[i][place(request.at, table_.number("at", line))];
      expectNear(point.hazard, line, "value");
      expectNear(point.hazardError, line, "error");
    }
    for (const std::size_t line : lines("quantile", name)) {
      const auto& [made, i] = of(line);
      const auto& quantile = made.quantiles[i][place(request.quantiles, table_.number("at", line))];
      expectNear(quantile.time, line, "value");
      expectNear(quantile.lower, line, "lower");
      expectNear(quantile.upper, line, "upper");
    }
  }
}

TEST_P(Predicted, ExpectedEventsAreRs) {
  if (!fit_->hazard) return;
  CoxPredictRequest request;
  request.expected = true;
  const CoxPredictions made = predicted(request);
  for (const std::size_t line : lines("expected")) {
    const auto row = static_cast<std::size_t>(table_.number("who", line)) - 1;
    expectNear(made.expected[row].hazard, line, "value");
    expectNear(made.expected[row].standardError, line, "error");
  }
}

INSTANTIATE_TEST_SUITE_P(Cox, Predicted, ::testing::ValuesIn(cases()),
                         [](const auto& each) { return each.param.at("case"); });

}  // namespace
}  // namespace survmeth::analysis
