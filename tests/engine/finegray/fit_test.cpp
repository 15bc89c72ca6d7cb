// Subdistribution hazards: what they come to where nothing competes, what the weights are, and
// where there is no answer.
#include "engine/finegray/fit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "numerics/threads.h"
#include "tests/engine/finegray/data.h"
#include "tests/support/role.h"

namespace survmeth {
namespace {

using engine::finegray::CensoringCurves;
using engine::finegray::CensoringTies;
using engine::finegray::Errors;
using engine::finegray::Fit;
using engine::finegray::Options;
using test::CauseData;

using Numbers = std::vector<double>;

// Rows with covariates that own their numbers.
struct Data {
  CauseData rows;
  std::vector<Numbers> covariates;
  std::vector<std::uint32_t> censoring = {};
  std::size_t groups = 1;

  Fit fit(const Options& options = {}) const {
    engine::Design design;
    for (std::size_t j = 0; j < covariates.size(); ++j) {
      design.columns.emplace_back(covariates[j]);
      design.names.push_back("x" + std::to_string(j));
      design.termNames.push_back(design.names.back());
      design.term.push_back(j);
    }
    numerics::Progress progress;
    return engine::finegray::fit(rows.response(), rows.rows(), design, {censoring, groups}, options,
                                 progress);
  }
};

Data melanoma() {
  Data data{test::causeData("melanoma", ""), {}};
  const test::Csv file(std::string(SURVMETH_REFERENCE) + "/incidence/data/melanoma.csv");
  data.covariates = {file.numbers("x1"), file.numbers("x2")};
  return data;
}

TEST(FineGray, IsTheSameForEveryNumberOfThreadsAndColumnsSummedSideBySide) {
  const test::Csv file(std::string(SURVMETH_REFERENCE) + "/incidence/data/pbc.csv");
  Data data{test::causeData("pbc", "", "", "", "stratum"), {}};
  for (const char* name : {"x1", "x2", "x3", "x4", "x5"}) {
    data.covariates.push_back(file.numbers(name));
  }
  numerics::setThreads(1);
  const Fit one = data.fit();
  numerics::setThreads(3);
  const Fit three = data.fit();
  numerics::setThreads(0);
  EXPECT_EQ(one.coefficients, three.coefficients);
  // The last two columns, which are summed beside others, come first.
  std::rotate(data.covariates.begin(), data.covariates.begin() + 3, data.covariates.end());
  const Fit turned = data.fit();
  for (std::size_t i = 0; i < 5; ++i) {
    // Of the same maximum, met in another order of columns.
    EXPECT_NEAR(turned.coefficients[(i + 2) % 5], one.coefficients[i], 1e-9 * one.standardError(i));
    for (std::size_t j = 0; j < 5; ++j) {
      EXPECT_EQ(one.covariance(i, j), three.covariance(i, j));
      const double scale = one.standardError(i) * one.standardError(j);
      EXPECT_NEAR(turned.covariance((i + 2) % 5, (j + 2) % 5), one.covariance(i, j), 1e-9 * scale);
    }
  }
}

TEST(FineGray, WithoutOtherCausesIsProportionalHazards) {
  Data data = melanoma();
  for (std::uint32_t& event : data.rows.event) event = event == 1 ? 1 : 0;
  for (std::size_t i = 0; i < data.rows.exit.size(); ++i) {
    data.rows.weight.push_back(0.5 + static_cast<double>(i % 3));
  }
  data.rows.weightKind = engine::WeightKind::kSampling;
  const Fit fit = data.fit({.errors = Errors::kSandwich});
  engine::Design design;
  for (const Numbers& column : data.covariates) design.columns.emplace_back(column);
  design.names = design.termNames = {"a", "b"};
  design.term = {0, 1};
  engine::cox::Options options;
  options.ties = engine::cox::Ties::kBreslow;
  options.robust = true;
  numerics::Progress progress;
  const auto cox = engine::cox::fit({{}, data.rows.exit, data.rows.event, 1}, data.rows.rows(),
                                    design, options, progress);
  for (std::size_t j = 0; j < 2; ++j) {
    // Both stop within 1e-10 standard errors of the maximum.
    EXPECT_NEAR(fit.coefficients[j], cox.coefficients[j], 2e-10 * cox.standardError(j));
    EXPECT_NEAR(fit.standardError(j), cox.standardError(j), 1e-9 * cox.standardError(j));
  }
  EXPECT_NEAR(fit.logLikelihood, cox.logLikelihood, 1e-12 * std::fabs(cox.logLikelihood));
  // Nothing is weighted: the censoring curve adds nothing.
  EXPECT_EQ(data.fit().standardError(0), fit.standardError(0));
}

TEST(FineGray, CopiesAsStrataOfTheCensoringChangeNothing) {
  Data data = melanoma();
  const auto twice = [](auto& column) {
    const auto copy = column;
    column.insert(column.end(), copy.begin(), copy.end());
  };
  const std::size_t n = data.rows.exit.size();
  twice(data.rows.exit);
  twice(data.rows.event);
  for (Numbers& column : data.covariates) twice(column);
  const Fit one = data.fit();
  data.censoring.assign(2 * n, 0);
  std::fill(data.censoring.begin() + static_cast<std::ptrdiff_t>(n), data.censoring.end(), 1u);
  data.groups = 2;
  const Fit two = data.fit();
  for (std::size_t j = 0; j < 2; ++j) {
    EXPECT_NEAR(two.coefficients[j], one.coefficients[j], 2e-10 * one.standardError(j));
    // The same sums in two parts.
    EXPECT_NEAR(two.standardError(j), one.standardError(j), 1e-10 * one.standardError(j));
  }
}

TEST(FineGray, StrataOfCopiesHaveBaselinesOfTheirOwn) {
  Data data = melanoma();
  const Fit one = data.fit({.errors = Errors::kSandwich});
  const std::size_t n = data.rows.exit.size();
  Data strata = data;
  for (auto* column : {&strata.rows.exit, &strata.covariates[0], &strata.covariates[1]}) {
    const Numbers copy = *column;
    column->insert(column->end(), copy.begin(), copy.end());
  }
  const auto events = strata.rows.event;
  strata.rows.event.insert(strata.rows.event.end(), events.begin(), events.end());
  strata.rows.stratum.assign(2 * n, 0);
  std::fill(strata.rows.stratum.begin() + static_cast<std::ptrdiff_t>(n), strata.rows.stratum.end(),
            1u);
  strata.rows.stratumCount = 2;
  const Fit two = strata.fit({.errors = Errors::kSandwich});
  for (std::size_t j = 0; j < 2; ++j) {
    EXPECT_NEAR(two.coefficients[j], one.coefficients[j], 2e-10 * one.standardError(j));
    EXPECT_NEAR(two.standardError(j), one.standardError(j) / std::sqrt(2), 1e-10);
  }
  const Numbers x = {50, 1};
  const auto first = test::hazardOf(one).at(x, 0, 0);
  const auto second = test::hazardOf(two).at(x, 0, 1);
  ASSERT_EQ(first.time, second.time);
  EXPECT_NEAR(first.hazard.back(), second.hazard.back(), 1e-9);  // of coefficients that near
}

TEST(FineGray, ClustersOfOneRowAreRows) {
  Data data = melanoma();
  const Fit rows = data.fit();
  for (std::uint32_t i = 0; i < data.rows.exit.size(); ++i) data.rows.cluster.push_back(i);
  data.rows.clusterCount = data.rows.cluster.size();
  EXPECT_NEAR(data.fit().standardError(0), rows.standardError(0), 1e-13);  // another order of sums
}

TEST(CensoringCurves, EventsAndCensoringsOfATimeStandBesideOrBehindEachOther) {
  const Numbers exit = {1, 2, 2, 2, 3};
  const std::vector<std::uint32_t> event = {0, 1, 0, 1, 0};
  const engine::Response response{{}, exit, event, 1};
  const CensoringCurves beside(response, {}, {}, CensoringTies::kAtRisk, 0);
  const CensoringCurves behind(response, {}, {}, CensoringTies::kAfterEvents, 0);
  EXPECT_EQ(beside.before(0, 1), 1);
  EXPECT_NEAR(beside.before(0, 2), 4.0 / 5, 1e-16);
  EXPECT_NEAR(beside.before(0, 2.5), 4.0 / 5 * 3 / 4, 1e-16);
  EXPECT_NEAR(behind.before(0, 3), 4.0 / 5 * 1 / 2, 1e-16);
  EXPECT_EQ(beside.before(0, 3.5), 0);  // behind the last time nothing is known
}

TEST(CensoringCurves, EntriesCountFromTheEnd) {
  // Behind 2 three are there, of whom one enters; behind 0 two, who both do.
  const Numbers entry = {0, 0, 2, 0}, exit = {5, 4, 6, 2};
  const std::vector<std::uint32_t> event = {1, 1, 1, 1};
  const engine::Response response{entry, exit, event, 1};
  const CensoringCurves curves(response, {}, {}, CensoringTies::kAtRisk, 0);
  EXPECT_EQ(curves.before(0, 3), 1);
  EXPECT_NEAR(curves.before(0, 2), 2.0 / 3, 1e-16);
  EXPECT_NEAR(curves.before(0, 1), 2.0 / 3, 1e-16);
}

TEST(FineGray, SaysWhyThereIsNoAnswer) {
  Data data = melanoma();
  Data none = data;
  for (std::uint32_t& event : none.rows.event) event = event == 2 ? 2 : 0;
  Fit fit = none.fit();
  ASSERT_EQ(fit.outcomes.size(), 1u);
  EXPECT_EQ(fit.outcomes[0].code, "noEvents");
  EXPECT_TRUE(std::isnan(fit.coefficients[0]));

  Data collinear = data;
  collinear.covariates.push_back(collinear.covariates[0]);
  for (double& x : collinear.covariates.back()) x = 2 * x + 1;
  fit = collinear.fit();
  ASSERT_EQ(fit.outcomes.size(), 1u);
  EXPECT_EQ(fit.outcomes[0].code, "collinear");
  EXPECT_EQ(fit.outcomes[0].names, (std::vector<std::string>{"x2", "x0"}));
  EXPECT_EQ(fit.outcomes[0].text, "x2 follows from other covariates");

  Data constant = data;
  constant.covariates[1].assign(data.rows.exit.size(), 3.0);
  fit = constant.fit();
  ASSERT_EQ(fit.outcomes.size(), 1u);
  EXPECT_EQ(fit.outcomes[0].text, "x1 does not vary among those at risk at events");

  Data separated = data;
  for (std::size_t i = 0; i < data.rows.event.size(); ++i) {
    separated.covariates[1][i] = data.rows.event[i] == 1 ? 1 : 0;
  }
  fit = separated.fit();
  ASSERT_EQ(fit.outcomes.size(), 1u);
  EXPECT_EQ(fit.outcomes[0].code, "separated");
  EXPECT_EQ(fit.outcomes[0].names, std::vector<std::string>{"x1"});
  EXPECT_EQ(fit.outcomes[0].text,
            "the likelihood rises without end: at every event the row that fails stands out");
  EXPECT_TRUE(std::isnan(fit.coefficients[0]));
}

TEST(FineGray, RefusesACauseThatIsNone) {
  for (const std::uint32_t cause : {0u, 3u}) {
    try {
      melanoma().fit({.cause = cause});
      ADD_FAILURE() << cause;
    } catch (const engine::Refusal& refusal) {
      EXPECT_STREQ(refusal.what(), "the cause of interest is none of the causes");
      EXPECT_EQ(nameOf(refusal.role()), "event");
    }
  }
}

TEST(FineGray, RefusesAGapThatEntriesFollow) {
  Data data{{}, {{1, 2, 3, 5}}};
  data.rows.entry = {0, 2, 2, 2};
  data.rows.exit = {1, 4, 5, 6};
  data.rows.event = {2, 1, 0, 1};
  try {
    data.fit();
    ADD_FAILURE();
  } catch (const engine::Refusal& refusal) {
    EXPECT_STREQ(refusal.what(),
                 "nobody stays at risk from this end to later entries: a row that fails of another "
                 "cause has no weight across the gap");
    EXPECT_EQ(nameOf(refusal.role()), "entry");
    EXPECT_EQ(refusal.row(), 0u);
  }
}

}  // namespace
}  // namespace survmeth
