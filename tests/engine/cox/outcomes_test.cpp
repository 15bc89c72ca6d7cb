// What a fit says where there is no answer, or only part of one.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/engine/cox/data.h"

namespace survmeth {
namespace {

using engine::Refusal;
using engine::Role;
using engine::cox::Column;
using engine::cox::Fit;
using engine::cox::Options;
using engine::cox::Ties;
using test::CoxData;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Ten rows with two ordinary covariates.
CoxData tenRows() {
  CoxData data;
  data.exit = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
  data.event = {1, 1, 0, 1, 1, 0, 1, 1, 1, 0};
  data.columns = {{3, 1, 4, 1, 5, 9, 2, 6, 5, 3}, {0, 1, 1, 0, 1, 0, 0, 1, 0, 1}};
  data.names = {"age", "sex"};
  return data;
}

void expectOutcome(const Fit& fit, std::size_t at, const std::string& code,
                   const std::string& text) {
  ASSERT_GT(fit.outcomes.size(), at);
  EXPECT_EQ(fit.outcomes[at].code, code);
  EXPECT_EQ(fit.outcomes[at].text, text);
}

TEST(CoxOutcome, WithoutEventsThereIsNoFit) {
  CoxData data = tenRows();
  data.event.assign(10, 0);
  const Fit fit = data.fit();
  expectOutcome(fit, 0, "noEvents", "no row has an event");
  EXPECT_TRUE(std::isnan(fit.coefficients[0]));
  EXPECT_TRUE(std::isnan(fit.logLikelihood));
  EXPECT_FALSE(fit.converged);
}

TEST(CoxOutcome, ACombinationOfColumnsIsNamed) {
  CoxData data = tenRows();
  std::vector<double> year;
  for (std::size_t i = 0; i < 10; ++i) {
    year.push_back(1900 + 2 * data.columns[0][i] - data.columns[1][i] / 8);
  }
  data.columns.push_back(year);
  data.names.emplace_back("year");
  const Fit fit = data.fit();
  expectOutcome(fit, 0, "collinear", "year is a linear combination of age and sex");
  EXPECT_EQ(fit.outcomes[0].names, (std::vector<std::string>{"year", "age", "sex"}));
  EXPECT_FALSE(fit.converged);
  EXPECT_TRUE(std::isnan(fit.coefficients[0]));
  EXPECT_FALSE(std::isnan(fit.logLikelihoodNull));
}

TEST(CoxOutcome, AliasedColumnsAreDroppedOnDemandAndTheRestIsTheSmallerFit) {
  CoxData data = tenRows();
  const Fit smaller = data.fit();
  data.columns.insert(data.columns.begin() + 1, data.columns[0]);
  for (double& value : data.columns[1]) value = 7 - value / 3;
  data.names = {"age", "copy", "sex"};
  Options options;
  options.dropAliased = true;
  const Fit fit = data.fit(options);
  expectOutcome(fit, 0, "collinear", "copy is a linear combination of age");
  EXPECT_TRUE(fit.converged);
  EXPECT_EQ(fit.column[1], Column::kAliased);
  EXPECT_TRUE(std::isnan(fit.coefficients[1]));
  EXPECT_TRUE(std::isnan(fit.covariance(1, 1)));
  // The same sums in the same order.
  EXPECT_EQ(fit.coefficients[0], smaller.coefficients[0]);
  EXPECT_EQ(fit.coefficients[2], smaller.coefficients[1]);
  EXPECT_EQ(fit.covariance(0, 2), smaller.covariance(0, 1));
  EXPECT_EQ(fit.logLikelihood, smaller.logLikelihood);
  EXPECT_EQ(fit.likelihoodRatio.degreesOfFreedom, 2U);
  EXPECT_EQ(fit.wald.degreesOfFreedom, 2U);
}

TEST(CoxOutcome, AConstantColumnIsNamed) {
  CoxData data = tenRows();
  data.columns.emplace_back(10, 0.1);
  data.names.emplace_back("place");
  expectOutcome(data.fit(), 0, "collinear", "place is constant within every risk set");
}

TEST(CoxOutcome, AColumnThatVariesBetweenStrataOnlyIsNamed) {
  CoxData data = tenRows();
  data.stratum = {0, 1, 0, 1, 0, 1, 0, 1, 0, 1};
  data.strata = 2;
  data.columns.emplace_back();
  for (const std::uint32_t s : data.stratum) data.columns.back().push_back(0.1 + 0.7 * s);
  data.names.emplace_back("place");
  expectOutcome(data.fit(), 0, "collinear",
                "place is constant within every risk set of any stratum");
}

TEST(CoxOutcome, AColumnThatVariesOnlyBeforeTheFirstEventIsConstantInTheRiskSets) {
  CoxData data;
  data.exit = {1, 2, 3, 4, 5};
  data.event = {0, 1, 1, 1, 0};
  data.columns = {{5, 1, 1, 1, 1}};
  data.names = {"early"};
  expectOutcome(data.fit(), 0, "collinear", "early is constant within every risk set");
}

// Every event is in the group, and someone outside it is at risk at each.
CoxData separated() {
  CoxData data = tenRows();
  data.event = {1, 1, 0, 0, 1, 0, 1, 0, 1, 0};
  data.columns.emplace_back();
  data.columns.back() = {1, 1, 0, 0, 1, 0, 1, 1, 1, 0};
  data.names.emplace_back("group");
  return data;
}

TEST(CoxOutcome, AnInfiniteCoefficientIsReportedWithTheFiniteRest) {
  const CoxData data = separated();
  const Fit fit = data.fit();
  expectOutcome(fit, 0, "separated",
                "the coefficient of group is infinite: at every event time the rows that fail "
                "have the largest value of it among those at risk, or the smallest");
  EXPECT_EQ(fit.outcomes[0].names, (std::vector<std::string>{"group"}));
  EXPECT_TRUE(fit.converged);
  EXPECT_EQ(fit.column[2], Column::kInfinite);
  EXPECT_EQ(fit.coefficients[2], kInfinity);
  EXPECT_TRUE(std::isnan(fit.covariance(2, 2)));
  EXPECT_TRUE(std::isnan(fit.wald.chiSquare));
  // In the limit only the group is at risk.
  CoxData group;
  for (std::size_t i = 0; i < 10; ++i) {
    if (data.columns[2][i] == 0) continue;
    group.exit.push_back(data.exit[i]);
    group.event.push_back(data.event[i]);
  }
  for (std::size_t j = 0; j < 2; ++j) {
    group.columns.emplace_back();
    for (std::size_t i = 0; i < 10; ++i) {
      if (data.columns[2][i] != 0) group.columns.back().push_back(data.columns[j][i]);
    }
  }
  const Fit limit = group.fit();
  ASSERT_TRUE(limit.converged);
  for (std::size_t j = 0; j < 2; ++j) {
    EXPECT_NEAR(fit.coefficients[j], limit.coefficients[j], 1e-9 * limit.standardError(j));
    EXPECT_NEAR(fit.covariance(j, j), limit.covariance(j, j), 1e-9 * limit.covariance(j, j));
  }
  EXPECT_NEAR(fit.logLikelihood, limit.logLikelihood, 1e-11);
}

TEST(CoxOutcome, ASeparatingCombinationIsNamedWithItsSigns) {
  // Neither a nor b separates, a - b does: it is largest at every event.
  CoxData data;
  data.exit = {1, 2, 3, 4, 5, 6, 7, 8};
  data.event = {1, 1, 1, 1, 1, 1, 0, 0};
  data.columns = {{5, 3, 6, 1, 4, 2, 3, 1}, {1, 0, 4, 0, 4, 3, 5, 4}};
  data.names = {"a", "b"};
  const Fit fit = data.fit();
  expectOutcome(fit, 0, "separated",
                "the coefficients of a and b are infinite: at every event time the rows that fail "
                "have the largest value of a combination of them among those at risk, or the "
                "smallest");
  EXPECT_EQ(fit.coefficients[0], kInfinity);
  EXPECT_EQ(fit.coefficients[1], -kInfinity);
}

// Both rows of the first time lie above all others: the set of them is the likeliest without end,
// while under Efron's treatment each of the two competes with the other.
TEST(CoxOutcome, TiedRowsThatDifferSeparateUnderExactTreatments) {
  CoxData data;
  data.exit = {1, 1, 2, 3, 3};
  data.event = {1, 1, 1, 0, 0};
  data.columns = {{3, 2, 1, 0, 0.5}};
  data.names = {"x"};
  for (const Ties ties : {Ties::kDiscrete, Ties::kMarginal}) {
    Options options;
    options.ties = ties;
    const Fit fit = data.fit(options);
    ASSERT_EQ(fit.outcomes.size(), 1u);
    EXPECT_EQ(fit.outcomes[0].code, "separated");
    EXPECT_EQ(fit.coefficients[0], kInfinity);
    EXPECT_NEAR(fit.logLikelihood, 0.0, 1e-12);
  }
  EXPECT_TRUE(data.fit().outcomes.empty());
}

TEST(CoxOutcome, TheStratumInWhichRowsDifferIsNamed) {
  CoxData data;
  data.exit = {1, 2, 3, 1, 2, 3};
  data.event = {1, 1, 0, 1, 1, 1};
  data.stratum = {7, 7, 7, 2, 2, 2};
  data.strata = 8;
  data.columns = {{1, 1, 0, 0, 0, 0}};
  data.names = {"group"};
  const Fit fit = data.fit();
  expectOutcome(fit, 0, "separated",
                "the coefficient of group is infinite: at every event time the rows that fail "
                "have the largest value of it among those at risk, or the smallest");
  EXPECT_EQ(fit.outcomes[0].strata, std::vector<std::uint32_t>{7});
}

TEST(CoxOutcome, TheLimitOfIterationsIsNamed) {
  Options options;
  options.iterationLimit = 1;
  const Fit fit = tenRows().fit(options);
  expectOutcome(fit, 0, "notConverged", "the limit was reached after 1 iterations");
  EXPECT_FALSE(fit.converged);
}

TEST(CoxOutcome, AFitWithoutCovariatesIsTheNullModel) {
  CoxData data = tenRows();
  data.columns.clear();
  const Fit fit = data.fit();
  EXPECT_TRUE(fit.converged);
  EXPECT_EQ(fit.logLikelihood, fit.logLikelihoodNull);
  // Events at 1, 2, 4, 5, 7, 8 and 9 of ten rows.
  EXPECT_NEAR(fit.logLikelihood, -std::log(10.0 * 9 * 7 * 6 * 4 * 3 * 2), 1e-13);
}

struct Refused {
  Role role;
  std::string text;
};

Refused refusedBy(const CoxData& data, const Options& options = {}) {
  try {
    data.fit(options);
  } catch (const Refusal& refusal) {
    return {refusal.role(), refusal.what()};
  }
  return {Role::kRequest, "not refused"};
}

TEST(CoxRefusal, ExactTiesRefuseWhatTheyHaveNoDefinitionFor) {
  Options options;
  options.ties = Ties::kDiscrete;
  CoxData data = tenRows();
  data.weight.assign(10, 2.0);
  EXPECT_EQ(refusedBy(data, options).text,
            "the discrete treatment of ties has no definition for weights");
  EXPECT_EQ(refusedBy(data, options).role, Role::kWeight);
  options.ties = Ties::kMarginal;
  data.weight.clear();
  data.cluster = {0, 0, 1, 1, 2, 2, 3, 3, 4, 4};
  data.clusters = 5;
  EXPECT_EQ(refusedBy(data, options).text,
            "the exact marginal treatment of ties has no definition for clusters");
  data.cluster.clear();
  options.robust = true;
  EXPECT_EQ(refusedBy(data, options).text,
            "the exact marginal treatment of ties has no definition for a robust covariance");
}

TEST(CoxRefusal, BadInputIsRefusedWithItsPlace) {
  CoxData data = tenRows();
  data.columns[1][4] = std::nan("");
  try {
    data.fit();
    FAIL();
  } catch (const Refusal& refusal) {
    EXPECT_EQ(refusal.role(), Role::kCovariate);
    EXPECT_EQ(refusal.column(), 1U);
    EXPECT_EQ(refusal.row(), 4U);
    EXPECT_STREQ(refusal.what(), "sex is not a finite number");
  }
  data = tenRows();
  data.entry = {0, 0, 0, 4, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(refusedBy(data).text, "entry is not before exit");
  data = tenRows();
  data.weight = {1, 1, 1, 1, 1, 1, 1, 1, 1, -1};
  EXPECT_EQ(refusedBy(data).text, "weight is negative");
  data = tenRows();
  data.event[2] = 2;
  EXPECT_EQ(refusedBy(data).text, "event code 2 is not below 2");
  data = tenRows();
  data.stratum.assign(10, 3);
  data.strata = 3;
  EXPECT_EQ(refusedBy(data).text, "stratum code 3 is not below 3");
  data = tenRows();
  data.offset.assign(9, 0.0);
  EXPECT_EQ(refusedBy(data).text, "offset has 9 rows, the response has 10");
}

}  // namespace
}  // namespace survmeth
