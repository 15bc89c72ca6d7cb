// Subdistribution hazards of public data sets against R's cmprsk and survival
// (tests/reference/incidence/make_finegray.R).
//
// Both sides stand at the maximum of the same function; coefficients are compared in units of their
// standard errors, covariances in those of their two errors. R's last Newton step leaves some 1e-9.
#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "tests/engine/finegray/data.h"
#include "tests/support/page.h"

namespace survmeth {
namespace {

using engine::finegray::CensoringTies;
using engine::finegray::Errors;
using engine::finegray::Fit;
using test::Csv;

const std::string kFolder = std::string(SURVMETH_REFERENCE) + "/incidence/";

using Items = std::map<std::string, std::vector<double>>;

const std::map<std::string, Items>& allItems() {
  static const std::map<std::string, Items> items = [] {
    const Csv file(kFolder + "finegray.csv");
    const std::vector<double> value = file.numbers("value");
    std::map<std::string, Items> result;
    for (std::size_t i = 0; i < file.rows(); ++i) {
      result[file.text("case", i)][file.text("item", i)].push_back(value[i]);
    }
    return result;
  }();
  return items;
}

const Csv& cases() {
  static const Csv file(kFolder + "finegray_cases.csv");
  return file;
}

void expectCovariance(const numerics::SquareMatrix& actual, const std::vector<double>& expected,
                      const char* what) {
  const std::size_t p = actual.size();
  ASSERT_EQ(expected.size(), p * p);
  for (std::size_t i = 0; i < p; ++i) {
    for (std::size_t j = 0; j < p; ++j) {
      const double scale = std::sqrt(expected[i * p + i] * expected[j * p + j]);
      EXPECT_NEAR(actual(i, j), expected[i * p + j], 1e-8 * scale) << what << " " << i << " " << j;
    }
  }
}

class FineGrayReference : public testing::TestWithParam<std::size_t> {};

TEST_P(FineGrayReference, HasTheSameNumbers) {
  test::FineGrayCase tested(cases(), GetParam());
  const bool crr = cases().text("program", GetParam()) == "crr";
  if (!crr) {
    tested.options.censoringTies = CensoringTies::kAfterEvents;
    tested.options.errors = Errors::kSandwich;
  }
  const Items& items = allItems().at(cases().text("case", GetParam()));
  const Fit fit = tested.fit();
  ASSERT_TRUE(fit.converged);
  const std::vector<double>& coef = items.at("coef");
  const std::size_t p = coef.size();
  ASSERT_EQ(fit.coefficients.size(), p);
  for (std::size_t j = 0; j < p; ++j) {
    EXPECT_NEAR(fit.coefficients[j], coef[j],
                1e-9 * std::max(std::fabs(coef[j]), fit.standardError(j)))
        << j;
  }
  if (items.count("var") > 0) expectCovariance(fit.covariance, items.at("var"), "covariance");
  const std::vector<double>& logLikelihood = items.at("loglik");
  EXPECT_NEAR(fit.logLikelihoodNull, logLikelihood[0], 1e-10 * std::fabs(logLikelihood[0]));
  EXPECT_NEAR(fit.logLikelihood, logLikelihood[1], 1e-10 * std::fabs(logLikelihood[1]));
  if (!crr) return expectCovariance(fit.inverseInformation, items.at("naive"), "inverse");

  expectCovariance(fit.inverseInformation, items.at("inverse"), "inverse");
  const auto residuals = engine::finegray::schoenfeld(fit);
  const auto hazard = test::hazardOf(fit);
  const std::vector<double>& at = items.at("at");
  const std::vector<double>& fresh = items.at("new");
  for (std::size_t m = 0; m < at.size(); ++m) {
    const auto k = static_cast<std::size_t>(at[m]);
    EXPECT_EQ(hazard.sums().time[k], items.at("time")[m]);
    for (std::size_t j = 0; j < p; ++j) {
      // In units of the covariate.
      EXPECT_NEAR(residuals[k][j], items.at("residual")[m * p + j],
                  1e-8 * fit.problem->rows.spread[j]);
    }
    for (std::size_t person = 0; person < 2; ++person) {
      const auto predicted = hazard.at(std::span(fresh).subspan(person * p, p), 0, 0);
      const double expected = items.at("predicted")[person * at.size() + m];
      EXPECT_NEAR(-std::expm1(-predicted.hazard[k]), expected, 1e-8 * expected);
    }
  }
}

TEST(FineGrayPage, HoldsTheNumbersOfBothPrograms) {
  const test::Page page("incidence");
  const auto number = [](const char* name, const char* item, std::size_t at) {
    return allItems().at(name).at(item)[at];
  };
  const auto error = [&](const char* name, std::size_t j) {
    return std::sqrt(number(name, "var", 4 * j));
  };
  page.says("of hgb is %.6f (standard error %.6f) in crr, and %.6f (%.6f) by finegray and coxph",
            number("crr_mgus_1", "coef", 1), error("crr_mgus_1", 1),
            number("finegray_mgus_1", "coef", 1), error("finegray_mgus_1", 1));
  page.says("of age %.7f, with %.7f and %.7f", number("crr_melanoma_1", "coef", 0),
            error("crr_melanoma_1", 0), error("finegray_melanoma_1", 0));
  EXPECT_NEAR(number("finegray_melanoma_1", "coef", 0), number("crr_melanoma_1", "coef", 0), 1e-10);
}

INSTANTIATE_TEST_SUITE_P(Cases, FineGrayReference, testing::Range<std::size_t>(0, cases().rows()),
                         [](const auto& of) { return cases().text("case", of.param); });

}  // namespace
}  // namespace survmeth
