// Penalised likelihoods against a second implementation to 30 digits (the determinant) and R (ridge).
#include "engine/cox/penalised.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "engine/cox/determinant.h"
#include "engine/cox/likelihood.h"
#include "engine/cox/profile.h"
#include "numerics/cholesky.h"
#include "tests/engine/cox/data.h"

namespace survmeth {
namespace {

using engine::cox::Column;
using engine::cox::Held;
using engine::cox::Options;
using engine::cox::PenalisedFit;
using engine::cox::Penalty;
using engine::cox::Ties;
using test::CoxData;
using test::Csv;

const std::string kReference = std::string(SURVMETH_REFERENCE) + "/";

bool has(const Csv& file, const std::string& name) {
  return std::find(file.names().begin(), file.names().end(), name) != file.names().end();
}

CoxData dataOf(const std::string& path, const std::vector<std::string>& columns) {
  const Csv file(kReference + path);
  CoxData data;
  data.exit = file.numbers("time");
  if (has(file, "start")) data.entry = file.numbers("start");
  for (const double event : file.numbers("event")) data.event.push_back(event != 0.0 ? 1 : 0);
  for (const std::string& name : columns) data.columns.push_back(file.numbers(name));
  data.names = columns;
  if (has(file, "weight")) data.weight = file.numbers("weight");
  if (has(file, "stratum")) data.stratum = test::codesOf(file.numbers("stratum"), data.strata);
  return data;
}

PenalisedFit fitted(const CoxData& data, Ties ties, const Penalty& penalty) {
  Options options;
  options.ties = ties;
  numerics::Progress progress;
  return fitPenalised(data.response(), data.rows(), data.design(), options, penalty, progress);
}

// The maximum is found to 1e-10 standard errors, limits to 1e-10 of their distance; likelihoods of
// size 30 carry a rounding of 1e-14.
void expectNear(double value, double expected, double size, const std::string& what) {
  EXPECT_LE(std::fabs(value - expected), 1e-9 * size) << what << " " << value << " " << expected;
}

class Determinant : public ::testing::TestWithParam<std::string> {};

TEST_P(Determinant, IsThatOfItsDefinition) {
  const Csv table(kReference + "cox_penalised/firth.csv");
  const std::string name = GetParam().substr(0, GetParam().find('_'));
  const std::string ties = GetParam().substr(GetParam().find('_') + 1);
  std::vector<std::size_t> lines;
  std::vector<std::string> columns;
  for (std::size_t i = 0; i < table.rows(); ++i) {
    if (table.text("data", i) != name || table.text("ties", i) != ties) continue;
    lines.push_back(i);
    columns.push_back(table.text("column", i));
  }
  ASSERT_FALSE(lines.empty());
  const std::string path =
      name == "ovarian" ? "cox/data/ovarian.csv" : "cox_penalised/" + name + ".csv";
  const PenalisedFit made =
      fitted(dataOf(path, columns), ties == "efron" ? Ties::kEfron : Ties::kBreslow, {});
  ASSERT_TRUE(made.fit.converged);
  numerics::Progress progress;
  for (std::size_t j = 0; j < lines.size(); ++j) {
    const auto expected = [&](const char* column) { return table.number(column, lines[j]); };
    const double error = expected("error");
    EXPECT_EQ(made.fit.column[j], Column::kEstimated);
    expectNear(made.fit.coefficients[j], expected("coef"), error, "coef");
    expectNear(made.fit.standardError(j), error, error, "error");
    expectNear(made.logLikelihood, expected("penalised"), std::fabs(expected("penalised")),
               "penalised");
    expectNear(made.logLikelihoodNull, expected("null"), std::fabs(expected("null")), "null");
    expectNear(made.fit.logLikelihood, expected("logLikelihood"), 30.0, "likelihood");
    // A difference of likelihoods of size 30.
    expectNear(made.fit.terms[j].test.chiSquare, expected("chiSquare"), 30.0, "chi-square");
    // The limits of the profile, where the penalised likelihood has fallen as far as they say.
    for (const char* side : {"lower", "upper"}) {
      const Held held = profileOf(made, j, progress)->at(expected(side));
      ASSERT_TRUE(held.exists);
      expectNear(2 * (made.logLikelihood - held.logLikelihood), 3.841458820694124, 30.0, side);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Cox, Determinant,
                         ::testing::Values("separated_efron", "separated_breslow", "late_efron",
                                           "late_breslow", "ovarian_efron", "myeloma_breslow"),
                         [](const auto& each) { return each.param; });

// 65 patients with multiple myeloma (Krall, Uthoff, Harley. Biometrics 31 (1975) 49-57), fitted in
// print: SAS/STAT User's Guide, The PHREG Procedure, stepwise regression, and Firth's correction
// for monotone likelihood, whose third covariate is 1 for times up to 65, which separates.
TEST(PenalisedCox, APublishedMonotoneLikelihoodIsFound) {
  const auto with = [](const std::vector<std::string>& names) {
    return dataOf("cox_penalised/myeloma.csv", names);
  };
  Options breslow;
  breslow.ties = Ties::kBreslow;
  const engine::cox::Fit plain = with({"logBUN", "hgb"}).fit(breslow);
  // Half a unit of the last digit in print.
  EXPECT_NEAR(plain.coefficients[0], 1.67440, 5e-6);
  EXPECT_NEAR(plain.standardError(0), 0.61209, 5e-6);
  EXPECT_NEAR(plain.coefficients[1], -0.11899, 5e-6);
  EXPECT_NEAR(plain.standardError(1), 0.05751, 5e-6);

  const CoxData data = with({"logBUN", "hgb", "contrived"});
  EXPECT_EQ(data.fit(breslow).column[2], Column::kInfinite);
  const PenalisedFit made = fitted(data, Ties::kBreslow, {});
  // Half a unit of the third decimal, to which the print is relied upon; firth.csv has more.
  EXPECT_NEAR(made.fit.coefficients[0], 1.722, 5e-4);
  EXPECT_NEAR(made.fit.standardError(0), 0.584, 5e-4);
  EXPECT_NEAR(std::exp(made.fit.coefficients[0]), 5.596, 5e-4);
  EXPECT_NEAR(std::exp(made.fit.coefficients[1]), 0.894, 5e-4);
  EXPECT_NEAR(made.fit.coefficients[2], 3.815, 5e-4);
}

TEST(PenalisedCox, TheDeterminantsGradientIsItsSlope) {
  const CoxData data = dataOf("cox/data/cgd.csv", {"gamma", "age", "autosomal", "steroids"});
  const engine::Rows rows = data.rows();
  const engine::cox::Problem problem(data.response(), rows, data.design(), 0.0);
  const std::vector<std::size_t> active = {0, 1, 3};
  const std::vector<double> at = {-0.7, 0.02, 0.3, 0.4};
  for (const Ties ties : {Ties::kEfron, Ties::kBreslow}) {
    engine::cox::Hazards hazards;
    const auto penalty = [&](const std::vector<double>& b) {
      numerics::NewtonPoint point;
      evaluate(problem, ties, b, hazards, point);
      return 0.5 * numerics::Cholesky(numerics::part(point.information, active)).logDeterminant();
    };
    numerics::NewtonPoint plain, point;
    evaluate(problem, ties, at, hazards, plain);
    point = plain;
    ASSERT_TRUE(addDeterminant(problem, hazards, ties, active, point));
    EXPECT_EQ(point.gradient[2], plain.gradient[2]);
    for (const std::size_t j : active) {
      std::vector<double> above = at, below = at;
      const double h = 1e-4 * (j == 1 ? 0.05 : 1.0);
      above[j] += h;
      below[j] -= h;
      const double slope = (penalty(above) - penalty(below)) / (2.0 * h);
      // Differences of a function of size 10 over 1e-4 are good to 1e-10, their bend to h^2.
      EXPECT_NEAR(point.gradient[j] - plain.gradient[j], slope, 1e-6 * (1.0 + std::fabs(slope)));
    }
  }
}

TEST(PenalisedCox, ARidgeIsRs) {
  const Csv table(kReference + "cox_penalised/ridge.csv");
  for (std::size_t from = 0, to = 0; from < table.rows(); from = to) {
    std::vector<std::string> columns;
    const auto key = [&](std::size_t i) {
      return table.text("data", i) + table.text("ties", i) + table.text("theta", i) +
             table.text("scale", i);
    };
    for (; to < table.rows() && key(to) == key(from); ++to) {
      columns.push_back(table.text("column", to));
    }
    const PenalisedFit made = fitted(
        dataOf("cox/data/" + table.text("data", from) + ".csv", columns),
        table.text("ties", from) == "efron" ? Ties::kEfron : Ties::kBreslow,
        {Penalty::Kind::kRidge, table.number("theta", from), table.text("scale", from) == "TRUE"});
    ASSERT_TRUE(made.fit.converged);
    for (std::size_t j = 0; j < columns.size(); ++j) {
      const std::string what = key(from) + columns[j];
      const double error = table.number("error", from + j);
      expectNear(made.fit.coefficients[j], table.number("coef", from + j), error, what);
      expectNear(made.fit.standardError(j), error, error, what);
    }
    expectNear(made.fit.logLikelihood, table.number("logLikelihood", from),
               std::fabs(table.number("logLikelihood", from)), key(from));
    expectNear(made.effectiveDegrees, table.number("effective", from),
               table.number("effective", from), key(from));
    // A difference of likelihoods of size 700.
    expectNear(made.chiSquare, table.number("chiSquare", from), 1400.0, key(from));
  }
}

TEST(PenalisedCox, ARidgeOfNothingIsTheOrdinaryFit) {
  const CoxData data = dataOf("cox/data/lung.csv", {"age", "male", "ecog"});
  const engine::cox::Fit plain = data.fit();
  const PenalisedFit made = fitted(data, Ties::kEfron, {Penalty::Kind::kRidge, 0.0, true});
  for (std::size_t j = 0; j < 3; ++j) {
    expectNear(made.fit.coefficients[j], plain.coefficients[j], plain.standardError(j), "coef");
    expectNear(made.fit.standardError(j), plain.standardError(j), plain.standardError(j), "error");
  }
  EXPECT_EQ(made.effectiveDegrees, 3.0);
}

TEST(PenalisedCox, WhatHasNoPenalisedLikelihoodIsRefused) {
  CoxData data = dataOf("cox_penalised/separated.csv", {"x", "z"});
  const auto refusal = [&](const Options& options, const Penalty& penalty) -> std::string {
    numerics::Progress progress;
    try {
      fitPenalised(data.response(), data.rows(), data.design(), options, penalty, progress);
    } catch (const engine::Refusal& refused) {
      return refused.what();
    }
    return "none";
  };
  const std::string start = "a penalised likelihood has no definition for ";
  Options exact;
  exact.ties = Ties::kDiscrete;
  EXPECT_EQ(refusal(exact, {}), start + "an exact treatment of ties");
  Options robust;
  robust.robust = true;
  EXPECT_EQ(refusal(robust, {Penalty::Kind::kRidge, 1.0}), start + "a robust covariance");
  data.weightKind = engine::WeightKind::kSampling;
  EXPECT_EQ(refusal({}, {}), start + "sampling weights");
  data.weightKind = engine::WeightKind::kFrequencies;
  data.cluster.assign(12, 0);
  data.clusters = 1;
  EXPECT_EQ(refusal({}, {}), start + "clusters");
}

}  // namespace
}  // namespace survmeth
